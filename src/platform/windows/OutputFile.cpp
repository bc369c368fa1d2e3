#include "platform/OpenFiles.h"

#include "platform/windows/Handle.h"

#include <algorithm>
#include <cstddef>
#include <fcntl.h>
#include <io.h>
#include <memory>
#include <new>
#include <windows.h>

namespace ZAV {
namespace Platform {

namespace {

/// With no other right than to append, the system finds the end and writes atomically; the C runtime would
/// seek first, and two processes could find the same end. With `CREATE` a link itself is opened, so that it
/// can be told from a file.
HANDLE openForAppending(const char* path, OutputFile::Mode mode) {
    const DWORD disposition = mode == OutputFile::TRUNCATE ? CREATE_ALWAYS : OPEN_ALWAYS;
    const DWORD noLink = mode == OutputFile::CREATE ? FILE_FLAG_OPEN_REPARSE_POINT : 0;
    return CreateFileA(path, FILE_APPEND_DATA, FILE_SHARE_READ | FILE_SHARE_WRITE, nullptr, disposition,
                       FILE_ATTRIBUTE_NORMAL | noLink, nullptr);
}

/// Refuses pipes, and with `CREATE` a link.
bool isAcceptable(HANDLE handle, OutputFile::Mode mode) {
    BY_HANDLE_FILE_INFORMATION file;
    const DWORD type = GetFileType(handle);
    const bool isLink = mode == OutputFile::CREATE && GetFileInformationByHandle(handle, &file) &&
                        (file.dwFileAttributes & FILE_ATTRIBUTE_REPARSE_POINT) != 0;
    return type == FILE_TYPE_CHAR || (type == FILE_TYPE_DISK && !isLink);
}

/// \return a descriptor that owns the handle, or -1
int toDescriptor(HANDLE handle) {
    const int descriptor = _open_osfhandle(reinterpret_cast<intptr_t>(handle), _O_BINARY | _O_NOINHERIT);
    if (descriptor < 0) {
        CloseHandle(handle);
    }
    return descriptor;
}

/// \return how many characters of a text the given number of bytes with the system's line ends hold
std::size_t countCharacters(std::string_view text, std::size_t bytes) {
    std::size_t characters = 0;
    while (characters < text.size() && bytes >= (text[characters] == '\n' ? 2U : 1U)) {
        bytes -= text[characters] == '\n' ? 2 : 1;
        ++characters;
    }
    return characters;
}

/// Converts line ends itself: the C runtime would do so in separate writes of a few kilobytes, and another
/// process could append in the middle of a line.
/// \return how many characters of the text were written
std::size_t writeInOnePiece(int descriptor, std::string_view text) {
    char buffer[4096];
    buffer[0] = '\0'; // silences a compiler warning about an empty text
    const std::size_t size =
        text.size() + static_cast<std::size_t>(std::count(text.begin(), text.end(), '\n'));
    const bool isLong = size > sizeof buffer;
    const std::unique_ptr<char[]> memory(isLong ? new (std::nothrow) char[size] : nullptr);
    char* const begin = isLong ? memory.get() : buffer;
    if (begin == nullptr) {
        return 0;
    }
    char* end = begin;
    for (const char character : text) {
        if (character == '\n') {
            *end++ = '\r';
        }
        *end++ = character;
    }
    const int written = _write(descriptor, begin, static_cast<unsigned>(size));
    return written <= 0 ? 0 : countCharacters(text, static_cast<std::size_t>(written));
}

Handle openExisting(const char* path, DWORD access) {
    return Handle(CreateFileA(path, access, FILE_SHARE_READ | FILE_SHARE_WRITE | FILE_SHARE_DELETE, nullptr,
                              OPEN_EXISTING, FILE_ATTRIBUTE_NORMAL, nullptr));
}

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
    HANDLE handle = openForAppending(path.c_str(), mode);
    if (handle != INVALID_HANDLE_VALUE && !isAcceptable(handle, mode)) {
        CloseHandle(handle);
        handle = INVALID_HANDLE_VALUE;
    }
    descriptor_ = handle == INVALID_HANDLE_VALUE ? NONE : toDescriptor(handle);
    failed_ = !isOpen();
}

std::size_t OutputFile::write(std::string_view text) noexcept {
    const std::size_t taken = writeInOnePiece(descriptor_, text);
    failed_ = taken != text.size() || failed_;
    return taken;
}

std::size_t OutputFile::writeBytes(std::string_view bytes) noexcept {
    std::size_t taken = 0;
    while (taken < bytes.size()) {
        constexpr std::size_t MAX_AT_ONCE = std::size_t{1024} * 1024;
        const int count = _write(descriptor_, bytes.data() + taken,
                                 static_cast<unsigned>(std::min(bytes.size() - taken, MAX_AT_ONCE)));
        if (count <= 0) {
            failed_ = true;
            break;
        }
        taken += static_cast<std::size_t>(count);
    }
    return taken;
}

void OutputFile::close() noexcept {
    if (isOpen()) {
        failed_ = _close(descriptor_) != 0 || failed_;
        descriptor_ = NONE;
    }
}

bool OutputFile::isAt(const std::string& path) const noexcept {
    const Handle named = openExisting(path.c_str(), 0);
    return named.isOpen() && isSameFile(named.get(), descriptor_);
}

std::uint64_t OutputFile::size() const noexcept {
    const long long length = _filelengthi64(descriptor_);
    return length < 0 ? 0 : static_cast<std::uint64_t>(length);
}

/// File times count tenths of a microsecond since 1601.
std::uint64_t OutputFile::lastWritten() const noexcept {
    constexpr std::uint64_t FROM_1601_TO_1970 = 11'644'473'600'000'000;
    FILETIME written;
    if (!GetFileTime(reinterpret_cast<HANDLE>(_get_osfhandle(descriptor_)), nullptr, nullptr, &written)) {
        return 0;
    }
    const std::uint64_t tenths = std::uint64_t{written.dwHighDateTime} << 32 | written.dwLowDateTime;
    return tenths / 10 < FROM_1601_TO_1970 ? 0 : tenths / 10 - FROM_1601_TO_1970;
}

bool OutputFile::endsInPartialLine(const std::string& path, const FileRules&) const noexcept {
    const Handle file = openExisting(path.c_str(), GENERIC_READ);
    if (!file.isOpen() || !isSameFile(file.get(), descriptor_)) {
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
