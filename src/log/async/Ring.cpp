#include "log/async/Ring.h"

#include "log/queuefile/QueueFileChecks.h"

#include <algorithm>
#include <iterator>
#include <limits>
#include <type_traits>

namespace ZAV {
namespace Log {

namespace {

/// A thread that seldom logs shall cost little, and one that logs much seldom need another block.
constexpr std::size_t FIRST_CAPACITY = 2048;
constexpr std::size_t GROWTH = 8;

} // namespace

/// The first block is empty: the first message says where it is to be kept.
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

// The side of the thread that appends

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
        // The first message of a block has nothing in common with the one before, since blocks come and go
        // one by one.
        packed.emplace(message, answeredReports, none_, nextNumber);
        addBlock(packed->mostBytes(), nullptr);
    }
    return packed;
}

namespace {

/// What a block says of a logger and a place.
struct Notes {
    explicit Notes(const MessageFields& message)
        : logger(loggerNote(message)), place(message.place == nullptr ? "" : placeNote(*message.place)) {}

    /// Twice, so that damage to one of the two costs nothing.
    std::size_t size() const noexcept {
        return 2 * (QueueFileFormat::recordSize(logger.size()) + QueueFileFormat::recordSize(place.size()));
    }

    const std::string logger;
    const std::string place; ///< may be empty
};

/// \return where a table remembers an address
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

/// In a file each message can be read by itself, with what its block says of the logger and the place.
std::optional<PackedMessage> Ring::reserveStored(const MessageFields& message, int answeredReports,
                                                 std::uint64_t nextNumber, QueueFile& file) {
    const PackedMessage packed(message, answeredReports, none_, nextNumber);
    const std::size_t size = QueueFileFormat::recordSize(packed.mostBytes());
    if (packed.mostBytes() >= QueueFileFormat::NOTE_BIT || !file.describeRun()) {
        return std::nullopt;
    }
    if (!hasRoom(size, file) || !isLoggerNoted(message) || !isPlaceNoted(message)) {
        const Notes notes(message); // takes memory, by which a function of the application may run that logs
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

/// \return whether so many bytes go into the last block, and that lies in the file
bool Ring::hasRoom(std::size_t bytes, const QueueFile& file) const noexcept {
    const MessageBlock& last = *lastBlock_.load(std::memory_order_relaxed);
    return last.file == &file && last.capacity - used_ >= bytes;
}

// Whether the last block says what the message refers to, as far as that is remembered:

bool Ring::isLoggerNoted(const MessageFields& message) noexcept {
    return placeIn(notedLoggers_, message.loggerName.data()) == message.loggerName.data();
}

bool Ring::isPlaceNoted(const MessageFields& message) noexcept {
    return message.place == nullptr || placeIn(notedPlaces_, message.place) == message.place;
}

/// \param payload nothing is written if it is empty
void Ring::note(const std::string& payload) noexcept {
    const MessageBlock& block = *lastBlock_.load(std::memory_order_relaxed);
    for (int copy = 0; copy < 2 && !payload.empty(); ++copy) {
        char* const record = block.bytes + used_;
        used_ += QueueFileFormat::recordSize(payload.size());
        QueueFileFormat::writeNote(block.word, record, block.file->run(), payload,
                                   false); // a message follows
    }
}

/// The block is linked before the message has its number: who has seen the number sees the block.
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
                       std::memory_order_release); // whoever passes the old block finds it last no more
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
        last_.number = 0; // which is what the message was packed behind
        char* const payload = place + sizeof(QueueFileFormat::Frame);
        const auto size = static_cast<std::size_t>(message.writeTo(payload, number, last_) - payload);
        used_ += QueueFileFormat::recordSize(size);
        QueueFileFormat::writeFrame(block.word, place, QueueFileFormat::frameWord(block.file->run(), size),
                                    {payload, size}, block.capacity - used_ < sizeof(QueueFileFormat::Frame));
    }
    block.published.store(used_, std::memory_order_release);
}

// The readers' side

/// The last message of a block is published before the next block is linked: what is published has to be
/// looked at again once a link was seen.
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

/// Passes notes, each of which has a message behind it.
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

/// Has the front go on from the end of its block, if there is a next one, and frees the block that it has
/// left, unless that is kept.
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

void Ring::giveLastBlockBack() {
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
