#include "follow/LastRecords.h"

namespace ZAV {
namespace Tools {

void LastRecords::add(const std::string& text) {
    texts_.push_back(text);
    if (texts_.size() > limit_) {
        texts_.pop_front();
    }
}

void LastRecords::extend(const std::string& text) {
    if (!texts_.empty()) {
        texts_.back() += text;
    }
}

std::string LastRecords::take() {
    std::string all;
    for (const std::string& text : texts_) {
        all += text;
    }
    texts_.clear();
    return all;
}

} // namespace Tools
} // namespace ZAV
