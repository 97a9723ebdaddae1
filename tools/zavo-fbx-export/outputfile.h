#pragma once

#include <QString>
#include <cstdint>

// What a file was before and after an export run, to tell whether the run wrote it: the FBX
// writer replaces the target in one step, so a written file is a new file.
struct FileSnapshot {
    bool exists = false;
    bool regular = false;  // a regular file, not a FIFO, device or folder
    uint64_t device = 0;
    uint64_t inode = 0;
    int64_t modified = 0;  // nanoseconds since 1970
    int64_t size = 0;

    static FileSnapshot of(const QString& path);
    bool sameFileAs(const FileSnapshot& other) const;
};

// Why a file could not be created at `path` (its folder missing or not writable, or the path a
// folder), or empty when it could. A FIFO, a device and "-" (standard output) are written as
// they are, and a symbolic link through to its target, so those are judged by what they lead
// to. Creates nothing.
QString outputPathProblem(const QString& path);
