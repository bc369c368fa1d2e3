#pragma once

/// \file
/// Inspects and changes the logging of a running program from outside.

#include "zav-util/Export.h"

#include <memory>
#include <string>

namespace ZAV {
namespace Log {

/// Lets the user of the process inspect and change the logging of a running program from outside:
///
///     #include "log/LogSession.h"
///
///     int main() {
///         const ZAV::Log::LogSession session("app.properties");
///         const ZAV::Log::ControlServer server("/run/user/1000/shop.sock");
///         // ...
///     }
///
/// It serves clients from its construction to its destruction, in one thread of its own, which blocks all
/// signals. It is in the library `zav-log-control`; a program without an object of this class does not listen
/// anywhere. Clients are the command `zav-log ctl` and any program that can write a line to a socket.
///
/// **Clients.** Processes of the same user and of root, on the same machine; on Windows of this user only. At
/// most eight are served at once; further ones wait. A client that sends no complete request for 30 seconds
/// is disconnected.
///
/// **Requests.** A line of at most 4096 bytes, none of them NUL, which ends in LF or CR LF:
///
/// | request | what it does |
/// |---|---|
/// | `loggers` | a line for each logger: name, level, expiration in minutes (0: no limit); the root first |
/// | `appenders` | a line for each appender: name, class, `sync` or `async`, current level, seconds |
/// | `level LOGGER LEVEL` | `Logger::setLevel(LEVEL, true)` |
/// | `level LOGGER LEVEL for TIME` | `LogManager::setLevelFor`; TIME is `90sec`, `10min`, `2h` or `1d` |
/// | `expiration LOGGER MINUTES` | `Logger::setExpirationTime` |
/// | `command NAME [ARGUMENT]` | `LogManager::command`; the argument is the rest of the line |
/// | `statistics` | a line for each of the library's counters: name and value |
/// | `flush` | `LogManager::flush`, for at most five seconds |
/// | `reload [FILE]` | `LogManager::reload`; a relative path starts at this process's working directory |
///
/// The level of an appender that has none is `-`. The seconds are those until a lowered level is restored;
/// `-` if it is not lowered or is never restored. If a command has no listener, a line before the `ok` says
/// so.
///
/// **Answers.** Either one line `error: TEXT`, or the requested lines and then a line `ok`. Each answer is
/// sent before the next request of that client is read. Control characters in a name or a text appear as
/// `\n`, `\x1b` and the like.
///
/// A request is carried out in the server's thread, by the functions that the table names. Whatever the
/// clients do, a logging thread never waits longer for it than it would for the same call from the
/// application. While a command listener runs, the other clients wait, and so does the destructor. A `reload`
/// waits for appenders that are busy. It therefore has a thread of its own, and only the client that
/// requested it waits for it; another one is refused until it is complete.
class ZAV_LOG_CONTROL_API ControlServer {
public:
    /// \param address on Linux the path of a socket, which is created with the mode 0600. A socket that a
    ///        crashed process has left there is replaced. On Windows the name of a pipe, without `\\.\pipe\`.
    /// \throw LogException if another server uses the address, if it is a file that is not a socket, if it
    ///        cannot be used, or if no thread can be started
    explicit ControlServer(const std::string& address);

    /// Disconnects all clients, even in the middle of an answer, and removes the socket. In a forked child,
    /// where no clients are served, it leaves the socket to the parent and leaks the server's memory. A
    /// command listener should not call it, but may end the process; the socket then stays until the next
    /// server replaces it.
    ~ControlServer();

    ControlServer(const ControlServer&) = delete;
    ControlServer& operator=(const ControlServer&) = delete;

private:
    class Inside;
    std::unique_ptr<Inside> inside_;
};

} // namespace Log
} // namespace ZAV
