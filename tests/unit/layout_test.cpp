#include "TestSupport.h"

#include "log/LogLine.h"
#include "platform/Process.h"
#include "zav-util/SystemInformation.h"

using namespace ZAV;
using namespace ZAV::Log;

namespace {

std::string lineOf(int line, const std::string& file, MessageType type = LOG) {
    const LogMessage message("net.tcp", Util::TimeUtils::Time::now(), Level::INFO, "connected", line, file,
                             type);
    const std::string text = formatLogLine(message);
    EXPECT_EQ(text.substr(0, 26), message.getTime().toString());
    return text.substr(26);
}

} // namespace

TEST(LogLine, ShowsALocationOnlyWhereOneIsGiven) {
    EXPECT_EQ(lineOf(120, "Socket.cpp"), " net.tcp Socket.cpp:120 INFO connected");
    EXPECT_EQ(lineOf(0, ""), " net.tcp INFO connected");
    EXPECT_EQ(lineOf(-3, "Socket.cpp"), " net.tcp Socket.cpp INFO connected");
    EXPECT_EQ(lineOf(120, ""), " net.tcp :120 INFO connected");
    EXPECT_EQ(lineOf(120, "Socket.cpp", CFG), " net.tcp connected");
}

TEST(LogLine, WithProcessNamesProgramProcessAndHost) {
    const LogMessage message = TestSupport::makeMessage("two\nlines");
    EXPECT_EQ(formatLogLineWithProcess(message), message.getTime().toString() + " " + Util::getProgramName() +
                                                     " " + std::to_string(Platform::processId()) + " " +
                                                     Util::getHostName() + " net.tcp INFO two\nlines");
}
