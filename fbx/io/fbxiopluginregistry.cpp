#include "fbx/io/fbxiopluginregistry.h"

#include <cstring>

#include "fbx/scene/fbxmanager.h"

namespace {

struct WriterFormat {
    const char* description;
    bool isFbx;
    bool available;
};

constexpr WriterFormat kWriters[] = {
    {"FBX binary (*.fbx)", true, true},
    {"FBX ascii (*.fbx)", true, true},
    {"FBX 6.0 binary (*.fbx)", true, false},
    {"FBX 6.0 ascii (*.fbx)", true, false},
};
constexpr int kWriterCount = static_cast<int>(std::size(kWriters));

const WriterFormat* Writer(int formatId) {
    return formatId >= 0 && formatId < kWriterCount ? &kWriters[formatId] : nullptr;
}

}  // namespace

FbxIOPluginRegistry* FbxManager::GetIOPluginRegistry() const {
    static FbxIOPluginRegistry registry;
    return &registry;
}

int FbxIOPluginRegistry::GetWriterFormatCount() const {
    return kWriterCount;
}

const char* FbxIOPluginRegistry::GetWriterFormatDescription(int formatId) const {
    const WriterFormat* writer = Writer(formatId);
    return writer ? writer->description : nullptr;
}

bool FbxIOPluginRegistry::WriterIsFBX(int formatId) const {
    const WriterFormat* writer = Writer(formatId);
    return writer && writer->isFbx;
}

bool FbxIOPluginRegistry::WriterIsAvailable(int formatId) const {
    const WriterFormat* writer = Writer(formatId);
    return writer && writer->available;
}

int FbxIOPluginRegistry::FindWriterByDescription(const char* word) const {
    if (!word || !*word) return GetNativeWriterFormat();
    for (int id = 0; id < kWriterCount; ++id) {
        if (WriterIsFBX(id) && std::strstr(kWriters[id].description, word)) return id;
    }
    return GetNativeWriterFormat();
}
