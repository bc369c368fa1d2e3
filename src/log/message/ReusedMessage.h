#pragma once

#include "log/message/MessageFields.h"

namespace ZAV {
namespace Log {

/// The `LogMessage` of one call, filled on first use. It reuses the thread's object, so that its texts need
/// no new memory; while that is in use, for example when an appender logs, another one is created.
class ReusedMessage {
public:
    /// \param fields must outlive this object, and the logger's name must never be destroyed
    explicit ReusedMessage(const MessageFields& fields) noexcept : fields_(fields) {}

    /// Returns the thread's object, and frees the memory of unusually long texts.
    ~ReusedMessage() {
        if (kept_ != nullptr) {
            giveBack();
        }
    }

    ReusedMessage(const ReusedMessage&) = delete;
    ReusedMessage& operator=(const ReusedMessage&) = delete;

    /// \return always the same object
    /// \throw std::bad_alloc
    const LogMessage& get();

    /// \return the fields. Once the object is filled, they refer to its texts, since an appender or a
    ///         listener may have changed those of the caller
    const MessageFields& fields() const noexcept { return kept_ == nullptr ? fields_ : keptFields(); }

private:
    struct Kept;
    static const bool hasSlotFromLoad;

    void take();
    void fillTaken(Kept& kept) const;
    const MessageFields& keptFields() const noexcept;
    void giveBack() noexcept;

    const MessageFields& fields_;
    Kept* kept_ = nullptr;
};

} // namespace Log
} // namespace ZAV
