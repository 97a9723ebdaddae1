#pragma once

#include <unordered_map>
#include <variant>
#include <vector>

#include "fbx/scene/fbxobject.h"

// Paths of the export options the FBX writer reads.
inline constexpr const char* EXP_FBX_ASCII = "Export|AdvOptGrp|Fbx|AsciiFbx";
inline constexpr const char* EXP_FBX_DETERMINISTIC = "Export|AdvOptGrp|Fbx|DeterministicFbx";
inline constexpr const char* EXP_FBX_EXPORT_FILE_VERSION = "Export|AdvOptGrp|Fbx|ExportFileVersion";
inline constexpr const char* EXP_FBX_MODEL = "Export|AdvOptGrp|Fbx|Model";
inline constexpr const char* EXP_FBX_MATERIAL = "Export|AdvOptGrp|Fbx|Material";
inline constexpr const char* EXP_FBX_TEXTURE = "Export|AdvOptGrp|Fbx|Texture";
inline constexpr const char* EXP_FBX_SHAPE = "Export|AdvOptGrp|Fbx|Shape";
inline constexpr const char* EXP_FBX_GOBO = "Export|AdvOptGrp|Fbx|Gobo";
inline constexpr const char* EXP_FBX_ANIMATION = "Export|AdvOptGrp|Fbx|Animation";
inline constexpr const char* EXP_FBX_CHARACTER = "Export|AdvOptGrp|Fbx|Character";
inline constexpr const char* EXP_FBX_GLOBAL_SETTINGS = "Export|AdvOptGrp|Fbx|Global_Settings";
inline constexpr const char* EXP_FBX_CONSTRAINT = "Export|AdvOptGrp|Fbx|Constraint";
inline constexpr const char* EXP_FBX_EMBEDDED = "Export|AdvOptGrp|Fbx|EMBEDDED";
inline constexpr const char* EXP_FBX_COLLAPSE_EXTERNALS = "Export|AdvOptGrp|Fbx|COLLAPSE EXTERNALS";
inline constexpr const char* EXP_FBX_COMPRESS_ARRAYS = "Export|AdvOptGrp|Fbx|Compress_Arrays";
inline constexpr const char* EXP_FBX_COMPRESS_LEVEL = "Export|AdvOptGrp|Fbx|Compress_Level";
inline constexpr const char* EXP_FBX_COMPRESS_MINSIZE = "Export|AdvOptGrp|Fbx|Compress_Minsize";
inline constexpr const char* EXP_CACHE_SIZE = "Export|AdvOptGrp|Cache|CacheSize";

// The tree of import/export options: typed values addressed by paths whose components are
// joined by "|". Created with the FBX writer's group ("Export|AdvOptGrp|Fbx", see the
// EXP_ constants) filled in; an option that is absent reads as the default the caller gives.
class FbxIOSettings : public FbxObject {
    FBX_DECLARE_CLASS(FbxIOSettings, FbxObject)
public:
    // An option's value: a flag, a number, or a text (enumerations hold their item's text).
    using Value = std::variant<bool, int, FbxString>;

    // Setters create the option when it is missing and replace its value otherwise.
    void SetBoolProp(const char* path, bool value);
    void SetIntProp(const char* path, int value);
    void SetStringProp(const char* path, const FbxString& value);
    // Flags and numbers convert into each other; a text reads as the default.
    bool GetBoolProp(const char* path, bool defaultValue) const;
    int GetIntProp(const char* path, int defaultValue) const;
    FbxString GetStringProp(const char* path, const FbxString& defaultValue) const;

    bool HasProp(const char* path) const;
    // The display label, empty when the option has none.
    FbxString GetPropLabel(const char* path) const;
    // The items of an enumeration or list option (empty for other options).
    std::vector<FbxString> GetPropItems(const char* path) const;
    // Every option path, in the order the options were created.
    std::vector<FbxString> GetPropPaths() const;

protected:
    FbxIOSettings(FbxManager& manager, const char* name);

private:
    struct Option {
        FbxString path;
        FbxString label;
        Value value;
        std::vector<FbxString> items;
    };

    Option& Ensure(const char* path);
    const Option* Find(const char* path) const;
    void AddOption(const char* path, const char* label, Value value,
                   std::vector<FbxString> items = {});
    void AddFbxExportGroup();

    std::vector<Option> mOptions;
    std::unordered_map<FbxString, size_t> mIndex;
};
