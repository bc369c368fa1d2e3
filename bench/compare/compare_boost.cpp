// Boost.Log: it has no function that takes a finished string; opening and pushing a record by hand comes
// closest. Its asynchronous queue is unbounded.

#include "BoostSetup.h"
#include "Latency.h"
#include "ThreadMemory.h"

#include <boost/log/core.hpp>
#include <boost/log/expressions.hpp>
#include <boost/log/sinks/async_frontend.hpp>
#include <boost/log/sinks/basic_sink_backend.hpp>
#include <boost/log/sinks/sync_frontend.hpp>
#include <boost/log/sinks/text_file_backend.hpp>
#include <boost/log/sinks/text_multifile_backend.hpp>
#include <boost/log/sources/record_ostream.hpp>
#include <boost/log/sources/severity_channel_logger.hpp>
#include <boost/log/utility/manipulators/add_value.hpp>
#include <boost/make_shared.hpp>

#include <chrono>
#include <memory>
#include <string>
#include <thread>
#include <vector>

namespace {

using namespace Bench;
/// \param write puts the text into the record's stream
template <typename Logger, typename Write>
void logWritten(Logger& logger, Write write) {
    boost::log::record record = logger.open_record(keywords::severity = INFO);
    if (record) {
        boost::log::record_ostream stream(record);
        stream << boost::log::add_value("File", SampleLine::SOURCE_FILE)
               << boost::log::add_value("Line", SampleLine::SOURCE_LINE);
        write(stream);
        stream.flush();
        logger.push_record(boost::move(record));
    }
}

template <typename Logger>
void logLine(Logger& logger, const std::string& text) {
    logWritten(logger, [&text](boost::log::record_ostream& stream) { stream << text; });
}

auto streamedCall(std::size_t = 0) {
    const auto logger = std::make_shared<OwnLogger>(keywords::channel = SampleLine::sharedLoggerName());
    return [logger](std::size_t i) {
        logWritten(*logger, [i](boost::log::record_ostream& stream) {
            stream << "user " << i << " left after " << static_cast<double>(i) * 0.25 << " s from "
                   << "10.0.0.1";
        });
    };
}

auto callOfOwnLogger(std::size_t thread) {
    const auto logger = std::make_shared<OwnLogger>(keywords::channel = SampleLine::ownLoggerName(thread));
    return [logger, text = std::string(SampleLine::TEXT)](std::size_t) { logLine(*logger, text); };
}

/// Only a single thread may use the logger without a lock.
template <typename Logger>
auto makeCallOf(Logger& logger) {
    return [&logger](std::size_t) {
        return [&logger, text = std::string(SampleLine::TEXT)](std::size_t) { logLine(logger, text); };
    };
}

/// Calls a function with the logger that suits the number of threads.
template <typename Function>
void withSharedLogger(const Task& task, Function function) {
    if (task.oneThread()) {
        OwnLogger logger(keywords::channel = SampleLine::sharedLoggerName());
        function(makeCallOf(logger));
    } else {
        SharedLogger logger(keywords::channel = SampleLine::sharedLoggerName());
        function(makeCallOf(logger));
    }
}

template <typename MakeCall>
void measureRejected(const Task& task, MakeCall makeCall) {
    attachFile(task);
    boost::log::core::get()->set_filter(expressions::attr<Severity>("Severity") >= WARNING);
    const auto logAccepted = [] {
        boost::log::core::get()->reset_filter();
        callOfOwnLogger(0)(0);
    };
    measureRejectedCalls(task, makeCall, logAccepted, [&task] { return task.file(); });
}

void rejectedFunction(const Task& task) {
    measureRejected(task, callOfOwnLogger);
}

void rejectedMacro(const Task& task) {
    measureRejected(task, [](std::size_t thread) {
        const auto logger =
            std::make_shared<OwnLogger>(keywords::channel = SampleLine::ownLoggerName(thread));
        return [logger](std::size_t id) { BOOST_LOG_SEV(*logger, INFO) << "user " << id << " left"; };
    });
}

void ownLoggers(const Task& task) {
    attachFile(task);
    measureSynchronous(task, callOfOwnLogger);
}

void sharedLogger(const Task& task) {
    attachFile(task);
    withSharedLogger(task, [&task](auto makeCall) { measureSynchronous(task, makeCall); });
}

/// \param measure called while the records go to a queue
template <typename Measure>
void withQueue(const Task& task, Measure measure) {
    const auto sink = attach(boost::make_shared<sinks::asynchronous_sink<Backend>>(makeFileBackend(task)));
    measure();
    boost::log::core::get()->remove_all_sinks();
    sink->stop();
}

template <typename MakeCall>
void measureQueue(const Task& task, MakeCall makeCall) {
    withQueue(task, [&] { measureAsynchronous(task, makeCall, task.file()); });
}

void burst(const Task& task) {
    withQueue(task, [&task] { measureBurst(task, streamedCall, task.file()); });
}

void seldom(const Task& task) {
    withQueue(task, [&task] { measureThreadMemory(task, streamedCall, task.file()); });
}

Workload latency(const Rhythm& rhythm) {
    return [&rhythm](const Task& task) {
        withQueue(task, [&] { measureLatency(task, rhythm, streamedCall(), task.file()); });
    };
}

class DroppingBackend : public sinks::basic_sink_backend<sinks::synchronized_feeding> {
public:
    DroppedMessages dropped;

    void consume(const boost::log::record_view& record) {
        dropped.add(record[expressions::smessage].get<std::string>());
    }
};

template <typename MakeCall>
void measureDropped(const Task& task, MakeCall makeCall, const std::string& textPattern) {
    addAttributes();
    const auto backend = boost::make_shared<DroppingBackend>();
    boost::log::core::get()->add_sink(boost::make_shared<sinks::synchronous_sink<DroppingBackend>>(backend));
    measureDroppedCalls(task, makeCall, backend->dropped, textPattern);
    boost::log::core::get()->remove_all_sinks();
}

void droppedText(const Task& task) {
    withSharedLogger(task, [&task](auto makeCall) { measureDropped(task, makeCall, SampleLine::TEXT); });
}

void droppedStreamed(const Task& task) {
    measureDropped(task, streamedCall, SampleLine::VALUES_TEXT_PATTERN);
}

void asynchronousOwnLoggers(const Task& task) {
    measureQueue(task, callOfOwnLogger);
}

void asynchronousSharedLogger(const Task& task) {
    withSharedLogger(task, [&task](auto makeCall) { measureQueue(task, makeCall); });
}

void rotation(const Task& task) {
    const auto backend = boost::make_shared<sinks::text_file_backend>(
        keywords::file_name = task.file(), keywords::target_file_name = task.file() + ".%N",
        keywords::rotation_size = ROTATION_BYTES, keywords::auto_flush = true);
    backend->enable_final_rotation(false);
    backend->set_file_collector(sinks::file::make_collector(keywords::target = task.folder,
                                                            keywords::max_files = ROTATION_FILES - 1));
    attach(boost::make_shared<sinks::synchronous_sink<sinks::text_file_backend>>(backend));
    withSharedLogger(task, [&task](auto makeCall) { measureRotation(task, makeCall); });
}

/// The backend for many files, which opens and closes the file for each line.
void reopenedFile(const Task& task) {
    const auto backend = boost::make_shared<sinks::text_multifile_backend>();
    backend->set_file_name_composer(sinks::file::as_file_name_composer(expressions::stream << task.file()));
    attach(boost::make_shared<sinks::synchronous_sink<sinks::text_multifile_backend>>(backend))
        ->set_formatter(makeFormatterWithProcess());
    FileFormat format;
    format.pattern = patternWithHexadecimalProcessId();
    withSharedLogger(task, [&](auto makeCall) {
        measureWritingCalls(
            task, REOPENED_MESSAGES, makeCall, [&task] { return task.file(); }, format);
    });
}

boost::log::record_view makeRecord(OwnLogger& logger) {
    boost::log::record record = logger.open_record(keywords::severity = INFO);
    boost::log::record_ostream stream(record);
    stream << boost::log::add_value("File", SampleLine::SOURCE_FILE)
           << boost::log::add_value("Line", SampleLine::SOURCE_LINE) << SampleLine::TEXT;
    stream.flush();
    return record.lock();
}

std::vector<boost::log::record_view> makeRecords() {
    OwnLogger logger(keywords::channel = SampleLine::sharedLoggerName());
    std::vector<boost::log::record_view> records;
    for (std::size_t i = 0; i < RENDERED_RING; ++i) {
        records.push_back(makeRecord(logger));
        std::this_thread::sleep_for(std::chrono::milliseconds(1));
    }
    return records;
}

void measureFormatter(const Task& task, const boost::log::formatter& formatter, const std::string& pattern) {
    addAttributes();
    const std::vector<boost::log::record_view> records = makeRecords();
    std::string line;
    boost::log::formatting_ostream stream(line);
    measureRendering(task, pattern, [&](std::size_t i) -> const std::string& {
        line.clear();
        formatter(records[i % RENDERED_RING], stream);
        stream.flush();
        return line;
    });
}

void rendering(const Task& task) {
    measureFormatter(task, makeFormatter(), SampleLine::pattern());
}

void renderingWithProcess(const Task& task) {
    measureFormatter(task, makeFormatterWithProcess(), patternWithHexadecimalProcessId());
}

} // namespace

int main(int argc, char** argv) {
    return runWorkloads(argc, argv,
                        {{"rejected-function", rejectedFunction},
                         {"rejected-macro", rejectedMacro},
                         {"sync-own", ownLoggers},
                         {"sync-shared", sharedLogger},
                         {"async-own", asynchronousOwnLoggers},
                         {"async-shared", asynchronousSharedLogger},
                         {"dropped-text", droppedText},
                         {"dropped-streamed", droppedStreamed},
                         {"burst-streamed", burst},
                         {"latency-bursts", latency(BURSTS)},
                         {"latency-bursts-prompt", latency(BURSTS)},
                         {"latency-spaced", latency(SPACED)},
                         {"latency-spaced-prompt", latency(SPACED)},
                         {"seldom", seldom},
                         {"rotation", rotation},
                         {"rendering", rendering},
                         {"rendering-process", renderingWithProcess},
                         {"reopen", reopenedFile}});
}
