#pragma once

#include "AcceptanceSupport.h"

#include <cerrno>
#include <cstddef>
#include <cstring>
#include <fcntl.h>
#include <optional>
#include <sched.h>
#include <sys/mount.h>
#include <sys/socket.h>
#include <sys/un.h>
#include <unistd.h>
#include <vector>

namespace ZAV::TestSupport {

/// A test whose process has the folders /dev and /run for itself, empty, so that it can be the daemon there.
/// It is skipped where the system does not allow that.
class OwnSystem : public Application {
protected:
    void SetUp() override {
        if (!enter()) {
            GTEST_SKIP() << "namespaces are not allowed here: " << std::strerror(errno);
        }
    }

private:
    static bool enter() {
        const std::string user = "0 " + std::to_string(geteuid()) + " 1";
        const std::string group = "0 " + std::to_string(getegid()) + " 1";
        if (geteuid() != 0) {
            if (unshare(CLONE_NEWUSER | CLONE_NEWNS) != 0) {
                return false;
            }
            writeFile("/proc/self/setgroups", "deny");
            writeFile("/proc/self/uid_map", user);
            writeFile("/proc/self/gid_map", group);
        } else if (unshare(CLONE_NEWNS) != 0) {
            return false;
        }
        return mount("none", "/", nullptr, MS_REC | MS_PRIVATE, nullptr) == 0 &&
               mount("none", "/dev", "tmpfs", 0, nullptr) == 0 &&
               mount("none", "/run", "tmpfs", 0, nullptr) == 0;
    }
};

/// What a daemon has: a socket at which it takes messages, here when the test wants to.
class DatagramSocket {
public:
    explicit DatagramSocket(const std::string& path)
        : number_(socket(AF_UNIX, SOCK_DGRAM | SOCK_CLOEXEC, 0)) {
        std::filesystem::create_directories(std::filesystem::path(path).parent_path());
        path.copy(address_.sun_path, sizeof address_.sun_path - 1);
        if (bind(number_, reinterpret_cast<const sockaddr*>(&address_), sizeof address_) != 0) {
            throw std::runtime_error("Cannot listen at " + path);
        }
    }
    ~DatagramSocket() { close(number_); }
    DatagramSocket(const DatagramSocket&) = delete;
    DatagramSocket& operator=(const DatagramSocket&) = delete;

    /// Waits for a message.
    std::string receive() { return receive(0); }

    /// \return the messages that wait
    std::vector<std::string> receiveAll() {
        std::vector<std::string> all;
        for (std::string next = receive(MSG_DONTWAIT); !next.empty(); next = receive(MSG_DONTWAIT)) {
            all.push_back(next);
        }
        return all;
    }

    /// Has the next message wait until there is room.
    void fill() {
        const int sender = socket(AF_UNIX, SOCK_DGRAM | SOCK_CLOEXEC, 0);
        while (sendto(sender, "x", 1, MSG_DONTWAIT, reinterpret_cast<const sockaddr*>(&address_),
                      sizeof address_) == 1) {
        }
        close(sender);
    }

private:
    std::string receive(int flags) {
        std::string message(1024 * 1024, '\0');
        const ssize_t size = recv(number_, message.data(), message.size(), flags);
        message.resize(static_cast<std::size_t>(std::max<ssize_t>(size, 0)));
        return message;
    }

    const int number_;
    sockaddr_un address_{AF_UNIX, {}};
};

} // namespace ZAV::TestSupport
