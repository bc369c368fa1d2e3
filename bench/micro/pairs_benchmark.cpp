#include "IdleAppender.h"

#include "log/LogContext.h"
#include "log/LogManager.h"
#include "log/LogValues.h"
#include "log/Logger.h"
#include "log/LoggerFactory.h"
#include "log/layout/LineLayout.h"
#include "log/message/MessageFields.h"
#include "log/text/PackedPairs.h"
#include "log/text/ValueText.h"
#include "zav-util/Properties.h"
#include "zav-util/TimeText.h"

#include <benchmark/benchmark.h>
#include <nlohmann/json.hpp>

#include <optional>
#include <string>

namespace {

using namespace ZAV::Log;
using Bench::IdleAppender;

/// A logger with an appender that does nothing, and a queue without a limit whose consumer runs only on
/// request.
class IdleLogger {
public:
    explicit IdleLogger(bool isSynchronous) : appender_("idle", isSynchronous) {
        const std::string dispatcher = "zav.log.AsynchronousDispatcher.";
        LogManager::init(ZAV::Util::Properties{{dispatcher + "maxQueueSize", "-1"},
                                               {dispatcher + "waitingPeriod", "3600"}});
        logger.setLevel(Level::LEVEL_INFO, false);
        logger.addAppender(&appender_);
        if (!isSynchronous) {
            LogManager::addAsynchronousAppender(&appender_);
        }
    }
    ~IdleLogger() {
        logger.removeAppender(&appender_);
        LogManager::removeAsynchronousAppender(&appender_);
        LogManager::finish();
    }
    IdleLogger(const IdleLogger&) = delete;
    IdleLogger& operator=(const IdleLogger&) = delete;

    Logger& logger = LoggerFactory::getLogger("pairs");

private:
    IdleAppender appender_;
};

/// Measures a call that logs. The argument says whether the appender is synchronous; otherwise only the call
/// is measured, not the delivery.
template <typename Call>
void measure(benchmark::State& state, const Call& call) {
    constexpr int BURST = 1000;
    const IdleLogger idle(state.range(0) != 0);
    while (state.KeepRunningBatch(BURST)) {
        for (int i = 0; i < BURST; ++i) {
            call(idle.logger);
        }
        state.PauseTiming();
        LogManager::flush();
        state.ResumeTiming();
    }
}

void withoutPairs(benchmark::State& state) {
    measure(state, [](const Logger& logger) { ZAV_LOGV_INFO(logger, "order charged"); });
}

void withThreeValues(benchmark::State& state) {
    measure(state, [](const Logger& logger) {
        ZAV_LOGV_INFO(logger, "order charged", "order", 17, "amount", 4.25, "customer", "ACME");
    });
}

void withTwoOfContext(benchmark::State& state) {
    const LogContext request("request", "r1");
    const LogContext user("user", 7);
    withoutPairs(state);
}

void context(benchmark::State& state) {
    for (auto _ : state) {
        const LogContext request("request", "r1");
        benchmark::ClobberMemory();
    }
}

/// The components of a line of `json`.
class Sample {
public:
    explicit Sample(std::string text) : text_(std::move(text)) {
        add(values_, "order", 17LL);
        add(values_, "amount", 4.25);
        add(values_, "customer", std::string_view("ACME"));
        add(context_, "request", std::string_view("r1"));
        add(context_, "user", 7LL);
    }

    MessageFields fields() const {
        MessageFields fields("net.tcp", ZAV::Util::TimeUtils::Time::now(), Level::LEVEL_INFO, text_, 8,
                             "app.cpp", LOG);
        fields.values = values_;
        fields.context = context_;
        fields.thread = 4711;
        return fields;
    }

private:
    static void add(std::string& packed, std::string_view key, const TaggedValue& value) {
        char pair[64];
        packed.append(pair, static_cast<std::size_t>(packPair(pair, key, value) - pair));
    }

    std::string text_;
    std::string values_;
    std::string context_;
};

const std::string ASCII = "connected to the backend server, request 12345";
const std::string UMLAUTS = "Verbindung \"n\xc3\xb6rdlich\" getrennt:\n\tZeit\xc3\xbc"
                            "berschreitung \xe2\x82\xac";

/// Hand-written, as in the layout.
void jsonByHand(benchmark::State& state, const std::string& text) {
    const Sample sample(text);
    const MessageFields fields = sample.fields();
    const JsonLayout layout;
    std::string line;
    for (auto _ : state) {
        line.clear();
        layout.append(line, fields);
        benchmark::DoNotOptimize(line.data());
    }
}

/// The same object, with escapes and UTF-8 validation by a JSON library.
void jsonByLibrary(benchmark::State& state, const std::string& text) {
    const Sample sample(text);
    const MessageFields fields = sample.fields();
    using Object = nlohmann::ordered_json;
    const auto pairs = [](std::string_view packed) {
        Object object;
        forEachLastPair(packed, [&object](const Pair& pair) {
            if (pair.value.kind == TaggedValue::Kind::SIGNED) {
                object[std::string(pair.key)] = pair.value.signedNumber;
            } else if (pair.value.kind == TaggedValue::Kind::DOUBLE) {
                object[std::string(pair.key)] = pair.value.doubleNumber;
            } else {
                object[std::string(pair.key)] = ValueText(pair.value).view();
            }
        });
        return object;
    };
    for (auto _ : state) {
        char time[ZAV::Util::TimeUtils::UTC_LENGTH];
        ZAV::Util::TimeUtils::writeUtc(time, fields.time);
        Object object;
        object["time"] = std::string_view(time, sizeof time);
        object["logger"] = fields.loggerName;
        object["type"] = "LOG";
        object["level"] = Level::toString(fields.level);
        object["file"] = fields.file;
        object["line"] = fields.line;
        object["thread"] = fields.thread;
        object["text"] = fields.text;
        object["values"] = pairs(fields.values);
        object["context"] = pairs(fields.context);
        benchmark::DoNotOptimize(object.dump(-1, ' ', false, Object::error_handler_t::replace));
    }
}

/// Only the escapes: the part that a library could take over if the rest stayed as it is.
void textByLibrary(benchmark::State& state, const std::string& text) {
    for (auto _ : state) {
        benchmark::DoNotOptimize(
            nlohmann::json(text).dump(-1, ' ', false, nlohmann::json::error_handler_t::replace));
    }
}

} // namespace

BENCHMARK(withoutPairs)->Arg(1)->Arg(0)->UseRealTime();
BENCHMARK(withThreeValues)->Arg(1)->Arg(0)->UseRealTime();
BENCHMARK(withTwoOfContext)->Arg(1)->Arg(0)->UseRealTime();
BENCHMARK(context);
BENCHMARK_CAPTURE(jsonByHand, ascii, ASCII);
BENCHMARK_CAPTURE(jsonByLibrary, ascii, ASCII);
BENCHMARK_CAPTURE(textByLibrary, ascii, ASCII);
BENCHMARK_CAPTURE(jsonByHand, escapes, UMLAUTS);
BENCHMARK_CAPTURE(jsonByLibrary, escapes, UMLAUTS);
BENCHMARK_CAPTURE(textByLibrary, escapes, UMLAUTS);
