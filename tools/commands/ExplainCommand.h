#pragma once

#include "Command.h"
#include "config/CustomAppenderClasses.h"
#include "explain/Explanation.h"
#include "log/Level.h"
#include "options/ColorOption.h"

#include <CLI/CLI.hpp>
#include <string>

namespace ZAV {
namespace Tools {

/// `zav-log explain`: shows where the messages of a logger would go.
class ExplainCommand : public Command {
public:
    explicit ExplainCommand(CLI::App& program);

    ExitCode run(Output& output) override;

private:
    std::string describe(const Explanation& explanation) const;
    std::string describeAsGraph(const Explanation& explanation) const;
    bool hasLogger() const { return loggerOption_->count() > 0; }
    bool hasLevel() const { return levelOption_->count() > 0; }

    std::string file_;
    std::string logger_;
    CLI::Option* loggerOption_ = nullptr;
    std::string levelName_;
    CLI::Option* levelOption_ = nullptr;
    Log::Level::LogLevel level_ = Log::Level::LEVEL_AUDIT;
    std::string type_ = "LOG";
    std::string address_;
    bool isGraph_ = false;
    CustomAppenderClasses classes_;
    ColorOption color_;
};

} // namespace Tools
} // namespace ZAV
