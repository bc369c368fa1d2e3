#include "platform/OutputFile.h"

#include <fcntl.h>
#include <io.h>
#include <windows.h>

namespace ZAV {
namespace Platform {

namespace {

/// With the right to append and no other, the system finds the end of the file and writes in one step. The C
/// runtime would look for the end first, so that two processes could write to the same place.
HANDLE openHandle(const char* path, OutputFile::Mode mode) {
    const bool truncate = mode == OutputFile::TRUNCATE;
    const DWORD access = truncate ? GENERIC_WRITE : FILE_APPEND_DATA;
    const DWORD disposition = truncate ? CREATE_ALWAYS : OPEN_ALWAYS;
    return CreateFileA(path, access, FILE_SHARE_READ | FILE_SHARE_WRITE, nullptr, disposition,
                       FILE_ATTRIBUTE_NORMAL, nullptr);
}

/// \return a descriptor that owns the handle, or -1
int toTextDescriptor(HANDLE handle) {
    const int descriptor = _open_osfhandle(reinterpret_cast<intptr_t>(handle), _O_TEXT);
    if (descriptor < 0) {
        CloseHandle(handle);
    }
    return descriptor;
}

} // namespace

void OutputFile::open(const std::string& path, Mode mode) noexcept {
    const HANDLE handle = openHandle(path.c_str(), mode);
    descriptor_ = handle == INVALID_HANDLE_VALUE ? NONE : toTextDescriptor(handle);
    failed_ = !isOpen();
}

void OutputFile::write(const std::string& text) noexcept {
    const int written = _write(descriptor_, text.data(), static_cast<unsigned>(text.size()));
    failed_ = written < 0 || static_cast<std::size_t>(written) != text.size() || failed_;
}

void OutputFile::close() noexcept {
    if (isOpen()) {
        failed_ = _close(descriptor_) != 0 || failed_;
        descriptor_ = NONE;
    }
}

} // namespace Platform
} // namespace ZAV
