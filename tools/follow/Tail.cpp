#include "follow/Tail.h"

#include "platform/Terminal.h"
#include "records/RecordReader.h"
#include "records/RecordStream.h"

#include <algorithm>
#include <cstddef>
#include <cstdint>
#include <string>
#include <utility>

namespace ZAV {
namespace Tools {

namespace {

constexpr std::uint64_t FIRST_WINDOW = 256 * 1024;
constexpr std::uint64_t WINDOW_GROWTH = 8;

/// What follows a place in a file.
struct Window {
    std::uint64_t begin; ///< of its first whole record
    std::size_t wanted;  ///< how many records
};

Window lookBehind(const LogFile& file, std::uint64_t offset, const RecordFilter& filter) {
    LogFile same;
    same.path = file.path;
    same.file = file.file.duplicate();
    same.layout = file.layout;
    same.offset = offset;
    RecordStream stream;
    stream.append(std::move(same));
    Window window = {offset, 0};
    bool isInFirstRecord = offset > 0;
    while (stream.next(RecordStream::Ending::FINAL)) {
        isInFirstRecord = isInFirstRecord && !stream.record().hasTime;
        if (isInFirstRecord) {
            window.begin = stream.record().end;
        } else if (!stream.record().isContinuation && filter.accepts(stream)) {
            ++window.wanted;
        }
    }
    return window;
}

/// A window begins at the start of a line, since a time within a line may be text that its writer chose.
/// \return the start of the first line at or after an offset; the size of the file if there is none
std::uint64_t lineFrom(const LogContent& file, std::uint64_t offset, std::uint64_t size) {
    std::vector<char> block(RecordReader::BLOCK);
    std::string ignored;
    for (std::uint64_t place = offset - 1; place < size && !Platform::isStopRequested();) {
        const std::int64_t count = file.readAt(place, block.data(), block.size(), ignored);
        if (count <= 0) {
            break;
        }
        const auto end = block.begin() + static_cast<std::ptrdiff_t>(count);
        const auto lineFeed = std::find(block.begin(), end, '\n');
        if (lineFeed != end) {
            return std::min(size, place + static_cast<std::uint64_t>(lineFeed - block.begin()) + 1);
        }
        place += static_cast<std::uint64_t>(count);
    }
    return size;
}

Window findTail(const LogFile& file, const RecordFilter& filter, std::size_t count) {
    if (file.file.isPacked()) {
        return lookBehind(file, 0, filter);
    }
    const std::uint64_t size = file.file.size();
    for (std::uint64_t length = FIRST_WINDOW;; length *= WINDOW_GROWTH) {
        const std::uint64_t offset = size - std::min(size, length);
        const std::uint64_t begin = offset == 0 ? 0 : lineFrom(file.file, offset, size);
        const Window window = lookBehind(file, begin, filter);
        if (window.wanted >= count || offset == 0) {
            return window;
        }
    }
}

} // namespace

void cutToTail(std::vector<LogFile>& files, const RecordFilter& filter, std::size_t count) {
    for (std::size_t left = files.size(); left > 0; --left) {
        LogFile& file = files[left - 1];
        std::string ignored; // reported when the file is to be read
        const Window window = openRolled(file, ignored) ? findTail(file, filter, count) : Window{0, 0};
        closeRolled(file);
        if (window.wanted >= count) {
            file.offset = window.begin;
            files.erase(files.begin(), files.begin() + static_cast<std::ptrdiff_t>(left - 1));
            return;
        }
        count -= window.wanted;
    }
}

} // namespace Tools
} // namespace ZAV
