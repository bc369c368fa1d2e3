#include "log/commands/FailureReport.h"

#include "log/LogManager.h"

namespace ZAV {
namespace Log {
namespace FailureReport {

namespace {

thread_local bool beingDelivered = false;

} // namespace

void deliver(const std::string& text) {
    if (!beingDelivered) {
        const Answer answer(true);
        LogManager::command("EXCEPTION", text);
    }
}

bool isBeingDelivered() {
    return beingDelivered;
}

Answer::Answer(bool answersReport) : before_(beingDelivered) {
    beingDelivered = beingDelivered || answersReport;
}

Answer::~Answer() {
    beingDelivered = before_;
}

} // namespace FailureReport
} // namespace Log
} // namespace ZAV
