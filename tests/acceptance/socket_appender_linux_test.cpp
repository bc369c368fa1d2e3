#include "EndedProcess.h"

#include <boost/asio/local/stream_protocol.hpp>

using namespace ZAV::TestSupport;
using namespace testing;
using Local = boost::asio::local::stream_protocol;

/// The example of an appender class that the program registers.
using SocketAppender = EndedProcess;

TEST_F(SocketAppender, SendsTheLinesOfAProgramToALocalSocket) {
    writeFile(directory_ / "app.properties", "logger.root.level = INFO\n"
                                             "appender.x = SocketAppender\n"
                                             "appender.x.asynchronous = true\n"
                                             "appender.x.socket = " +
                                                 directory_ / "lines.sock" + "\n");
    boost::asio::io_context context;
    Local::acceptor acceptor(context, Local::endpoint(directory_ / "lines.sock"));
    ASSERT_EQ(run(ZAV_LOG_SOCKET_APPENDER, '"' + directory_ / "app.properties" + '"'), 0) << errors();
    Local::iostream stream; // what was sent is buffered until the connection is accepted
    acceptor.accept(stream.socket());
    std::ostringstream lines;
    lines << stream.rdbuf();
    const std::vector<std::string> sent = linesIn(lines.str());
    EXPECT_THAT(sent,
                ElementsAre(EndsWith(" INFO order 1"), EndsWith(" INFO order 2"), EndsWith(" INFO order 3")));
    EXPECT_THAT(sent, Each(StartsWith("shop ")));
}
