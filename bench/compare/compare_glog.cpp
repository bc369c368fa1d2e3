// glog: its layout is fixed and has no logger names; the line is about as long as the others'. It has no
// function for a finished string, no asynchronous appender, no layout class and no limit on the number of
// files.

#include "Workload.h"

#include <gflags/gflags.h>
#include <glog/logging.h>

#include <ctime>
#include <stdexcept>
#include <string>
#include <string_view>

namespace {

using namespace Bench;

FileFormat fixedFormat() {
    FileFormat format;
    format.pattern =
        R"(I\d{8} \d\d:\d\d:\d\d\.\d{6} +\d+ Socket\.cpp:120\] connected to the backend server, request 12345)";
    format.headerLines = 4;
    return format;
}

void logLine(const std::string& text) {
    google::LogMessage(SampleLine::SOURCE_FILE, SampleLine::SOURCE_LINE, google::GLOG_INFO).stream() << text;
}

auto loggingCall(std::size_t) {
    return [text = std::string(SampleLine::TEXT)](std::size_t) { logLine(text); };
}

void openFile(const Task& task) {
    FLAGS_stderrthreshold = google::GLOG_FATAL;
    FLAGS_logbuflevel = -1; // Flushes every line.
    // Otherwise it makes the kernel write each full megabyte to the disk, which no other logger does.
    if (gflags::SetCommandLineOption("drop_log_memory", "false").empty()) {
        throw std::runtime_error("glog does not know drop_log_memory");
    }
    google::SetLogSymlink(google::GLOG_INFO, "");
    google::SetLogDestination(google::GLOG_INFO, task.file().c_str());
    google::InitGoogleLogging("compare_glog");
}

void rejectedMacro(const Task& task) {
    openFile(task);
    const auto makeCall = [](std::size_t) {
        return [](std::size_t id) { VLOG(1) << "user " << id << " left"; };
    };
    const auto logAccepted = [] { logLine(SampleLine::TEXT); };
    measureRejectedCalls(
        task, makeCall, logAccepted, [&task] { return onlyFileIn(task.folder); }, fixedFormat());
}

void sharedLogger(const Task& task) {
    openFile(task);
    measureWritingCalls(
        task, SYNCHRONOUS_MESSAGES, loggingCall, [&task] { return onlyFileIn(task.folder); }, fixedFormat());
}

class DroppingSink : public google::LogSink {
public:
    DroppedMessages dropped;

    void send(google::LogSeverity, const char*, const char*, int, const google::LogMessageTime&,
              const char* message, std::size_t length) override {
        dropped.add(std::string_view(message, length));
    }
};

template <typename Call>
void measureDropped(const Task& task, Call call, DroppingSink& sink, const std::string& textPattern) {
    openFile(task);
    measureDroppedCalls(
        task, [&call](std::size_t) { return call; }, sink.dropped, textPattern);
}

void droppedText(const Task& task) {
    DroppingSink sink;
    const auto call = [&sink, text = std::string(SampleLine::TEXT)](std::size_t) {
        LOG_TO_SINK_BUT_NOT_TO_LOGFILE(&sink, INFO) << text;
    };
    measureDropped(task, call, sink, SampleLine::TEXT);
}

void droppedStreamed(const Task& task) {
    DroppingSink sink;
    const auto call = [&sink](std::size_t i) {
        LOG_TO_SINK_BUT_NOT_TO_LOGFILE(&sink, INFO)
            << "user " << i << " left after " << static_cast<double>(i) * 0.25 << " s from "
            << "10.0.0.1";
    };
    measureDropped(task, call, sink, SampleLine::VALUES_TEXT_PATTERN);
}

} // namespace

int main(int argc, char** argv) {
    return runWorkloads(argc, argv,
                        {{"rejected-macro", rejectedMacro},
                         {"sync-shared", sharedLogger},
                         {"dropped-text", droppedText},
                         {"dropped-streamed", droppedStreamed}});
}
