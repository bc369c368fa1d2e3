#pragma once

#include "log/layout/LineLayout.h"

#include <utility>
#include <vector>

namespace ZAV {
namespace Log {

/// The columns that a configuration asks for, separated by one blank. Pairs of which there are none leave no
/// blank.
class FieldsLayout : public LineLayout {
public:
    explicit FieldsLayout(std::vector<Column> columns) : columns_(std::move(columns)) {}

    void append(std::string& line, const MessageFields& message) const override;

private:
    const std::vector<Column> columns_;
};

} // namespace Log
} // namespace ZAV
