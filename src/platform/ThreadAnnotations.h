#pragma once

/// \file
/// Names for clang's thread-safety attributes. A member says which lock guards it, a function which lock it
/// needs, and clang's `-Wthread-safety` checks both. Other compilers see nothing.

#if defined(__clang__)
#define ZAV_LOG_ANNOTATION(attribute) __attribute__((attribute))
#else
#define ZAV_LOG_ANNOTATION(attribute)
#endif

#define ZAV_LOG_CAPABILITY(name) ZAV_LOG_ANNOTATION(capability(name))
#define ZAV_LOG_SCOPED_CAPABILITY ZAV_LOG_ANNOTATION(scoped_lockable)
#define ZAV_LOG_GUARDED_BY(lock) ZAV_LOG_ANNOTATION(guarded_by(lock))
#define ZAV_LOG_REQUIRES(...) ZAV_LOG_ANNOTATION(requires_capability(__VA_ARGS__))
#define ZAV_LOG_EXCLUDES(...) ZAV_LOG_ANNOTATION(locks_excluded(__VA_ARGS__))
#define ZAV_LOG_ACQUIRE(...) ZAV_LOG_ANNOTATION(acquire_capability(__VA_ARGS__))
#define ZAV_LOG_TRY_ACQUIRE(...) ZAV_LOG_ANNOTATION(try_acquire_capability(__VA_ARGS__))
#define ZAV_LOG_RELEASE(...) ZAV_LOG_ANNOTATION(release_capability(__VA_ARGS__))
#define ZAV_LOG_ASSERT_HELD(...) ZAV_LOG_ANNOTATION(assert_capability(__VA_ARGS__))
#define ZAV_LOG_RETURN_CAPABILITY(lock) ZAV_LOG_ANNOTATION(lock_returned(lock))
#define ZAV_LOG_NO_THREAD_SAFETY_ANALYSIS ZAV_LOG_ANNOTATION(no_thread_safety_analysis)
