#include "runsummary.h"

QString formatFileSize(int64_t bytes) {
    if (bytes < 1024) return QStringLiteral("%1 B").arg(bytes);
    if (bytes < 1024 * 1024) return QStringLiteral("%1 KB").arg(bytes / 1024.0, 0, 'f', 1);
    return QStringLiteral("%1 MB").arg(bytes / (1024.0 * 1024.0), 0, 'f', 1);
}

QString formatRunSummary(const QString& output, int frames, const FbxContentCount& count,
                         int64_t bytes, double seconds) {
    const QString size = formatFileSize(bytes);
    const QString time = QString::number(seconds, 'f', 2);
    if (!count.readable)
        return QStringLiteral("%1: %2 frames, written, %3, %4 s")
            .arg(output)
            .arg(frames)
            .arg(size, time);
    return QStringLiteral("%1: %2 frames, %3 nodes, %4 curves, %5 keys, %6, %7 s")
        .arg(output)
        .arg(frames)
        .arg(count.nodes)
        .arg(count.curves)
        .arg(count.keys)
        .arg(size, time);
}
