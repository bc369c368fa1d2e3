#include "ControlSupport.h"

#include "log/ControlServer.h"
#include "log/LoggerFactory.h"

#include <cstdlib>
#include <memory>

using namespace ZAV;
using namespace ZAV::Log;
using testing::HasSubstr;

namespace {

class Ctl : public TestSupport::Control {
protected:
    /// \return the exit code
    int ctl(const std::string& arguments) const {
        const std::string command = std::string("cd . && \"") + ZAV_LOG_PROGRAM + "\" ctl " + arguments +
                                    " > \"" + (directory_ / "out") + "\" 2> \"" + (directory_ / "err") + "\"";
        const int status = std::system(command.c_str());
        const int shift = 256; // of the code in the status, where it is not the code itself
        return status >= shift ? status / shift : status;
    }
    std::string out() const { return TestSupport::readFile(directory_ / "out"); }
    std::string err() const { return TestSupport::readFile(directory_ / "err"); }
};

} // namespace

TEST_F(Ctl, AsksARunningProgram) {
    LoggerFactory::getLogger("with blank");
    TestSupport::RecordingListener listener;
    LogManager::registerCommandListener("heard", &listener);
    auto server = std::make_unique<ControlServer>(address_);
    const std::string address = "\"" + address_ + "\" ";
    EXPECT_EQ(ctl(address + "level \"with blank\" DEBUG"), 0) << err();
    EXPECT_EQ(out(), "");
    EXPECT_EQ(ctl(address + "loggers"), 0) << err();
    EXPECT_EQ(out(), "root WARNING 0\nwith blank DEBUG 0\n");
    EXPECT_EQ(ctl(address + "command heard [1,2]"), 0) << err();
    EXPECT_EQ(ctl(address + "command heard -x --help"), 0) << err();
    EXPECT_EQ(ctl(address + "level root Debug"), 1);
    EXPECT_EQ(out() + err(), "There is no 'Debug' LogLevel defined.\n");
    server.reset(); // and with it the thread that the listener ran in
    EXPECT_THAT(listener.arguments, testing::ElementsAre("[1,2]", "-x --help"));
}

TEST_F(Ctl, TellsWrongUsageBeforeItAsks) {
    const std::string nobody = "\"" + address_ + "\" ";
    for (const char* const request :
         {"", "nonsense", "level root", "level a b DEBUG", "flush now", "command", "command \"two words\""}) {
        EXPECT_EQ(ctl(nobody + request), 2) << request;
        EXPECT_THAT(err(), HasSubstr("zav-log: ")) << request;
    }
    EXPECT_EQ(ctl(nobody + "loggers"), 1);
    EXPECT_THAT(err(), HasSubstr(address_));
}
