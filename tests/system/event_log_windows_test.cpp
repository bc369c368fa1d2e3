#include "system/windows/EventLogAppender.h"

#include <gtest/gtest.h>
#include <string>

using ZAV::Log::eventTextOf;

TEST(EventText, IsOneThatTheEventLogTakesAndItsViewerShows) {
    EXPECT_EQ(eventTextOf("caf\xc3\xa9 \xf0\x9f\x98\x80 \xff"), L"caf\u00e9 \U0001F600 \ufffd");
    EXPECT_EQ(eventTextOf(std::string("a\0b", 3)), L"a\\x00b");
    EXPECT_EQ(eventTextOf("%1 100%2 %s 5%"), L"% 1 100% 2 %s 5%");
    EXPECT_EQ(eventTextOf(std::string(40000, 'x')), std::wstring(31839, L'x'));
    std::string faces;
    std::wstring wideFaces;
    for (int face = 0; face < 31838 / 2; ++face) {
        faces += "\xf0\x9f\x98\x80";
        wideFaces += L"\U0001F600";
    }
    EXPECT_EQ(eventTextOf(faces + "\xf0\x9f\x98\x80"), wideFaces); // not half a face more
    EXPECT_EQ(eventTextOf(faces + "xy"), wideFaces + L"x");
}
