#pragma once

#include "log/message/MessageFields.h"

namespace ZAV {
namespace Log {

/// The message object of one call, which is filled when somebody needs it. It is the thread's own one, filled
/// again, so that its texts need no new memory; while that is in use, as when an appender logs, another one
/// is made.
class ReusedMessage {
public:
    /// \param fields live as long as this object, and the logger's name for ever
    explicit ReusedMessage(const MessageFields& fields) noexcept : fields_(fields) {}

    /// Gives the thread's own message back, without the memory of unusually long texts.
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

    /// \return the fields, with the object's texts once it was filled: what the fields refer to is the
    ///         caller's, and an appender or a listener may have changed it since
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
