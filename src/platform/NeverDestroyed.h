#pragma once

namespace ZAV {
namespace Platform {

/// Base class of a singleton that is created on first use and never destroyed: threads may still log while
/// the process ends.
///
/// The class's source file defines `const Object& madeAtLoad = Object::instance();`, so that it is never
/// created while another thread forks: in the child the initialisation would never complete.
template <typename Object>
class NeverDestroyed {
public:
    static Object& instance() {
        static Object& object = *new Object;
        return object;
    }
};

} // namespace Platform
} // namespace ZAV
