#include <chrono>
#include <cstdlib>
#include <iostream>
#include <string>
#include <vector>

#include "demo/LibraryFailure.h"
#include "demo/Parts.h"
#include "server/ChildProcess.h"
#include "server/EngineServer.h"

namespace demo {
namespace {

std::vector<std::string> CommandFor(const char* part, const Options& options, const char* program) {
    std::vector<std::string> command = {program, "--part", part, "--sound-speed", std::to_string(options.soundSpeed)};
    if (options.all) command.push_back("--all");
    if (!options.file.empty()) command.insert(command.end(), {"--", options.file});
    return command;
}

}  // namespace

int RunOverNetwork(const Options& options, const char* program) {
    const server::EngineServer engine;
    std::cout << "The bus's server runs on " << engine.Url() << "; each program is a process of its own.\n\n"
              << std::flush;
    const auto start = [&](const char* part, const char* number) {
        return server::ChildProcess(CommandFor(part, options, program),
                                    {{"TARVEX_URL", engine.Url()}, {"TARVEX_TASK", part}, {"TARVEX_NUMBER", number}});
    };
    server::ChildProcess producer = start("producer", "1"), receiver = start("receiver", "2"),
                         tool = start("tool", "3");
    int worst = EXIT_SUCCESS;
    for (server::ChildProcess* each : {&producer, &receiver, &tool}) {
        std::cout << each->Output();
        if (each->ExitCode() == kExitUnusableInput) return kExitUnusableInput;  // the others would wait in vain
        worst = std::max(worst, each->ExitCode() < 0 ? EXIT_FAILURE : each->ExitCode());
    }
    return worst;
}

}  // namespace demo
