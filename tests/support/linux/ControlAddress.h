#pragma once

#include "TestSupport.h"

namespace ZAV {
namespace TestSupport {

/// A socket in the test's directory.
inline std::string controlAddress(const TemporaryDirectory& directory) {
    return directory / "socket";
}

} // namespace TestSupport
} // namespace ZAV
