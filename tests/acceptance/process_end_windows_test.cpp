#include "EndedProcess.h"

using namespace ZAV;
using TestSupport::lastWordsIn;
using TestSupport::readFile;

namespace {

class FreedLibrary : public TestSupport::EndedProcess {
protected:
    int runUnload(const std::string& way) const {
        return run(ZAV_LOG_UNLOAD_PROGRAM, way + " \"" + ZAV_LOG_PLUGIN + "\"");
    }
};

} // namespace

TEST_F(FreedLibrary, HasWrittenEverythingAfterFinish) {
    ASSERT_EQ(runUnload("finish"), 0) << errors();
    EXPECT_THAT(lastWordsIn(readFile(directory_ / "queued")),
                testing::ElementsAre("1", "2", "3", "4", "5", "6", "7", "8", "9", "10"));
}

TEST_F(FreedLibrary, NeitherCrashesNorHangsWithoutFinish) {
    EXPECT_EQ(runUnload("leave"), 0) << errors();
}
