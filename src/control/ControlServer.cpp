#include "log/ControlServer.h"

#include "control/ControlLoop.h"
#include "log/LogException.h"
#include "platform/CancellationGuard.h"
#include "platform/Process.h"
#include "platform/SignalGuard.h"

#include <exception>
#include <thread>

namespace ZAV {
namespace Log {

/// The loop with the thread that runs it.
class ControlServer::Inside {
public:
    explicit Inside(const std::string& address)
        : loop_(address, ControlLoop::Limits()), process_(Platform::processId()) {
        const Platform::NoSignals noSignals;
        thread_ = std::make_unique<std::thread>([this] { loop_.run(); });
    }

    ~Inside() {
        if (process_ != Platform::processId()) {
            // A forked child has no such thread: nothing to wait for, and nothing that could be destroyed.
            static_cast<void>(thread_.release());
            return;
        }
        loop_.stop();
        thread_->join();
    }

    /// \return true in the server's own thread, as when a command listener ends the process
    bool isServing() const { return thread_->get_id() == std::this_thread::get_id(); }

private:
    ControlLoop loop_;
    std::unique_ptr<std::thread> thread_;
    const int process_; ///< id of the one whose thread it is
};

ControlServer::ControlServer(const std::string& address) try {
    const Platform::NoCancellation noCancellation;
    inside_ = std::make_unique<Inside>(address);
} catch (const std::exception& exception) {
    throw LogException("Can't serve " + address + ": " + exception.what());
}

/// The server's own thread cannot wait for itself: the loop is left alone there, and ends with the process.
ControlServer::~ControlServer() {
    const Platform::NoCancellation noCancellation;
    if (inside_->isServing()) {
        static_cast<void>(inside_.release());
    }
    inside_.reset();
}

} // namespace Log
} // namespace ZAV
