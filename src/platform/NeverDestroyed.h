#pragma once

namespace ZAV {
namespace Platform {

/// What a class derives from of which the process has one object, which is made at its first use and never
/// destroyed: threads may still log while the process ends.
///
/// The class's source says `const Object& madeAtLoad = Object::instance();`, so that no thread makes it while
/// another one forks: in the child its making would never be over.
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
