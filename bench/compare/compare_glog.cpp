// glog: its layout is fixed and knows no logger names; the line is about as long as the others'. It has no
// function for a ready string, no asynchronous appender, no layout class and no limit to the number of files.

#include "Workload.h"

#include <gflags/gflags.h>
#include <glog/logging.h>

#include <stdexcept>
#include <string>

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
    // Otherwise it makes the kernel write every full megabyte to the disk, which no other logger does.
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

} // namespace

int main(int argc, char** argv) {
    return runWorkloads(argc, argv, {{"rejected-macro", rejectedMacro}, {"sync-shared", sharedLogger}});
}
