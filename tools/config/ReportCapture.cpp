#include "config/ReportCapture.h"

#include <iostream>

namespace ZAV {
namespace Tools {

ReportCapture::ReportCapture() : shown_(std::cerr.rdbuf(reports_.rdbuf())) {}

ReportCapture::~ReportCapture() {
    std::cerr.rdbuf(shown_);
}

std::string ReportCapture::firstLine() const {
    const std::string text = reports_.str();
    return text.substr(0, text.find('\n'));
}

} // namespace Tools
} // namespace ZAV
