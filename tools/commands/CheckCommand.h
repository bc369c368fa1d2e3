#pragma once

#include "Command.h"
#include "check/Finding.h"
#include "config/CustomAppenderClasses.h"
#include "options/ColorOption.h"

#include <CLI/CLI.hpp>
#include <string>
#include <vector>

namespace ZAV {
namespace Tools {

/// `zav-log check`: reports what the library would do with property files that their authors cannot have
/// intended.
class CheckCommand : public Command {
public:
    explicit CheckCommand(CLI::App& program);

    ExitCode run(Output& output) override;

private:
    bool isComplaint(const Finding& finding) const;

    std::vector<std::string> files_;
    bool isJson_ = false;
    bool isStrict_ = false;
    CustomAppenderClasses classes_;
    ColorOption color_;
};

} // namespace Tools
} // namespace ZAV
