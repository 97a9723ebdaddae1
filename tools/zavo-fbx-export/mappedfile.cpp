#include "mappedfile.h"

#include <fcntl.h>
#include <sys/mman.h>
#include <sys/stat.h>
#include <unistd.h>

MappedFile::MappedFile(const std::string& path) {
    const int fd = ::open(path.c_str(), O_RDONLY | O_CLOEXEC);
    if (fd < 0) return;
    struct stat status {};
    if (::fstat(fd, &status) == 0 && S_ISREG(status.st_mode) && status.st_size > 0) {
        const auto size = static_cast<size_t>(status.st_size);
        void* data = ::mmap(nullptr, size, PROT_READ, MAP_PRIVATE, fd, 0);
        if (data != MAP_FAILED) {
            // The file is read once, front to back.
            ::madvise(data, size, MADV_SEQUENTIAL);
            m_data = data;
            m_size = size;
        }
    }
    ::close(fd);
}

MappedFile::~MappedFile() {
    if (m_data) ::munmap(m_data, m_size);
}
