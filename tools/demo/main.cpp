// Shows the road of one computed position: a producer measures, solves and sends, a receiver listens, and a
// tool that knows no class of message shows what came. In one process, or each in its own.

#include <cstdlib>
#include <exception>
#include <iostream>

#include "demo/Options.h"
#include "demo/Parts.h"
#include "demo/ShotFile.h"

namespace {

using namespace demo;

int Run(const Options& options, const char* program) {
    if (options.overNetwork) return RunOverNetwork(options, program);
    return options.part.empty() ? RunInOneProcess(options) : RunPart(options);
}

}  // namespace

int main(int argc, char** argv) {
    const auto complain = [](const char* what) { std::cerr << "surveymsg-demo: " << what << '\n'; };
    try {
        const Options options = ParseOptions(argc, argv);
        if (!options.help) return Run(options, argv[0]);
        std::cout << kUsage << '\n';
        return EXIT_SUCCESS;
    } catch (const OptionError& error) {
        complain(error.what());
        std::cerr << kUsage << '\n';
        return kExitUnusableInput;
    } catch (const ShotFileError& error) {
        complain(error.what());
        return kExitUnusableInput;
    } catch (const std::exception& error) {
        complain(error.what());
        return EXIT_FAILURE;
    }
}
