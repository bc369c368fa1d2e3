#include "commands/Command.h"

#include "config/CustomAppenderClasses.h"
#include "explain/Explanation.h"
#include "explain/ExplanationForms.h"
#include "log/Level.h"
#include "options/ColorOption.h"
#include "options/LevelName.h"

#include <algorithm>
#include <string>

namespace ZAV {
namespace Tools {

namespace {

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

ExplainCommand::ExplainCommand(CLI::App& program)
    : Command(*program.add_subcommand("explain", "Say where messages would go with a property file")) {
    command_.add_option("FILE", file_, "The property file")->required()->type_name("");
    loggerOption_ =
        command_.add_option("LOGGER", logger_, "Whose messages; \"root\" for the root")->type_name("");
    levelOption_ = command_.add_option("LEVEL", levelName_, "Of one message")->type_name("");
    command_.add_option("--type", type_, "Of the messages: configuration messages are CFG")
        ->check(CLI::IsMember({"LOG", "CFG"}))
        ->type_name("LOG|CFG");
    command_
        .add_option("--at", address_,
                    "Take the levels of the running program that has a control server there")
        ->type_name("ADDRESS");
    command_.add_flag("--dot", isGraph_, "Show it as a graph for Graphviz");
    classes_.addTo(command_);
    color_.addTo(command_);
}

ExitCode ExplainCommand::run(Output& output) {
    classes_.registerAll();
    if (hasLevel()) {
        level_ = readLevel(levelName_);
    }
    const Explanation explanation(file_, Log::messageTypeFromString(type_), address_);
    if (hasLogger()) {
        logger_ = explanation.fullName(logger_);
    }
    output.write(isGraph_ ? describeAsGraph(explanation) : describe(explanation));
    if (!hasLevel()) {
        return EXIT_OK;
    }
    const std::vector<Delivery> deliveries = explanation.deliveriesOf(logger_, level_);
    const bool isWritten = std::any_of(deliveries.begin(), deliveries.end(),
                                       [](const Delivery& delivery) { return delivery.refusal.empty(); });
    return isWritten ? EXIT_OK : EXIT_PROBLEM;
}

std::string ExplainCommand::describe(const Explanation& explanation) const {
    if (hasLevel()) {
        return messageText(explanation, logger_, level_, color_.isOn());
    }
    return hasLogger() ? routesText(explanation, logger_) : tableText(explanation);
}

std::string ExplainCommand::describeAsGraph(const Explanation& explanation) const {
    DotGraph graph(explanation);
    if (hasLevel()) {
        graph.addMessage(logger_, level_);
    } else if (hasLogger()) {
        graph.addRoutes(logger_);
    } else {
        graph.addTable();
    }
    return graph.text();
}

} // namespace

std::unique_ptr<Command> makeExplainCommand(CLI::App& program) {
    return std::make_unique<ExplainCommand>(program);
}

} // namespace Tools
} // namespace ZAV
