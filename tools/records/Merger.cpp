#include "records/Merger.h"

#include <algorithm>
#include <utility>

namespace ZAV {
namespace Tools {

Merger::Merger(std::vector<RecordStream*> streams, RecordStream::Ending ending)
    : streams_(std::move(streams)), places_(streams_.size()), ending_(ending) {
    for (std::size_t index = 0; index < streams_.size(); ++index) {
        advance(index);
    }
}

int Merger::next() {
    if (given_ >= 0) {
        advance(static_cast<std::size_t>(given_));
        given_ = -1;
    }
    if (!heap_.empty()) {
        std::pop_heap(heap_.begin(), heap_.end(),
                      [this](std::size_t a, std::size_t b) { return comesLater(a, b); });
        given_ = static_cast<int>(heap_.back());
        heap_.pop_back();
    }
    return given_;
}

void Merger::advance(std::size_t index) {
    if (streams_[index]->next(ending_)) {
        places_[index] = streams_.size() > 1 ? streams_[index]->place() : 0;
        heap_.push_back(index);
        std::push_heap(heap_.begin(), heap_.end(),
                       [this](std::size_t a, std::size_t b) { return comesLater(a, b); });
    }
}

bool Merger::comesLater(std::size_t a, std::size_t b) const {
    return places_[a] > places_[b] || (places_[a] == places_[b] && a > b);
}

} // namespace Tools
} // namespace ZAV
