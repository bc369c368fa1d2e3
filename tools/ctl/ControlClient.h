#pragma once

#include "platform/LocalClient.h"

#include <string>
#include <vector>

namespace ZAV {
namespace Tools {

/// Asks a running program that has opened a `ControlServer`.
class ControlClient {
public:
    struct Answer {
        std::vector<std::string> lines; ///< without the last one, "ok"
        std::string refusal;            ///< the program's reason; empty if it did what was asked
    };

    /// \throw Failure if nobody is at the address
    explicit ControlClient(const std::string& address);

    /// \param request one line, without its end
    /// \throw Failure if no whole answer comes
    Answer ask(const std::string& request);

private:
    std::string readLine();

    const std::string address_;
    Platform::LocalClient connection_;
    std::string received_; ///< what is not read yet
};

} // namespace Tools
} // namespace ZAV
