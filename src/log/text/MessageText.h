#pragma once

#include "log/TaggedValue.h"
#include "log/text/PackedValues.h"

#include <cstddef>
#include <cstring>
#include <memory>
#include <optional>
#include <ostream>
#include <streambuf>
#include <string_view>

namespace ZAV {
namespace Log {

/// The text of a message while it is put together, in memory that its thread uses again and again.
///
/// Values with one default form bypass the stream, which is several times as fast. The stream is made when
/// something needs it and goes with the message, since whoever it is given to may leave anything in it.
class MessageText final : private std::streambuf {
public:
    /// \return an empty text for the calling thread, which nobody else has until it is given back: the
    ///         thread's own, or another one within an expression that logs itself and while the thread ends
    /// \throw std::bad_alloc
    static MessageText& take();

    ~MessageText() override { clear(); }

    /// Takes back what `take` gave in this thread; a text that has grown large is freed.
    static void giveBack(MessageText& text) noexcept;

    /// Has the text be that of the classic locale, whatever is set meanwhile; for one that is empty.
    void useClassicLocale() { state_ = State::PLAIN; }

    // Values that are kept, packed, for somebody else to make the text from them.

    /// Keeps values from now on, if the text is empty and numbers may be appended to it.
    void keepValues() {
        if (takesNumbers()) {
            state_ = State::VALUES;
        }
    }
    bool keepsValues() const { return state_ == State::VALUES; }

    /// Keeps a value, with `keepsValues`.
    /// \throw std::bad_alloc
    [[gnu::always_inline]] void keep(const TaggedValue& value) {
        commit(packValue(room(packedSize(value)), value));
    }

    /// Makes the text of the values that were kept, if they were. Nothing is kept from now on.
    /// \throw std::bad_alloc
    void makeText();

    /// Forgets what was written.
    void clear();

    /// \return what was written or kept, until the next call
    std::string_view view() const { return {memory_.get(), static_cast<std::size_t>(end() - memory_.get())}; }

    /// \return whether texts and characters may be appended; else the stream may want to fill them up
    bool takesTexts() const { return state_ != State::STREAMED; }

    /// \return whether numbers may be appended; else the stream, or the locale of a new one, may want them in
    ///         another form
    bool takesNumbers();

    /// Appends a text, with `takesTexts`.
    /// \throw std::bad_alloc
    void append(std::string_view text) {
        char* const place = room(text.size());
        if (!text.empty()) {
            std::memcpy(place, text.data(), text.size());
        }
        commit(place + text.size());
    }

    /// \return a place for so many characters, of which `commit` takes over what was written
    /// \throw std::bad_alloc
    char* room(std::size_t size) {
        if (size > static_cast<std::size_t>(memoryEnd_ - next_)) {
            grow(size);
        }
        return next_;
    }
    void commit(char* end) { next_ = end; }

    /// \return the stream that writes to this text; `settle` follows its use, or all that comes after goes
    ///         through it
    std::ostream& stream();

    /// Looks whether the stream has come back to the state of a new one; if so, it is not needed for now.
    void settle();

private:
    enum class State {
        FRESH,   ///< no stream so far; the locale of a new one is not known
        PLAIN,   ///< a stream would write as a new one does in the classic locale
        VALUES,  ///< as above; what was written is kept as values
        STREAMED ///< only the stream knows how it writes
    };

    MessageText();
    const char* end() const { return next_ < endBeforeSeek_ ? endBeforeSeek_ : next_; }
    std::size_t capacity() const;
    void grow(std::size_t size);
    bool writesAsNew() const;

    int_type overflow(int_type character) override;
    std::streamsize xsputn(const char* text, std::streamsize size) override;
    pos_type seekoff(off_type offset, std::ios::seekdir from, std::ios::openmode which) override;
    pos_type seekpos(pos_type position, std::ios::openmode which) override;

    bool isKept_ = false;  ///< by the thread that uses it
    bool isTaken_ = false; ///< by a message that is being put together
    State state_ = State::FRESH;
    std::unique_ptr<char[]> memory_;
    char* memoryEnd_ = nullptr;
    char* next_ = nullptr; ///< where the next character goes; before the end only after a seek
    char* endBeforeSeek_ = nullptr;
    std::ostream* stream_ = nullptr; ///< the one below, or a spare one
    std::optional<std::ostream> ownStream_;
};

/// A text of the calling thread, which has it for as long as this object lives.
struct TakenText {
    TakenText() : text(MessageText::take()) {}
    ~TakenText() { MessageText::giveBack(text); }
    TakenText(const TakenText&) = delete;
    TakenText& operator=(const TakenText&) = delete;

    MessageText& text;
};

// What a stream writes for one value, appended to a text. All throw std::bad_alloc.

void appendStreamed(MessageText& text, std::string_view value);
void appendStreamed(MessageText& text, char value);
void appendStreamed(MessageText& text, bool value);
void appendStreamed(MessageText& text, short value);
void appendStreamed(MessageText& text, unsigned short value);
void appendStreamed(MessageText& text, int value);
void appendStreamed(MessageText& text, unsigned value);
void appendStreamed(MessageText& text, long value);
void appendStreamed(MessageText& text, unsigned long value);
void appendStreamed(MessageText& text, long long value);
void appendStreamed(MessageText& text, unsigned long long value);
void appendStreamed(MessageText& text, double value);
void appendStreamed(MessageText& text, long double value);
void appendStreamed(MessageText& text, const void* value);

/// The same for values that were packed one behind another.
void appendStreamedValues(MessageText& text, std::string_view packed);

/// Appends what {fmt} makes of values in a format, character for character. The values are tagged, and so may
/// have gone through memory that knows no types.
/// \param text one to which texts may be appended
/// \param values `count` of them, of the kinds that the format was checked for
/// \throw std::bad_alloc and, for a null pointer in place of a text and a width or precision that is a value and out
///        of range, what {fmt} throws; the text then holds a part
void appendFormatted(MessageText& text, std::string_view format, const TaggedValue* values,
                     std::size_t count);

/// The same for values that were packed one behind another. Where {fmt} throws, the text is the one that
/// shows the failure.
/// \throw std::bad_alloc
void appendFormattedValues(MessageText& text, std::string_view format, std::string_view packed);

/// Has a text that could not be made hold the format and why.
/// \param reason null if it is not known
void showFailure(MessageText& text, std::string_view format, const char* reason);

} // namespace Log
} // namespace ZAV
