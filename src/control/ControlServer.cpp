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

    /// \return true in the server's own thread, for example if a command listener ends the process
    bool isServing() const { return thread_.get_id() == std::this_thread::get_id(); }

    /// \return true in a forked child
    bool isInherited() const { return !loop_.isInOwnProcess(); }

    /// \return true if the thread has left the loop; it may still be the process's last thread
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

/// The server's own thread cannot destroy the loop that it is running, which is leaked until the process
/// ends. In a forked child, the loop's state may have been copied in the middle of a change by that thread,
/// such as freeing what a client had sent, so nothing of it can be destroyed, and its memory is leaked.
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
