#pragma once

namespace ZAV {
namespace Tools {

/// Ends a command silently: the reader of its output has closed the pipe, or has stopped reading when the
/// command is asked to end.
class OutputClosed {};

} // namespace Tools
} // namespace ZAV
