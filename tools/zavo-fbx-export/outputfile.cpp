#include "outputfile.h"

#include <sys/stat.h>
#include <unistd.h>

#include <QDir>
#include <QFileInfo>
#include <cerrno>
#include <cstring>

FileSnapshot FileSnapshot::of(const QString& path) {
    struct stat info {};
    FileSnapshot snapshot;
    if (::stat(QFile::encodeName(path).constData(), &info) != 0) return snapshot;
    snapshot.exists = true;
    snapshot.regular = S_ISREG(info.st_mode);
    snapshot.device = info.st_dev;
    snapshot.inode = info.st_ino;
    snapshot.modified =
        static_cast<int64_t>(info.st_mtim.tv_sec) * 1000000000 + info.st_mtim.tv_nsec;
    snapshot.size = info.st_size;
    return snapshot;
}

bool FileSnapshot::sameFileAs(const FileSnapshot& other) const {
    return exists == other.exists && device == other.device && inode == other.inode &&
           modified == other.modified && size == other.size;
}

namespace {

// Where a chain of symbolic links ends, existing or not; `path` itself when it is no link.
QString linkTarget(const QString& path) {
    QString target = path;
    for (int hop = 0; hop < 40 && QFileInfo(target).isSymLink(); ++hop)
        target = QFileInfo(target).symLinkTarget();
    return target;
}

}  // namespace

QString outputPathProblem(const QString& path) {
    if (path == QLatin1String("-")) return QString();
    const FileSnapshot existing = FileSnapshot::of(path);
    const QFileInfo file(linkTarget(path));
    if (file.isDir()) return QStringLiteral("is a folder");
    if (existing.exists && !existing.regular) return QString();
    const QString folder = file.absolutePath();
    if (!QFileInfo(folder).isDir()) return QStringLiteral("no such folder ") + folder;
    if (::access(QFile::encodeName(folder).constData(), W_OK | X_OK) != 0)
        return QStringLiteral("cannot write to folder ") + folder + QStringLiteral(": ") +
               QString::fromLocal8Bit(std::strerror(errno));
    return QString();
}
