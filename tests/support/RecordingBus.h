#pragma once

// A bus of the test's own in the place of the real one: it notes every call and answers as it is told.
// Linked into a test program, its functions stand before those of the shared library.

#include <deque>
#include <string>
#include <vector>

#include "surveymsg/outside/Tarvex.h"

struct RecordingBus {
    struct Incoming {
        std::string node, task;
        std::uint32_t number;
        std::string msgKey, identifier, body;
    };

    std::vector<std::string> calls;  // one line a call
    int result = 1;                  // of every call but the reads
    std::uint32_t readFailure = 0;   // the last error value of reads, if not 0
    std::uint32_t neededBytes = 0;   // a read with less room than this is too small
    std::deque<Incoming> incoming;
    std::string lastSent;
    int echo = -1;  // a file to which every call is written as it comes, or -1

    std::string TakeCalls();  // joined by "; ", and forgotten
};

/// Never destroyed: the message library still calls the bus while the process ends.
RecordingBus& TheRecordingBus();
