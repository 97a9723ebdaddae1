#pragma once

// The file writers known to this library, in a fixed order: a writer's format id is its
// position. The table is process-wide and never changes, so every manager shares it
// (FbxManager::GetIOPluginRegistry).
class FbxIOPluginRegistry {
public:
    int GetWriterFormatCount() const;
    // Null for an id outside [0, count).
    const char* GetWriterFormatDescription(int formatId) const;
    bool WriterIsFBX(int formatId) const;
    // The format written when nothing else is asked for: FBX binary.
    int GetNativeWriterFormat() const { return 0; }

    // The first FBX writer whose description contains `word` ("binary", "ascii"), or the
    // native format when none does.
    int FindWriterByDescription(const char* word) const;

    // True for the writers this library carries: FBX 7 binary (0) and ASCII (1). The FBX 6.0
    // entries keep their place in the table, but nothing writes them.
    bool WriterIsAvailable(int formatId) const;
    bool WriterIsAscii(int formatId) const { return formatId == 1; }
};
