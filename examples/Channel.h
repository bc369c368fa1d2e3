#pragma once

#include <chrono>
#include <condition_variable>
#include <deque>
#include <mutex>
#include <optional>
#include <utility>

/// Passes values between threads, in order.
template <typename Value>
class Channel {
public:
    void send(Value value) {
        const std::lock_guard<std::mutex> lock(mutex_);
        values_.push_back(std::move(value));
        changed_.notify_one();
    }

    /// Releases the receivers once they have taken what was sent.
    void close() {
        const std::lock_guard<std::mutex> lock(mutex_);
        closed_ = true;
        changed_.notify_all();
    }

    /// Waits for a value.
    /// \return nothing once the channel is closed and empty
    std::optional<Value> receive() {
        std::unique_lock<std::mutex> lock(mutex_);
        changed_.wait(lock, [this] { return closed_ || !values_.empty(); });
        return takeFirst();
    }

    /// The same with a timeout.
    /// \return nothing also on timeout
    std::optional<Value> receive(std::chrono::seconds patience) {
        std::unique_lock<std::mutex> lock(mutex_);
        changed_.wait_for(lock, patience, [this] { return closed_ || !values_.empty(); });
        return takeFirst();
    }

private:
    std::optional<Value> takeFirst() {
        if (values_.empty()) {
            return std::nullopt;
        }
        std::optional<Value> value(std::move(values_.front()));
        values_.pop_front();
        return value;
    }

    std::mutex mutex_;
    std::condition_variable changed_;
    std::deque<Value> values_;
    bool closed_ = false;
};
