#pragma once

#include "TestSupport.h"

namespace ZAV {
namespace TestSupport {

/// A pipe with the name of the test's directory, which no other test has.
inline std::string controlAddress(const TemporaryDirectory& directory) {
    return directory.path().substr(directory.path().rfind('/') + 1);
}

} // namespace TestSupport
} // namespace ZAV
