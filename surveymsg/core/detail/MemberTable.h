#pragma once

// Members by number. Each class has one constant table of rows, and all that a row does is done here.
//
//     constexpr RowsOf<CObsMsg> row;
//     constexpr Member kRows[] = {
//         row(101, "Type", &CObsMsg::Type).Reads<TypeText>().NotANumber(),
//         row(102, "Value", &CObsMsg::Value),
//     };
//     constinit const MemberTable kObsTable = {kRows, &kMsgTable};
//
// Width and rules follow from the field's type; a row says only what differs. A row of an element stands
// for one member of each object in a list and is made with the function that fetches the object.

#include <array>
#include <cstdint>
#include <span>
#include <type_traits>

#include <surveymsg/core/Msg.h>

namespace surveymsg::detail {

struct ThreeFlags {
    std::int32_t flags[3];
};

enum class Kind : std::uint8_t { None, Byte, Word, SignedWord, Long, SignedLong, Double, Text, Flags };

enum class Show : std::uint8_t { Plain, Angle, Time };

/// One member of a class. See `RowsOf` for how it is made.
struct Member {
    enum Operation : std::uint8_t { Lists = 1, Formats = 2, Copies = 4, Gets = 8, Sets = 16 };

    /// Gives the text that stands for the value; false if the value has none.
    using TextOf = bool (*)(CMsg&, CString&);
    /// Writes the whole text form; true if it has dealt with it, else the rules of the field apply.
    using FormOf = bool (*)(CMsg&, const char* format, CString&);
    /// Fetches the object at an index; if there is none, null and the result of the operation.
    using Fetch = CMsg* (*)(CMsg& owner, std::uint16_t index, int& result);

    union Field {
        constexpr Field() : none(nullptr) {}
        constexpr explicit Field(std::uint8_t CMsg::*field) : byte(field) {}
        constexpr explicit Field(std::uint16_t CMsg::*field) : word(field) {}
        constexpr explicit Field(std::int16_t CMsg::*field) : signedWord(field) {}
        constexpr explicit Field(std::uint32_t CMsg::*field) : long_(field) {}
        constexpr explicit Field(std::int32_t CMsg::*field) : signedLong(field) {}
        constexpr explicit Field(double CMsg::*field) : double_(field) {}
        constexpr explicit Field(CString CMsg::*field) : text(field) {}

        std::nullptr_t none;
        std::uint8_t CMsg::*byte;
        std::uint16_t CMsg::*word;
        std::int16_t CMsg::*signedWord;
        std::uint32_t CMsg::*long_;
        std::int32_t CMsg::*signedLong;
        double CMsg::*double_;
        CString CMsg::*text;
    };

    MemberDefinition definition{};
    const char* unit = "";
    Field field{};
    Kind kind = Kind::None;
    Show show = Show::Plain;
    std::uint8_t served = Lists | Formats | Copies | Gets | Sets;
    bool copiesText = false;      // `MemberCopy` gives the text of `textOf` and not the field
    std::uint16_t elementId = 0;  // the member of the fetched object; 0: the field is the object's own
    Fetch fetch = nullptr;
    TextOf textOf = nullptr;
    FormOf formOf = nullptr;
    const void* (*block)(const CMsg&) = nullptr;  // where `Kind::Flags` is copied from
};

/// Hands the field that a row names to `use`, in its own type. This is the one place that tells the kinds
/// apart.
template <class Use>
void VisitField(const Member& row, CMsg& object, Use&& use) {
    switch (row.kind) {
        case Kind::Byte:
            return use(object.*row.field.byte);
        case Kind::Word:
            return use(object.*row.field.word);
        case Kind::SignedWord:
            return use(object.*row.field.signedWord);
        case Kind::Long:
            return use(object.*row.field.long_);
        case Kind::SignedLong:
            return use(object.*row.field.signedLong);
        case Kind::Double:
            return use(object.*row.field.double_);
        case Kind::Text:
            return use(object.*row.field.text);
        case Kind::Flags:
        case Kind::None:
            return;
    }
}

/// A class's rows, found by id without a walk, and its base's.
class MemberTable {
public:
    template <std::size_t N>
    consteval MemberTable(const Member (&rows)[N], const MemberTable* base)
        : rows_(rows), base_(base), firstId_(LeastId(rows)) {
        for (std::size_t i = 0; i < N; ++i) {
            const std::size_t slot = static_cast<std::size_t>(rows[i].definition.Id - firstId_);
            if (rows[i].definition.Id == 0 || slot >= slots_.size()) throw "id out of range";
            if (slots_[slot] != 0) throw "id stands twice";
            slots_[slot] = static_cast<std::uint8_t>(i + 1);
        }
    }

    int List(CPtrArray* rows) const;
    int Format(CMsg& message, std::uint16_t id, std::uint16_t index, const char* format, CString* out) const;
    int Copy(CMsg& message, std::uint16_t id, std::uint16_t index, void* out) const;
    /// In the header for the sake of a double of the class itself, by far the most members: where the
    /// table is known the compiler leaves little of the search.
    int Get(CMsg& message, std::uint16_t id, std::uint16_t index, double* out) const {
        const auto slot = static_cast<std::uint16_t>(id - firstId_);
        if (!out) return 0;
        if (slot >= kMostRows || slots_[slot] == 0) return base_ ? base_->GetAny(message, id, index, out) : 0;
        const Member& row = rows_[slots_[slot] - 1u];
        if (row.elementId) return GetOfElement(row, message, index, out);
        if (row.kind != Kind::Double || row.fetch) return GetBy(row, message, index, out);
        *out = message.*row.field.double_;
        return 1;
    }
    int Set(CMsg& message, std::uint16_t id, std::uint16_t index, double value) const;

    /// The fields of this table's own rows, in their order, as a class's share of the stream.
    template <class Wire, class Message>
    void Stream(Wire& wire, Message& message) const {
        const auto stream = [&wire](auto& field) { wire.Field(field); };
        for (const Member& row : rows_) VisitField(row, message, stream);
    }
    /// Copies the fields of this table's own rows between two messages of its class.
    void CopyFields(CMsg& source, CMsg& target) const;

    std::span<const Member> Rows() const { return rows_; }

private:
    static constexpr std::size_t kMostRows = 32;

    template <std::size_t N>
    static consteval std::uint16_t LeastId(const Member (&rows)[N]) {
        std::uint16_t least = rows[0].definition.Id;
        for (const Member& row : rows)
            if (row.definition.Id < least) least = row.definition.Id;
        return least;
    }
    const Member* Find(std::uint16_t id, Member::Operation operation) const;
    int GetAny(CMsg& message, std::uint16_t id, std::uint16_t index, double* out) const;
    static int GetOfElement(const Member& row, CMsg& message, std::uint16_t index, double* out);
    static int GetBy(const Member& row, CMsg& message, std::uint16_t index, double* out);

    std::span<const Member> rows_;
    const MemberTable* base_;
    std::uint16_t firstId_;
    std::array<std::uint8_t, kMostRows> slots_{};  // row number plus one by id, 0 for none
};

extern const MemberTable kMsgTable;

/// Copies a text with its terminator, or its first 256 characters without.
void CopyText(std::string_view text, void* out);

template <class Value>
constexpr Kind KindOf() {
    if constexpr (std::is_same_v<Value, std::uint8_t>) return Kind::Byte;
    if constexpr (std::is_same_v<Value, std::uint16_t>) return Kind::Word;
    if constexpr (std::is_same_v<Value, std::int16_t>) return Kind::SignedWord;
    if constexpr (std::is_same_v<Value, std::uint32_t>) return Kind::Long;
    if constexpr (std::is_same_v<Value, std::int32_t>) return Kind::SignedLong;
    if constexpr (std::is_same_v<Value, double>) return Kind::Double;
    if constexpr (std::is_same_v<Value, CString>) return Kind::Text;
}

constexpr std::uint16_t kTextWidth = 0x100;

/// A row under construction: each call says one thing that differs from what its field implies. Hooks are
/// functions on the class `C` of the rows.
template <class C>
struct Row : Member {
    constexpr Row Width(std::uint16_t width) const {
        return With([=](Row& r) { r.definition.Width = width; });
    }
    constexpr Row Unit(const char* unit_) const {
        return With([=](Row& r) { r.unit = unit_; });
    }
    constexpr Row Angle() const {
        return With([](Row& r) {
            r.show = Show::Angle;
            r.unit = "degrees";
        });
    }
    constexpr Row Time() const {
        return With([](Row& r) {
            r.show = Show::Time;
            r.unit = "s since 1980-01-06 UTC";
        });
    }
    constexpr Row NotListed() const { return Without(Lists); }
    constexpr Row NotANumber() const { return Without(Gets | Sets); }
    constexpr Row NotCopied() const { return Without(Copies); }
    constexpr Row CopiedAsText() const {
        return With([](Row& r) { r.copiesText = true; });
    }

    /// `Text(C&, CString&)` gives the text that stands for the value; it goes through the text rule.
    template <auto Text>
    constexpr Row Reads() const {
        return With([](Row& r) { r.textOf = [](CMsg& m, CString& out) { return Text(static_cast<C&>(m), out); }; });
    }
    /// `Form(C&, const char* format, CString&)` may write the whole text form.
    template <auto Form>
    constexpr Row Forms() const {
        return With([](Row& r) {
            r.formOf = [](CMsg& m, const char* format, CString& out) { return Form(static_cast<C&>(m), format, out); };
        });
    }

private:
    template <class Change>
    constexpr Row With(Change change) const {
        Row changed = *this;
        change(changed);
        return changed;
    }
    constexpr Row Without(int operations) const {
        return With([=](Row& r) { r.served = static_cast<std::uint8_t>(r.served & ~operations); });
    }
};

/// Makes rows over the fields of `C`: of the message itself, or, with `fetch`, of each object of its list.
template <class C>
struct RowsOf {
    Member::Fetch fetch = nullptr;

    template <class Value, class Owner>
    constexpr Row<C> operator()(std::uint16_t id, const char* label, Value Owner::*field) const {
        static_assert(std::is_base_of_v<Owner, C>);
        Row<C> row = Make(id, label, KindOf<Value>() == Kind::Text ? kTextWidth : sizeof(Value));
        row.kind = KindOf<Value>();
        row.field = Member::Field(static_cast<Value CMsg::*>(field));
        return row.kind == Kind::Text ? row.NotANumber() : row;
    }
    /// Three flags as one member, which is copied but no number.
    template <auto Flags>
    constexpr Row<C> Block(std::uint16_t id, const char* label) const {
        static_assert(sizeof(std::declval<C&>().*Flags) == sizeof(ThreeFlags));
        Row<C> row = Make(id, label, sizeof(ThreeFlags));
        row.kind = Kind::Flags;
        row.block = [](const CMsg& m) -> const void* { return &(static_cast<const C&>(m).*Flags); };
        return row.NotANumber();
    }
    /// The member `elementId` of each object of the list, served by the object's own operations.
    constexpr Row<C> Forward(std::uint16_t id, std::uint16_t width, const char* label, std::uint16_t elementId) const {
        Row<C> row = Make(id, label, width);
        row.elementId = elementId;
        return row;
    }

private:
    constexpr Row<C> Make(std::uint16_t id, const char* label, std::size_t width) const {
        Row<C> row;
        row.definition = {id, static_cast<std::uint16_t>(width), label};
        row.fetch = fetch;
        return row;
    }
};

}  // namespace surveymsg::detail
