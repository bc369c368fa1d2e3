#pragma once

#include <chrono>
#include <iosfwd>
#include <string>
#include <string_view>

namespace ZAV {
namespace Platform {

/// Writes a text to a stream and flushes it. If the stream is one of the process's standard streams, on its
/// own buffer:
/// - nothing of the text stays in the buffer, not even for a moment in which the process may be forked, so no
///   child writes it again;
/// - the text is one piece among what other threads write by way of the same stream.
///
/// Whatever the stream leads to, a reader that has left is no signal, and the thread is not cancelled. A
/// write that fails loses the text and leaves the stream's state as it was, so that the next one is tried. A
/// pipe that is full is waited for, also if another process has made it non-blocking.
/// \return false if the text was not taken as a whole
/// \throw what the stream throws
bool writeToStream(std::ostream& stream, std::string_view text);

enum class WriteResult {
    WRITTEN,
    NO_READER, ///< the other end of the pipe is closed
    STOPPED,   ///< the text had to wait, and an end was requested meanwhile
    FAILED
};

/// Makes standard output take bytes as they are, and a closed pipe a result instead of the process's end.
/// Called once, before the first write and before a file is opened.
void prepareStandardOutput();

/// Writes all of a text to standard output, past the standard library's buffers.
/// \param problem receives the system's word for what went wrong if the result is `FAILED`
WriteResult writeStandardOutput(std::string_view text, std::string& problem);

enum StandardStream { STANDARD_OUTPUT, STANDARD_ERROR };

/// \return true if somebody reads the stream at a terminal
bool isTerminal(StandardStream stream);

/// \return true if standard output is a terminal that understands ANSI colours; where those must be switched on,
/// they are then
bool showsColors();

/// Has the user's and the system's requests to end (SIGINT and SIGTERM, Ctrl-C) no longer end the process:
/// whoever calls this asks for them. Called once, before other threads start.
void catchStopSignals();

/// \return true from `catchStopSignals` on
bool catchesStopSignals();

/// \return true if an end was requested since `catchStopSignals`; false without that
bool isStopRequested();

/// Waits for a while, or until an end is requested or nobody reads standard output any more.
/// \return true if there is no reason to go on
bool waitForStop(std::chrono::milliseconds time);

} // namespace Platform
} // namespace ZAV
