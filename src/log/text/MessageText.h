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

/// The text of a message while it is being built, in memory that its thread reuses.
///
/// Values with one default form bypass the stream, which is several times as fast. The stream is created on
/// demand and discarded with the message, since its users may leave it in any state.
class MessageText final : private std::streambuf {
public:
    /// \return an empty text for the calling thread's exclusive use until it is given back: the thread's own, or a new
    ///         one if a logged expression itself logs or the thread is ending
    /// \throw std::bad_alloc
    static MessageText& take();

    ~MessageText() override { clear(); }

    /// Returns a text from `take`, in the same thread; a text that has grown large is freed.
    static void giveBack(MessageText& text) noexcept;

    /// Formats as in the classic locale, whatever the global locale is; for an empty text.
    void useClassicLocale() { state_ = State::PLAIN; }

    // Values kept in packed form, from which the text is made later.

    /// Keeps values from the first number on, if the locale allows that; for an empty text. What is before
    /// the number, and a text without one, is written at once.
    void keepValues() { state_ = State::FRESH_TO_KEEP; }
    bool keepsValues() const { return state_ == State::VALUES; }

    /// To be called before a number is appended; the first one may turn the text so far into a value.
    /// \return whether the number is to be kept
    /// \throw std::bad_alloc
    bool keepsNumbers() { return keepsValues() || (state_ == State::FRESH_TO_KEEP && beginValues()); }

    /// Keeps a value; requires `keepsValues`.
    /// \throw std::bad_alloc
    [[gnu::always_inline]] void keep(const TaggedValue& value) {
        commit(packValue(room(packedSize(value)), value));
    }

    /// Replaces the kept values, if any, by their text. Values are no longer kept from now on.
    /// \throw std::bad_alloc
    void makeText();

    /// Discards what was written.
    void clear();

    /// \return a view of what was written or kept, valid until the next call
    std::string_view view() const { return {memory_.get(), static_cast<std::size_t>(end() - memory_.get())}; }

    /// \return whether texts and characters may be appended directly; otherwise the stream may have to pad them
    bool takesTexts() const { return state_ != State::STREAMED; }

    /// \return whether numbers may be appended directly; otherwise the stream, or the locale of a new one, may format
    ///         them differently
    bool takesNumbers();

    /// Appends a text; requires `takesTexts`.
    /// \throw std::bad_alloc
    void append(std::string_view text) {
        char* const place = room(text.size());
        if (!text.empty()) {
            std::memcpy(place, text.data(), text.size());
        }
        commit(place + text.size());
    }

    /// \return room for that many characters; `commit` takes the end of what was written there
    /// \throw std::bad_alloc
    char* room(std::size_t size) {
        if (size > static_cast<std::size_t>(memoryEnd_ - next_)) {
            grow(size);
        }
        return next_;
    }
    void commit(char* end) { next_ = end; }

    /// \return the stream that writes to this text; call `settle` after use, or everything later goes through the
    ///         stream
    std::ostream& stream();

    /// Checks whether the stream is back in the state of a new one; if so, it is bypassed again.
    void settle();

private:
    enum class State {
        FRESH,         ///< no stream yet; the locale of a new one is not known
        FRESH_TO_KEEP, ///< as FRESH, but the first number may make it VALUES
        PLAIN,         ///< a stream would write as a new one does in the classic locale
        VALUES,        ///< as PLAIN, but what was written is kept as values
        STREAMED       ///< only the stream knows how it writes
    };

    MessageText();
    bool beginValues();
    const char* end() const { return next_ < endBeforeSeek_ ? endBeforeSeek_ : next_; }
    std::size_t capacity() const;
    void grow(std::size_t size);
    bool writesAsNew() const;

    int_type overflow(int_type character) override;
    std::streamsize xsputn(const char* text, std::streamsize size) override;
    pos_type seekoff(off_type offset, std::ios::seekdir from, std::ios::openmode which) override;
    pos_type seekpos(pos_type position, std::ios::openmode which) override;

    bool isKept_ = false;  ///< whether the thread keeps it for reuse
    bool isTaken_ = false; ///< whether a message is being built in it
    State state_ = State::FRESH;
    std::unique_ptr<char[]> memory_;
    char* memoryEnd_ = nullptr;
    char* next_ = nullptr; ///< where the next character goes; before the end only after a seek
    char* endBeforeSeek_ = nullptr;
    std::ostream* stream_ = nullptr; ///< `ownStream_`, or a spare one; null if none is in use
    std::optional<std::ostream> ownStream_;
};

/// Takes a text of the calling thread and gives it back when it goes out of scope.
struct TakenText {
    TakenText() : text(MessageText::take()) {}
    ~TakenText() { MessageText::giveBack(text); }
    TakenText(const TakenText&) = delete;
    TakenText& operator=(const TakenText&) = delete;

    MessageText& text;
};

// Append what a stream writes for a value. All throw std::bad_alloc.

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

/// Appends exactly what {fmt} produces for a format. The values are tagged, so they may have been stored in
/// untyped memory.
/// \param text must satisfy `takesTexts`
/// \param values `count` of them, of the kinds that the format was checked for
/// \throw std::bad_alloc, and what {fmt} throws for a null C string or a dynamic width or precision out of range; the
///        text is then incomplete
void appendFormatted(MessageText& text, std::string_view format, const TaggedValue* values,
                     std::size_t count);

/// The same for values that were packed one behind another. If {fmt} throws, the text becomes that of
/// `showFailure`.
/// \throw std::bad_alloc
void appendFormattedValues(MessageText& text, std::string_view format, std::string_view packed);

/// Appends the format and the reason why it could not be formatted.
/// \param reason null if unknown
void showFailure(MessageText& text, std::string_view format, const char* reason);

} // namespace Log
} // namespace ZAV
