#pragma once

#include <deque>
#include <memory>
#include <string>
#include <unordered_map>
#include <unordered_set>
#include <vector>

#include "fbx/io/fbxio.h"
#include "fbx/scene/fbxstatus.h"

class FbxAnimCurve;
class FbxDocument;
class FbxIOSettings;
class FbxManager;
class FbxNode;
class FbxNodeAttribute;
class FbxObject;
class FbxProperty;
class FbxScene;

// The export options the FBX 7 writer reads, with the defaults used when an option is absent.
struct FbxWriteOptions {
    bool deterministic = false;
    bool model = true;
    bool animation = true;
    bool character = true;
    bool compressArrays = true;
    int compressLevel = 1;
    int compressMinimumSize = 1024;
    int cacheSize = 8;

    static FbxWriteOptions Read(const FbxIOSettings* settings);
};

// State and sections of one FBX 7 write (see FbxWriterFbx7).
class FbxWriterFbx7_Impl {
public:
    FbxWriterFbx7_Impl(FbxManager& manager, FbxIOSettings* settings, bool binary);

    bool FileCreate(const char* fileName);
    bool FileClose();
    bool Write(FbxDocument* document);

    FbxManager& mManager;
    FbxIOSettings* mSettings;
    bool mBinary;
    FbxString mFileVersionName;
    FbxStatus mStatus;
    std::unique_ptr<FbxIO> mIO;

private:
    // One FBX object type of the "Definitions" section.
    struct TypeDefinition {
        const char* typeName;
        int count;
        const FbxObject* propertyTemplate;  // the class's default object, or null
        const char* templateName;
    };

    bool WriteSections();
    bool Check();
    void WriteBanner(const char* title, bool takes = false);

    // fbxwriterfbx7header.cpp
    void WriteHeaderExtension();
    void WriteCreationTimeStamp();
    void WriteSceneInfo();
    void WriteTopLevelBinaryFields();
    void WriteGlobalSettings();
    void WriteDocuments();
    void WriteReferences();

    // fbxwriterfbx7definitions.cpp
    void CollectObjects();
    void AddDefinition(const FbxObject& object);
    void WriteDefinitions();
    const FbxObject* TemplateFor(const FbxObject& object) const;

    // fbxwriterfbx7objects.cpp
    void WriteObjects();
    void WriteObject(const FbxObject& object);
    void WriteModelBody(const FbxNode& node);
    void WriteNodeAttributeBody(const FbxNodeAttribute& attribute);
    void WriteProperties(const FbxObject& object, const FbxObject* propertyTemplate);
    void WritePropertyRecord(const FbxProperty& property);
    void WritePropertyValue(const FbxProperty& property);

    // fbxwriterfbx7animation.cpp
    void WriteCurveBody(const FbxAnimCurve& curve);
    void WriteKeyAttributes(const FbxAnimCurve& curve);
    const std::vector<int64_t>& FileKeyTimes(const FbxAnimCurve& curve);
    void PrepareCurvesAhead(size_t index);
    uint64_t TakePrepared(const FbxAnimCurve& curve);
    void WriteTakes();

    // fbxwriterfbx7connections.cpp
    void WriteConnections();
    void WriteConnection(const char* kind, const FbxObject& source, const char* sourceProperty,
                         const FbxObject& destination, const char* destinationProperty);

    FbxLongLong GetObjectId(const FbxObject& object) const;
    bool IsWritten(const FbxObject& object) const;

    FbxWriteOptions mOptions;
    int mVersion = 7700;
    FbxDocument* mDocument = nullptr;
    FbxScene* mScene = nullptr;
    std::vector<const FbxObject*> mObjects;  // the records of "Objects", in order
    const FbxAnimCurve* mTimesOf = nullptr;  // the curve whose key times mFileTimes holds
    std::vector<int64_t> mFileTimes;
    uint64_t mFileTimesTag = 0;  // changes whenever mFileTimes does
    size_t mPreparedUpTo = 0;    // objects before it had their key values prepared
    std::deque<std::pair<const FbxAnimCurve*, uint64_t>> mPrepared;  // curves and tickets
    std::unordered_set<const FbxObject*> mWritten;
    std::vector<TypeDefinition> mDefinitions;
    std::unordered_map<std::string, size_t> mDefinitionIndex;
};
