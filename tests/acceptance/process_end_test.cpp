#include "EndedProcess.h"

using namespace ZAV;

#include <algorithm>

namespace {

class ProcessEnd : public TestSupport::EndedProcess, public testing::WithParamInterface<const char*> {};

std::string nameOf(const testing::TestParamInfo<const char*>& way) {
    std::string name = way.param;
    std::replace(name.begin(), name.end(), '-', '_');
    return name;
}

} // namespace

TEST_P(ProcessEnd, NeitherCrashesNorHangs) {
    EXPECT_EQ(run(ZAV_LOG_PROCESS_END_PROGRAM, GetParam()), 0) << errors();
}

INSTANTIATE_TEST_SUITE_P(Ways, ProcessEnd,
                         testing::Values("return", "exit", "exit-while-threads-log", "static-object",
                                         "lost-listener", "exit-in-listener", "exit-in-appender",
                                         "exit-in-consumer-thread"),
                         nameOf);
