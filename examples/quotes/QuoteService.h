#pragma once

#include <atomic>
#include <map>
#include <mutex>
#include <optional>
#include <string>

/// Keeps the last price of each share, from feeds that send thousands a second, and charges for shares.
/// Thread-safe.
class QuoteService {
public:
    /// Accepts a price from a feed. An impossible price is refused.
    /// \return whether it was accepted
    bool take(const std::string& feed, const std::string& share, double price);

    /// \return the last price of a share, if there was one
    std::optional<double> lastPriceOf(const std::string& share) const;

    /// Charges a customer for shares, at the last price.
    /// \param request identifies the request in the log
    /// \return whether there is a price
    bool charge(const std::string& request, const std::string& share, int count);

private:
    std::atomic<int> taken_{0};
    mutable std::mutex mutex_;
    std::map<std::string, double> prices_;
};
