#pragma once

#include "platform/CriticalSection.h"
#include "platform/Process.h"

#include <locale>
#include <memory>
#include <ostream>
#include <streambuf>
#include <vector>

namespace ZAV {
namespace Log {

/// Streams for a forked child.
///
/// If the application has set a global locale other than the classic one, reading it or creating a stream
/// takes a lock of the C++ library. Any thread of the application may hold that during a fork, and it then
/// stays locked in the child. So a fork prepares that locale and a few streams, which the child's messages
/// use as long as they do not need more at once.
class SpareStreams : public Platform::NeverDestroyed<SpareStreams> {
public:
    /// \return whether a stream created now would use the classic locale. A child that has inherited another locale
    ///         keeps it.
    bool isLocaleClassic() const;

    /// \return a stream in the state of a new one, until it is given back; nullptr if the caller has to create one
    std::ostream* take(std::streambuf& buffer);

    void giveBack(std::ostream& stream) noexcept;

private:
    friend NeverDestroyed;
    SpareStreams();
    void prepareForFork();
    void keepLocale() ZAV_LOG_REQUIRES(lock_);

    Platform::CriticalSection lock_{Platform::AWAITED_BY_FORK};
    const std::locale& classic_ =
        std::locale::classic(); ///< saves the check that the function makes in each call
    std::ios pristine_{nullptr};
    std::locale locale_ ZAV_LOG_GUARDED_BY(lock_) = std::locale::classic(); ///< at the last fork
    std::vector<std::unique_ptr<std::ostream>> free_ ZAV_LOG_GUARDED_BY(lock_);
    /// Whether this is a child that must not read the global locale. Changes only during a fork.
    bool isInherited_ = false;
};

} // namespace Log
} // namespace ZAV
