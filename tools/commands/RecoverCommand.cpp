#include "commands/RecoverCommand.h"

#include "Complaint.h"
#include "OutputClosed.h"
#include "UsageError.h"
#include "config/PropertySource.h"
#include "log/LogLine.h"
#include "log/LogManager.h"
#include "log/async/AsynchronousDispatcher.h"
#include "log/config/KeyNames.h"
#include "log/config/ValueReaders.h"
#include "log/layout/LineLayout.h"
#include "log/layout/ProcessDescription.h"
#include "log/queuefile/QueueFile.h"
#include "log/queuefile/Recovery.h"
#include "log/queuefile/StoredQueue.h"
#include "zav-util/Properties.h"

#include <cstdint>
#include <memory>

namespace ZAV {
namespace Tools {

namespace {

/// How many lines may come again if the command is killed.
constexpr std::uint64_t LINES_A_WRITE = 100;

/// The first failure of an appender says why the others fail, too.
class FailureWord : public Log::CommandListener {
public:
    FailureWord() { Log::LogManager::registerCommandListener("EXCEPTION", this); }
    ~FailureWord() override { Log::LogManager::unregisterCommandListener("EXCEPTION"); }

    void onCommand(const std::string&, const std::string& argument) override {
        if (!isSaid_) {
            complain(argument);
        }
        isSaid_ = true;
    }

private:
    bool isSaid_ = false;
};

/// Marks what was written, run by run.
class Progress {
public:
    Progress(Log::QueueFile& file, bool isMarked) : file_(file), isMarked_(isMarked) {}

    void add(const Log::StoredQueue::Message& message) {
        if (last_ != nullptr && last_->run != message.run) {
            mark();
        }
        last_ = &message;
    }

    void mark() {
        if (last_ != nullptr && isMarked_) {
            file_.earlierDone(last_->run->id).set(last_->number);
        }
    }

private:
    Log::QueueFile& file_;
    const bool isMarked_;
    const Log::StoredQueue::Message* last_ = nullptr;
};

/// \return how many were written
/// \throw OutputClosed, Failure; what was written before is marked
std::uint64_t writeAll(Log::QueueFile& file, const Log::LineLayout& layout, bool isMarked, Output& output) {
    Progress progress(file, isMarked);
    std::uint64_t count = 0;
    for (const Log::StoredQueue::Message& message : file.earlier()->messages()) {
        const Log::StoredQueue::Run& run = *message.run;
        const Log::ShownProcess shown({run.program, run.processId, run.host});
        const Log::LogMessage made = message.fields.makeMessage();
        std::string line;
        Log::appendWholeLine(line, Log::MessageFields(made), layout);
        output.write(line);
        progress.add(message);
        if (++count % LINES_A_WRITE == 0) {
            output.flush();
            progress.mark();
        }
    }
    output.flush();
    progress.mark();
    return count;
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
        complain("0 messages");
        return EXIT_AS_WISHED;
    }
    const bool isWhole = file.earlier()->problem().empty();
    Log::Recovery recovery;
    recovery.hasAppenders = true;
    if (configuration_.empty()) {
        const auto layout = Log::makeLayout(Log::readLayout(layout_), {}, false);
        try {
            recovery.messages = writeAll(file, *layout, isWhole, output);
        } catch (const OutputClosed&) {
            return EXIT_COMPLAINT; // the file keeps the rest
        }
    } else {
        recovery = deliverAll(file, properties, isWhole);
    }
    complain(std::to_string(recovery.messages) + (recovery.messages == 1 ? " message" : " messages"));
    if (!isWhole) {
        complain("The queue file " + path_ + " is damaged (" + file.earlier()->problem() +
                 "): some messages are missing. It was left as it is.");
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
