#pragma once

#include "zav-util/Export.h"

#include <memory>
#include <string>

namespace ZAV {
namespace Log {

/// Lets the user of the process read and change the logging of a running program, from outside and by hand:
///
///     ZAV::Log::ControlServer server("/run/user/1000/shop.sock");
///
/// It serves from its construction to its destruction, in one thread of its own, which blocks all signals. It
/// is in the library `zav-log-control`; without it nothing listens anywhere. The command `zav-log ctl` asks
/// it, and so does any program that can write a line to a socket.
///
/// **Who is served.** Processes of the same user and of root, on the same machine; on Windows this user
/// alone. At most eight at once; further ones wait. Who sends no whole request for 30 seconds is
/// disconnected.
///
/// **What is asked.** A line of at most 4096 bytes, none of them NUL, which ends in LF or CR LF:
///
/// | request | what it does |
/// |---|---|
/// | `loggers` | a line for each logger: name, level, minutes of expiration (0 for ever); the root first |
/// | `appenders` | a line for each appender: name, class, `sync` or `async`, level now, seconds |
/// | `level LOGGER LEVEL` | `Logger::setLevel(LEVEL, true)` |
/// | `level LOGGER LEVEL for TIME` | `LogManager::setLevelFor`; TIME is `90sec`, `10min`, `2h` or `1d` |
/// | `expiration LOGGER MINUTES` | `Logger::setExpirationTime` |
/// | `command NAME [ARGUMENT]` | `LogManager::command`; the argument is the rest of the line |
/// | `statistics` | a line for each of the library's counters: name and value |
/// | `flush` | `LogManager::flush`, for at most five seconds |
/// | `reload [FILE]` | `LogManager::reload`; the file as this process finds it |
///
/// The level of an appender that has none is `-`. The seconds are those until the level goes back, if it was
/// lowered; `-` if it was not, and if it never goes back. A command to which nobody listens is answered by a
/// line that says so, before the `ok`.
///
/// **What is answered.** Either one line `error: TEXT`, or the lines that were asked for and then a line
/// `ok`. Each answer is sent before the next request of that client is read. Bytes of a name or a text that
/// are control characters appear as `\n`, `\x1b` and the like.
///
/// A request is carried out in the server's thread, by the calls that the table names. None of them keeps a
/// logging thread waiting for longer than the same call of the application would, whatever the clients do. A
/// listener of a command may take its time; the other clients wait meanwhile, and so does the destructor. A
/// `reload`, which waits for appenders that are busy, has a thread of its own, and nobody waits for it but
/// the client that has asked for it. A further one is refused until it is over.
class ZAV_LOG_CONTROL_API ControlServer {
public:
    /// \param address on Linux the path of a socket, which is made with the mode 0600. A socket that a crashed
    ///        process left there is replaced. On Windows the name of a pipe, without `\\.\pipe\`.
    /// \throw LogException if the address is served already, is taken by a file that is no socket, or cannot be
    ///        used; and if no thread can be started
    explicit ControlServer(const std::string& address);

    /// Disconnects all clients, also in the middle of an answer, and removes the socket. In a forked child,
    /// which serves nobody, it leaves the socket to the parent, and the server's memory is lost. A command
    /// listener should not call it, but may end the process: the socket then stays, for the next server to
    /// replace.
    ~ControlServer();

    ControlServer(const ControlServer&) = delete;
    ControlServer& operator=(const ControlServer&) = delete;

private:
    class Inside;
    std::unique_ptr<Inside> inside_;
};

} // namespace Log
} // namespace ZAV
