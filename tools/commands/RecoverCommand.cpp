#include "commands/RecoverCommand.h"

#include "Complaint.h"
#include "OutputClosed.h"
#include "UsageError.h"
#include "config/PropertySource.h"
#include "inputs/QueueLines.h"
#include "log/CommandListener.h"
#include "log/LogManager.h"
#include "log/async/AsynchronousDispatcher.h"
#include "log/config/KeyNames.h"
#include "log/config/ValueReaders.h"
#include "log/layout/LineLayout.h"
#include "log/queuefile/QueueFile.h"
#include "log/queuefile/Recovery.h"
#include "log/queuefile/StoredQueue.h"
#include "zav-util/Properties.h"

#include <memory>
#include <string>

namespace ZAV {
namespace Tools {

namespace {

/// The first failure of an appender says why the others fail, too.
class FailureWord : public Log::CommandListener {
public:
    FailureWord() { Log::LogManager::registerCommandListener("EXCEPTION", this); }
    ~FailureWord() override { Log::LogManager::unregisterCommandListener("EXCEPTION"); }

    void onCommand(const std::string& argument) override {
        if (!isSaid_) {
            complain(argument);
        }
        isSaid_ = true;
    }

private:
    bool isSaid_ = false;
};

/// \param isMarked whether the file is told of each line that was written
/// \throw OutputClosed, Failure
void writeAll(Log::QueueFile& file, const Log::LineLayout& layout, bool isMarked, Output& output) {
    for (const Log::StoredQueue::Message& message : file.earlier()->messages()) {
        output.write(lineOf(message, layout));
        output.flush();
        if (isMarked) {
            file.earlierDone(message.run->id).set(message.number);
        }
    }
}

/// As the program would have, but for the queue's own keys, since the file is open here.
Log::Recovery deliverAll(Log::QueueFile& file, Util::Properties properties, bool isMarked) {
    properties.erase(Log::dispatcherKey(Log::DispatcherOption::QUEUE_FILE));
    properties.erase(Log::dispatcherKey(Log::DispatcherOption::QUEUE_FILE_SIZE));
    Log::LogManager::init(properties);
    const FailureWord failureWord;
    const Log::Recovery recovery = Log::AsynchronousDispatcher::instance().recover(file, isMarked);
    Log::LogManager::finish();
    return recovery;
}

} // namespace

RecoverCommand::RecoverCommand(CLI::App& program)
    : Command(*program.add_subcommand("recover",
                                      "Deliver what a program that was killed has left in its queue file")) {
    command_.add_option("QUEUEFILE", path_, "The file that zav.log.AsynchronousDispatcher.queueFile names")
        ->required()
        ->type_name("");
    command_
        .add_option("--config", configuration_,
                    "The program's property file: its asynchronous appenders get the messages, instead of "
                    "standard output")
        ->type_name("FILE");
    layoutOption_ = command_.add_option("--layout", layout_, "The form of the lines on standard output")
                        ->type_name("LAYOUT")
                        ->check(CLI::IsMember({"plain", "process", "json"}));
    command_.footer(program.get_footer());
}

ExitCode RecoverCommand::run(Output& output) {
    if (!configuration_.empty() && layoutOption_->count() > 0) {
        throw UsageError("--layout has no effect with --config, whose appenders have layouts of their own");
    }
    // Before the file is touched, since what cannot be read ends the command.
    const Util::Properties properties =
        configuration_.empty() ? Util::Properties() : readProperties(configuration_);
    Log::QueueFile file(path_, 0, Log::QueueFile::ACCEPT_DAMAGED);
    if (file.earlier() == nullptr) {
        return EXIT_AS_WISHED; // an empty file
    }
    const bool isWhole = file.earlier()->problem().empty();
    Log::Recovery recovery;
    recovery.hasAppenders = true;
    if (configuration_.empty()) {
        try {
            writeAll(file, *Log::makeLayout(Log::readLayout(layout_), {}, false), isWhole, output);
        } catch (const OutputClosed&) {
            return EXIT_COMPLAINT; // the file keeps the rest
        }
    } else {
        recovery = deliverAll(file, properties, isWhole);
        output.write(std::to_string(recovery.messages) +
                     (recovery.messages == 1 ? " message\n" : " messages\n"));
    }
    if (!isWhole) {
        complain(path_ + ": " + file.earlier()->problem() +
                 "; some messages are missing, and it was left as it is");
        return EXIT_COMPLAINT;
    }
    if (!recovery.hasAppenders && !file.earlier()->messages().empty()) {
        complain(configuration_ + " has no asynchronous appender");
        return EXIT_COMPLAINT;
    }
    if (recovery.failures != 0) {
        return EXIT_COMPLAINT;
    }
    file.forgetEarlier();
    return EXIT_AS_WISHED;
}

} // namespace Tools
} // namespace ZAV
