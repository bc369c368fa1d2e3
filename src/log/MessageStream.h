#pragma once

/// \file
/// Implementation of the macros of `log/LogMacros.h`: the text of a message; not used directly.

#include "log/Level.h"
#include "zav-util/Export.h"

#include <ostream>
#include <string_view>

namespace ZAV {
namespace Log {

class Logger;
class MessageText;

/// Used by the logging macros, not directly.
///
/// Builds the text of one message for a logging macro: exactly the characters that a new stream would have
/// written. Texts, characters and numbers bypass the stream; it is used when anything else is streamed, and
/// from then on for as long as its format differs from that of a new one. If the text is not needed before
/// the consumer takes the message from the queue, the values are stored unformatted until then, from the
/// first number on.
///
/// The text is in a buffer of the calling thread, which is reused for its next message. An object is used
/// only in the block that creates it; several may exist at once, for example if a streamed expression logs
/// too. The functions are not inlined, to keep the caller's code short: most calls end at the comparison of
/// levels.
class ZAV_LOG_API MessageStream {
public:
    /// \param logger the logger of the message, which determines whether the text is needed at once
    /// \throw std::bad_alloc
    explicit MessageStream(const Logger& logger);
    ~MessageStream();
    MessageStream(const MessageStream&) = delete;
    MessageStream& operator=(const MessageStream&) = delete;

    /// \return a stream that appends to the text; valid as long as this object
    std::ostream& stream();

    /// Notes that the stream is not written to for now, so that later values may bypass it.
    void settle();

    // Append what a stream would write for a value of the type. All throw std::bad_alloc.
    void writeText(std::string_view text);
    void write(char character);
    void write(bool number);
    void write(short number);
    void write(unsigned short number);
    void write(int number);
    void write(unsigned number);
    void write(long number);
    void write(unsigned long number);
    void write(long long number);
    void write(unsigned long long number);
    void write(double number);
    void write(long double number);
    void write(const void* address);

    /// Logs the text.
    /// \param level at or above the logger's level
    /// \param line source line
    /// \param file source file
    /// \throw what the logger's function for the level throws
    void logTo(const Logger& logger, Level::LogLevel level, int line, std::string_view file) const;

private:
    MessageText& text_;
};

} // namespace Log
} // namespace ZAV
