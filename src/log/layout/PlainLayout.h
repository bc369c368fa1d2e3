#pragma once

#include "log/layout/LineLayout.h"

namespace ZAV {
namespace Log {

/// Appends the line that `formatLogLine` returns. The text is reallocated at most once, and afterwards has
/// room for a line end.
void appendLogLine(std::string& text, const MessageFields& message);

/// Appends the line that `formatLogLineWithProcess` returns. The text is reallocated at most once, and
/// afterwards has room for a line end.
void appendLogLineWithProcess(std::string& text, const MessageFields& message);

class PlainLayout : public LineLayout {
public:
    void append(std::string& line, const MessageFields& message) const override {
        appendLogLine(line, message);
    }
};

class ProcessLayout : public LineLayout {
public:
    void append(std::string& line, const MessageFields& message) const override {
        appendLogLineWithProcess(line, message);
    }
};

} // namespace Log
} // namespace ZAV
