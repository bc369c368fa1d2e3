#include "QuoteService.h"

#include "log/LogCapture.h"
#include "log/LoggerFactory.h"

#include <gtest/gtest.h>

using ZAV::Log::LogCapture;
using ZAV::Log::LoggerFactory;

TEST(QuoteService, SaysWhyItRefusesAPrice) {
    const LogCapture capture(LoggerFactory::getLogger("quotes"), ZAV::Log::Level::INFO, false);
    QuoteService service;
    EXPECT_FALSE(service.take("v2:south", "ACME", -1));
    EXPECT_TRUE(capture.contains("price -1 of ACME refused"));
    EXPECT_FALSE(service.lastPriceOf("ACME"));
}

TEST(QuoteService, TakesAPriceWithoutComplaint) {
    const LogCapture capture(LoggerFactory::getLogger("quotes"), ZAV::Log::Level::INFO, false);
    QuoteService service;
    EXPECT_TRUE(service.take("v2:south", "ACME", 12.5));
    EXPECT_EQ(service.lastPriceOf("ACME"), 12.5);
    EXPECT_TRUE(service.charge("r1", "ACME", 2));
    EXPECT_EQ(capture.count(ZAV::Log::Level::ERROR) + capture.count(ZAV::Log::Level::WARNING), 0U);
}

TEST(QuoteService, SaysForWhichRequestThereIsNoPrice) {
    const LogCapture capture(LoggerFactory::getLogger("quotes"), ZAV::Log::Level::INFO, false);
    QuoteService service;
    EXPECT_FALSE(service.charge("r1", "ACME", 2));
    const ZAV::Log::LogMessage message = capture.messages().at(0);
    EXPECT_EQ(message.getText(), "no price share=ACME");
    EXPECT_EQ(message.getContext(), (ZAV::Log::LogMessage::Pairs{{"request", "r1"}}));
}
