#pragma once

#include "control/ControlRequest.h"

#include <atomic>
#include <memory>
#include <string>

namespace ZAV {
namespace Log {

/// Carries out requests through the library's public API, in the calling thread, and formats the answers.
namespace RequestHandler {

/// \param request any kind except `FLUSH`, which waits
/// \return the whole answer, with its last line feed, also for a failure
std::string answerTo(const ControlRequest& request);

/// \return the answer to a successful request that has no result
std::string done();

/// \return the answer to a refused request
std::string refused(const std::string& reason);

/// \return whether an answer was made by `refused`
bool isRefusal(const std::string& answer);

} // namespace RequestHandler

/// A `RELOAD` requested by a client. It waits for appenders, one of which may be stuck, so it runs in a
/// detached thread, which the server's loop polls.
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
    std::string answer_; ///< written by the thread before `isOver_` is set
    std::atomic<bool> isOver_{false};
};

} // namespace Log
} // namespace ZAV
