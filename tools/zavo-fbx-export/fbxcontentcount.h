#pragma once

#include <QString>
#include <cstdint>

// What an FBX file holds, counted from the file itself: model nodes, animation curves and
// their keys. The program only drives the plug-in, so it reads the result back instead of
// asking the plug-in.
struct FbxContentCount {
    bool readable = false;  // false: not an FBX 7 file this count understands
    int64_t nodes = 0;
    int64_t curves = 0;
    int64_t keys = 0;
    int64_t mostKeys = 0;  // keys of the longest curve: the frames exported
};

// Counts a binary or ASCII FBX 7 file.
FbxContentCount countFbxContent(const QString& path);
