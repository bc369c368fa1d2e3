#pragma once

#include "log/TaggedValue.h"

#include <string_view>

namespace ZAV {
namespace Log {

class MessageText;

// What a stream writes for one value, appended to a text. All throw std::bad_alloc.

void appendStreamed(MessageText& text, std::string_view value);
void appendStreamed(MessageText& text, char value);
void appendStreamed(MessageText& text, bool value);
void appendStreamed(MessageText& text, short value);
void appendStreamed(MessageText& text, unsigned short value);
void appendStreamed(MessageText& text, int value);
void appendStreamed(MessageText& text, unsigned value);
void appendStreamed(MessageText& text, long value);
void appendStreamed(MessageText& text, unsigned long value);
void appendStreamed(MessageText& text, long long value);
void appendStreamed(MessageText& text, unsigned long long value);
void appendStreamed(MessageText& text, double value);
void appendStreamed(MessageText& text, long double value);
void appendStreamed(MessageText& text, const void* value);

/// The same for values that were packed one behind another.
void appendStreamedValues(MessageText& text, std::string_view packed);

} // namespace Log
} // namespace ZAV
