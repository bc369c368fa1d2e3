#include "ControlSupport.h"

#include "log/ControlServer.h"

#include <atomic>
#include <cstdlib>
#include <new>
#include <optional>
#include <sys/wait.h>
#include <unistd.h>

using namespace ZAV;
using namespace ZAV::Log;
using TestSupport::Client;
using TestSupport::Control;

namespace {

std::atomic<int> freed{0};

} // namespace

// They stand in the place of the system's. None is inlined: the compiler would see a malloc whose memory is
// deleted, or a new whose memory is freed, and take it for a mistake.

[[gnu::noinline]] void* operator new(std::size_t size) {
    if (void* const memory = std::malloc(size)) {
        return memory;
    }
    throw std::bad_alloc();
}

[[gnu::noinline]] void operator delete(void* memory) noexcept {
    ++freed;
    std::free(memory);
}

[[gnu::noinline]] void operator delete(void* memory, std::size_t) noexcept {
    ++freed;
    std::free(memory);
}

/// At the fork the server's thread may be in the middle of freeing something, which the child would free
/// again.
TEST_F(Control, AForkedChildFreesNothingThatTheServersThreadWorksOn) {
    std::optional<ControlServer> server(std::in_place, address_);
    Client client(address_);
    client.say("level root INFO\nhalf a request" + std::string(1000, 'x'));
    EXPECT_EQ(client.answer(), "ok\n");
    const pid_t child = fork();
    if (child == 0) {
        freed = 0;
        server.reset();
        _exit(freed);
    }
    int status = -1;
    ASSERT_EQ(waitpid(child, &status, 0), child);
    EXPECT_EQ(status, 0);
    client.say("\nflush\n");
    EXPECT_THAT(client.answer(), testing::StartsWith("error: "));
    EXPECT_EQ(client.answer(), "ok\n"); // the child has hung up on nobody
}
