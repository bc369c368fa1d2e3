#include "OwnSystem.h"

#include "log/LogContext.h"
#include "log/LogValues.h"
#include "log/SystemAppenders.h"
#include "system/linux/LinuxAppenders.h"

using namespace ZAV;
using namespace ZAV::Log;
using namespace ZAV::TestSupport;
using namespace testing;

namespace {

constexpr char PATH[] = "/run/systemd/journal/socket";

using Journald = OwnSystem;

/// The names of the fields that the pairs of a message have.
std::vector<std::string> namesOfPairs(const LogMessage& message) {
    std::vector<std::string> names;
    for (const std::string& field : journalFieldsOf(message)) {
        names.push_back(field.substr(0, field.find('=')));
    }
    names.erase(names.begin(), std::find(names.begin(), names.end(), "TID") + 1);
    return names;
}

} // namespace

TEST(JournaldAppender, GivesPairsNamesThatTheJournalTakesAndThatNoOtherFieldHas) {
    const LogCapture capture;
    Logger& net = LoggerFactory::getLogger("net");
    const LogContext context("order-id", "outer");
    ZAV_LOGV_INFO(net, "text", "order-id", 1, "order.id", 2, "order_id", 3, "amount", 4.5);
    ZAV_LOGV_INFO(net, "text", "message", 1, "Priority", 2, "code_file", 3, "code.line", 4, "tid", 5, "tid_",
                  6, "logger", 7);
    const std::string longer(70, 'k');
    ZAV_LOGV_INFO(net, "text", "", 1, "_id", 2, "1st", 3, longer, 4, longer, 5);
    const std::vector<LogMessage> messages = capture.messages();
    ASSERT_THAT(messages, SizeIs(3));
    EXPECT_THAT(namesOfPairs(messages[0]),
                ElementsAre("ORDER_ID", "ORDER_ID_", "ORDER_ID__", "AMOUNT", "ORDER_ID___"));
    EXPECT_THAT(namesOfPairs(messages[1]), ElementsAre("MESSAGE_", "PRIORITY_", "CODE_FILE_", "CODE_LINE_",
                                                       "TID_", "TID__", "LOGGER_", "ORDER_ID"));
    EXPECT_THAT(namesOfPairs(messages[2]), ElementsAre("PAIR__", "PAIR__ID", "PAIR_1ST", std::string(64, 'K'),
                                                       std::string(63, 'K') + '_', "ORDER_ID"));
}

TEST_F(Journald, GetsAMessageWithAllThatIsKnownOfIt) {
    DatagramSocket daemon(PATH);
    registerSystemAppenders();
    ASSERT_TRUE(init("logger.root.level = INFO\nappender.j = JournaldAppender\n"));
    Logger& net = LoggerFactory::getLogger("net.tcp");
    const LogContext context("request", "r 1");
    ZAV_LOGV_WARNING(net, "order charged", "order", 17, "note", std::string("a\n\0b", 4));
    const std::string place = std::to_string(__LINE__ - 1);
    // A value with a line feed has its length in front of it, in 8 bytes.
    const std::string note = std::string("NOTE\n\4\0\0\0\0\0\0\0a\n\0b\n", 18);
    EXPECT_EQ(daemon.receive(),
              "MESSAGE=order charged\nPRIORITY=4\nLOGGER=net.tcp\nCODE_FILE=" + std::string(__FILE__) +
                  "\nCODE_LINE=" + place + "\nTID=" + std::to_string(gettid()) + "\nORDER=17\n" + note +
                  "REQUEST=r 1\nSYSLOG_IDENTIFIER=" + program_invocation_short_name + "\n");
    net.info("no place");
    EXPECT_THAT(daemon.receive(), StartsWith("MESSAGE=no place\nPRIORITY=6\nLOGGER=net.tcp\nTID="));
}

TEST_F(Journald, IsMissedByAReport) {
    registerSystemAppenders();
    ASSERT_TRUE(init("appender.j = JournaldAppender\n"));
    RecordingListener listener;
    LogManager::registerCommandListener("EXCEPTION", &listener);
    Logger& net = LoggerFactory::getLogger("net");
    net.error("never started", 0, "");
    std::optional<DatagramSocket> daemon(std::in_place, PATH);
    net.error("arrives", 0, "");
    EXPECT_THAT(daemon->receive(), StartsWith("MESSAGE=arrives\n"));
    daemon.reset();
    net.error("gone", 0, "");
    EXPECT_THAT(listener.arguments,
                ElementsAre(HasSubstr("Cannot write to the journal: No such file or directory"),
                            HasSubstr("Cannot write to the journal: Connection refused")));
}
