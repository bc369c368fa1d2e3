#include "platform/HostName.h"

#include <winsock2.h>

namespace ZAV {
namespace Platform {

namespace {

/// The system counts how often its sockets library is started, so calls from several threads may overlap.
class SocketsLibrary {
public:
    SocketsLibrary() {
        WSADATA ignored;
        WSAStartup(MAKEWORD(1, 1), &ignored);
    }
    ~SocketsLibrary() { WSACleanup(); }
    SocketsLibrary(const SocketsLibrary&) = delete;
    SocketsLibrary& operator=(const SocketsLibrary&) = delete;
};

} // namespace

bool readHostName(std::string& name) {
    const SocketsLibrary started;
    char buffer[256] = {};
    if (gethostname(buffer, sizeof buffer - 1) != 0) {
        return false;
    }
    name = buffer;
    return true;
}

} // namespace Platform
} // namespace ZAV
