#pragma once

#include "TestSupport.h"

namespace ZAV {
namespace TestSupport {

/// A pipe named after the test's directory, which is unique.
inline std::string controlAddress(const TemporaryDirectory& directory) {
    return directory.path().substr(directory.path().rfind('/') + 1);
}

} // namespace TestSupport
} // namespace ZAV
