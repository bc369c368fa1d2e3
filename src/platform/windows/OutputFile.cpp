#include "platform/OutputFile.h"

#include <fcntl.h>
#include <io.h>
#include <windows.h>

namespace ZAV {
namespace Platform {

namespace {

constexpr DWORD SHARED_WITH_ALL = FILE_SHARE_READ | FILE_SHARE_WRITE | FILE_SHARE_DELETE;

/// A right to append, and no other, has the system find the end in the same step as it writes; the C runtime
/// would look for it first, and two processes could find the same.
HANDLE openForAppending(const char* path, OutputFile::Mode mode) {
    const DWORD disposition = mode == OutputFile::APPEND ? OPEN_ALWAYS : CREATE_ALWAYS;
    return CreateFileA(path, FILE_APPEND_DATA, FILE_SHARE_READ | FILE_SHARE_WRITE, nullptr, disposition,
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

/// A handle that closes with its scope.
class ScopedHandle {
public:
    ScopedHandle(const char* path, DWORD access)
        : handle_(CreateFileA(path, access, SHARED_WITH_ALL, nullptr, OPEN_EXISTING, FILE_ATTRIBUTE_NORMAL,
                              nullptr)) {}
    ~ScopedHandle() {
        if (handle_ != INVALID_HANDLE_VALUE) {
            CloseHandle(handle_);
        }
    }
    ScopedHandle(const ScopedHandle&) = delete;
    ScopedHandle& operator=(const ScopedHandle&) = delete;

    HANDLE get() const { return handle_; }

private:
    HANDLE handle_;
};

bool isSameFile(HANDLE one, int descriptor) {
    BY_HANDLE_FILE_INFORMATION first;
    BY_HANDLE_FILE_INFORMATION second;
    return GetFileInformationByHandle(one, &first) &&
           GetFileInformationByHandle(reinterpret_cast<HANDLE>(_get_osfhandle(descriptor)), &second) &&
           first.dwVolumeSerialNumber == second.dwVolumeSerialNumber &&
           first.nFileIndexHigh == second.nFileIndexHigh && first.nFileIndexLow == second.nFileIndexLow;
}

} // namespace

void OutputFile::open(const std::string& path, Mode mode, const FileRules&) noexcept {
    const HANDLE handle = openForAppending(path.c_str(), mode);
    descriptor_ = handle == INVALID_HANDLE_VALUE ? NONE : toTextDescriptor(handle);
    failed_ = !isOpen();
}

/// The runtime counts the line feeds that it was given, not the line ends that it made of them.
std::size_t OutputFile::write(std::string_view text) noexcept {
    const int written = _write(descriptor_, text.data(), static_cast<unsigned>(text.size()));
    const std::size_t taken = written < 0 ? 0 : static_cast<std::size_t>(written);
    failed_ = taken != text.size() || failed_;
    return taken;
}

void OutputFile::close() noexcept {
    if (isOpen()) {
        failed_ = _close(descriptor_) != 0 || failed_;
        descriptor_ = NONE;
    }
}

bool OutputFile::isAt(const std::string& path) const noexcept {
    const ScopedHandle named(path.c_str(), 0);
    return named.get() != INVALID_HANDLE_VALUE && isSameFile(named.get(), descriptor_);
}

std::uint64_t OutputFile::size() const noexcept {
    const long long length = _filelengthi64(descriptor_);
    return length < 0 ? 0 : static_cast<std::uint64_t>(length);
}

bool OutputFile::endsInTornLine(const std::string& path, const FileRules&) const noexcept {
    const ScopedHandle file(path.c_str(), GENERIC_READ);
    if (file.get() == INVALID_HANDLE_VALUE || !isSameFile(file.get(), descriptor_)) {
        return false;
    }
    char last = '\n';
    DWORD count = 0;
    LARGE_INTEGER lastCharacter;
    lastCharacter.QuadPart = -1;
    return SetFilePointerEx(file.get(), lastCharacter, nullptr, FILE_END) &&
           ReadFile(file.get(), &last, 1, &count, nullptr) && count == 1 && last != '\n';
}

} // namespace Platform
} // namespace ZAV
