#pragma once

namespace ZAV {
namespace Platform {

/// While it lives, its thread is not cancelled (`pthread_cancel`): a request takes effect afterwards. For
/// work that must not be left half done, and for functions that nothing may be thrown out of. Where threads
/// cannot be cancelled (Windows), it does nothing.
class NoCancellation {
public:
    NoCancellation() noexcept;
    ~NoCancellation();
    NoCancellation(const NoCancellation&) = delete;
    NoCancellation& operator=(const NoCancellation&) = delete;

private:
    int before_ = 0; ///< the state to return to
};

/// Ends the calling thread here if that was requested. For the beginning of a call, where nothing is half
/// done.
void actOnCancellation();

} // namespace Platform
} // namespace ZAV
