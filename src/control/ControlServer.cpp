#include "log/ControlServer.h"

#include "control/ControlLoop.h"
#include "log/LogException.h"
#include "platform/Threads.h"

#include <exception>
#include <thread>

namespace ZAV {
namespace Log {

/// The loop with the thread that runs it.
class ControlServer::Inside {
public:
    explicit Inside(const std::string& address) : loop_(address, ControlLoop::Limits()) {
        const Platform::NoSignals noSignals;
        thread_ = std::thread([this] { loop_.run(); });
    }

    ~Inside() {
        loop_.stop();
        if (isServing()) {
            thread_.detach();
        } else {
            thread_.join();
        }
    }

    /// \return true in the server's own thread, as when a command listener ends the process
    bool isServing() const { return thread_.get_id() == std::this_thread::get_id(); }

    /// \return true in a forked child
    bool isInherited() const { return !loop_.isInOwnProcess(); }

    /// \return true if the thread is through with the loop, of which it may still be the last of the process
    bool hasEnded() const { return loop_.hasEnded(); }

    void closeInherited() noexcept { loop_.closeInherited(); }

private:
    ControlLoop loop_;
    std::thread thread_;
};

ControlServer::ControlServer(const std::string& address) try {
    const Platform::NoCancellation noCancellation;
    inside_ = std::make_unique<Inside>(address);
} catch (const std::exception& exception) {
    throw LogException("Can't serve " + address + ": " + exception.what());
}

/// The server's own thread cannot destroy the loop that it is in: that is left alone, and ends with the
/// process. A forked child may have been made while that thread was changing what the loop holds, for example
/// freeing what a client had sent: nothing of it can be destroyed there, and its memory is lost to the child.
ControlServer::~ControlServer() {
    const Platform::NoCancellation noCancellation;
    if (inside_->isInherited() && !inside_->isServing()) {
        inside_->closeInherited();
    }
    if (inside_->isInherited() || (inside_->isServing() && !inside_->hasEnded())) {
        static_cast<void>(inside_.release());
    }
    inside_.reset();
}

} // namespace Log
} // namespace ZAV
