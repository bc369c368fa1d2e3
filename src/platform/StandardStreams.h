#pragma once

#include <iosfwd>
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

} // namespace Platform
} // namespace ZAV
