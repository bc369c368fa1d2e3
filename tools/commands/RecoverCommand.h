#pragma once

#include "Command.h"

#include <CLI/CLI.hpp>
#include <string>

namespace ZAV {
namespace Log {
class QueueFile;
struct Recovery;
} // namespace Log
namespace Util {
class Properties;
}

namespace Tools {

/// `zav-log recover`: delivers the messages that a program has left in its queue file.
class RecoverCommand : public Command {
public:
    explicit RecoverCommand(CLI::App& program);

    ExitCode run(Output& output) override;

private:
    bool deliver(Log::QueueFile& file, const Util::Properties& properties, Output& output,
                 Log::Recovery& recovery);

    std::string path_;
    std::string configuration_;
    std::string layout_ = "plain";
    CLI::Option* configurationOption_ = nullptr;
    CLI::Option* layoutOption_ = nullptr;
};

} // namespace Tools
} // namespace ZAV
