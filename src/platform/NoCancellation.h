#pragma once

namespace ZAV {
namespace Platform {

/// Keeps the calling thread from being cancelled (`pthread_cancel`) from its construction to the end of its
/// scope; a cancellation that is asked for meanwhile comes later. Needed around system calls below code that
/// nothing may unwind. Where threads cannot be cancelled (Windows), it does nothing.
class NoCancellation {
public:
    NoCancellation() noexcept;
    ~NoCancellation();
    NoCancellation(const NoCancellation&) = delete;
    NoCancellation& operator=(const NoCancellation&) = delete;

private:
    int previousState_;
};

} // namespace Platform
} // namespace ZAV
