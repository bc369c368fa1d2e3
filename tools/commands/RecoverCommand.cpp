#include "commands/Command.h"

#include "config/PropertyFile.h"
#include "inputs/QueueLines.h"
#include "log/CommandListener.h"
#include "log/LogManager.h"
#include "log/async/AsynchronousDispatcher.h"
#include "log/config/ConfigurationKeys.h"
#include "log/config/ValueReaders.h"
#include "log/layout/LineLayout.h"
#include "log/queuefile/QueueFile.h"
#include "log/queuefile/StoredQueue.h"
#include "zav-util/Properties.h"

#include <cstdint>
#include <exception>
#include <iostream>
#include <optional>
#include <string>

namespace ZAV {
namespace Tools {

namespace {

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

/// Reports only the first failure of an appender, which explains the others.
class FirstFailureReporter : public Log::CommandListener {
public:
    FirstFailureReporter() { Log::LogManager::registerCommandListener("EXCEPTION", this); }
    ~FirstFailureReporter() override { Log::LogManager::unregisterCommandListener("EXCEPTION"); }

    void onCommand(const std::string& argument) override {
        if (!isSaid_) {
            reportError(argument);
        }
        isSaid_ = true;
    }

private:
    bool isSaid_ = false;
};

/// Writes the messages and marks each as delivered; a damaged file takes no marks.
/// \param recovery receives what has become of the messages so far
/// \throw OutputClosed, Failure
void writeAll(Log::QueueFile& file, const Log::LineLayout& layout, Output& output, Log::Recovery& recovery) {
    recovery.hasAppenders = true;
    for (const Log::StoredQueue::Message& message : file.earlier()->messages()) {
        const std::optional<std::string> line = lineOf(message, layout);
        if (line) {
            output.write(*line);
            output.flush();
        }
        ++(line ? recovery.messages : recovery.lost);
        file.earlierDone(message.run->id).set(message.number);
    }
}

/// Delivers as the program would, but without the queue file's own keys, since that file is open here.
Log::Recovery deliverAll(Log::QueueFile& file, Util::Properties properties) {
    properties.erase(Log::dispatcherKey(Log::DispatcherOption::QUEUE_FILE));
    properties.erase(Log::dispatcherKey(Log::DispatcherOption::QUEUE_FILE_SIZE));
    Log::LogManager::init(properties);
    const FirstFailureReporter failureWord;
    const Log::Recovery recovery = Log::AsynchronousDispatcher::instance().recover(file);
    Log::LogManager::finish();
    return recovery;
}

/// Reports what was not delivered.
/// \return false if anything was not
bool checkThatAllIsThere(const Log::Recovery& recovery, const std::string& configuration) {
    if (!recovery.hasAppenders) {
        reportError(configuration + " has no asynchronous appender");
    }
    for (const std::string& name : recovery.failed) {
        reportError("appender " + name + " could not write all; the file keeps the rest");
    }
    if (recovery.lost != 0) {
        reportError(std::to_string(recovery.lost) +
                    " of the messages could not be written for want of memory");
    }
    return recovery.isAllGiven() && recovery.lost == 0;
}

RecoverCommand::RecoverCommand(CLI::App& program)
    : Command(*program.add_subcommand("recover",
                                      "Deliver what a program that was killed has left in its queue file")) {
    command_.add_option("QUEUEFILE", path_, "The file that zav.log.AsynchronousDispatcher.queueFile names")
        ->required()
        ->type_name("");
    configurationOption_ =
        command_
            .add_option(
                "--config", configuration_,
                "The program's property file: its asynchronous appenders get the messages, instead of "
                "standard output")
            ->type_name("FILE");
    layoutOption_ = command_.add_option("--layout", layout_, "The form of the lines on standard output")
                        ->type_name("LAYOUT")
                        ->check(CLI::IsMember({"plain", "process", "json"}));
    command_.footer(program.get_footer());
}

ExitCode RecoverCommand::run(Output& output) {
    if (configurationOption_->count() != 0 && layoutOption_->count() > 0) {
        throw UsageError("--layout has no effect with --config, whose appenders have layouts of their own");
    }
    // Before the file is touched, since an unreadable property file ends the command.
    const Util::Properties properties =
        configurationOption_->count() == 0 ? Util::Properties() : readProperties(configuration_);
    Log::QueueFile file(path_, 0, Log::QueueFile::ACCEPT_DAMAGED);
    Log::Recovery recovery;
    bool isAllThere = false;
    try {
        isAllThere = deliver(file, properties, output, recovery);
    } catch (const std::exception& exception) {
        reportError(exception.what());
    } catch (const OutputClosed&) {
        // Nobody reads the rest, which stays in the file.
    }
    std::cerr << recovery.messages << (recovery.messages == 1 ? " message\n" : " messages\n");
    return isAllThere ? EXIT_OK : EXIT_PROBLEM;
}

/// \param recovery receives what has become of the messages, also if not all of them can be written
/// \return whether nothing is left
bool RecoverCommand::deliver(Log::QueueFile& file, const Util::Properties& properties, Output& output,
                             Log::Recovery& recovery) {
    if (file.earlier() == nullptr) {
        return true; // an empty file
    }
    const std::string damage = file.earlier()->problem();
    const bool isEmpty = file.earlier()->messages().empty();
    if (configurationOption_->count() == 0) {
        writeAll(file, *Log::makeLayout(Log::readLayout(layout_), {}, false), output, recovery);
    } else {
        recovery = deliverAll(file, properties);
    }
    const bool isAllThere = isEmpty || checkThatAllIsThere(recovery, configuration_);
    if (damage.empty() && (isEmpty || recovery.isAllGiven())) {
        file.forgetEarlier();
    } else if (!damage.empty()) {
        reportError(path_ + ": " + damage + "; " + (isEmpty ? "none" : "not all") +
                    " of its messages can be read, and it was left as it is");
    }
    return isAllThere && damage.empty();
}

} // namespace

std::unique_ptr<Command> makeRecoverCommand(CLI::App& program) {
    return std::make_unique<RecoverCommand>(program);
}

} // namespace Tools
} // namespace ZAV
