#pragma once

#include "Command.h"
#include "options/ColorOption.h"

#include <CLI/CLI.hpp>
#include <string>
#include <vector>

namespace ZAV {
namespace Tools {

/// `zav-log ctl`: sends one request to a running program and shows its answer.
class CtlCommand : public Command {
public:
    explicit CtlCommand(CLI::App& program);

    ExitCode run(Output& output) override;

private:
    std::vector<std::string> requestWords() const;
    std::string requestLine() const;
    std::string refusalText(const std::string& refusal) const;
    void show(const std::string& lines, Output& output) const;

    std::string address_;
    std::vector<std::string> request_; ///< with its arguments
    std::string duration_;
    CLI::Option* durationOption_ = nullptr;
    ColorOption color_;
};

} // namespace Tools
} // namespace ZAV
