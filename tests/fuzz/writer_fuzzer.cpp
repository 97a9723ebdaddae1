// The writer on a scene built from fuzzer bytes: hostile names (quotes, line breaks, "::",
// NUL, 64 KB, bytes that are no UTF-8), key times anywhere on the time line, NaN and
// infinite values. Whatever it is given, an export that reports success must leave a binary
// and an ASCII file that the independent structural readers accept, with the same objects and
// connections in both.
#include <unistd.h>

#include <cmath>
#include <cstdint>
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <filesystem>
#include <limits>
#include <string>
#include <vector>

#include "fbx/io/fbxexporter.h"
#include "fbx/io/fbxiosettings.h"
#include "fbx/scene/fbxanimcurve.h"
#include "fbx/scene/fbxanimlayer.h"
#include "fbx/scene/fbxanimstack.h"
#include "fbx/scene/fbxdocumentinfo.h"
#include "fbx/scene/fbxglobalsettings.h"
#include "fbx/scene/fbxmanager.h"
#include "fbx/scene/fbxnode.h"
#include "fbx/scene/fbxnull.h"
#include "fbx/scene/fbxscene.h"
#include "fbx/scene/fbxskeleton.h"
#include "fbxfile/fbxasciireader.h"
#include "fbxfile/fbxbinaryreader.h"

namespace {

// Hands out the fuzzer's bytes as scene choices; past the end every choice is zero.
class Choices {
public:
    Choices(const uint8_t* data, size_t size) : mData(data), mSize(size) {}

    uint8_t Byte() { return mPos < mSize ? mData[mPos++] : 0; }
    int Below(int limit) { return Byte() % limit; }
    template <typename T>
    T Raw() {
        T value{};
        unsigned char bytes[sizeof(T)] = {};
        for (unsigned char& byte : bytes) byte = Byte();
        std::memcpy(&value, bytes, sizeof value);
        return value;
    }
    std::string Bytes(size_t count) {
        std::string bytes;
        while (count-- > 0 && mPos < mSize) bytes += static_cast<char>(mData[mPos++]);
        return bytes;
    }

private:
    const uint8_t* mData;
    size_t mSize;
    size_t mPos = 0;
};

// A name of one to four pieces, each ordinary or hostile.
std::string Name(Choices& choices) {
    static const char* const pieces[] = {
        "Hips",         "\"",       "\"quoted\"", "\n", "\r\n", "\r", "::",       "Model::Hips",
        "&quot;",       ";",        "{",          "}",  ",",    "\t", "\xff\xfe", "\xc3",
        "\xe2\x80\xa8", "\xc2\x85", " "};
    const int count = 1 + choices.Below(4);
    std::string name;
    for (int i = 0; i < count; ++i) {
        const int kind = choices.Below(std::size(pieces) + 3);
        if (kind < static_cast<int>(std::size(pieces))) {
            name += pieces[kind];
        } else if (kind == std::size(pieces)) {
            name += choices.Bytes(choices.Below(16));  // raw: NUL, control and high bytes
        } else if (kind == std::size(pieces) + 1) {
            name += std::string(65536, static_cast<char>(choices.Byte()));
        } else {
            name += std::string(1, '\0') + "after NUL";
        }
    }
    return name;
}

// A value among the troublesome ones, or any bit pattern.
double Real(Choices& choices) {
    static const double specials[] = {std::numeric_limits<double>::quiet_NaN(),
                                      std::numeric_limits<double>::infinity(),
                                      -std::numeric_limits<double>::infinity(),
                                      -0.0,
                                      std::numeric_limits<double>::max(),
                                      std::numeric_limits<double>::denorm_min(),
                                      1e300,
                                      0.1};
    switch (choices.Below(3)) {
        case 0:
            return specials[choices.Below(std::size(specials))];
        case 1:
            return choices.Raw<double>();
        default:
            return static_cast<int8_t>(choices.Byte()) / 4.0;
    }
}

float Single(Choices& choices) {
    return choices.Below(2) == 0 ? choices.Raw<float>() : static_cast<float>(Real(choices) / 1e270);
}

FbxTime Time(Choices& choices) {
    return choices.Below(2) == 0 ? FbxTime(choices.Raw<FbxLongLong>())
                                 : FbxTime(static_cast<FbxLongLong>(choices.Byte()) * 1176000);
}

void AddCurves(Choices& choices, FbxProperty& property, FbxAnimLayer* layer) {
    static const FbxAnimCurveDef::EInterpolationType interpolations[] = {
        FbxAnimCurveDef::eInterpolationConstant, FbxAnimCurveDef::eInterpolationLinear,
        FbxAnimCurveDef::eInterpolationCubic};
    for (const char* channel : {"X", "Y", "Z"}) {
        FbxAnimCurve* curve = property.GetCurve(layer, property.GetName().Buffer(), channel, true);
        curve->KeyModifyBegin();
        for (int keys = choices.Below(12); keys > 0; --keys) {
            const int index = curve->KeyAdd(Time(choices));
            curve->KeySetValue(index, Single(choices));
            curve->KeySetInterpolation(index, interpolations[choices.Below(3)]);
            if (choices.Below(2) == 0) {
                curve->KeySetTangentMode(index, FbxAnimCurveDef::eTangentUser);
                curve->KeySetRightDerivative(index, Single(choices));
                curve->KeySetLeftDerivative(index, Single(choices));
            }
        }
        curve->KeyModifyEnd();
    }
}

FbxDouble3 Triple(Choices& choices) {
    const double x = Real(choices), y = Real(choices);
    return FbxDouble3(x, y, Real(choices));
}

FbxScene* BuildScene(FbxManager* manager, Choices& choices) {
    FbxScene* scene = FbxScene::Create(manager, Name(choices).c_str());
    FbxDocumentInfo* info = FbxDocumentInfo::Create(manager, "SceneInfo");
    info->mTitle = Name(choices).c_str();
    info->mComment = Name(choices).c_str();
    scene->SetSceneInfo(info);
    scene->GetGlobalSettings().SetTimeMode(static_cast<FbxTime::EMode>(choices.Below(18)));
    scene->GetGlobalSettings().SetCustomFrameRate(Real(choices));

    FbxAnimStack* stack = FbxAnimStack::Create(scene, Name(choices).c_str());
    FbxAnimLayer* layer = FbxAnimLayer::Create(scene, Name(choices).c_str());
    stack->AddMember(layer);
    scene->SetCurrentAnimationStack(stack);
    const FbxTime start = Time(choices);
    stack->SetLocalTimeSpan(FbxTimeSpan(start, Time(choices)));

    std::vector<FbxNode*> nodes{scene->GetRootNode()};
    for (int count = 1 + choices.Below(12); count > 0; --count) {
        const std::string name = Name(choices);
        FbxNode* node = FbxNode::Create(scene, name.c_str());
        const int kind = choices.Below(3);
        if (kind == 0) {
            FbxSkeleton* skeleton = FbxSkeleton::Create(scene, name.c_str());
            skeleton->SetSkeletonType(static_cast<FbxSkeleton::EType>(choices.Below(4)));
            node->SetNodeAttribute(skeleton);
        } else if (kind == 1) {
            node->SetNodeAttribute(FbxNull::Create(scene, name.c_str()));
        }
        nodes[choices.Below(nodes.size())]->AddChild(node);
        node->LclTranslation.Set(Triple(choices));
        node->LclRotation.Set(Triple(choices));
        node->LclScaling.Set(Triple(choices));
        if (choices.Below(2) == 0) AddCurves(choices, node->LclTranslation, layer);
        if (choices.Below(2) == 0) AddCurves(choices, node->LclRotation, layer);
        nodes.push_back(node);
    }
    return scene;
}

// One scratch folder per process, on a memory file system where there is one, removed at exit.
class ScratchFolder {
public:
    ScratchFolder() {
        const char* base = std::filesystem::is_directory("/dev/shm") ? "/dev/shm" : "/tmp";
        mPath = std::string(base) + "/writer-fuzz-XXXXXX";
        if (!mkdtemp(mPath.data())) std::abort();
    }
    ~ScratchFolder() {
        std::error_code ignored;
        std::filesystem::remove_all(mPath, ignored);
    }
    std::string File(const char* name) const { return mPath + "/" + name; }

private:
    std::string mPath;
};

bool Export(FbxManager* manager, FbxScene* scene, const std::string& path, bool ascii) {
    FbxExporter* exporter = FbxExporter::Create(manager, "");
    exporter->SetFileExportVersion("FBX202000");
    const bool written =
        exporter->Initialize(path.c_str(), ascii ? 1 : 0) && exporter->Export(scene);
    exporter->Destroy();
    return written;
}

[[noreturn]] void Finding(const char* what, const std::string& detail) {
    std::fprintf(stderr, "%s: %s\n", what, detail.c_str());
    std::abort();
}

void CheckSameShape(const fbxfile::File& binary, const fbxfile::File& ascii, const char* section) {
    const fbxfile::Record* inBinary = binary.Find(section);
    const fbxfile::Record* inAscii = ascii.Find(section);
    if (!inBinary || !inAscii) Finding("section missing", section);
    if (inBinary->children.size() != inAscii->children.size())
        Finding("binary and ASCII differ in", section);
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size) {
    FbxManager* manager = FbxManager::Create();
    manager->SetIOSettings(FbxIOSettings::Create(manager, "IOSRoot"));
    manager->GetIOSettings()->SetBoolProp(EXP_FBX_DETERMINISTIC, true);
    Choices choices(data, size);
    FbxScene* scene = BuildScene(manager, choices);

    static const ScratchFolder scratch;
    const std::string binaryPath = scratch.File("scene.fbx");
    const std::string asciiPath = scratch.File("scene-ascii.fbx");
    const bool binaryWritten = Export(manager, scene, binaryPath, false);
    const bool asciiWritten = Export(manager, scene, asciiPath, true);
    manager->Destroy();
    if (binaryWritten != asciiWritten) Finding("one form written, not the other", binaryPath);
    if (!binaryWritten) return 0;

    fbxfile::File binary, ascii;
    std::string error;
    if (!fbxfile::ReadBinaryFile(binaryPath, binary, error)) Finding("binary file", error);
    if (!fbxfile::ReadAsciiFile(asciiPath, ascii, error)) Finding("ASCII file", error);
    CheckSameShape(binary, ascii, "Objects");
    CheckSameShape(binary, ascii, "Connections");
    return 0;
}
