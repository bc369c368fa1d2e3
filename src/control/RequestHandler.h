#pragma once

#include "control/ControlRequest.h"

#include <atomic>
#include <memory>
#include <string>

namespace ZAV {
namespace Log {

class ControlRequest;

/// Carries requests out, by the library's public calls and in the calling thread, and words the answers.
namespace RequestHandler {

/// \param request anything but a `FLUSH`, which waits
/// \return the whole answer, with its last line feed; a failure is one, too
std::string answerTo(const ControlRequest& request);

/// \return the answer to what was done and has nothing to tell
std::string done();

/// \return the answer to what was refused
std::string refused(const std::string& reason);

/// \return whether an answer is one of those
bool isRefusal(const std::string& answer);

} // namespace RequestHandler

/// A `RELOAD` that a client has asked for. It waits for appenders, of which one may be stuck, so it is done
/// in a thread of its own, which nobody waits for: the server's loop asks now and then what has become of it.
class ReloadCall : public std::enable_shared_from_this<ReloadCall> {
public:
    explicit ReloadCall(const ControlRequest& request) : request_(request) {}

    /// \throw std::exception if no thread can be started
    void start();

    bool isOver() const noexcept { return isOver_.load(std::memory_order_acquire); }

    /// \return the whole answer, once it is over
    const std::string& answer() const { return answer_; }

private:
    const ControlRequest request_;
    std::string answer_; ///< written by the thread before it is over
    std::atomic<bool> isOver_{false};
};

} // namespace Log
} // namespace ZAV
