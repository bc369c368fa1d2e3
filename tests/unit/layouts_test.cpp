#include "TestSupport.h"

#include "log/AppenderOptions.h"
#include "log/LogContext.h"
#include "log/LogException.h"
#include "log/LogLine.h"
#include "log/LogValues.h"
#include "platform/Process.h"
#include "zav-util/SystemInformation.h"

#include <cmath>
#include <gmock/gmock.h>
#include <limits>
#include <nlohmann/json.hpp>
#include <random>
#include <set>
#include <vector>

using namespace ZAV;
using namespace ZAV::Log;
using namespace ZAV::TestSupport;
using nlohmann::ordered_json;
using testing::HasSubstr;
using Util::TimeUtils::Time;

namespace {

std::string lineOf(int line, const std::string& file, MessageType type = LOG) {
    const LogMessage message("net.tcp", Util::TimeUtils::Time::now(), Level::INFO, "connected", line, file,
                             type);
    const std::string text = formatLogLine(message);
    EXPECT_EQ(text.substr(0, 26), message.getTime().toString());
    return text.substr(26);
}

AppenderOptions optionsOf(const std::string& layout, const std::string& fields = "text",
                          const std::string& escape = "false") {
    return AppenderOptions("A", Util::Properties{{"appender.A.layout", layout},
                                                 {"appender.A.fields", fields},
                                                 {"appender.A.escape", escape}});
}

std::string lineOf(const LogMessage& message, const std::string& layout, const std::string& fields = "text",
                   const std::string& escape = "false") {
    return optionsOf(layout, fields, escape).formatLine(message);
}

/// The message that a statement logs.
template <typename Statement>
LogMessage logged(const Statement& statement) {
    const LogCapture capture(LoggerFactory::getLogger("net.tcp"), Level::TRACE, false);
    statement(LoggerFactory::getLogger("net.tcp"));
    return capture.messages().at(0);
}

/// 2026-05-07 12:03:27.123 UTC
const Time NOON(1778155407123, Util::TimeUtils::MSEC);

/// Parses a line of `json`; fails if it is invalid or has duplicate keys in an object.
ordered_json parse(const std::string& line) {
    std::vector<std::set<std::string>> keys;
    const auto check = [&keys](int, ordered_json::parse_event_t event, ordered_json& parsed) {
        if (event == ordered_json::parse_event_t::object_start) {
            keys.emplace_back();
        } else if (event == ordered_json::parse_event_t::object_end) {
            keys.pop_back();
        } else if (event == ordered_json::parse_event_t::key) {
            EXPECT_TRUE(keys.back().insert(parsed.get<std::string>()).second) << parsed;
        }
        return true;
    };
    EXPECT_EQ(std::count_if(line.begin(), line.end(), [](unsigned char c) { return c < 0x20 || c == 0x7f; }),
              0);
    return ordered_json::parse(line, check);
}

/// The text as a JSON string.
std::string asJson(std::string_view text) {
    return ordered_json(text).dump(-1, ' ', false, ordered_json::error_handler_t::replace);
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

TEST(JsonLayout, HasTheMembersOfAMessageInTheirOrder) {
    const LogMessage message("net.tcp", NOON, Level::INFO, "order charged", 8, "app.cpp", LOG);
    EXPECT_EQ(lineOf(message, "json"),
              R"({"time":"2026-05-07T12:03:27.123Z","logger":"net.tcp","type":"LOG","level":"INFO",)"
              R"("file":"app.cpp","line":8,"thread":0,"text":"order charged"})");
    const LogMessage configuration("root", NOON, Level::AUDIT, "", 0, "", CFG);
    EXPECT_EQ(lineOf(configuration, "json"), R"({"time":"2026-05-07T12:03:27.123Z","logger":"root",)"
                                             R"("type":"CFG","thread":0,"text":""})");
    const LogMessage full = logged([](Logger& logger) {
        const LogContext request("request", "r1");
        const LogContext attempt("attempt", 2);
        ZAV_LOGV_INFO(logger, "order charged", "order", 17, "amount", 4.25, "paid", true);
    });
    EXPECT_THAT(
        lineOf(full, "json"),
        testing::EndsWith(",\"line\":" + std::to_string(full.getLine()) +
                          ",\"thread\":" + std::to_string(full.getThread()) +
                          R"(,"text":"order charged","values":{"order":17,"amount":4.25,"paid":true},)"
                          R"("context":{"request":"r1","attempt":2}})"));
    EXPECT_EQ(lineOf(full, "json", "text", "true"), lineOf(full, "json")); // already escaped
}

TEST(JsonLayout, ShowsTheLastOfEqualKeysAndNumbersThatJsonHas) {
    const LogMessage message = logged([](Logger& logger) {
        const LogContext outer("k", "outer");
        const LogContext inner("k", "inner");
        ZAV_LOGV_INFO(logger, "t", "a", 1, "b", HUGE_VAL, "a", 'x', "c", std::nan(""), "d", 1e300, "e",
                      std::numeric_limits<unsigned long long>::max(), "f", -0.5F, "g", "5");
    });
    const ordered_json line = parse(lineOf(message, "json"));
    EXPECT_EQ(line["values"].dump(), R"({"b":"inf","a":"x","c":"nan","d":1e+300,"e":18446744073709551615,)"
                                     R"("f":-0.5,"g":"5"})");
    EXPECT_EQ(line["context"].dump(), R"({"k":"inner"})");

    static constexpr long double HUGE_NUMBER = std::numeric_limits<long double>::max();
    const LogMessage longs = logged([](Logger& logger) {
        ZAV_LOGV_INFO(logger, "t", "third", 1.0L / 3, "huge", HUGE_NUMBER, "nan", std::nanl(""));
    });
    const std::string text = lineOf(longs, "json");
    EXPECT_THAT(text, HasSubstr("\"third\":" + longs.getValues()[0].second + ","));
    EXPECT_EQ(parse(text)["values"]["huge"].is_string(), HUGE_NUMBER > std::numeric_limits<double>::max());
    EXPECT_EQ(parse(text)["values"]["nan"], "nan");
}

TEST(JsonLayout, IsOneLineOfValidUtf8WhateverAMessageHolds) {
    const std::pair<std::string, std::string> cases[] = {
        {"\"\\/\n\r\t", R"("\"\\/\n\r\t")"},
        {std::string("\0\x1b\x7f", 3), R"("\u0000\u001b\u007f")"},
        {"\xc2\x80\xc2\x9f\xc2\xa0", "\"\\u0080\\u009f\xc2\xa0\""},
        {"\xe2\x80\xa8\xe2\x80\xa9\xe2\x80\xaa", "\"\\u2028\\u2029\xe2\x80\xaa\""},
        {"\xf0\x9f\x8c\x8d", "\"\xf0\x9f\x8c\x8d\""},
        {"a\xff\x62", "\"a\xef\xbf\xbd\x62\""},
        {"cut \xe2\x82", "\"cut \xef\xbf\xbd\xef\xbf\xbd\""},
        {"\xed\xa0\x80", "\"\xef\xbf\xbd\xef\xbf\xbd\xef\xbf\xbd\""}, // a surrogate
    };
    for (const auto& [text, shown] : cases) {
        const LogMessage message("net.tcp", NOON, Level::INFO, text, 0, "", LOG);
        EXPECT_THAT(lineOf(message, "json"), HasSubstr("\"text\":" + shown + "}"));
    }
    std::minstd_rand random(1);
    for (int i = 0; i < 2000; ++i) {
        std::string bytes(random() % 12, '\0');
        for (char& byte : bytes) {
            byte = static_cast<char>(random() % 4 == 0 ? random() % 128 : random() % 256);
        }
        const LogMessage message = logged([&bytes](Logger& logger) {
            const LogContext context(bytes, bytes);
            ZAV_LOGV_ERROR(logger, bytes, bytes, bytes, "v", bytes);
        });
        const ordered_json line = parse(lineOf(message, "json"));
        EXPECT_EQ(line["values"]["v"], line["text"]);
        if (asJson(bytes).find("\xef\xbf\xbd") == std::string::npos) {
            EXPECT_EQ(line["text"], bytes);
        }
    }
}

TEST(FieldsLayout, ShowsTheColumnsThatItIsGiven) {
    const LogMessage message = logged([](Logger& logger) {
        const LogContext request("request", "r 1");
        const LogContext user("user", 7);
        ZAV_LOGV_INFO(logger, "order charged", "order", 17, "to", "");
    });
    EXPECT_EQ(lineOf(message, "fields", "level logger thread pid process host"),
              "INFO net.tcp " + std::to_string(message.getThread()) + " " +
                  std::to_string(Platform::processId()) + " " + Util::getProgramName() + " " +
                  Util::getHostName());
    EXPECT_EQ(lineOf(message, "fields", "  message   context values  "),
              R"(order charged request="r 1" user=7 order=17 to="")");
    EXPECT_EQ(lineOf(message, "fields", "text context level level"),
              R"(order charged order=17 to="" request="r 1" user=7 INFO INFO)");
    EXPECT_EQ(lineOf(message, "fields", "place"),
              message.getFile() + ":" + std::to_string(message.getLine()));

    const LogMessage bare("root", NOON, Level::AUDIT, "", 0, "", CFG);
    EXPECT_EQ(lineOf(bare, "fields", "utc level place"), "2026-05-07T12:03:27.123Z - -");
    EXPECT_EQ(lineOf(bare, "fields", "time"), NOON.toString());
    EXPECT_EQ(lineOf(bare, "fields", "context logger values level context"), "root -");
    EXPECT_EQ(lineOf(bare, "fields", "logger message level"), "root  -");
    const LogMessage lines("net.tcp", NOON, Level::INFO, "two\nlines", 0, "a.cpp", LOG);
    EXPECT_EQ(lineOf(lines, "fields", "place text", "true"), R"(a.cpp two\nlines)");
}

TEST(Layouts, UtcIsThatOfTheCalendar) {
    const std::pair<std::uint64_t, std::string> cases[] = {
        {0, "1970-01-01T00:00:00.000Z"},
        {951782399999, "2000-02-28T23:59:59.999Z"},
        {951782400000, "2000-02-29T00:00:00.000Z"},
        {951868800000, "2000-03-01T00:00:00.000Z"},
        {1798761599001, "2026-12-31T23:59:59.001Z"},
        {4107542400000, "2100-03-01T00:00:00.000Z"},
    };
    for (const auto& [milliseconds, text] : cases) {
        const LogMessage message("root", Time(milliseconds, Util::TimeUtils::MSEC), Level::INFO, "", 0, "",
                                 LOG);
        EXPECT_EQ(lineOf(message, "fields", "utc"), text);
    }
}

TEST(Layouts, AreThoseOfTheClassWithoutTheKey) {
    const LogMessage message = makeMessage("text");
    EXPECT_EQ(AppenderOptions("A", Util::Properties()).formatLine(message), formatLogLine(message));
    EXPECT_EQ(lineOf(message, "plain"), formatLogLine(message));
    EXPECT_EQ(lineOf(message, "process"), formatLogLineWithProcess(message));
    const TemporaryDirectory directory;
    for (const char* const name : {"StdoutAppender", "FileAppender", "SimpleFileAppender"}) {
        const StreamCapture standardOutput(std::cout);
        LogManager::init(Util::Properties{{"appender.A", name},
                                          {"appender.A.dir", directory.path()},
                                          {"appender.A.file", name},
                                          {"appender.A.layout", "fields"},
                                          {"appender.A.fields", "level message"}});
        LoggerFactory::getRootLogger().error("text");
        LogManager::finish();
        const std::string file = directory / name;
        EXPECT_EQ(standardOutput.text() + readFile(file) + readFile(file + "0"), "ERROR text\n") << name;
    }
}

TEST(Layouts, RejectWhatTheyDoNotKnow) {
    const auto complaint = [](const std::string& layout, const std::string& fields) {
        return textThrownBy<LogException>([&] { optionsOf(layout, fields); });
    };
    EXPECT_EQ(complaint("xml", "text"), "Wrong value for the A.layout property: xml");
    EXPECT_EQ(complaint("", "text"), "Wrong value for the A.layout property: ");
    EXPECT_EQ(complaint("Json", "text"), "Wrong value for the A.layout property: Json");
    EXPECT_EQ(complaint("fields", "level colour"), "Wrong value for the A.fields property: level colour");
    EXPECT_EQ(complaint("fields", ""), "Wrong value for the A.fields property: ");
    EXPECT_EQ(textThrownBy<LogException>([] {
                  LogManager::init(
                      Util::Properties{{"appender.A", "StdoutAppender"}, {"appender.A.layout", "fields"}});
              }),
              "Wrong value for the A.fields property: ");
}
