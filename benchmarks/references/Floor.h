#pragma once

// The reference "floor": the hand-written encoding with the duties of the library added, each at its least
// cost. A message is an object on the heap with the five keys of its address, reads the clock when it is made,
// keeps an encoded body, builds its identifier at the end of a load, owns nested messages that a factory makes
// from their keys, in the order in which they were added and found by identifier, is assigned through its
// encoding, and gives its members by number.

#include <algorithm>
#include <memory>
#include <string>
#include <string_view>
#include <vector>

#include "references/Packed.h"
#include "values/Messages.h"

namespace bench::floor_ {

/// A text that needs no heap up to 31 characters, as identifiers are mostly longer than `std::string` has room for.
class Text {
public:
    Text() = default;
    Text(const Text& other) { *this = other; }
    Text(Text&&) = default;
    Text& operator=(Text&&) = default;
    Text& operator=(const Text& other) {
        Join(other.View());
        return *this;
    }
    template <class... Parts>
    void Join(const Parts&... parts) {
        const std::size_t size = (std::string_view(parts).size() + ...);
        if (size > sizeof short_) long_ = std::make_unique<char[]>(size);
        char* end = size > sizeof short_ ? long_.get() : short_;
        ((end = std::copy_n(std::string_view(parts).data(), std::string_view(parts).size(), end)), ...);
        size_ = size;
    }
    std::string_view View() const { return {size_ > sizeof short_ ? long_.get() : short_, size_}; }

private:
    std::size_t size_ = 0;
    char short_[31];
    std::unique_ptr<char[]> long_;
};

class Message;

/// Nested messages by identifier, in the order in which they came.
class Dependencies {
public:
    std::size_t Count() const { return rows_.size(); }
    Message* At(std::size_t row) const { return rows_[row].message.get(); }
    Message* Find(std::string_view identifier) const;
    void Add(const Text& identifier, std::unique_ptr<Message> message);
    void Reserve(std::size_t count) { rows_.reserve(count); }
    void Clear();

private:
    struct Row {
        Text identifier;
        std::unique_ptr<Message> message;
    };
    void Enter(std::size_t row);

    std::vector<Row> rows_;
    std::vector<std::uint32_t> slots_;  // row numbers plus one by hash; empty for a few rows, which are compared
};

class Message {
public:
    explicit Message(std::string_view messageKey);
    Message(const Message&) = delete;
    virtual ~Message();

    Message& operator=(Message& source);

    void Encode();
    void Decode(std::string_view bytes);
    bool AddDependency(Message& message);  ///< stores a copy; one with the same identifier is overwritten

    virtual packed::Writer Put(packed::Writer out) const = 0;
    virtual packed::Reader Take(packed::Reader in) = 0;
    virtual void BuildIdentifier() = 0;
    virtual bool Number(std::uint16_t id, std::uint16_t index, double& out) const = 0;

    double time;
    std::string_view key;  // of its class, which is constant
    Text identifier;
    Text oldIdentifier;
    Text sourceNode;
    Text sourceTask;
    std::uint32_t sourceNumber = 0;
    Dependencies nested;
    std::string body;

protected:
    packed::Writer PutNested(packed::Writer out) const;  ///< the base share
    packed::Reader TakeNested(packed::Reader in);
};

/// The factory; null for a key that it does not know.
std::unique_ptr<Message> Make(std::string_view key);

class PositionMessage : public Message {
public:
    PositionMessage() : PositionMessage("PRX~Position") {}
    explicit PositionMessage(std::string_view messageKey) : Message(messageKey) {}

    packed::Writer Put(packed::Writer out) const override;
    packed::Reader Take(packed::Reader in) override;
    void BuildIdentifier() override;
    bool Number(std::uint16_t id, std::uint16_t index, double& out) const override;

    Position fields;
};

class ObservationMessage : public Message {
public:
    ObservationMessage() : Message("RAW~AcousticObservation") {}

    packed::Writer Put(packed::Writer out) const override;
    packed::Reader Take(packed::Reader in) override;
    void BuildIdentifier() override;
    bool Number(std::uint16_t id, std::uint16_t index, double& out) const override;

    AcousticObservation fields;
    Text name;
};

class ComputedPositionMessage : public PositionMessage {
public:
    ComputedPositionMessage() : PositionMessage("PRX~ComputedPosition") {}

    packed::Writer Put(packed::Writer out) const override;
    packed::Reader Take(packed::Reader in) override;
    bool Number(std::uint16_t id, std::uint16_t index, double& out) const override;

    double standardDeviation = 0.0;
};

class MobileTransponderMessage : public Message {
public:
    MobileTransponderMessage() : Message("PRX~MobileTransponder") {}

    packed::Writer Put(packed::Writer out) const override;
    packed::Reader Take(packed::Reader in) override;
    void BuildIdentifier() override;
    bool Number(std::uint16_t id, std::uint16_t index, double& out) const override;

    /// One element of the list: an object of its own on the heap with its own clock reading.
    struct Range {
        Range();
        double time;
        TransponderRange fields;
    };
    MobileTransponder fields;  // its ranges stay empty
    std::vector<std::unique_ptr<Range>> ranges;
};

}  // namespace bench::floor_
