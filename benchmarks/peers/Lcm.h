#pragma once

#include <bench_lcm/computed_t.hpp>
#include <bench_lcm/mobile_t.hpp>
#include <bench_lcm/position_t.hpp>

#include "peers/PlainPeer.h"

namespace bench {

/// Which LCM message carries a plain struct.
template <class Plain>
struct LcmMessageOf;
template <>
struct LcmMessageOf<Position> {
    using Type = bench_lcm::position_t;
};
template <>
struct LcmMessageOf<ComputedPosition> {
    using Type = bench_lcm::computed_t;
};
template <>
struct LcmMessageOf<MobileTransponder> {
    using Type = bench_lcm::mobile_t;
};

struct LcmPeer {
    static constexpr const char* kName = "lcm";
    static constexpr bool kOwnMessages = true;
    static constexpr bool kSameBytes = false;

    template <class Plain>
    using Message = typename LcmMessageOf<Plain>::Type;
    using Received = ReceivedBytes;

    class Encoder {
    public:
        template <class Message>
        std::string_view Encode(const Message& message) {
            const int written = message.encode(buffer_.Data(), 0, EncodingBuffer::kSize);
            return buffer_.View(static_cast<std::size_t>(written));
        }

    private:
        EncodingBuffer buffer_;
    };
    template <class Message>
    static void Decode(const Received& received, Message& message) {
        message.decode(received.View().data(), 0, static_cast<int>(received.View().size()));
    }
    template <class Message>
    static void Assign(Message& target, const Message& source) {
        target = source;
    }

    static void Fill(const Position& plain, bench_lcm::position_t& message);
    static void Fill(const ComputedPosition& plain, bench_lcm::computed_t& message);
    static void Fill(const MobileTransponder& plain, bench_lcm::mobile_t& message);
    static void Read(const bench_lcm::position_t& message, Position& plain);
    static void Read(const bench_lcm::computed_t& message, ComputedPosition& plain);
    static void Read(const bench_lcm::mobile_t& message, MobileTransponder& plain);
};

}  // namespace bench
