#include "platform/StandardOutput.h"

#include <algorithm>
#include <fcntl.h>
#include <io.h>
#include <stdio.h>
#include <system_error>
#include <windows.h>

namespace ZAV {
namespace Platform {

namespace {

constexpr std::size_t LARGEST_WRITE = 1024 * 1024;

} // namespace

void prepareStandardOutput() {
    _setmode(_fileno(stdout), _O_BINARY);
}

WriteResult writeStandardOutput(std::string_view text, std::string& problem) {
    const HANDLE output = GetStdHandle(STD_OUTPUT_HANDLE);
    while (!text.empty()) {
        DWORD written = 0;
        const DWORD size = static_cast<DWORD>(std::min(text.size(), LARGEST_WRITE));
        if (!WriteFile(output, text.data(), size, &written, nullptr)) {
            const DWORD error = GetLastError();
            if (error == ERROR_BROKEN_PIPE || error == ERROR_NO_DATA) {
                return WriteResult::NO_READER;
            }
            problem = std::system_category().message(static_cast<int>(error));
            return WriteResult::FAILED;
        }
        text.remove_prefix(written);
    }
    return WriteResult::WRITTEN;
}

} // namespace Platform
} // namespace ZAV
