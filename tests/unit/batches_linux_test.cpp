// Compares lines of a round that are written together with lines that are written one by one.

#include "TestClock.h"
#include "TestSupport.h"

#include "log/LogException.h"
#include "log/appenders/FileAppender.h"
#include "log/appenders/SimpleFileAppender.h"
#include "log/async/AsynchronousAppenders.h"
#include "log/async/MessageQueue.h"
#include "log/commands/FailureReport.h"
#include "log/reentrancy/LibraryCall.h"

#include <boost/make_shared.hpp>
#include <csignal>
#include <functional>
#include <map>
#include <memory>
#include <set>
#include <sys/resource.h>
#include <sys/wait.h>
#include <unistd.h>

using namespace ZAV;
using namespace ZAV::Log;
using namespace ZAV::TestSupport;
using namespace testing;
using namespace Util::TimeUtils;

namespace {

using Texts = std::vector<std::string>;

/// Notifies the test of each message that an appender is about to write.
class TellingFilter : public MessageFilter {
public:
    std::function<void(const std::string& text)> tell = [](const std::string&) {};
    bool accept(const LogMessage& message) override {
        tell(message.getText());
        return true;
    }
};

class Batches : public Test {
protected:
    struct Series {
        std::uint64_t maxSize = 10'000'000;
        Time recovery;
        std::string dir = ".";
    };

    /// Result of one run.
    struct Outcome {
        std::map<std::string, std::string> files;
        Texts reports;
    };

    void SetUp() override {
        std::signal(SIGXFSZ, SIG_IGN);
        LogManager::registerCommandListener("EXCEPTION", &listener_);
    }

    void makeRotating(bool batch, const Series& series) {
        AppenderValues values = valuesFor(batch, series.dir);
        values.recovery = series.recovery;
        values.fileMaxSize = series.maxSize;
        values.fileMaxLifetime = Time(1, HOUR);
        use(std::make_unique<FileAppender>(values, Appender::Filters{filter_}));
    }

    void makeSimple(bool batch, const std::string& dir = ".") {
        use(std::make_unique<SimpleFileAppender>(valuesFor(batch, dir), Appender::Filters{filter_}));
    }

    AppenderValues valuesFor(bool batch, const std::string& dir) const {
        AppenderValues values("x");
        values.asynchronous = true;
        values.writesBatches = batch;
        values.dir = directory_ / dir;
        values.file = "f";
        return values;
    }

    /// Delivers messages to the appender as the consumer does.
    void round(const Texts& texts) {
        for (const std::string& text : texts) {
            queue_.append({"net.tcp", Time::now(), Level::INFO, text, 0, "", LOG});
        }
        MessageBatch batch;
        queue_.take(batch);
        const LibraryCall call;
        queue_.release(batch, appenders_.deliver(batch));
    }

    /// Destroys the appender, and removes and returns everything that it has written.
    Outcome end() {
        appenders_.remove(appender_.get());
        appender_.reset();
        Outcome outcome;
        outcome.reports.swap(reports_);
        for (const auto& entry : std::filesystem::directory_iterator(directory_.path())) {
            outcome.files[entry.path().filename().string()] = readFile(entry.path().string());
            std::filesystem::remove(entry);
        }
        return outcome;
    }

    /// Runs the same with lines written one by one, and together.
    /// \return the outcome, which must be the same for both
    template <typename Run>
    Outcome expectSame(Run run) {
        const Time begin = Time::now();
        Outcome outcomes[2];
        for (const bool batch : {false, true}) {
            setClock(begin);
            run(batch);
            outcomes[batch ? 1 : 0] = end();
        }
        EXPECT_EQ(outcomes[0].reports, outcomes[1].reports);
        EXPECT_EQ(outcomes[0].files, outcomes[1].files);
        return outcomes[1];
    }

    std::string live() const { return readFile(directory_ / "f0"); }

    const TemporaryDirectory directory_;
    const boost::shared_ptr<TellingFilter> filter_ = boost::make_shared<TellingFilter>();
    std::function<void()> reported_ = [] {};
    MessageQueue& queue_ = *new MessageQueue; // never destroyed: a thread may still use it after the test
    AsynchronousAppenders appenders_;
    std::unique_ptr<Appender> appender_;

private:
    void use(std::unique_ptr<Appender> appender) {
        appender_ = std::move(appender);
        appenders_.add(appender_.get(), nullptr);
    }

    Texts reports_;
    CallingListener listener_{[this](const std::string& report) {
        reports_.push_back(report);
        reported_();
    }};
};

/// Limits the size of files, to simulate a full disk: a write is then short.
void limitFileSize(rlim_t size) {
    rlimit limit = {};
    ASSERT_EQ(getrlimit(RLIMIT_FSIZE, &limit), 0);
    limit.rlim_cur = size;
    ASSERT_EQ(setrlimit(RLIMIT_FSIZE, &limit), 0);
}

/// Texts "1", "2" and so on, each followed by a growing number of letters.
Texts numbered(int count, std::size_t step = 1) {
    Texts texts;
    for (int number = 1; number <= count; ++number) {
        texts.push_back(std::to_string(number) + std::string(static_cast<std::size_t>(number) * step, 'x'));
    }
    return texts;
}

/// The texts of the complete lines of a file or of reports.
Texts textsIn(const std::string& lines) {
    return lastWordsIn(lines.substr(0, lines.rfind('\n') + 1));
}

Texts textsOf(const Texts& reports) {
    Texts texts;
    for (const std::string& report : reports) {
        texts.push_back(report.substr(report.rfind(' ') + 1));
    }
    return texts;
}

} // namespace

TEST_F(Batches, ReachTheFileAtTheEndOfTheRoundAndNotBefore) {
    for (const bool simple : {false, true}) {
        const std::string file = directory_ / (simple ? "f" : "f0");
        std::set<std::size_t> sizes;
        filter_->tell = [&](const std::string&) { sizes.insert(readFile(file).size()); };
        simple ? makeSimple(true) : makeRotating(true, {});
        round(numbered(50));
        EXPECT_THAT(sizes, ElementsAre(0U));
        EXPECT_EQ(textsIn(readFile(file)), numbered(50));
        appender_->output(makeMessage("outside")); // not in the consumer
        EXPECT_EQ(textsIn(readFile(file)).back(), "outside");
        end();
    }
}

TEST_F(Batches, RotateWhereLinesByThemselvesDo) {
    const Texts ages = {"a", "b", "older", "c", "older", "d"};
    const Outcome outcome = expectSame([&](bool batch) {
        filter_->tell = [](const std::string& text) {
            if (text == "older") {
                setClock(Time::now() + Time(61, MIN));
            }
        };
        makeRotating(batch, {1000, Time(), "."});
        round(numbered(20));
        round(ages);
    });
    EXPECT_THAT(outcome.files, SizeIs(4));
    EXPECT_THAT(textsIn(outcome.files.at("f0")), ElementsAre("older", "d"));
    expectSame([&](bool batch) { // exceeds the buffer, and a line that fills it alone
        makeRotating(batch, {4'500'000, Time(), "."});
        round(numbered(50, 5000));
        round({"a", std::string(5'000'000, 'b'), "c"});
    });
    expectSame([&](bool batch) {
        makeSimple(batch);
        round(numbered(20));
        round(ages);
    });
    const Outcome moved = expectSame([&](bool batch) {
        filter_->tell = [this](const std::string& text) {
            if (text == "moved") {
                std::filesystem::rename(directory_ / "f0", directory_ / "g");
                setClock(Time::now() + Time(31, SEC));
            }
        };
        makeRotating(batch, {1000, Time(30, SEC), "."});
        round({"a"});
        round({"b", "moved", "c"});
    });
    EXPECT_THAT(textsIn(moved.files.at("g")), ElementsAre("a", "b"));
}

/// Wherever the disk becomes full: within a line, at its end, before a rotation, or in a later round.
TEST_F(Batches, ReportTheLinesThatAreNotInTheFile) {
    for (rlim_t limit = 0; limit < 300; limit += 3) {
        const Outcome outcome = expectSame([&](bool batch) {
            makeRotating(batch, {250, Time(30, SEC), "."});
            limitFileSize(limit);
            round(numbered(8));
            round({"again", "and-again"});
            limitFileSize(RLIM_INFINITY);
            setClock(Time::now() + Time(31, SEC));
            round({"later"});
        });
        Texts all = numbered(8);
        all.insert(all.end(), {"again", "and-again", "later"});
        Texts found;
        for (const auto& [name, content] : outcome.files) {
            const Texts texts = textsIn(content);
            found.insert(found.end(), texts.begin(), texts.end());
        }
        const Texts reported = textsOf(outcome.reports);
        const std::string cut = outcome.files.rbegin()->second.substr(0, limit); // the oldest file
        const bool isCut = !cut.empty() && cut.back() != '\n';
        // Only its line end was missing, which the recovery has added.
        const std::string ended = isCut ? lastWordsIn(cut).back() : std::string();
        for (const std::string& text : all) {
            EXPECT_EQ(std::count(found.begin(), found.end(), text) +
                          std::count(reported.begin(), reported.end(), text),
                      text == ended ? 2 : 1)
                << text << ' ' << limit;
        }
    }
    expectSame([&](bool batch) { // in the second write of a round
        makeRotating(batch, {});
        limitFileSize(1'500'000);
        round(numbered(50, 5000));
        limitFileSize(RLIM_INFINITY);
    });
}

/// Lines of a round may fail before the result of the buffered ones is known.
TEST_F(Batches, AreToldOfOnceWhenTheirFileBeginsToFail) {
    LogManager::unregisterCommandListener("EXCEPTION");
    for (const bool batch : {false, true}) {
        const StreamCapture errors(std::cerr);
        FailureNotice::setEnabled(true);
        makeRotating(batch, {250, Time(30, SEC), "."});
        limitFileSize(0);
        for (int rounds = 0; rounds < 3; ++rounds) {
            round(numbered(8));
            setClock(Time::now() + Time(31, SEC));
        }
        FailureNotice::setEnabled(false);
        limitFileSize(RLIM_INFINITY);
        end();
        EXPECT_EQ(errors.text(), "zav-log: appender x: outputFileStream_.fail()\n") << batch;
    }
}

TEST_F(Batches, ReportWhatCannotBeOpenedForEachLine) {
    for (const bool simple : {false, true}) {
        const Outcome outcome = expectSame([&](bool batch) {
            simple ? makeSimple(batch, "missing") : makeRotating(batch, {1000, Time(), "missing"});
            round(numbered(3));
        });
        EXPECT_EQ(textsOf(outcome.reports), numbered(3));
    }
    const Outcome full = expectSame([&](bool batch) { // a single file does not detect this
        makeSimple(batch);
        limitFileSize(100);
        round(numbered(3));
        limitFileSize(RLIM_INFINITY);
    });
    EXPECT_THAT(full.reports, IsEmpty());
}

/// If a listener ends the process, what is left is shown.
TEST_F(Batches, CountAsGivenOnceTheyAreWrittenOrReported) {
    std::string shown[2];
    expectSame([&](bool batch) {
        reported_ = [&] {
            const StreamCapture errors(std::cerr);
            queue_.showRestOfDelivery();
            queue_.showAll();
            shown[batch ? 1 : 0] += errors.text();
        };
        makeRotating(batch, {});
        limitFileSize(150);
        round(numbered(6));
        limitFileSize(RLIM_INFINITY);
    });
    EXPECT_THAT(shown[0], HasSubstr(numbered(6).back() + "\n"));
    EXPECT_EQ(shown[0], shown[1]);
}

TEST_F(Batches, MayLoseTheirAppenderInAReport) {
    makeRotating(true, {});
    reported_ = [&] { appenders_.remove(appender_.get()); };
    limitFileSize(150);
    round(numbered(6));
    limitFileSize(RLIM_INFINITY);
    EXPECT_EQ(textsOf(end().reports).back(), numbered(6).back());
}

TEST_F(Batches, AreWrittenByTheProcessThatForksAmidThem) {
    for (const auto& [simple, childLogs] :
         {std::pair(false, false), {false, true}, {true, false}, {true, true}}) {
        simple ? makeSimple(true) : makeRotating(true, {});
        pid_t child = -1;
        filter_->tell = [&](const std::string& text) {
            if (text == numbered(3).back()) {
                child = fork();
                if (child == 0) {
                    appenders_.endDeliveryInChild();
                    throw LogException("which leaves the message to the parent");
                }
            }
        };
        round(numbered(5));
        if (child == 0) {
            queue_.renewInChild();
            if (childLogs) {
                round({"child"});
            }
            appender_.reset();
            _exit(0);
        }
        ASSERT_EQ(waitpid(child, nullptr, 0), child);
        Texts expected = numbered(5);
        if (childLogs) {
            expected.emplace_back("child");
        }
        EXPECT_THAT(textsIn(readFile(directory_ / (simple ? "f" : "f0"))),
                    UnorderedElementsAreArray(expected));
        end();
    }
}
