#pragma once

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
/// The text of one message, as a logging macro puts it together: character for character what a stream that
/// was just made would have written. Texts, characters and numbers get by without one; it comes in when
/// something else is streamed, and stays as long as its format is not that of a new one. If nobody needs the
/// text before the consumer of the queue does, the values are kept as they are until then.
///
/// The text lies in memory of the calling thread, which uses it again for its next message. An object is used
/// in the block that makes it; several may be there at once, as when a streamed expression logs itself. The
/// functions are not inline: the caller's code, which as a rule ends at the comparison of levels, stays
/// short.
class ZAV_LOG_API MessageStream {
public:
    /// \param logger that the text is for, which says whether it is needed at once
    /// \throw std::bad_alloc
    explicit MessageStream(const Logger& logger);
    ~MessageStream();
    MessageStream(const MessageStream&) = delete;
    MessageStream& operator=(const MessageStream&) = delete;

    /// \return a stream that writes to the text, with what was streamed into it so far, for as long as this
    ///         object lives
    std::ostream& stream();

    /// Tells that a stream which `stream` gave out is not written to for now.
    void settle();

    // What a stream writes for one value of the type. All throw std::bad_alloc.
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

    /// Logs what was written.
    /// \param level at or above the logger's
    /// \param line source line
    /// \param file source file
    /// \throw what the logger's function for the level throws
    void logTo(const Logger& logger, Level::LogLevel level, int line, std::string_view file) const;

private:
    MessageText& text_;
};

} // namespace Log
} // namespace ZAV
