#pragma once

#include "platform/LocalSocket.h"

#include <chrono>
#include <string>
#include <string_view>

namespace ZAV {
namespace Tools {

/// Sends requests to a running program that has opened a `ControlServer`. The answer is not trusted: its size
/// is limited, and so is the total time.
class ControlClient {
public:
    struct Answer {
        std::string lines;   ///< each with its line end, without the final "ok"
        std::string refusal; ///< the program's reason; empty if it did what was asked
    };

    /// Long enough for all requests but a flush.
    static constexpr std::chrono::seconds USUAL_LIMIT{10};

    /// \param limit timeout of the whole conversation, from now on
    /// \throw Failure if no server listens at the address, or one that is not trusted
    explicit ControlClient(const std::string& address, std::chrono::seconds limit = USUAL_LIMIT);

    /// \param request one line, without its line end
    /// \throw Failure if no complete answer arrives
    Answer ask(const std::string& request);

private:
    void receiveMore();

    const std::string address_;
    Platform::LocalClient connection_;
    std::string received_;
};

} // namespace Tools
} // namespace ZAV
