#pragma once

#include "control/ControlRequest.h"
#include "control/RequestHandler.h"
#include "platform/LocalSocket.h"

#include <atomic>
#include <chrono>
#include <cstdint>
#include <memory>
#include <optional>
#include <string>
#include <vector>

namespace ZAV {
namespace Log {

/// The state of a connected client.
struct ClientSession {
    using Clock = std::chrono::steady_clock;

    LineBuffer lines;
    Clock::time_point idleSince; ///< when a request was last carried out or an answer completely received
    bool isRefused = false;      ///< whether the last request was refused, which does not count as activity

    bool isFlushing = false; ///< answered when the queue is written, or at `flushUntil`
    Clock::time_point flushUntil;
    std::uint64_t flushTarget = 0; ///< delivery count at which all messages queued at the request are written

    std::shared_ptr<ReloadCall> reload; ///< answered when that is over; null if none was requested

    /// \return whether an answer is pending
    bool isWaiting() const { return isFlushing || reload != nullptr; }
};

/// Serves all clients in one thread, one request at a time, without blocking on any client.
class ControlLoop {
public:
    using Milliseconds = Platform::LocalServer::Milliseconds;

    struct Limits {
        int clients = 8;             ///< at once
        Milliseconds silence{30000}; ///< after which a client is dropped
        Milliseconds flush{5000};    ///< timeout of a `flush`
    };

    /// \throw std::runtime_error if the address cannot be claimed
    ControlLoop(const std::string& address, const Limits& limits);

    /// The server thread's function. Serves until `stop` is called, until only service threads are left in
    /// the process, or until the thread finds itself in a forked child.
    void run() noexcept;

    /// \return whether the thread has reached the end of `run`
    bool hasEnded() const noexcept { return hasEnded_; }

    /// \return false in a forked child
    bool isInOwnProcess() const;

    /// May be called from any thread.
    void stop() noexcept { server_.stop(); }

    /// For a forked child: closes the inherited descriptors. The loop must not be used or destroyed
    /// afterwards.
    void closeInherited() noexcept { server_.closeInherited(); }

private:
    using Clock = ClientSession::Clock;
    using Event = Platform::LocalServer::Event;

    bool runOnce();
    bool hasOtherThreads();
    void handle(const Event& event);
    void serveNextLine(int client);
    void serve(int client, const LineBuffer::Line& line);
    void answerOrRefuse(int client, const std::string& text);
    void answer(int client, const std::string& text);
    void refuse(int client, const std::string& text);
    void startFlushing(int client);
    void startReloading(int client, const ControlRequest& request);
    void continueFlush();
    void endFlushing(int client, const std::string& text);
    void extendIdleDeadlines(Clock::time_point begin);
    void dropSilentClients();
    void drop(int client);
    void continueReload();
    bool isAnyoneFlushing() const;
    bool isAnyoneReloading() const;
    bool isAnyoneWaiting() const;
    std::optional<Milliseconds> untilNextDeadline() const;
    std::optional<ClientSession>& session(int client);

    const Limits limits_;
    const int process_; ///< id of the process that it serves in
    Platform::LocalServer server_;
    std::vector<std::optional<ClientSession>> sessions_; ///< indexed by client number
    std::shared_ptr<ReloadCall> reload_;  ///< the one in progress, or null; its client may have disconnected
    Clock::time_point nextLivenessCheck_; ///< when to check next whether other threads are left
    std::atomic<bool> hasEnded_{false};
};

} // namespace Log
} // namespace ZAV
