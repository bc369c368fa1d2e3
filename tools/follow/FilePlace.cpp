#include "follow/FilePlace.h"

#include <algorithm>
#include <array>
#include <cstddef>
#include <string>

namespace ZAV {
namespace Tools {

namespace {

/// The bytes sampled at the beginning of a file and before a place in it; enough for the times of two
/// records.
constexpr std::size_t SAMPLE = 256;

/// An FNV-1a hash.
class Hash {
public:
    void add(const char* bytes, std::size_t count) {
        for (std::size_t index = 0; index < count; ++index) {
            value_ = (value_ ^ static_cast<unsigned char>(bytes[index])) * 0x100000001b3;
        }
    }
    std::uint64_t value() const { return value_; }

private:
    std::uint64_t value_ = 0xcbf29ce484222325;
};

void addSample(Hash& hash, const LogContent& file, std::uint64_t offset, std::size_t size) {
    std::array<char, SAMPLE> sample;
    std::string ignored;
    const std::int64_t count = file.readAt(offset, sample.data(), size, ignored);
    hash.add(sample.data(), static_cast<std::size_t>(std::max<std::int64_t>(count, 0)));
}

std::uint64_t markBefore(const LogContent& file, std::uint64_t offset) {
    const std::size_t size = static_cast<std::size_t>(std::min<std::uint64_t>(offset, SAMPLE));
    Hash hash;
    addSample(hash, file, 0, size);
    addSample(hash, file, offset - size, size);
    return hash.value();
}

} // namespace

FilePlace FilePlace::in(const LogContent& file, std::uint64_t offset) {
    return FilePlace(file.identity(), offset, markBefore(file, offset));
}

bool FilePlace::isIn(const LogContent& file) const {
    return (file.isPacked() || file.size() >= offset_) && markBefore(file, offset_) == mark_;
}

} // namespace Tools
} // namespace ZAV
