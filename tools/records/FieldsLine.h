#pragma once

#include "log/layout/LineLayout.h"
#include "records/Record.h"

#include <memory>
#include <string_view>
#include <vector>

namespace ZAV {
namespace Tools {

/// Reads a line of the layout `fields`. Up to the first column of pairs or of text, each is one word, or two
/// for the time; all that follows is the text.
/// \return the record, which the caller alone owns; null if a word is invalid for its column, or if no column before
///         the text is a time
std::shared_ptr<StructuredRecord> readFieldsLine(std::string_view line,
                                                 const std::vector<Log::Column>& columns);

/// \return whether lines of these columns begin with a word; a text, which others may have made, begins with anything
bool beginWithWord(const std::vector<Log::Column>& columns);

} // namespace Tools
} // namespace ZAV
