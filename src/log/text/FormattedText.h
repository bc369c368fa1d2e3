#pragma once

#include "log/TaggedValue.h"

#include <cstddef>
#include <string_view>

namespace ZAV {
namespace Log {

class MessageText;

/// Appends what {fmt} makes of values in a format, character for character. The values are tagged, and so may
/// have gone through memory that knows no types.
/// \param text one to which texts may be appended
/// \param values `count` of them, of the kinds that the format was checked for
/// \throw std::bad_alloc and, for a null pointer in place of a text and a width or precision that is a value and out
///        of range, what {fmt} throws; the text then holds a part
void appendFormatted(MessageText& text, std::string_view format, const TaggedValue* values,
                     std::size_t count);

/// The same for values that were packed one behind another. Where {fmt} throws, the text is the one that
/// shows the failure.
/// \throw std::bad_alloc
void appendFormattedValues(MessageText& text, std::string_view format, std::string_view packed);

/// Has a text that could not be made hold the format and why.
/// \param reason null if it is not known
void showFailure(MessageText& text, std::string_view format, const char* reason);

} // namespace Log
} // namespace ZAV
