#include "log/async/Ring.h"

#include "log/queuefile/QueueFileChecks.h"

#include <algorithm>
#include <iterator>
#include <limits>
#include <type_traits>

namespace ZAV {
namespace Log {

namespace {

/// Blocks grow: a thread that seldom logs costs little, and one that logs much seldom needs a new block.
constexpr std::size_t FIRST_CAPACITY = 1024;
constexpr std::size_t GROWTH = 8;

} // namespace

/// The first block has no capacity: only the first message determines whether it is kept in memory or in a
/// file.
Ring::Ring(BlockPool& pool, QueueFile::Room room)
    : pool_(pool), room_(room), nextCapacity_(FIRST_CAPACITY), lastBlock_(pool.take(0)) {
    oldest_ = lastBlock_.load(std::memory_order_relaxed);
    front_ = Cursor(oldest_);
}

Ring::~Ring() {
    for (MessageBlock* block = oldest_; block != nullptr;) {
        MessageBlock* const next = block->next.load(std::memory_order_relaxed);
        pool_.giveBack(block);
        block = next;
    }
}

// Called by the appending thread

std::optional<PackedMessage> Ring::reserve(const MessageFields& message, int answeredReports,
                                           std::uint64_t nextNumber, QueueFile* file) {
    return file == nullptr ? reserveInMemory(message, answeredReports, nextNumber)
                           : reserveStored(message, answeredReports, nextNumber, *file);
}

std::optional<PackedMessage> Ring::reserveInMemory(const MessageFields& message, int answeredReports,
                                                   std::uint64_t nextNumber) {
    std::optional<PackedMessage> packed(std::in_place, message, answeredReports, last_, nextNumber);
    const MessageBlock& last = *lastBlock_.load(std::memory_order_relaxed);
    if (last.file != nullptr || last.capacity - used_ < packed->mostBytes()) {
        // The first message of a block shares nothing with the one before, since blocks are freed one at a
        // time.
        packed.emplace(message, answeredReports, none_, nextNumber);
        addBlock(packed->mostBytes(), nullptr);
    }
    return packed;
}

namespace {

/// The notes of a block on a logger and a place.
struct Notes {
    explicit Notes(const MessageFields& message)
        : logger(loggerNote(message)), place(message.place == nullptr ? "" : placeNote(*message.place)) {}

    /// Each note is written twice, so that damage to one copy loses nothing.
    std::size_t size() const noexcept {
        return 2 * (QueueFileFormat::recordSize(logger.size()) + QueueFileFormat::recordSize(place.size()));
    }

    const std::string logger;
    const std::string place; ///< may be empty
};

/// \return the table's entry for an address
template <typename Table>
const void*& placeIn(Table& table, const void* address) {
    constexpr unsigned UNUSED_BITS = 64 - 5;
    static_assert(std::extent_v<Table> == 1U << (64 - UNUSED_BITS));
    return table[reinterpret_cast<std::uintptr_t>(address) * 0x9E3779B97F4A7C15U >> UNUSED_BITS];
}

} // namespace

std::size_t Ring::storedSize(const MessageFields& message) {
    constexpr auto LARGEST_NUMBER = std::numeric_limits<std::uint64_t>::max();
    return Notes(message).size() +
           QueueFileFormat::recordSize(PackedMessage(message, 0, SharedFields(), LARGEST_NUMBER).mostBytes());
}

/// In a file each message can be read on its own, with its block's notes on the logger and the place.
std::optional<PackedMessage> Ring::reserveStored(const MessageFields& message, int answeredReports,
                                                 std::uint64_t nextNumber, QueueFile& file) {
    const PackedMessage packed(message, answeredReports, none_, nextNumber);
    const std::size_t size = QueueFileFormat::recordSize(packed.mostBytes());
    if (packed.mostBytes() >= QueueFileFormat::NOTE_BIT || !file.describeRun()) {
        return std::nullopt;
    }
    if (!hasRoom(size, file) || !isLoggerNoted(message) || !isPlaceNoted(message)) {
        const Notes notes(message); // allocates, which may run application code that logs
        if (!hasRoom(notes.size() + size, file) && !addBlock(notes.size() + size, &file)) {
            return std::nullopt;
        }
        if (!isLoggerNoted(message)) {
            note(notes.logger);
            placeIn(notedLoggers_, message.loggerName.data()) = message.loggerName.data();
        }
        if (!isPlaceNoted(message)) {
            note(notes.place);
            placeIn(notedPlaces_, message.place) = message.place;
        }
    }
    return packed;
}

/// \return whether the last block is in the file and has room for so many bytes
bool Ring::hasRoom(std::size_t bytes, const QueueFile& file) const noexcept {
    const MessageBlock& last = *lastBlock_.load(std::memory_order_relaxed);
    return last.file == &file && last.capacity - used_ >= bytes;
}

// Whether the last block is known to have the note for the message's logger or place:

bool Ring::isLoggerNoted(const MessageFields& message) noexcept {
    return placeIn(notedLoggers_, message.loggerName.data()) == message.loggerName.data();
}

bool Ring::isPlaceNoted(const MessageFields& message) noexcept {
    return message.place == nullptr || placeIn(notedPlaces_, message.place) == message.place;
}

/// \param payload if empty, nothing is written
void Ring::note(const std::string& payload) noexcept {
    const MessageBlock& block = *lastBlock_.load(std::memory_order_relaxed);
    for (int copy = 0; copy < 2 && !payload.empty(); ++copy) {
        char* const record = block.bytes + used_;
        used_ += QueueFileFormat::recordSize(payload.size());
        QueueFileFormat::writeNote(block.word, record, block.file->run(), payload,
                                   false); // a message follows
    }
}

/// The block is linked before the message gets its number: a reader that has seen the number sees the block.
/// \param file null for memory
/// \return false if the file is full
bool Ring::addBlock(std::size_t neededBytes, QueueFile* file) {
    const std::size_t wanted = std::max(neededBytes, nextCapacity_);
    MessageBlock* const block =
        file == nullptr ? pool_.take(wanted) : BlockPool::takeStored(*file, wanted, neededBytes, room_);
    if (block == nullptr) {
        return false;
    }
    nextCapacity_ = std::min(nextCapacity_ * GROWTH, BlockPool::USUAL_CAPACITY);
    link(block);
    return true;
}

void Ring::link(MessageBlock* block) noexcept {
    MessageBlock* const filled = lastBlock_.load(std::memory_order_relaxed);
    lastBlock_.store(block, std::memory_order_release);
    filled->next.store(block,
                       std::memory_order_release); // a reader that follows it sees the new `lastBlock_`
    used_ = 0;
    last_ = SharedFields();
    if (block->file != nullptr) {
        std::fill(std::begin(notedLoggers_), std::end(notedLoggers_), nullptr);
        std::fill(std::begin(notedPlaces_), std::end(notedPlaces_), nullptr);
    }
}

void Ring::append(const PackedMessage& message, std::uint64_t number) noexcept {
    MessageBlock& block = *lastBlock_.load(std::memory_order_relaxed);
    char* const place = block.bytes + used_;
    if (block.file == nullptr) {
        used_ += static_cast<std::size_t>(message.writeTo(place, number, last_) - place);
    } else {
        last_.number = 0; // as it was when the message was packed
        char* const payload = place + sizeof(QueueFileFormat::Frame);
        const auto size = static_cast<std::size_t>(message.writeTo(payload, number, last_) - payload);
        used_ += QueueFileFormat::recordSize(size);
        QueueFileFormat::writeFrame(block.word, place, QueueFileFormat::frameWord(block.file->run(), size),
                                    {payload, size}, block.capacity - used_ < sizeof(QueueFileFormat::Frame));
    }
    block.published.store(used_, std::memory_order_release);
}

// Called by readers

/// The last message of a block is published before the next block is linked, so `published` must be read
/// again once a link was seen.
bool Ring::Cursor::findNext(const MessageBlock* last) noexcept {
    while (!isAtMessage()) {
        MessageBlock* const next = block_ == last ? nullptr : block_->next.load(std::memory_order_acquire);
        if (next == nullptr) {
            return false;
        }
        if (!isAtMessage()) {
            *this = Cursor(next, passed_);
        }
    }
    return true;
}

/// Skips notes, each of which is followed by a message.
bool Ring::Cursor::isAtMessage() noexcept {
    const std::size_t published = block_->published.load(std::memory_order_acquire);
    while (block_->file != nullptr && offset_ != published) {
        const std::uint64_t word =
            reinterpret_cast<const QueueFileFormat::Frame*>(block_->bytes + offset_)->word;
        if (!QueueFileFormat::isNote(word)) {
            break;
        }
        offset_ += QueueFileFormat::recordSize(QueueFileFormat::sizeIn(word));
    }
    return offset_ != published;
}

std::size_t Ring::Cursor::frameSize() const noexcept {
    return block_->file == nullptr ? 0 : sizeof(QueueFileFormat::Frame);
}

std::uint64_t Ring::Cursor::nextNumber() const noexcept {
    return PackedMessage::readNumber(block_->bytes + offset_ + frameSize(), before_);
}

PackedMessage::Unpacked Ring::Cursor::next() noexcept {
    const PackedMessage::Unpacked message =
        PackedMessage::read(block_->bytes + offset_ + frameSize(), before_);
    if (block_->file == nullptr) {
        before_ = message.sharedFields();
        offset_ += message.size;
    } else {
        offset_ += QueueFileFormat::recordSize(message.size);
    }
    passed_ = message.number;
    return message;
}

bool Ring::findFront(std::uint64_t lowest) noexcept {
    do {
        while (front_.findNext(front_.block())) {
            if (front_.nextNumber() >= lowest) {
                return true;
            }
            front_.next();
        }
    } while (passBlock());
    return false;
}

/// Moves the front from the end of its block to the next one, if there is one, and frees the block just left,
/// unless it is kept.
/// \return whether there may be another message
bool Ring::passBlock() noexcept {
    MessageBlock* const passed = front_.block();
    MessageBlock* const next = passed->next.load(std::memory_order_acquire);
    if (next == nullptr || front_.findNext(passed)) {
        return next != nullptr;
    }
    front_ = Cursor(next, front_.passed());
    if (lastKept_ == nullptr) {
        freeToFront();
    } else if (isFrontBeyondKept_) {
        lastKept_->next.store(next, std::memory_order_relaxed);
        pool_.giveBack(passed);
    } else {
        isFrontBeyondKept_ = passed == lastKept_;
    }
    return true;
}

void Ring::freeToFront() noexcept {
    while (oldest_ != front_.block()) {
        MessageBlock* const passed = oldest_;
        oldest_ = passed->next.load(std::memory_order_relaxed);
        pool_.giveBack(passed);
    }
}

void Ring::releaseLastBlock() {
    link(pool_.take(0));
    passBlock();
}

void Ring::keep() noexcept {
    lastKept_ = lastBlock_.load(std::memory_order_acquire);
    isFrontBeyondKept_ = false;
}

void Ring::release(const Cursor& read) noexcept {
    lastKept_ = nullptr;
    if (front_.passed() < read.passed()) {
        front_ = read;
    }
    freeToFront();
}

} // namespace Log
} // namespace ZAV
