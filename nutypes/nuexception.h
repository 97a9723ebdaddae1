#pragma once

#include <exception>
#include <string>

// The maker's exception: a result code and a message text. It crosses library borders (a
// plug-in throws, the host catches), so its type identity is exported.
class __attribute__((visibility("default"))) NuException : public std::exception {
public:
    NuException(int code, std::string message);
    ~NuException() override;

    int code() const noexcept { return m_code; }
    const std::string& message() const noexcept { return m_message; }
    const char* what() const noexcept override;

private:
    int m_code;
    std::string m_message;
};
