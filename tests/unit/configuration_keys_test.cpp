#include "TestSupport.h"

#include "log/config/ConfigurationKeys.h"
#include "log/config/ValueReaders.h"

#include <gmock/gmock.h>

using namespace ZAV;
using namespace ZAV::Log;

namespace {

std::string tableOfKeys() {
    std::string table = "| Key | Read by | Value | Default | Effect |\n|---|---|---|---|---|\n";
    for (const ConfigurationKey& key : configurationKeys()) {
        const std::string defaultCell = *key.defaultValue == '\0' ? "" : std::string(key.defaultValue) + " ";
        table += "| `" + genericKey(key) + "` | " + describeReaders(key) + " | " + key.values + " | " +
                 defaultCell + "| " + key.meaning + " |\n";
    }
    return table;
}

} // namespace

TEST(ConfigurationKeys, StandInTheDocumentationAsInTheTable) {
    const std::string page = TestSupport::readFile(ZAV_LOG_DOCS_DIR "/configuration.md");
    const std::string::size_type begin = page.find("| Key |");
    ASSERT_NE(begin, std::string::npos);
    EXPECT_EQ(page.substr(begin, page.find("\n\n", begin) + 1 - begin), tableOfKeys());
}

TEST(ValueReaders, TellWhatOfANumberCounts) {
    const auto partly = readLeadingUnsigned(" 5x");
    EXPECT_EQ(partly.value, 5U);
    EXPECT_TRUE(partly.isNumber);
    EXPECT_FALSE(partly.isWhole);
    EXPECT_FALSE(readLeadingSigned("x5").isNumber);
    EXPECT_FALSE(readLeadingSigned("").isNumber);
    const auto cut = readLeadingSigned("-99999999999");
    EXPECT_EQ(cut.value, std::numeric_limits<std::int32_t>::min());
    EXPECT_TRUE(cut.isNumber && cut.isWhole && cut.isCut);
    const auto zero = readLeadingSigned("0");
    EXPECT_TRUE(zero.isNumber && zero.isWhole && !zero.isCut);
}
