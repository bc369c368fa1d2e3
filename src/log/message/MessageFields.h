#pragma once

#include "log/LogMessage.h"
#include "log/TaggedValue.h"
#include "log/text/MessageText.h"

#include <cstdint>
#include <cstring>
#include <optional>
#include <string_view>

namespace ZAV {
namespace Log {

class Logger;

/// The library's own copy of a place, which is never freed: the code that contains the place may be unloaded
/// before its messages are delivered. There is one for each place, so that its address identifies what all
/// messages from there have in common.
struct KnownPlace : Place {
    explicit KnownPlace(const Place& place) : Place(place) {}

    /// Whether the text must be formatted during the call, since copied values do not suffice.
    bool mustFormatInCall = false;
    KnownPlace* next = nullptr; ///< used to look it up
};

/// \return the copy of a place, which the first call makes. A program has few places, and a plugin that is
///         loaded again has the same ones. It takes no lock.
/// \throw std::bad_alloc
const KnownPlace& knownPlace(const Place& place);

/// \return whether two views refer to the same memory, not only to equal texts
inline bool refersToSameMemory(std::string_view text, std::string_view other) {
    return text.data() == other.data() && text.size() == other.size();
}

/// The same as `==`, but faster: that also determines which of the texts is less.
inline bool equalTexts(std::string_view text, std::string_view other) {
    return text.size() == other.size() &&
           (text.empty() || std::memcmp(text.data(), other.data(), text.size()) == 0);
}

/// How a message carries its text.
enum class TextForm : std::uint8_t {
    READY,    ///< as characters
    STREAMED, ///< as packed values, to be streamed one after another
    FORMATTED ///< as packed values, for the format of the message's place
};

/// The contents of a message. It does not own its texts. The library passes a message in this form until an
/// appender needs a `LogMessage`.
struct MessageFields {
    MessageFields(std::string_view loggerNameText, Util::TimeUtils::Time moment, Level::LogLevel severity,
                  std::string_view messageText, int sourceLine, std::string_view sourceFile, MessageType kind,
                  const Logger* origin = nullptr)
        : loggerName(loggerNameText), time(moment), level(severity), text(messageText), line(sourceLine),
          file(sourceFile), type(kind), logger(origin) {}

    /// \param from the place of the logging call
    MessageFields(std::string_view loggerNameText, Util::TimeUtils::Time moment, const KnownPlace& from,
                  std::string_view messageText, TextForm textForm, const Logger* origin)
        : loggerName(loggerNameText), time(moment), level(from.level), text(messageText), line(from.line),
          file(from.file), type(LOG), logger(origin), form(textForm), place(&from) {}

    MessageFields(const LogMessage& message)
        : loggerName(message.loggerName_), time(message.time_), level(message.level_),
          text(message.text_.data(), message.messageSize_), line(message.line_), file(message.file_),
          type(message.type_), logger(nullptr), values(message.values_), context(message.context_),
          pairsText(message.text_.data() + message.messageSize_, message.text_.size() - message.messageSize_),
          thread(message.thread_) {}

    /// Makes the fields refer to the texts and pairs of a message, but not to its logger's name.
    void takeTexts(const LogMessage& message) noexcept;

    /// \throw std::bad_alloc
    LogMessage makeMessage() const;

    /// On the way to the appenders this is the logger's own string, which is never destroyed, so its address
    /// identifies the logger.
    std::string_view loggerName;
    Util::TimeUtils::Time time;
    Level::LogLevel level;
    std::string_view text; ///< without the pairs; packed values unless `form` is `READY`
    int line;
    std::string_view file;
    MessageType type;
    const Logger* logger; ///< null in a message that the application constructed
    TextForm form = TextForm::READY;
    const KnownPlace* place = nullptr; ///< the source of level, line and file; null if unknown
    std::string_view values;           ///< packed pairs of the message
    std::string_view context;          ///< packed pairs of the thread, including hidden ones
    std::string_view pairsText;        ///< `values` as text, to follow `text`, once it is made
    std::uint64_t thread = 0;          ///< the system's id; 0 if unknown
};

/// The text of a message as characters, formatted if the message carries values.
class ReadyText {
public:
    /// \param message must outlive this object
    /// \throw std::bad_alloc
    explicit ReadyText(const MessageFields& message);

    /// \return the text without the pairs
    std::string_view view() const noexcept { return view_; }

private:
    std::optional<TakenText> made_;
    std::string_view view_;
};

/// The `LogMessage` of one call, filled on first use. It reuses the thread's object, so that its texts need
/// no new memory; while that is in use, for example when an appender logs, another one is created.
class ReusedMessage {
public:
    /// \param fields must outlive this object, and the logger's name must never be destroyed
    explicit ReusedMessage(const MessageFields& fields) noexcept : fields_(fields) {}

    /// Returns the thread's object, and frees the memory of unusually long texts.
    ~ReusedMessage() {
        if (kept_ != nullptr) {
            giveBack();
        }
    }

    ReusedMessage(const ReusedMessage&) = delete;
    ReusedMessage& operator=(const ReusedMessage&) = delete;

    /// \return always the same object
    /// \throw std::bad_alloc
    const LogMessage& get();

    /// \return the fields. Once the object is filled, they refer to its texts, since an appender or a
    ///         listener may have changed those of the caller
    const MessageFields& fields() const noexcept { return kept_ == nullptr ? fields_ : keptFields(); }

private:
    struct Kept;
    static const bool hasSlotFromLoad;

    void take();
    void fillTaken(Kept& kept) const;
    const MessageFields& keptFields() const noexcept;
    void giveBack() noexcept;

    const MessageFields& fields_;
    Kept* kept_ = nullptr;
};

} // namespace Log
} // namespace ZAV
