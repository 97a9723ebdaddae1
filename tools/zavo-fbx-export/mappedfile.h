#pragma once

#include <string>
#include <string_view>

// The bytes of a regular file, mapped read-only rather than copied: an export of hundreds of
// megabytes is counted where the system keeps it.
class MappedFile {
public:
    // Maps `path`; empty when it is no regular file, is empty or cannot be mapped, for the
    // caller to read it another way.
    explicit MappedFile(const std::string& path);
    ~MappedFile();
    MappedFile(const MappedFile&) = delete;
    MappedFile& operator=(const MappedFile&) = delete;

    bool empty() const { return m_size == 0; }
    std::string_view text() const { return {static_cast<const char*>(m_data), m_size}; }

private:
    void* m_data = nullptr;
    size_t m_size = 0;
};
