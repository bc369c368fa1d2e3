#pragma once

namespace ZAV {
namespace Tools {

/// Ends a command quietly: whoever read its output has seen enough and has closed the pipe, or reads no
/// further while the command is asked to end.
class OutputClosed {};

} // namespace Tools
} // namespace ZAV
