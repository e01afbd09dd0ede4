#include <sys/wait.h>
#include <unistd.h>

#include <cstdio>
#include <cstdlib>

#include "measure/Measure.h"
#include "peers/Floor.h"
#include "peers/Hand.h"
#include "peers/Protobuf.h"
#include "peers/Surveymsg.h"
#include "values/Sample.h"

namespace bench {
namespace {

constexpr int kLive = 10000;
constexpr int kObservations = 8;

long ResidentBytes() {
    long total = 0, resident = 0;
    std::FILE* file = std::fopen("/proc/self/statm", "r");
    if (!file || std::fscanf(file, "%ld %ld", &total, &resident) != 2) std::abort();
    std::fclose(file);
    return resident * sysconf(_SC_PAGESIZE);
}

// What keeps the encoded bytes: the message itself, or a text beside it.
template <class Peer>
constexpr bool kKeepsBytes = std::is_same_v<Peer, SurveymsgPeer> || std::is_same_v<Peer, FloorPeer>;

template <class Peer, class Plain>
void PrintLive(const char* kind, const Plain& plain) {
    using Message = typename Peer::template Message<Plain>;
    typename Peer::Encoder encoder;
    std::vector<std::unique_ptr<Message>> messages(kLive);
    std::vector<std::string> bytes(kKeepsBytes<Peer> ? 0 : kLive);
    {
        // A first one of each, so that what the process keeps once is not counted.
        Message first{};
        Peer::Fill(plain, first);
        encoder.Encode(first);
    }
    const long before = ResidentBytes();
    for (int i = 0; i < kLive; ++i) {
        const auto place = static_cast<std::size_t>(i);
        messages[place] = std::make_unique<Message>();
        Peer::Fill(plain, *messages[place]);
        const std::string_view encoded = encoder.Encode(*messages[place]);
        if constexpr (!kKeepsBytes<Peer>) bytes[place] = encoded;
    }
    std::printf("%-12s %-12s %8ld bytes each\n", kind, Peer::kName, (ResidentBytes() - before) / kLive);
}

// In a process of its own, so that no run finds memory that another has left.
template <class Print>
void Apart(Print print) {
    std::fflush(stdout);
    const pid_t child = fork();
    if (child == 0) {
        print();
        std::fflush(stdout);
        _exit(0);
    }
    int status = 0;
    if (child < 0 || waitpid(child, &status, 0) != child || status != 0) std::abort();
}

template <class Peer>
void PrintPeer() {
    Apart([] { PrintLive<Peer>("position", SamplePosition()); });
    Apart([] { PrintLive<Peer>("computed-8", SampleComputedPosition(kObservations)); });
}

}  // namespace

void PrintResident() {
    std::printf("resident memory of %d live, encoded messages\n", kLive);
    PrintPeer<SurveymsgPeer>();
    PrintPeer<FloorPeer>();
    PrintPeer<HandPeer>();
    PrintPeer<ProtobufPeer>();
}

}  // namespace bench
