#include "CommandLine.h"

int main(int argc, char** argv) {
    return ZAV::Tools::CommandLine().run(argc, argv);
}
