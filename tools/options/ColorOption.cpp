#include "options/ColorOption.h"

#include "platform/Terminal.h"

namespace ZAV {
namespace Tools {

void ColorOption::addTo(CLI::App& command) {
    command.add_option("--color", choice_, "Colours: \"auto\" uses them on a terminal only")
        ->check(CLI::IsMember({"auto", "always", "never"}))
        ->type_name("auto|always|never");
}

bool ColorOption::isOn() const {
    return choice_ == "always" || (choice_ == "auto" && Platform::showsColors());
}

} // namespace Tools
} // namespace ZAV
