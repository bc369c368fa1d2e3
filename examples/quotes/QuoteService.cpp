#include "QuoteService.h"

#include "log/LogContext.h"
#include "log/LogLimits.h"
#include "log/LogValues.h"
#include "log/LoggerFactory.h"

#include <chrono>

namespace {

ZAV::Log::Logger& feedLogger = ZAV::Log::LoggerFactory::getLogger("quotes.feed");
ZAV::Log::Logger& orderLogger = ZAV::Log::LoggerFactory::getLogger("quotes.orders");

} // namespace

bool QuoteService::take(const std::string& feed, const std::string& share, double price) {
    if (feed.rfind("v1:", 0) == 0) {
        ZAV_LOG_ONCE(ZAV_LOG_WARNING(feedLogger, "feed " << feed << " still speaks version 1"));
    }
    if (price <= 0) {
        ZAV_LOG_AT_MOST_EVERY(std::chrono::seconds(10),
                              ZAV_LOG_ERROR(feedLogger, "price " << price << " of " << share
                                                                 << " refused, as " << ZAV_LOG_SUPPRESSED
                                                                 << " others before"));
        return false;
    }
    {
        const std::lock_guard<std::mutex> lock(mutex_);
        prices_[share] = price;
    }
    const int taken = ++taken_;
    ZAV_LOG_EVERY_NTH(1000,
                      ZAV_LOG_INFO(feedLogger, "price number " << taken << ": " << share << " " << price));
    return true;
}

std::optional<double> QuoteService::lastPriceOf(const std::string& share) const {
    const std::lock_guard<std::mutex> lock(mutex_);
    const auto entry = prices_.find(share);
    return entry == prices_.end() ? std::nullopt : std::optional<double>(entry->second);
}

bool QuoteService::charge(const std::string& request, const std::string& share, int count) {
    const ZAV::Log::LogContext context("request", request); // log/LogContext.h
    const std::optional<double> price = lastPriceOf(share);
    if (!price) {
        ZAV_LOGV_ERROR(orderLogger, "no price", "share", share);
        return false;
    }
    ZAV_LOGV_INFO(orderLogger, "order charged", "share", share, "count", count, "amount", count * *price);
    return true;
}
