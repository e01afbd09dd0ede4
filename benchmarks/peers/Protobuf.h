#pragma once

#include <messages.pb.h>

#include "peers/PlainPeer.h"

namespace bench {

/// Which protobuf message carries a plain struct.
template <class Plain>
struct ProtobufMessageOf;
template <>
struct ProtobufMessageOf<Position> {
    using Type = proto::Position;
};
template <>
struct ProtobufMessageOf<ComputedPosition> {
    using Type = proto::ComputedPosition;
};
template <>
struct ProtobufMessageOf<MobileTransponder> {
    using Type = proto::MobileTransponder;
};

struct ProtobufPeer {
    static constexpr const char* kName = "protobuf";
    static constexpr bool kOwnMessages = true;
    static constexpr bool kSameBytes = false;

    template <class Plain>
    using Message = typename ProtobufMessageOf<Plain>::Type;
    using Received = ReceivedBytes;

    class Encoder {
    public:
        template <class Message>
        std::string_view Encode(const Message& message) {
            message.SerializeToArray(buffer_.Data(), EncodingBuffer::kSize);
            return buffer_.View(static_cast<std::size_t>(message.GetCachedSize()));
        }

    private:
        EncodingBuffer buffer_;
    };
    template <class Message>
    static void Decode(const Received& received, Message& message) {
        message.ParseFromArray(received.View().data(), static_cast<int>(received.View().size()));
    }
    template <class Message>
    static void Assign(Message& target, const Message& source) {
        target = source;
    }

    static void Fill(const Position& plain, proto::Position& message);
    static void Fill(const AcousticObservation& plain, proto::AcousticObservation& message);
    static void Fill(const ComputedPosition& plain, proto::ComputedPosition& message);
    static void Fill(const MobileTransponder& plain, proto::MobileTransponder& message);
    static void Read(const proto::Position& message, Position& plain);
    static void Read(const proto::ComputedPosition& message, ComputedPosition& plain);
    static void Read(const proto::MobileTransponder& message, MobileTransponder& plain);
};

}  // namespace bench
