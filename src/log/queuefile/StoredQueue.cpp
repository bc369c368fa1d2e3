#include "log/queuefile/StoredQueue.h"

#include "log/async/PackedMessage.h"
#include "log/queuefile/QueueFileChecks.h"

#include <algorithm>
#include <cstring>
#include <exception>
#include <optional>
#include <tuple>
#include <utility>

namespace ZAV {
namespace Log {

using namespace QueueFileFormat;

namespace {

/// After damage, only records up to this size are searched for; larger ones begin a block of their own.
constexpr std::size_t LARGEST_SEARCHED = std::size_t{64} * 1024;

/// Limits the bytes checked in vain to this multiple of the file size, so that a file crafted to look full of
/// records is read in bounded time.
constexpr std::size_t MAX_SEARCHES = 64;

template <typename Value>
Value valueAt(std::string_view bytes, std::size_t place) {
    Value value;
    std::memcpy(&value, bytes.data() + place, sizeof value);
    return value;
}

std::uint64_t wordAt(std::string_view bytes, std::size_t place) {
    return valueAt<std::uint64_t>(bytes, place);
}

/// \param isUpper whether to use the greater of the two numbers if they differ
std::uint64_t numberOf(const Mark& mark, bool isUpper) {
    const std::uint64_t other = ~mark.inverse;
    return isUpper ? std::max(mark.number, other) : std::min(mark.number, other);
}

} // namespace

bool StoredQueue::isOne(std::string_view bytes) noexcept {
    return bytes.substr(0, BEGINNING) == std::string_view(MAGIC, BEGINNING);
}

std::optional<LogMessage> StoredQueue::Message::make() const noexcept {
    try {
        return fields.makeMessage();
    } catch (const std::exception&) {
        return std::nullopt;
    }
}

StoredQueue::StoredQueue(std::string bytes) : content_(std::move(bytes)), bytes_(content_) {
    if (checkHead()) {
        readBlocks();
        readMessages();
    }
}

/// \return whether the rest can be parsed
bool StoredQueue::checkHead() {
    if (!isOne(bytes_) || bytes_.size() < sizeof(Head)) {
        problem_ = "It is not a queue file";
        return false;
    }
    const auto head = valueAt<Head>(bytes_, 0);
    const bool isWhole = head.check == checkOf(head);
    if (head.byteOrder == SWAPPED_BYTE_ORDER_MARK || (isWhole && head.sizeOfAddress != sizeof(void*))) {
        problem_ = "It was written on another kind of machine";
        return false;
    }
    if (!isWhole) {
        damage();
    } else if (head.version != VERSION || head.sizeOfSlot != SLOT) {
        problem_ = "It was written by another version";
        return false;
    } else if (head.sizeOfFile != bytes_.size() || bytes_.size() % SLOT != 0) {
        problem_ = "It has another size than it was made with";
    }
    return true;
}

/// The first word of a slot outside of blocks should be 0; an invalid word is taken for a damaged block
/// header, and its copy is used.
void StoredQueue::readBlocks() {
    const std::size_t slots = (bytes_.size() + SLOT - 1) / SLOT;
    for (std::size_t slot = 1; slot < slots && slot * SLOT + BODY <= bytes_.size();) {
        auto head = valueAt<BlockHead>(bytes_, slot * SLOT);
        if (head.word != 0 && !isBlock(head.word)) {
            damage();
            head.word = head.copy;
        }
        const std::size_t length = isBlock(head.word) ? std::min(slotsIn(head.word), slots - slot) : 1;
        if (isBlock(head.word)) {
            readBlock({kindIn(head.word), slot, length, 0}, head.word);
        }
        slot += length;
    }
}

void StoredQueue::readBlock(const Block& block, std::uint64_t word) {
    const std::size_t begin = block.slot * SLOT + BODY;
    const std::size_t end = std::min((block.slot + block.slots) * SLOT, bytes_.size());
    blocks_.push_back(block);
    if (block.kind == MARKS) {
        readMarks(begin, end);
    } else if (block.kind != FREED) {
        readRecords(begin, end, word);
    }
}

/// After the last record follows what the memory held before, which is not a record of this block. If a valid
/// record is found there, something in between is damaged.
void StoredQueue::readRecords(std::size_t begin, std::size_t end, std::uint64_t block) {
    bool isBehindGap = false;
    for (std::size_t place = begin; place + sizeof(Frame) <= end;) {
        if (readRecord(place, end, block, isBehindGap)) {
            place += recordSize(sizeIn(wordAt(bytes_, place)));
            continue;
        }
        if (!isBehindGap && wordAt(bytes_, place) != 0) {
            damage();
        }
        isBehindGap = true;
        place += alignof(Frame);
    }
}

bool StoredQueue::readRecord(std::size_t place, std::size_t end, std::uint64_t block, bool isBehindGap) {
    const auto frame = valueAt<Frame>(bytes_, place);
    const std::size_t size = sizeIn(frame.word);
    const bool isPlausible = frame.word != 0 && size <= end - place - sizeof(Frame) &&
                             (!isBehindGap || size <= LARGEST_SEARCHED) &&
                             scanned_ / MAX_SEARCHES <= bytes_.size();
    const std::string_view payload =
        isPlausible ? bytes_.substr(place + sizeof(Frame), size) : std::string_view();
    if (!isPlausible || frame.check != checkOf(block, frame.word, payload)) {
        scanned_ += payload.size();
        return false;
    }
    if (isBehindGap) {
        damage();
    }
    const Record record{runIn(frame.word), payload};
    blocks_.back().run = record.run;
    if (isNote(frame.word)) {
        readNote(record);
    } else {
        records_.push_back(record);
    }
    return true;
}

void StoredQueue::readMarks(std::size_t begin, std::size_t end) {
    for (std::size_t place = begin; place + sizeof(Mark) <= end; place += sizeof(Mark)) {
        const auto mark = valueAt<Mark>(bytes_, place);
        if (mark.word == 0) {
            return;
        }
        if (mark.check != checkOf(mark)) {
            damage();
            continue;
        }
        Run& run = runOf(runIn(mark.word));
        std::uint64_t& known = sizeIn(mark.word) == APPENDER_MARK ? run.appenders[mark.key]
                               : mark.key == DONE                 ? run.done
                               : mark.key == BATCH_END            ? run.batchEnd
                                                                  : run.taken;
        known = std::max(known, numberOf(mark, mark.key == BATCH_END)); // another process may have one too
    }
}

StoredQueue::Run& StoredQueue::runOf(std::uint32_t id) {
    Run& run = runs_[id];
    run.id = id;
    return run;
}

/// Each note is stored twice, so that damage to one copy loses nothing.
void StoredQueue::readNote(const Record& record) {
    const std::string_view payload = record.payload;
    const auto kind = payload.size() < sizeof(std::uint32_t) ? 0 : valueAt<std::uint32_t>(payload, 0);
    if (kind == RUN && payload.size() >= sizeof(RunNote)) {
        const auto note = valueAt<RunNote>(payload, 0);
        const std::string_view texts = payload.substr(sizeof note);
        Run& run = runOf(record.run);
        run.begin = note.begin;
        run.processId = note.processId;
        run.program = texts.substr(0, note.programLength);
        run.host = texts.substr(run.program.size());
    } else if (kind == LOGGER && payload.size() >= sizeof(LoggerNote)) {
        const auto note = valueAt<LoggerNote>(payload, 0);
        loggers_[{record.run, note.address}] = payload.substr(sizeof note);
    } else if (kind == PLACE && payload.size() >= sizeof(PlaceNote)) {
        const auto note = valueAt<PlaceNote>(payload, 0);
        const std::string_view texts = payload.substr(sizeof note);
        const std::string_view file = texts.substr(0, note.fileLength);
        const Place place{file, texts.substr(file.size()), note.line,
                          static_cast<Level::LogLevel>(note.level)};
        places_.emplace(Key(record.run, note.address), KnownPlace(place));
    } else {
        damage();
    }
}

void StoredQueue::readMessages() {
    for (const Record& record : records_) {
        readMessage(record);
    }
    const auto orderOf = [](const Message& message) {
        return std::make_tuple(message.run->begin, message.run, message.number);
    };
    std::sort(messages_.begin(), messages_.end(),
              [orderOf](const Message& a, const Message& b) { return orderOf(a) < orderOf(b); });
    messages_.erase(
        std::unique(messages_.begin(), messages_.end(),
                    [orderOf](const Message& a, const Message& b) { return orderOf(a) == orderOf(b); }),
        messages_.end());
}

void StoredQueue::readMessage(const Record& record) {
    Run& run = runOf(record.run);
    const std::optional<StoredMessage> stored = StoredMessage::read(record.payload);
    if (!stored) {
        damage();
        return;
    }
    if (!run.isWaiting(stored->number())) {
        return;
    }
    const auto logger = loggers_.find({record.run, stored->loggerAddress()});
    const auto place = places_.find({record.run, stored->placeAddress()});
    if ((stored->loggerAddress() != 0 && logger == loggers_.end()) ||
        (stored->placeAddress() != 0 && place == places_.end())) {
        damage();
    }
    messages_.push_back({&run, stored->number(),
                         stored->fields(logger == loggers_.end() ? std::string_view() : logger->second,
                                        place == places_.end() ? nullptr : &place->second)});
}

} // namespace Log
} // namespace ZAV
