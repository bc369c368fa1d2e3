#pragma once

#include <stdexcept>
#include <string>
#include <windows.h>

namespace ZAV {
namespace Platform {

/// \return the system's text for the error of the last call
inline std::runtime_error systemFailure(DWORD error = GetLastError()) {
    char text[512];
    DWORD length = FormatMessageA(FORMAT_MESSAGE_FROM_SYSTEM | FORMAT_MESSAGE_IGNORE_INSERTS, nullptr, error,
                                  0, text, sizeof text, nullptr);
    const std::string endOfText = "\r\n. ";
    while (length > 0 && endOfText.find(text[length - 1]) != std::string::npos) {
        --length;
    }
    return std::runtime_error(length == 0 ? "Error " + std::to_string(error) : std::string(text, length));
}

} // namespace Platform
} // namespace ZAV
