#pragma once

#include <sys/types.h>

#include <string>

// Where the bytes for an output name go, decided before anything is created.
//
// A regular file, or a name that does not exist yet, is replaced as a whole: the new content
// is written into an unnamed file in the same folder and put in place by a rename, so readers
// never see half a file and a stopped process leaves nothing behind. Pipes, devices and the
// names of open descriptors (/dev/stdout, /dev/fd/N) cannot be replaced; they are written
// directly. Symbolic links are followed, also when they dangle, and the link itself stays.
struct FbxOutputPlace {
    enum EKind { eReplace, eDirect, eStandardOutput };

    EKind kind = eReplace;
    std::string path;  // the file to replace or open; links followed
    bool exists = false;
    mode_t mode = 0;  // of the existing file, which the replacement keeps
    uid_t owner = 0;
    gid_t group = 0;
    int error = 0;  // errno when the name cannot be an output (a folder, a link loop)

    // "-" names the process's standard output.
    static FbxOutputPlace Find(const std::string& name);
};

// Opens a file for the replacement of `place` in its folder. Unnamed (O_TMPFILE) where the
// file system allows; elsewhere under a short hidden name returned in `temporary`. Returns
// the descriptor, or -1 with errno set.
int FbxOpenReplacement(const FbxOutputPlace& place, std::string& temporary);

// Puts the replacement written to `fd` (or named `temporary`) in place of `target` in one
// step. Returns 0 or the errno of the refusal; the target is untouched then and no name is
// left beside it.
int FbxPublishReplacement(int fd, const std::string& temporary, const std::string& target);
