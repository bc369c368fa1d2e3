#pragma once

namespace ZAV {
namespace Tools {

/// A section of the help of the commands that merge files.
constexpr const char* ORDER_OF_RECORDS =
    "order of the records:\n"
    "  Files are merged in the order of time; within a file or a series the order stays.\n"
    "  A record whose time is later than that of the next one in its file comes in the\n"
    "  next one's place, so that a clock that was wrong once holds nothing up.";

} // namespace Tools
} // namespace ZAV
