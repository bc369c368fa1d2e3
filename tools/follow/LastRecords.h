#pragma once

#include <cstddef>
#include <deque>
#include <string>

namespace ZAV {
namespace Tools {

/// Keeps the texts of the last few records.
class LastRecords {
public:
    explicit LastRecords(std::size_t limit) : limit_(limit) {}

    void add(const std::string& text);

    /// Adds to the record that was added last.
    void extend(const std::string& text);

    /// \return all texts, the oldest first, which are not kept any longer
    std::string take();

private:
    std::size_t limit_;
    std::deque<std::string> texts_;
};

} // namespace Tools
} // namespace ZAV
