#pragma once

#include <cstddef>
#include <string>
#include <string_view>

namespace Bench {

/// Counts what reached an appender that writes nothing. For one thread, or under the appender's lock.
class DroppedMessages {
public:
    void add(std::string_view text) {
        ++count_;
        if (keepsNext_) {
            kept_ = text;
            keepsNext_ = false;
        }
    }

    void keepNext() { keepsNext_ = true; }

    std::size_t count() const { return count_; }
    const std::string& kept() const { return kept_; }

private:
    std::size_t count_ = 0;
    bool keepsNext_ = false;
    std::string kept_;
};

} // namespace Bench
