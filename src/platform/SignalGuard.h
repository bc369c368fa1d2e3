#pragma once

#include <memory>

namespace ZAV {
namespace Platform {

/// While it lives, its thread receives no signals, but for those that its own faults raise; nor does, for
/// ever, a thread that it starts meanwhile. So the application's signals go to the application's threads.
/// Where there are no signals (Windows), it does nothing.
class NoSignals {
public:
    NoSignals();
    ~NoSignals();
    NoSignals(const NoSignals&) = delete;
    NoSignals& operator=(const NoSignals&) = delete;

private:
    struct Mask;
    const std::unique_ptr<Mask> before_; ///< the signals that the thread blocked by itself
};

} // namespace Platform
} // namespace ZAV
