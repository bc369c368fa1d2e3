#pragma once

#include "log/layout/LineLayout.h"

namespace ZAV {
namespace Log {

/// One JSON object a line, without a blank outside of texts. Whatever a message holds, it is one line, in
/// valid UTF-8.
class JsonLayout : public LineLayout {
public:
    void append(std::string& line, const MessageFields& message) const override;
};

} // namespace Log
} // namespace ZAV
