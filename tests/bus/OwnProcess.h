#pragma once

#include <gtest/gtest.h>
#include <sys/wait.h>
#include <unistd.h>

#include <cstdio>
#include <cstdlib>
#include <functional>

namespace bus {

/// Runs what uses the bus in a process of its own, since a process chooses its bus once. True if no assertion
/// failed there and the process ended by itself. This process must not have touched the bus.
inline bool InOwnProcess(const std::function<void()>& body) {
    std::fflush(stdout);
    const pid_t child = fork();
    if (child == 0) {
        alarm(60);
        body();
        std::exit(testing::Test::HasFailure() ? EXIT_FAILURE : EXIT_SUCCESS);
    }
    int status = 0;
    waitpid(child, &status, 0);
    return WIFEXITED(status) && WEXITSTATUS(status) == EXIT_SUCCESS;
}

}  // namespace bus
