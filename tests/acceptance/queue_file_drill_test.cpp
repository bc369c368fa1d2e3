#include "EndedProcess.h"
#include "KilledProcess.h"

#include <array>
#include <cstdio>
#include <cstdlib>
#include <iterator>
#include <map>
#include <random>
#include <utility>

using namespace ZAV;
using namespace ZAV::TestSupport;
using namespace testing;

namespace {

constexpr int THREADS = 4;

/// Sanitizers end a failing process with exit codes of their own.
#if defined(__SANITIZE_THREAD__) || defined(__SANITIZE_ADDRESS__)
constexpr bool HAS_OTHER_CODES = true;
#else
constexpr bool HAS_OTHER_CODES = false;
#endif

/// The lines in a file from one thread of one run.
struct Lines {
    int last = 0;    ///< the highest number so far
    int current = 0; ///< of the previous line
    int repeated = 0;
    int timesBack = 0; ///< how often a sequence of lines started again
};

class QueueFileDrill : public EndedProcess, public WithParamInterface<const char*> {
protected:
    static int kills() {
        const char* const wanted = std::getenv("ZAV_LOG_KILLS"); // more in scripts/nightly
        return wanted != nullptr ? std::atoi(wanted) : 12;
    }

    /// \return the exit code, as a shell reports it
    int start(int run, const std::string& way, int life) const {
        return exitCodeOf(EndedProcess::run(ZAV_LOG_QUEUE_PROGRAM, std::to_string(run) + " " + GetParam() +
                                                                       " " + way + " " +
                                                                       std::to_string(life)));
    }

    std::array<int, THREADS> returnedCalls(int run) const {
        std::array<int, THREADS> returned = {};
        std::ifstream(directory_ / ("returned." + std::to_string(run)))
            .read(reinterpret_cast<char*>(returned.data()), sizeof returned);
        return returned;
    }

    /// \param torn receives the number of truncated lines
    std::map<std::pair<int, int>, Lines> readLines(const std::string& file, int& torn) const {
        std::map<std::pair<int, int>, Lines> read;
        for (const std::string& word : lastWordsIn(readFile(directory_ / file))) {
            int run = 0;
            int thread = 0;
            int number = 0;
            char end = 0;
            if (std::sscanf(word.c_str(), "%d:%d:%d%c", &run, &thread, &number, &end) != 4 || end != '.') {
                ++torn;
                continue;
            }
            Lines& lines = read[{run, thread}];
            EXPECT_TRUE(number == lines.current + 1 || number <= lines.last)
                << file << ": " << word << " follows " << lines.current;
            lines.repeated += number <= lines.last ? 1 : 0;
            lines.timesBack += number <= lines.current ? 1 : 0;
            lines.current = number;
            lines.last = std::max(lines.last, number);
        }
        return read;
    }

    void expectAllIn(const std::string& file, int runs) const {
        int torn = 0;
        std::map<std::pair<int, int>, Lines> read = readLines(file, torn);
        int repeated = 0;
        int timesBack = 0;
        for (int run = 0; run < runs; ++run) {
            const std::array<int, THREADS> returned = returnedCalls(run);
            int back = 0;
            for (int thread = 0; thread < THREADS; ++thread) {
                const Lines& lines = read[{run, thread}];
                EXPECT_GE(lines.last, returned[static_cast<std::size_t>(thread)])
                    << file << ", run " << run << ", thread " << thread;
                repeated += lines.repeated;
                back = std::max(back, lines.timesBack);
            }
            timesBack += back;
        }
        EXPECT_LE(torn, runs) << file;
        EXPECT_LE(timesBack, runs) << file << ": one line or batch a kill may come again";
        if (GetParam() == std::string("line")) {
            EXPECT_LE(repeated, runs) << file;
        }
    }
};

} // namespace

TEST_P(QueueFileDrill, EveryAcceptedMessageComesWhateverKillsTheProcess) {
    std::mt19937 random(std::random_device{}());
    for (int run = 0; run < kills(); ++run) {
        const auto& [way, codeOfEnd] = WAYS_TO_DIE[static_cast<std::size_t>(run) % std::size(WAYS_TO_DIE)];
        const int code = start(run, way, static_cast<int>(random() % 150'000));
        ASSERT_TRUE(HAS_OTHER_CODES || code == codeOfEnd) << way << ", " << code << ": " << errors();
        ASSERT_EQ(errors().find("queue file"), std::string::npos) << errors();
    }
    ASSERT_EQ(start(kills(), "finish", 0), 0) << errors();
    expectAllIn("a.log", kills());
    expectAllIn("b.log", kills());
    const std::string before = readFile(directory_ / "a.log");
    ASSERT_EQ(start(kills() + 1, "finish", 0), 0) << errors();
    EXPECT_EQ(readFile(directory_ / "a.log"), before); // nothing is left to deliver
}

INSTANTIATE_TEST_SUITE_P(BothFlushes, QueueFileDrill, Values("line", "batch"),
                         [](const auto& flush) { return std::string(flush.param); });
