#pragma once

#include "platform/LocalSocket.h"

#include <chrono>
#include <string>
#include <string_view>

namespace ZAV {
namespace Tools {

/// Asks a running program that has opened a `ControlServer`. What comes from there is taken with care: it has
/// a greatest size and a greatest time as a whole.
class ControlClient {
public:
    struct Answer {
        std::string lines;   ///< each with its end, without the last one, "ok"
        std::string refusal; ///< the program's reason; empty if it did what was asked
    };

    /// Long enough for all requests but a flush.
    static constexpr std::chrono::seconds USUAL_LIMIT{10};

    /// \param limit of the whole conversation, from now on
    /// \throw Failure if nobody is at the address, or somebody who is not trusted
    explicit ControlClient(const std::string& address, std::chrono::seconds limit = USUAL_LIMIT);

    /// \param request one line, without its end
    /// \throw Failure if no whole answer comes
    Answer ask(const std::string& request);

private:
    void receiveMore();

    const std::string address_;
    Platform::LocalClient connection_;
    std::string received_;
};

} // namespace Tools
} // namespace ZAV
