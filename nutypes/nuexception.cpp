#include "nutypes/nuexception.h"

NuException::NuException(int code, std::string message)
    : m_code(code), m_message(std::move(message)) {}

NuException::~NuException() = default;

const char* NuException::what() const noexcept {
    return m_message.c_str();
}
