#pragma once

#include <chrono>
#include <iosfwd>
#include <string>
#include <string_view>

namespace ZAV {
namespace Platform {

/// Writes a text to a stream and flushes it. On Linux, if the stream is a standard stream with its original
/// buffer:
/// - no part of the text is ever in the buffer, so a forked child cannot write it again;
/// - the text is not interleaved with what other threads write to the same stream.
///
/// A closed pipe raises no signal, and the thread is not cancelled. A failed write loses the text and leaves
/// the stream's state unchanged, so that the next write is attempted. A full pipe is waited for, even if
/// another process has made it non-blocking.
/// \return false if the text was not written completely
/// \throw what the stream throws
bool writeToStream(std::ostream& stream, std::string_view text);

enum class WriteResult {
    WRITTEN,
    NO_READER, ///< the other end of the pipe is closed
    STOPPED,   ///< the write would have blocked, and a stop was requested meanwhile
    FAILED
};

/// Makes standard output binary, and a closed pipe an error instead of a fatal signal. Called once, before
/// the first write and before any file is opened.
void prepareStandardOutput();

/// Writes a whole text to standard output, bypassing the standard library's buffers.
/// \param problem receives the system's error text if the result is `FAILED`
WriteResult writeStandardOutput(std::string_view text, std::string& problem);

enum StandardStream { STANDARD_OUTPUT, STANDARD_ERROR };

/// \return true if the stream is a terminal
bool isTerminal(StandardStream stream);

/// \return true if standard output is a terminal with ANSI colours, which are switched on if necessary
bool showsColors();

/// Makes stop requests (SIGINT and SIGTERM, Ctrl-C) no longer end the process; the caller polls for them
/// instead. Called once, before other threads start.
void catchStopSignals();

/// \return true from `catchStopSignals` on
bool catchesStopSignals();

/// \return true if a stop was requested since `catchStopSignals`; false if that was not called
bool isStopRequested();

/// Waits for a time, or until a stop is requested or the reader of standard output has gone. On Windows only
/// the next write can tell that the reader has.
/// \return true if the caller should stop
bool waitForStop(std::chrono::milliseconds time);

} // namespace Platform
} // namespace ZAV
