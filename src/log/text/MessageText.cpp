#include "log/text/MessageText.h"

#include "log/text/SpareStreams.h"
#include "platform/Process.h"
#include "platform/Threads.h"

#include <algorithm>
#include <locale>
#include <string>
#include <utility>

namespace ZAV {
namespace Log {

namespace {

constexpr std::size_t FIRST_CAPACITY = 512;
/// The most that a thread keeps. For a longer text, the cost of allocating is small compared with that of the
/// text.
constexpr std::size_t MAX_KEPT_CAPACITY = 16384;

struct KeptText : Platform::ThreadSlot, Platform::NeverDestroyed<KeptText> {
    KeptText() : ThreadSlot([](void* text) { delete static_cast<MessageText*>(text); }) {}
};

/// With a global locale set, constructing a stream buffer takes a lock, which a forked child must not do (see
/// `SpareStreams`). Copying one does not.
struct EmptyBuffer : std::streambuf, Platform::NeverDestroyed<EmptyBuffer> {};

const KeptText& slotMadeAtLoad = KeptText::instance();
const EmptyBuffer& bufferMadeAtLoad = EmptyBuffer::instance();

} // namespace

MessageText::MessageText() : std::streambuf(EmptyBuffer::instance()) {}

MessageText& MessageText::take() {
    auto* const kept = static_cast<MessageText*>(KeptText::instance().get());
    if (kept != nullptr && !kept->isTaken_) {
        kept->isTaken_ = true;
        return *kept;
    }
    auto* const made = new MessageText;
    made->isKept_ = kept == nullptr && KeptText::instance().set(made);
    made->isTaken_ = true;
    return *made;
}

void MessageText::giveBack(MessageText& text) noexcept {
    if (text.isKept_ && text.capacity() <= MAX_KEPT_CAPACITY) {
        text.clear();
        text.isTaken_ = false;
        return;
    }
    if (text.isKept_) {
        KeptText::instance().set(nullptr);
    }
    delete &text;
}

void MessageText::clear() {
    if (ownStream_) {
        ownStream_.reset();
    } else if (stream_ != nullptr) {
        SpareStreams::instance().giveBack(*stream_);
    }
    stream_ = nullptr;
    state_ = State::FRESH;
    next_ = memory_.get();
    endBeforeSeek_ = nullptr;
}

bool MessageText::takesNumbers() {
    if (state_ == State::FRESH || state_ == State::FRESH_TO_KEEP) {
        // The application may have set a global locale with other separators.
        state_ = SpareStreams::instance().isLocaleClassic() ? State::PLAIN : State::STREAMED;
    }
    return state_ == State::PLAIN;
}

/// The text so far becomes the first value.
/// \return false if the locale does not allow values to be kept
bool MessageText::beginValues() {
    if (!takesNumbers()) {
        return false;
    }
    const std::size_t size = view().size();
    if (size > 0) {
        char head[Packing::MAX_BYTES_OF_NUMBER];
        const auto headSize =
            static_cast<std::size_t>(Packing::writeNumber(head, TaggedValue::Kind::TEXT, size) - head);
        char* const begin = room(headSize) - size;
        std::memmove(begin + headSize, begin, size);
        std::memcpy(begin, head, headSize);
        commit(begin + headSize + size);
    }
    state_ = State::VALUES;
    return true;
}

void MessageText::makeText() {
    if (state_ == State::FRESH_TO_KEEP) {
        state_ = State::FRESH;
    } else if (state_ == State::VALUES) {
        const std::string values(view());
        next_ = memory_.get();
        endBeforeSeek_ = nullptr;
        state_ = State::PLAIN;
        appendStreamedValues(*this, values);
    }
}

std::ostream& MessageText::stream() {
    makeText();
    if (stream_ == nullptr) {
        stream_ = SpareStreams::instance().take(*this);
    }
    if (stream_ == nullptr) {
        stream_ = &ownStream_.emplace(static_cast<std::streambuf*>(this));
    }
    state_ = State::STREAMED;
    return *stream_;
}

void MessageText::settle() {
    state_ = writesAsNew() ? State::PLAIN : State::STREAMED;
}

bool MessageText::writesAsNew() const {
    constexpr std::streamsize PRECISION = 6;
    return stream_->good() && stream_->flags() == (std::ios::skipws | std::ios::dec) &&
           stream_->precision() == PRECISION && stream_->width() == 0 && stream_->fill() == ' ' &&
           stream_->rdbuf() == this && stream_->getloc() == std::locale::classic();
}

std::size_t MessageText::capacity() const {
    return static_cast<std::size_t>(memoryEnd_ - memory_.get());
}

void MessageText::grow(std::size_t size) {
    const std::string_view text = view();
    const auto position = static_cast<std::size_t>(next_ - memory_.get());
    const std::size_t newCapacity = std::max({FIRST_CAPACITY, position + size, 2 * capacity()});
    std::unique_ptr<char[]> memory(new char[newCapacity]);
    text.copy(memory.get(), text.size());
    endBeforeSeek_ = memory.get() + text.size();
    next_ = memory.get() + position;
    memoryEnd_ = memory.get() + newCapacity;
    memory_ = std::move(memory);
}

// The stream buffer. It has no put area, since `append` would have to keep that in sync.

MessageText::int_type MessageText::overflow(int_type character) {
    if (!traits_type::eq_int_type(character, traits_type::eof())) {
        const char text = traits_type::to_char_type(character);
        append(std::string_view(&text, 1));
    }
    return traits_type::not_eof(character);
}

std::streamsize MessageText::xsputn(const char* text, std::streamsize size) {
    append(std::string_view(text, static_cast<std::size_t>(size)));
    return size;
}

MessageText::pos_type MessageText::seekoff(off_type offset, std::ios::seekdir from,
                                           std::ios::openmode which) {
    char* const end = memory_.get() + view().size();
    const char* base = memory_.get();
    if (from != std::ios::beg) {
        base = from == std::ios::cur ? next_ : end;
    }
    const off_type target = base - memory_.get() + offset;
    if ((which & std::ios::out) == 0 || target < 0 || target > end - memory_.get()) {
        return pos_type(off_type(-1));
    }
    endBeforeSeek_ = end;
    next_ = memory_.get() + target;
    return pos_type(target);
}

MessageText::pos_type MessageText::seekpos(pos_type position, std::ios::openmode which) {
    return seekoff(off_type(position), std::ios::beg, which);
}

} // namespace Log
} // namespace ZAV
