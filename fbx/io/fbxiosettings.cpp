#include "fbx/io/fbxiosettings.h"

#include "fbx/io/fbxfileversion.h"
#include "fbx/scene/fbxmanager.h"

FBX_IMPLEMENT_CLASS(FbxIOSettings, "IOSettings", "IOSettings", false)

FbxIOSettings::FbxIOSettings(FbxManager& manager, const char* name) : FbxObject(manager, name) {
    AddFbxExportGroup();
}

// The FBX writer's options, in the order a settings dialog lists them, with the values a
// new tree starts from.
void FbxIOSettings::AddFbxExportGroup() {
    std::vector<FbxString> names, labels, descriptions;
    for (const FbxFileVersion& row : FbxFileVersions()) {
        names.emplace_back(row.name);
        labels.emplace_back(row.label);
        descriptions.emplace_back(row.description);
    }
    AddOption("Export|AdvOptGrp|Fbx", "FBX File Format", FbxString());
    AddOption(EXP_FBX_ASCII, "Type", FbxString("Binary"), {"Binary", "ASCII"});
    AddOption(EXP_FBX_DETERMINISTIC, "Deterministic FBX", false);
    AddOption(EXP_FBX_EXPORT_FILE_VERSION, "Version", FbxString(FBX_DEFAULT_FILE_VERSION), names);
    AddOption("Export|AdvOptGrp|Fbx|VersionsUIAlias", "Labels", FbxString(), labels);
    AddOption("Export|AdvOptGrp|Fbx|VersionsCompDescriptions", "Desc", FbxString(), descriptions);
    for (const char* path :
         {EXP_FBX_MODEL, EXP_FBX_TEXTURE, EXP_FBX_MATERIAL, EXP_FBX_SHAPE, EXP_FBX_GOBO,
          "Export|AdvOptGrp|Fbx|Audio", EXP_FBX_ANIMATION, EXP_FBX_CHARACTER}) {
        AddOption(path, "", true);
    }
    AddOption(EXP_FBX_GLOBAL_SETTINGS, "Global settings", true);
    AddOption("Export|AdvOptGrp|Fbx|Pivot", "", true);
    AddOption("Export|AdvOptGrp|Fbx|Template", "", false);
    AddOption(EXP_FBX_CONSTRAINT, "", true);
    AddOption(EXP_FBX_EMBEDDED, "Embedded", false);
    AddOption(EXP_FBX_COLLAPSE_EXTERNALS, "Collapse Externals", true);
    AddOption(EXP_FBX_COMPRESS_ARRAYS, "Compress Arrays", true);
    AddOption(EXP_FBX_COMPRESS_LEVEL, "Compress Level", 1);
    AddOption(EXP_FBX_COMPRESS_MINSIZE, "Compress MinSize", 1024);
    AddOption("Export|AdvOptGrp|Fbx|Embedded_Skipped_Properties", "Skipped Properties",
              FbxString());
    AddOption(EXP_CACHE_SIZE, "Cache Size", 8);
}

void FbxIOSettings::AddOption(const char* path, const char* label, Value value,
                              std::vector<FbxString> items) {
    Option& option = Ensure(path);
    option.label = label;
    option.value = std::move(value);
    option.items = std::move(items);
}

FbxIOSettings::Option& FbxIOSettings::Ensure(const char* path) {
    const FbxString key(path);
    const auto found = mIndex.find(key);
    if (found != mIndex.end()) return mOptions[found->second];
    mIndex.emplace(key, mOptions.size());
    mOptions.push_back(Option{key, FbxString(), Value(false), {}});
    return mOptions.back();
}

const FbxIOSettings::Option* FbxIOSettings::Find(const char* path) const {
    const auto found = mIndex.find(FbxString(path));
    return found == mIndex.end() ? nullptr : &mOptions[found->second];
}

void FbxIOSettings::SetBoolProp(const char* path, bool value) {
    Ensure(path).value = value;
}
void FbxIOSettings::SetIntProp(const char* path, int value) {
    Ensure(path).value = value;
}
void FbxIOSettings::SetStringProp(const char* path, const FbxString& value) {
    Ensure(path).value = value;
}

bool FbxIOSettings::GetBoolProp(const char* path, bool defaultValue) const {
    const Option* option = Find(path);
    if (!option) return defaultValue;
    if (const bool* flag = std::get_if<bool>(&option->value)) return *flag;
    if (const int* number = std::get_if<int>(&option->value)) return *number != 0;
    return defaultValue;
}

int FbxIOSettings::GetIntProp(const char* path, int defaultValue) const {
    const Option* option = Find(path);
    if (!option) return defaultValue;
    if (const int* number = std::get_if<int>(&option->value)) return *number;
    if (const bool* flag = std::get_if<bool>(&option->value)) return *flag ? 1 : 0;
    return defaultValue;
}

FbxString FbxIOSettings::GetStringProp(const char* path, const FbxString& defaultValue) const {
    const Option* option = Find(path);
    const FbxString* text = option ? std::get_if<FbxString>(&option->value) : nullptr;
    return text ? *text : defaultValue;
}

bool FbxIOSettings::HasProp(const char* path) const {
    return Find(path) != nullptr;
}

FbxString FbxIOSettings::GetPropLabel(const char* path) const {
    const Option* option = Find(path);
    return option ? option->label : FbxString();
}

std::vector<FbxString> FbxIOSettings::GetPropItems(const char* path) const {
    const Option* option = Find(path);
    return option ? option->items : std::vector<FbxString>();
}

std::vector<FbxString> FbxIOSettings::GetPropPaths() const {
    std::vector<FbxString> paths;
    for (const Option& option : mOptions) paths.push_back(option.path);
    return paths;
}
