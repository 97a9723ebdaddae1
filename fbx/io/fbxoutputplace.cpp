#include "fbx/io/fbxoutputplace.h"

#include <fcntl.h>
#include <pthread.h>
#include <sys/stat.h>
#include <unistd.h>

#include <cctype>
#include <cerrno>
#include <climits>
#include <csignal>
#include <random>

namespace {

constexpr int kMaxLinkHops = 40;  // as the kernel allows before ELOOP

bool StartsWith(const std::string& text, const char* prefix) {
    return text.rfind(prefix, 0) == 0;
}

// Names of already open descriptors lead, through /proc, to "pipe:[N]" or to a file that a
// shell opened for us; they are reopened as they are, never followed by their link text.
bool NamesDescriptor(const std::string& path) {
    if (path == "/dev/stdout" || path == "/dev/stderr") return true;
    if (StartsWith(path, "/dev/fd/") || StartsWith(path, "/proc/self/fd/")) return true;
    if (!StartsWith(path, "/proc/")) return false;
    size_t at = 6;
    while (at < path.size() && std::isdigit(static_cast<unsigned char>(path[at]))) ++at;
    return at > 6 && path.compare(at, 4, "/fd/") == 0;
}

std::string FolderOf(const std::string& path) {
    const size_t slash = path.rfind('/');
    if (slash == std::string::npos) return ".";
    return slash == 0 ? "/" : path.substr(0, slash);
}

// A short hidden name in `folder`: output names may use the whole 255 bytes a name can have,
// so the temporary one is never derived from them.
std::string ShortNameIn(const std::string& folder) {
    static const char letters[] = "abcdefghijklmnopqrstuvwxyz0123456789";
    thread_local std::mt19937 random{std::random_device{}()};
    std::string name = (folder == "/" ? "" : folder) + "/.fbx-";
    for (int i = 0; i < 8; ++i) name += letters[random() % (sizeof letters - 1)];
    return name;
}

// Follows the chain of links from `path`; stops at a descriptor name or at a name that does
// not exist (a dangling link is written to where it points).
bool FollowLinks(std::string& path, int& error) {
    for (int hop = 0; hop <= kMaxLinkHops; ++hop) {
        if (NamesDescriptor(path)) return true;
        struct stat info {};
        if (lstat(path.c_str(), &info) != 0) {
            error = errno == ENOENT ? 0 : errno;
            return error == 0;
        }
        if (!S_ISLNK(info.st_mode)) return true;
        char link[PATH_MAX];
        const ssize_t length = readlink(path.c_str(), link, sizeof link - 1);
        if (length < 0) {
            error = errno;
            return false;
        }
        const std::string next(link, static_cast<size_t>(length));
        path = next.front() == '/' ? next : FolderOf(path) + "/" + next;
    }
    error = ELOOP;
    return false;
}

// Blocks the signals that stop a run for as long as it lives, so that a file is either not
// yet in place or in place with no temporary name left beside it.
class StopSignalsBlocked {
public:
    StopSignalsBlocked() {
        sigset_t stop;
        sigemptyset(&stop);
        for (const int signal : {SIGINT, SIGTERM, SIGHUP}) sigaddset(&stop, signal);
        pthread_sigmask(SIG_BLOCK, &stop, &mPrevious);
    }
    ~StopSignalsBlocked() { pthread_sigmask(SIG_SETMASK, &mPrevious, nullptr); }
    StopSignalsBlocked(const StopSignalsBlocked&) = delete;
    StopSignalsBlocked& operator=(const StopSignalsBlocked&) = delete;

private:
    sigset_t mPrevious;
};

// Gives the unnamed file `fd` the name `name`.
int LinkUnnamed(int fd, const std::string& name) {
    const std::string self = "/proc/self/fd/" + std::to_string(fd);
    if (linkat(AT_FDCWD, self.c_str(), AT_FDCWD, name.c_str(), AT_SYMLINK_FOLLOW) == 0) return 0;
    if (errno != ENOENT) return errno;
    // Without /proc the descriptor itself is linked (needs CAP_DAC_READ_SEARCH on old kernels).
    return linkat(fd, "", AT_FDCWD, name.c_str(), AT_EMPTY_PATH) == 0 ? 0 : errno;
}

}  // namespace

FbxOutputPlace FbxOutputPlace::Find(const std::string& name) {
    FbxOutputPlace place;
    if (name == "-") {
        place.kind = eStandardOutput;
        return place;
    }
    place.path = name;
    if (!FollowLinks(place.path, place.error)) return place;
    if (NamesDescriptor(place.path)) {
        place.kind = eDirect;
        return place;
    }
    struct stat info {};
    if (stat(place.path.c_str(), &info) != 0) {
        if (errno != ENOENT) place.error = errno;
        return place;
    }
    if (S_ISDIR(info.st_mode)) {
        place.error = EISDIR;
    } else if (!S_ISREG(info.st_mode)) {
        place.kind = eDirect;
    } else {
        place.exists = true;
        place.mode = info.st_mode & 07777;
        place.owner = info.st_uid;
        place.group = info.st_gid;
    }
    return place;
}

int FbxOpenReplacement(const FbxOutputPlace& place, std::string& temporary) {
    temporary.clear();
    const std::string folder = FolderOf(place.path);
    int fd = open(folder.c_str(), O_TMPFILE | O_WRONLY | O_CLOEXEC, 0666);
    // File systems without unnamed files refuse with one of these; any other error is real.
    if (fd < 0 && (errno == EOPNOTSUPP || errno == EISDIR || errno == EINVAL)) {
        do {
            temporary = ShortNameIn(folder);
            fd = open(temporary.c_str(), O_WRONLY | O_CREAT | O_EXCL | O_CLOEXEC, 0666);
        } while (fd < 0 && errno == EEXIST);
        if (fd < 0) temporary.clear();
    }
    if (fd < 0 || !place.exists) return fd;
    // The new file takes the old one's owner where allowed (a file one may not give away
    // stays one's own), then its permissions, which a change of owner may have cut.
    [[maybe_unused]] const int owned = fchown(fd, place.owner, place.group);
    fchmod(fd, place.mode);
    return fd;
}

int FbxPublishReplacement(int fd, const std::string& temporary, const std::string& target) {
    StopSignalsBlocked blocked;
    std::string linked = temporary;
    // An unnamed file cannot be linked over an existing name: it gets a short name first,
    // which the rename takes away again.
    while (linked.empty()) {
        const std::string name = ShortNameIn(FolderOf(target));
        const int error = LinkUnnamed(fd, name);
        if (error == 0) linked = name;
        if (error != 0 && error != EEXIST) return error;
    }
    if (rename(linked.c_str(), target.c_str()) == 0) return 0;
    const int error = errno;
    unlink(linked.c_str());
    return error;
}
