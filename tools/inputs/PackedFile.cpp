#include "inputs/PackedFile.h"

#include <algorithm>
#include <cstdint>
#include <iterator>
#include <string_view>

namespace ZAV {
namespace Tools {

namespace {

using namespace std::literals;

/// The first bytes of files of bzip2, xz, Zstandard, LZ4 and ZIP.
constexpr std::string_view BEGINNINGS[] = {"BZh"sv,
                                           "\xfd"
                                           "7zXZ\0"sv,
                                           "\x28\xb5\x2f\xfd"sv, "\x04\x22\x4d\x18"sv, "PK\x03\x04"sv};

std::string beginningOf(const LogContent& file) {
    char bytes[8];
    std::string ignored;
    const std::int64_t count =
        file.isSeekable() && !file.isPacked() ? file.readAt(0, bytes, sizeof bytes, ignored) : 0;
    return std::string(bytes, static_cast<std::size_t>(std::max<std::int64_t>(count, 0)));
}

} // namespace

bool isPacked(const LogFile& file, std::string& problem) {
    const std::string beginning = beginningOf(file.file);
    const bool beginsSo =
        std::any_of(std::begin(BEGINNINGS), std::end(BEGINNINGS), [&beginning](std::string_view known) {
            return beginning.compare(0, known.size(), known) == 0;
        });
    if (!beginsSo) {
        return false;
    }
    problem = "Is a packed file; unpack it first, or read what its unpacker writes from standard input";
    return true;
}

} // namespace Tools
} // namespace ZAV
