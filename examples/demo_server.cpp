/// A toy order server: two connections pass orders to a database thread, which passes them to a billing
/// thread. It shows how a server uses the library: named loggers, several threads, a property file that
/// decides which line goes where, a logger made verbose for a while, a listener for failing appenders, and a
/// control server through which it is controlled from outside.

#include "Channel.h"

#include "log/AppenderStatus.h"
#include "log/CommandListener.h"
#include "log/ConfigurationMessage.h"
#include "log/ControlServer.h"
#include "log/LogMacros.h"
#include "log/LogManager.h"
#include "log/LoggerFactory.h"
#include "zav-util/Properties.h"
#include "zav-util/TimeUtils.h"

#include <algorithm>
#include <chrono>
#include <exception>
#include <filesystem>
#include <iostream>
#include <optional>
#include <string>
#include <thread>
#include <vector>

namespace Log = ZAV::Log;
namespace Util = ZAV::Util;

namespace {

struct Order {
    int number;
    int euros;
};

/// Notified of every line that an appender could not write.
class FailureListener : public Log::CommandListener {
public:
    void onCommand(const std::string& report) override {
        std::cerr << "[demo] an appender failed:\n" << report << std::endl;
    }
};

/// Passes requests made by "zav-log ctl ADDRESS command DEMO REQUEST" to the receiving thread.
class RequestListener : public Log::CommandListener {
public:
    void onCommand(const std::string& request) override { requests_.send(request); }

    /// \return nothing on timeout
    std::optional<std::string> next() {
        constexpr std::chrono::seconds TIMEOUT(20);
        return requests_.receive(TIMEOUT);
    }

private:
    Channel<std::string> requests_;
};

void tell(const std::string& text) {
    std::cout << "[demo] " << text << std::endl;
}

bool beginsWith(const std::string& text, const std::string& beginning) {
    return text.compare(0, beginning.size(), beginning) == 0;
}

bool endsWith(const std::string& text, const std::string& ending) {
    return text.size() >= ending.size() &&
           text.compare(text.size() - ending.size(), ending.size(), ending) == 0;
}

bool liesBelowCurrentFolder(const std::filesystem::path& folder) {
    return folder.is_relative() && *folder.lexically_normal().begin() != "..";
}

/// The library makes no folders. Those that the properties name below the current folder are made here,
/// except "missing": an appender that fails needs a folder that does not exist.
void makeFolders(const Util::Properties& properties) {
    for (const auto& [key, folder] : properties) {
        const bool namesFolder = beginsWith(key, "appender.") && endsWith(key, ".dir");
        if (namesFolder && folder != "missing" && liesBelowCurrentFolder(folder)) {
            std::filesystem::create_directories(folder);
        }
    }
}

void receiveOrders(int connection, int firstNumber, int count, Channel<Order>& received) {
    Log::Logger& logger = Log::LoggerFactory::getLogger("net.tcp");
    ZAV_LOG_INFO(logger, "connection " << connection << " open");
    for (int number = firstNumber; number < firstNumber + count; ++number) {
        ZAV_LOG_DEBUG(logger, "connection " << connection << ": 64 bytes for order " << number);
        ZAV_LOG_TRACE(logger, "connection " << connection << ": checksum of order " << number << " is right");
        received.send({number, 10 * number});
    }
    ZAV_LOG_INFO(logger, "connection " << connection << " closed, orders: " << count);
}

void storeOrders(Channel<Order>& received, Channel<Order>& stored) {
    constexpr int LARGE_ORDER = 50;
    Log::Logger& logger = Log::LoggerFactory::getLogger("db");
    while (const auto order = received.receive()) {
        ZAV_LOG_INFO(logger, "order " << order->number << " stored");
        if (order->euros > LARGE_ORDER) {
            ZAV_LOG_WARNING(logger, "order " << order->number << " waits for a review");
        }
        stored.send(*order);
    }
    stored.close();
}

void chargeOrders(Channel<Order>& stored) {
    constexpr int REJECTED_ORDER = 3;
    Log::Logger& logger = Log::LoggerFactory::getLogger("billing");
    while (const auto order = stored.receive()) {
        if (order->number == REJECTED_ORDER) {
            ZAV_LOG_ERROR(logger, "order " << order->number << ": card rejected");
        } else {
            ZAV_LOG_INFO(logger, "order " << order->number << ": " << order->euros << " EUR charged");
        }
    }
}

/// Serves two connections and returns when the last of their orders is charged.
void serve(int firstNumber, int ordersPerConnection) {
    Channel<Order> received;
    Channel<Order> stored;
    std::thread database([&] { storeOrders(received, stored); });
    std::thread billing([&] { chargeOrders(stored); });
    std::vector<std::thread> connections;
    for (int connection = 1; connection <= 2; ++connection) {
        const int first = firstNumber + (connection - 1) * ordersPerConnection;
        connections.emplace_back(
            [=, &received] { receiveOrders(connection, first, ordersPerConnection, received); });
    }
    for (std::thread& connection : connections) {
        connection.join();
    }
    received.close();
    database.join();
    billing.join();
}

/// Waits until no appender's level is lowered by a command any more, up to a timeout.
/// \return false on timeout
bool awaitUsualLevels() {
    constexpr std::chrono::seconds TIMEOUT(2);
    constexpr std::chrono::milliseconds PAUSE(10);
    const auto end = std::chrono::steady_clock::now() + TIMEOUT;
    const auto isLowered = [](const Log::AppenderStatus& appender) {
        return appender.until != Util::TimeUtils::Time();
    };
    for (;;) {
        const std::vector<Log::AppenderStatus> appenders = Log::LogManager::appenders();
        const bool isUsual = std::none_of(appenders.begin(), appenders.end(), isLowered);
        if (isUsual || std::chrono::steady_clock::now() > end) {
            return isUsual;
        }
        std::this_thread::sleep_for(PAUSE);
    }
}

void run(const std::string& propertyFile) {
    Log::LoggerFactory::getRootLogger().config(Log::ConfigurationMessage("configured by " + propertyFile));
    // The call behind the macros.
    Log::LoggerFactory::getLogger("billing").audit("price list 12 in force", __LINE__, __FILE__);
    serve(1, 2);

    // From here on the logger "net" passes DEBUG; the console accepts DEBUG, from all loggers, for a while.
    tell("net is made verbose");
    Log::LoggerFactory::getLogger("net").setLevel(Log::Level::LEVEL_DEBUG, true);
    serve(5, 1);

    tell(awaitUsualLevels() ? "the levels of all appenders are what they were"
                            : "the level of an appender stays lowered for a while");
    serve(7, 1);
}

/// Serves requests from outside: two more orders for each, until "stop".
void obey(const std::string& address, RequestListener& listener) {
    Log::LogManager::registerCommandListener("DEMO", &listener);
    const Log::ControlServer server(address);
    tell("steered at " + address);
    int number = 9;
    for (auto request = listener.next(); request && *request != "stop"; request = listener.next()) {
        serve(number, 1);
        tell("served orders " + std::to_string(number) + " and " + std::to_string(number + 1));
        number += 2;
    }
}

} // namespace

int main(int argc, char** argv) {
    if (argc != 2 && argc != 3) {
        std::cerr << "usage: " << argv[0] << " PROPERTY_FILE [CONTROL_ADDRESS]" << std::endl;
        return 2;
    }
    FailureListener failureListener;
    RequestListener requestListener;
    try {
        Log::LogManager::registerCommandListener("EXCEPTION", &failureListener);
        const Util::Properties properties(argv[1]);
        makeFolders(properties);
        Log::LogManager::init(properties);
        run(argv[1]);
        if (argc == 3) {
            obey(argv[2], requestListener);
        }
        Log::LogManager::finish();
        return 0;
    } catch (const std::exception& exception) {
        std::cerr << exception.what() << std::endl;
        Log::LogManager::finish();
        return 1;
    }
}
