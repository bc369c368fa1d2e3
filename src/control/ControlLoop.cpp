#include "control/ControlLoop.h"

#include "log/LogManager.h"
#include "log/LogStatistics.h"
#include "platform/Process.h"
#include "zav-util/TimeUtils.h"

#include <algorithm>
#include <chrono>
#include <cstdint>
#include <stdexcept>
#include <thread>
#include <utility>

namespace ZAV {
namespace Log {

using Platform::LocalServer;

namespace {

/// How long one flush step may delay other clients and the server's shutdown.
const Util::TimeUtils::Time FLUSH_STEP(50, Util::TimeUtils::MSEC);

/// From this duration on, a command's listeners count as having kept other clients from being served.
constexpr std::chrono::seconds SLOW_LISTENER(1);

/// How soon a process ends that has only service threads left.
constexpr std::chrono::seconds POLL_INTERVAL(2);

} // namespace

ControlLoop::ControlLoop(const std::string& address, const Limits& limits)
    : limits_(limits), process_(Platform::processId()), server_(address, limits.clients),
      sessions_(static_cast<std::size_t>(limits.clients)), nextLivenessCheck_(Clock::now() + POLL_INTERVAL) {}

/// A listener or an appender may fork in this thread, and return in both processes. The child serves nobody:
/// the clients and the address are its parent's.
void ControlLoop::run() noexcept {
    Platform::markAsServing();
    bool isWanted = true;
    while (isWanted && isInOwnProcess()) {
        isWanted = runOnce() && hasOtherThreads();
    }
    if (!isInOwnProcess()) {
        closeInherited();
    }
    hasEnded_ = true;
}

/// While this thread runs, the process would neither end by itself nor react to a signal, since all are
/// blocked here.
bool ControlLoop::hasOtherThreads() {
    const Clock::time_point now = Clock::now();
    if (now < nextLivenessCheck_) {
        return true;
    }
    nextLivenessCheck_ = now + POLL_INTERVAL;
    return !Platform::isOnlyThread();
}

bool ControlLoop::isInOwnProcess() const {
    return process_ == Platform::processId();
}

/// \return false if the server is to stop
bool ControlLoop::runOnce() {
    int client = -1;
    try {
        const Event event = server_.wait(untilNextDeadline());
        client = event.client;
        if (event.kind == LocalServer::STOPPED) {
            return false;
        }
        const Clock::time_point begin = Clock::now();
        handle(event);
        if (!isInOwnProcess()) {
            return false;
        }
        extendIdleDeadlines(begin);
        continueFlush();
        continueReload();
    } catch (...) {
        // Out of memory. The application may recover, so this must not end it.
        if (client >= 0) {
            drop(client);
        } else {
            std::this_thread::sleep_for(Milliseconds(10));
        }
    }
    dropSilentClients();
    return true;
}

void ControlLoop::handle(const Event& event) {
    switch (event.kind) {
    case LocalServer::JOINED:
        session(event.client).emplace();
        session(event.client)->idleSince = Clock::now();
        server_.receive(event.client);
        break;
    case LocalServer::RECEIVED:
        session(event.client)->lines.append(event.bytes);
        serveNextLine(event.client);
        break;
    case LocalServer::SENT:
        if (!session(event.client)->isRefused) {
            session(event.client)->idleSince = Clock::now();
        }
        serveNextLine(event.client);
        break;
    case LocalServer::LEFT:
        session(event.client).reset();
        break;
    case LocalServer::NOTHING:
    case LocalServer::STOPPED:
        break;
    }
}

/// Carries out one line of a client; the others have their turn before its next one.
void ControlLoop::serveNextLine(int client) {
    const std::optional<LineBuffer::Line> line = session(client)->lines.next();
    if (line) {
        serve(client, *line);
    } else {
        server_.receive(client);
    }
}

void ControlLoop::serve(int client, const LineBuffer::Line& line) {
    if (line.isTooLong) {
        const std::string longest = std::to_string(LineBuffer::MAX_LENGTH);
        refuse(client, RequestHandler::refused("A request has at most " + longest + " bytes."));
        return;
    }
    try {
        const ControlRequest request = ControlRequest::parse(line.text);
        if (request.kind() == ControlRequest::FLUSH) {
            startFlushing(client);
        } else if (request.kind() == ControlRequest::RELOAD) {
            startReloading(client, request);
        } else {
            answerOrRefuse(client, RequestHandler::answerTo(request));
        }
    } catch (const std::invalid_argument& exception) {
        refuse(client, RequestHandler::refused(exception.what()));
    }
}

/// A client that asks during another reload is refused at once: waiting, it would occupy a client slot.
void ControlLoop::startReloading(int client, const ControlRequest& request) {
    const bool isUnderWay = (reload_ != nullptr && !reload_->isOver()) || isAnyoneReloading();
    if (isUnderWay) {
        refuse(client, RequestHandler::refused("Another reload is under way."));
        return;
    }
    session(client)->reload = std::make_shared<ReloadCall>(request);
}

void ControlLoop::answerOrRefuse(int client, const std::string& text) {
    RequestHandler::isRefusal(text) ? refuse(client, text) : answer(client, text);
}

void ControlLoop::answer(int client, const std::string& text) {
    session(client)->isRefused = false;
    session(client)->idleSince = Clock::now();
    server_.send(client, text);
}

/// A client whose requests are all refused counts as silent: empty lines must not keep a slot from other
/// clients.
void ControlLoop::refuse(int client, const std::string& text) {
    session(client)->isRefused = true;
    server_.send(client, text);
}

/// The target excludes messages discarded so far. If more are discarded later, the target is too high, and
/// the flush ends only when the whole queue is written.
void ControlLoop::startFlushing(int client) {
    const LogStatistics now = LogManager::statistics();
    session(client)->isFlushing = true;
    session(client)->flushUntil = Clock::now() + limits_.flush;
    session(client)->flushTarget = now.queued - now.discarded;
}

/// Flushes the queue for one step, on behalf of all clients that wait for it.
void ControlLoop::continueFlush() {
    if (!isAnyoneFlushing()) {
        return;
    }
    const bool isAllWritten = LogManager::flush(FLUSH_STEP);
    const std::uint64_t delivered = LogManager::statistics().delivered;
    for (int client = 0; client < limits_.clients; ++client) {
        const std::optional<ClientSession>& waiting = session(client);
        if (!waiting || !waiting->isFlushing) {
            continue;
        }
        if (isAllWritten || delivered >= waiting->flushTarget) {
            endFlushing(client, RequestHandler::done());
        } else if (Clock::now() >= waiting->flushUntil) {
            endFlushing(client, RequestHandler::refused("The queue was not written in time."));
        }
    }
}

void ControlLoop::endFlushing(int client, const std::string& text) {
    session(client)->isFlushing = false;
    answer(client, text);
}

/// One reload runs at a time, even if the client that asked for it disconnects.
void ControlLoop::continueReload() {
    if (reload_ != nullptr && !reload_->isOver()) {
        return;
    }
    const std::shared_ptr<ReloadCall> done = std::move(reload_);
    reload_ = nullptr;
    for (int client = 0; client < limits_.clients; ++client) {
        const std::shared_ptr<ReloadCall> wanted = session(client) ? session(client)->reload : nullptr;
        if (wanted != nullptr && wanted == done) {
            session(client)->reload = nullptr;
            answerOrRefuse(client, done->answer());
        } else if (wanted != nullptr && reload_ == nullptr) {
            wanted->start();
            reload_ = wanted;
        }
    }
}

bool ControlLoop::isAnyoneWaiting() const {
    return std::any_of(sessions_.begin(), sessions_.end(),
                       [](const auto& session) { return session && session->isWaiting(); });
}

bool ControlLoop::isAnyoneReloading() const {
    return std::any_of(sessions_.begin(), sessions_.end(),
                       [](const auto& session) { return session && session->reload != nullptr; });
}

bool ControlLoop::isAnyoneFlushing() const {
    return std::any_of(sessions_.begin(), sessions_.end(),
                       [](const auto& session) { return session && session->isFlushing; });
}

/// After a slow listener: what the other clients sent meanwhile has not been read.
void ControlLoop::extendIdleDeadlines(Clock::time_point begin) {
    const Clock::time_point now = Clock::now();
    if (now - begin < SLOW_LISTENER) {
        return; // many short ones must not excuse a client forever
    }
    for (std::optional<ClientSession>& session : sessions_) {
        if (session) {
            session->idleSince = std::min(now, session->idleSince + (now - begin));
        }
    }
}

void ControlLoop::dropSilentClients() {
    const Clock::time_point now = Clock::now();
    for (int client = 0; client < limits_.clients; ++client) {
        const std::optional<ClientSession>& silent = session(client);
        if (silent && !silent->isWaiting() && now - silent->idleSince >= limits_.silence) {
            drop(client);
        }
    }
}

void ControlLoop::drop(int client) {
    session(client).reset();
    server_.drop(client);
}

/// \return the timeout for the next event; none for no limit
std::optional<ControlLoop::Milliseconds> ControlLoop::untilNextDeadline() const {
    if (isAnyoneWaiting()) {
        return Milliseconds(10); // without a consumer, flushing does not wait
    }
    const Clock::time_point now = Clock::now();
    std::optional<Milliseconds> shortest;
    for (const auto& session : sessions_) {
        if (session) {
            const auto left = std::chrono::ceil<Milliseconds>(session->idleSince + limits_.silence - now);
            shortest = shortest ? std::min(*shortest, left) : left;
        }
    }
    return shortest;
}

std::optional<ClientSession>& ControlLoop::session(int client) {
    return sessions_[static_cast<std::size_t>(client)];
}

} // namespace Log
} // namespace ZAV
