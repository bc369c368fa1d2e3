#include "log/text/SpareStreams.h"

#include "platform/Process.h"

#include <cstddef>
#include <utility>

namespace ZAV {
namespace Log {

using Platform::ScopedLock;

namespace {

/// How many threads of a child may stream at the same time.
constexpr std::size_t COUNT = 16;

class NoBuffer : public std::streambuf {
    int_type overflow(int_type) override { return traits_type::not_eof(0); }
};

const SpareStreams& madeAtLoad = SpareStreams::instance();

} // namespace

SpareStreams::SpareStreams() {
    Platform::atFork([] { instance().prepareForFork(); },
                     []() ZAV_LOG_NO_THREAD_SAFETY_ANALYSIS {
                         SpareStreams& streams = instance();
                         streams.isInherited_ = streams.locale_ != std::locale::classic();
                     });
}

bool SpareStreams::isLocaleClassic() const {
    return !isInherited_ && std::locale() == classic_;
}

std::ostream* SpareStreams::take(std::streambuf& buffer) {
    if (!isInherited_) {
        return nullptr;
    }
    const ScopedLock lock(lock_);
    if (free_.empty()) {
        return nullptr;
    }
    std::ostream* const stream = free_.back().release();
    free_.pop_back();
    stream->rdbuf(&buffer);
    stream->imbue(locale_);
    return stream;
}

void SpareStreams::giveBack(std::ostream& stream) noexcept {
    stream.exceptions(std::ios::goodbit); // so that nothing here throws
    stream.copyfmt(pristine_);
    stream.rdbuf(nullptr);
    const ScopedLock lock(lock_);
    free_.emplace_back(&stream); // never reallocates: there is room
}

/// A child keeps what it has inherited.
void SpareStreams::prepareForFork() {
    if (isInherited_) {
        return;
    }
    const ScopedLock lock(lock_);
    try {
        keepLocale();
    } catch (...) {
        return; // there are fewer streams, and a child may have to create one
    }
}

void SpareStreams::keepLocale() {
    locale_ = std::locale();
    if (locale_ == std::locale::classic()) {
        return;
    }
    free_.reserve(COUNT);
    while (free_.size() < COUNT) {
        free_.push_back(std::make_unique<std::ostream>(nullptr));
    }
    // Writing the first number takes another lock of the C++ library, to cache the locale's separators.
    NoBuffer buffer;
    std::ostream& stream = *free_.back();
    stream.rdbuf(&buffer);
    stream.imbue(locale_);
    stream << 1;
    stream.rdbuf(nullptr);
}

} // namespace Log
} // namespace ZAV
