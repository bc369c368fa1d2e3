#include "QuoteService.h"

#include "log/LogSession.h"
#include "zav-util/Properties.h"

int main() {
    const ZAV::Log::LogSession session(ZAV::Util::Properties{
        {"logger.root.level", "INFO"},
        {"appender.console", "StdoutAppender"},
    });
    QuoteService service;
    for (int i = 1; i <= 2500; ++i) {
        service.take("v1:north", "ACME", 12.5);
        service.take("v2:south", "ACME", i % 2 == 0 ? 12.75 : -1);
    }
    service.charge("r1", "ACME", 3);
}
