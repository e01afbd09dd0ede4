#pragma once

#include <cstddef>
#include <cstdint>
#include <string>

#include "demo/Receiver.h"

namespace demo {

/// The producer's view of the two programs that listen to it: it begins when both are ready, and ends when
/// both are done. Each says so over the bus. Raises `LibraryFailure` if one says nothing for half a minute.
class Listeners {
public:
    Listeners();
    void AwaitReady();
    void AwaitDone();

private:
    void Await(const std::string& msgKey);
};

/// The other side: says that it is ready until something comes, takes all messages up to the end, says that
/// it is done.
void ListenToEnd(Receiver& receiver);

}  // namespace demo
