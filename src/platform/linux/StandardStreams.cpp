#include "platform/StandardStreams.h"

#include "platform/linux/FileDescriptor.h"

#include <cstdio>
#include <ext/stdio_filebuf.h>
#include <ext/stdio_sync_filebuf.h>
#include <ostream>

namespace ZAV {
namespace Platform {

namespace {

constexpr int UNKNOWN = -1;

/// A stream may lead to a file that the shell has opened. Asked once, since it would cost each line a call.
const bool wasLimitedAtLoad = isFileSizeLimited();

/// What a standard stream has in the place of a buffer: it uses that of C's stream.
using SharedBuffer = __gnu_cxx::stdio_sync_filebuf<char>;
/// What it has instead once the application has called `sync_with_stdio(false)`.
using OwnBuffer = __gnu_cxx::stdio_filebuf<char>;

/// Where a buffer writes to, as far as that is known.
struct Target {
    std::FILE* file = nullptr; ///< C's stream, if the buffer is its
    int descriptor = UNKNOWN;
};

Target targetOf(std::streambuf* buffer) {
    if (auto* const shared = dynamic_cast<SharedBuffer*>(buffer)) {
        return {shared->file(), fileno(shared->file())};
    }
    auto* const own = dynamic_cast<OwnBuffer*>(buffer);
    return {nullptr, own != nullptr && own->is_open() ? own->fd() : UNKNOWN};
}

/// A failure is not the application's, whose stream it would end.
bool writeByStream(std::ostream& stream, std::string_view text) {
    const std::ios_base::iostate before = stream.rdstate();
    stream.write(text.data(), static_cast<std::streamsize>(text.size())).flush();
    const bool isWritten = stream.good();
    if (stream.rdstate() != before) {
        stream.clear(before);
    }
    return isWritten;
}

/// Keeps other threads from C's stream.
class HeldFile {
public:
    explicit HeldFile(std::FILE* file) : file_(file) {
        if (file_ != nullptr) {
            flockfile(file_);
        }
    }
    ~HeldFile() {
        if (file_ != nullptr) {
            funlockfile(file_);
        }
    }
    HeldFile(const HeldFile&) = delete;
    HeldFile& operator=(const HeldFile&) = delete;

private:
    std::FILE* const file_;
};

/// Writes past the buffer; what the application has left in there goes first.
bool writePast(std::streambuf& buffer, const Target& target, std::string_view text) {
    const HeldFile held(target.file);
    buffer.pubsync();
    return writeAll(target.descriptor, text.data(), text.size()) == text.size();
}

} // namespace

bool writeToStream(std::ostream& stream, std::string_view text) {
    const Target target = targetOf(stream.rdbuf());
    const bool flushesAnother = stream.tie() != nullptr;
    const WriteSignalGuard guard(flushesAnother ? UNKNOWN : target.descriptor, wasLimitedAtLoad);
    if (target.descriptor == UNKNOWN) {
        return writeByStream(stream, text);
    }
    if (flushesAnother) { // before the lock
        stream.tie()->flush();
    }
    return writePast(*stream.rdbuf(), target, text);
}

} // namespace Platform
} // namespace ZAV
