#pragma once

#include "records/Record.h"

#include <memory>
#include <string_view>

namespace ZAV {
namespace Tools {

/// Reads a line of the layout `json`, or one that the option `--json` has written. Members that neither of
/// them writes are ignored.
/// \return the record, which the caller alone owns; null if the line is no such object
std::shared_ptr<StructuredRecord> readJsonLine(std::string_view line);

} // namespace Tools
} // namespace ZAV
