#include "EndedProcess.h"

#include <algorithm>
#include <cstdlib>
#include <filesystem>
#include <gtest/gtest.h>
#include <random>
#include <utility>
#include <zlib.h>

using namespace ZAV;
using namespace ZAV::TestSupport;
using namespace testing;

namespace {

class RollingDrill : public EndedProcess {
protected:
    /// The content of the compressed files, in the order of their names, followed by the live one.
    std::string wholeLog() const {
        std::vector<std::pair<std::string, int>> names;
        for (const auto& entry : std::filesystem::directory_iterator(directory_ / "logs")) {
            const std::string name = entry.path().stem().string(); // without ".gz"
            const std::size_t end = name.find('Z');
            if (end != std::string::npos) {
                const std::string number = name.substr(end + 1);
                names.emplace_back(name.substr(0, end + 1), number.empty() ? 0 : -std::stoi(number));
            }
        }
        std::sort(names.begin(), names.end());
        std::string log;
        for (const auto& [name, number] : names) {
            log += unpacked(name + (number == 0 ? "" : "-" + std::to_string(number)) + ".gz");
        }
        return log + readFile(directory_ / "logs/app.log");
    }

    int returnedCalls(int run) const {
        int returned = 0;
        std::ifstream(directory_ / ("returned." + std::to_string(run)))
            .read(reinterpret_cast<char*>(&returned), sizeof returned);
        return returned;
    }

private:
    std::string unpacked(const std::string& name) const {
        const gzFile packed = gzopen((directory_ / ("logs/" + name)).c_str(), "rb");
        char content[8192];
        const int size = gzread(packed, content, sizeof content);
        EXPECT_EQ(gzclose(packed), Z_OK) << name;
        EXPECT_LT(size, static_cast<int>(sizeof content)) << name;
        return std::string(content, static_cast<std::size_t>(std::max(size, 0)));
    }
};

} // namespace

TEST_F(RollingDrill, KillsAtAnyMomentLoseNoLineAndDoubleNone) {
    std::filesystem::create_directory(directory_ / "logs");
    const char* const wanted = std::getenv("ZAV_LOG_KILLS"); // more in scripts/nightly
    const int kills = wanted != nullptr ? std::atoi(wanted) : 20;
    std::mt19937 random(std::random_device{}());
    for (int run = 0; run < kills; ++run) {
        const auto life = 1000 + random() % 200'000;
        EXPECT_NE(this->run(ZAV_LOG_ROLLING_PROGRAM, std::to_string(run) + " " + std::to_string(life)), 0);
    }
    ASSERT_EQ(run(ZAV_LOG_ROLLING_PROGRAM, std::to_string(kills) + " 0"), 0) << errors();
    const std::string log = wholeLog();
    int run = -1;
    int number = 0;
    for (const std::string& word : lastWordsIn(log)) {
        const int lineRun = std::stoi(word);
        while (run < lineRun) {
            ASSERT_GE(number, run < 0 ? 0 : returnedCalls(run));
            ++run;
            number = 0;
        }
        ASSERT_EQ(word, std::to_string(run) + ":" + std::to_string(++number));
    }
    EXPECT_EQ(run, kills);
    EXPECT_EQ(log.back(), '\n');
}
