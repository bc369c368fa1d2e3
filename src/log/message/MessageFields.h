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

/// The library's own copy of a place, which is never freed: the program may have unloaded the code that the
/// place lies in before its messages are delivered. There is one for each place, so that its address stands
/// for all that messages from there have in common.
struct KnownPlace : Place {
    explicit KnownPlace(const Place& place) : Place(place) {}

    /// Whether the text has to be made in the call, since it takes more than values that were copied.
    bool needsCall = false;
    KnownPlace* next = nullptr; ///< used to look it up
};

/// \return the copy of a place, made when it is asked for the first time. The places of a program are few,
///         and a plugin that is loaded again has the same ones. It takes no lock.
/// \throw std::bad_alloc
const KnownPlace& knownPlace(const Place& place);

class Logger;

/// \return whether two texts are the same one, not only alike
inline bool isSamePlace(std::string_view text, std::string_view other) {
    return text.data() == other.data() && text.size() == other.size();
}

/// What `==` does in more steps, since that finds out which of the texts is the lesser one.
inline bool isAlike(std::string_view text, std::string_view other) {
    return text.size() == other.size() &&
           (text.empty() || std::memcmp(text.data(), other.data(), text.size()) == 0);
}

/// How a message carries its text.
enum class TextForm : std::uint8_t {
    READY,    ///< as it is
    STREAMED, ///< as packed values, one streamed behind another
    FORMATTED ///< as packed values, for the format of the message's place
};

/// What a message says. It does not own its texts. A message goes through the library in this form
/// until an appender needs the object.
struct MessageFields {
    MessageFields(std::string_view loggerNameText, Util::TimeUtils::Time moment, Level::LogLevel severity,
                  std::string_view messageText, int sourceLine, std::string_view sourceFile, MessageType kind,
                  const Logger* origin = nullptr)
        : loggerName(loggerNameText), time(moment), level(severity), text(messageText), line(sourceLine),
          file(sourceFile), type(kind), logger(origin) {}

    /// \param from where the message comes from
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

    /// Refers to the texts and pairs of a message from now on, but not to its logger's name.
    void takeTexts(const LogMessage& message) noexcept;

    /// \throw std::bad_alloc
    LogMessage makeMessage() const;

    /// On the way to the appenders the logger's own string. It is never destroyed, so its address identifies
    /// the logger.
    std::string_view loggerName;
    Util::TimeUtils::Time time;
    Level::LogLevel level;
    std::string_view text; ///< without the pairs; or values, as `form` says
    int line;
    std::string_view file;
    MessageType type;
    const Logger* logger; ///< that logged it; null in a message that an application makes
    TextForm form = TextForm::READY;
    const KnownPlace* place = nullptr; ///< that gives level, line and file; null if it is not known
    std::string_view values;           ///< packed pairs of the message
    std::string_view context;          ///< packed pairs of the thread, also those that later ones hide
    std::string_view pairsText;        ///< what follows the text to show `values`, once that is made
    std::uint64_t thread = 0;          ///< the system's id; 0 if it is not known
};

/// The text of a message as characters, made from the values if the message carries them.
class ReadyText {
public:
    /// \param message lives as long as this object
    /// \throw std::bad_alloc
    explicit ReadyText(const MessageFields& message);

    /// \return the text without the pairs
    std::string_view view() const noexcept { return view_; }

private:
    std::optional<TakenText> made_;
    std::string_view view_;
};

} // namespace Log
} // namespace ZAV
