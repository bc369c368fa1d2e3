#pragma once

namespace ZAV {
namespace Platform {

/// A pointer that each thread has for itself, with a function that destroys what it leads to when the thread
/// ends.
///
/// A thread-local object with a destructor would not do: some compilers free its memory before they call the
/// destructor.
class ThreadSlot {
public:
    /// \param destroy called in a thread that ends, with its pointer, unless that is null; must not throw
    explicit ThreadSlot(void (*destroy)(void* object));
    ThreadSlot(const ThreadSlot&) = delete;
    ThreadSlot& operator=(const ThreadSlot&) = delete;

    /// \return the calling thread's pointer; null before the first `set`, and once the object was destroyed
    void* get() const noexcept;

    /// \return false if the pointer could not be kept
    bool set(void* object) noexcept;

private:
    unsigned long key_ = 0;
    bool isValid_ = false;
};

} // namespace Platform
} // namespace ZAV
