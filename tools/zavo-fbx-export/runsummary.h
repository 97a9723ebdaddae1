#pragma once

#include <QString>
#include <cstdint>

#include "fbxcontentcount.h"

// The line printed after a written export: frames exported, then nodes, curves and keys as
// counted in the file, file size, seconds.
QString formatRunSummary(const QString& output, int frames, const FbxContentCount& count,
                         int64_t bytes, double seconds);
// A size for people: "812 B", "3.4 KB", "27.0 MB".
QString formatFileSize(int64_t bytes);
