#include <surveymsg/core/detail/MemberTable.h>

#include <algorithm>
#include <cstring>

#include <surveymsg/core/detail/Assign.h>
#include <surveymsg/core/detail/ValueText.h>
#include <surveymsg/platform/detail/Memory.h>

namespace surveymsg::detail {
namespace {

constexpr std::size_t kCopiedText = 256;

// The object that a row is about. Null, with the operation's result, if its list has none at `index`.
CMsg* ObjectOf(const Member& row, CMsg& message, std::uint16_t index, int& result) {
    return row.fetch ? row.fetch(message, index, result) : &message;
}

void FormatDouble(const Member& row, CMsg& object, double value, const char* format, CString& out) {
    switch (row.show) {
        case Show::Plain:
            return FormatNumber(out, format, value);
        case Show::Angle:
            return FormatAngle(out, format, value);
        case Show::Time:  // a time of 0 stands for the message's own
            FormatCalendar(out, format, value == 0.0 ? object.MsgTime : value);
            return;
    }
}

// The text of one member, by its own form, its text, or the rules of its field.
void FormatMember(const Member& row, CMsg& object, const char* format, CString& out) {
    if (row.formOf && row.formOf(object, format, out)) return;
    if (row.textOf) {
        CString text;
        if (row.textOf(object, text)) FormatText(out, format, text.View());
    } else {
        VisitField(row, object, [&](auto& field) {
            using Value = std::remove_reference_t<decltype(field)>;
            if constexpr (std::is_same_v<Value, CString>)
                FormatText(out, format, field.View());
            else if constexpr (std::is_same_v<Value, double>)
                FormatDouble(row, object, field, format, out);
            else if constexpr (sizeof field < sizeof(std::int32_t))
                FormatNumber(out, format, std::int32_t{field});
            else
                FormatNumber(out, format, field);
        });
    }
}

}  // namespace

void CopyText(std::string_view text, void* out) {
    const std::size_t length = std::min(text.size(), kCopiedText);
    std::memcpy(out, text.data(), length);
    if (length < kCopiedText) static_cast<char*>(out)[length] = '\0';
}

const Member* MemberTable::Find(std::uint16_t id, Member::Operation operation) const {
    for (const MemberTable* table = this; table; table = table->base_) {
        const auto slot = static_cast<std::uint16_t>(id - table->firstId_);
        if (slot >= kMostRows || table->slots_[slot] == 0) continue;
        const Member& row = table->rows_[table->slots_[slot] - 1u];
        return row.served & operation ? &row : nullptr;
    }
    return nullptr;
}

void MemberTable::CopyFields(CMsg& source, CMsg& target) const {
    for (const Member& row : rows_)
        VisitField(row, source, [&](auto& from) {
            VisitField(row, target, [&](auto& to) {
                if constexpr (std::is_same_v<decltype(from), decltype(to)>) to = from;
            });
        });
}

int MemberTable::List(CPtrArray* rows) const {
    if (!rows) return 0;
    return ZeroWithoutMemory([&] {
        for (const MemberTable* table = this; table; table = table->base_)
            for (const Member& row : table->rows_)
                if (row.served & Member::Lists) rows->Add(const_cast<MemberDefinition*>(&row.definition));
        return 1;
    });
}

int MemberTable::Format(CMsg& message, std::uint16_t id, std::uint16_t index, const char* format, CString* out) const {
    if (!out) return 0;
    const Member* row = Find(id, Member::Formats);
    if (!row) return 0;
    int result = 1;
    CMsg* object = ObjectOf(*row, message, index, result);
    if (!object) return result;
    if (row->elementId) return object->FormatString(row->elementId, 0, format, out);
    return ZeroWithoutMemory([&] {
        FormatMember(*row, *object, format, *out);
        return 1;
    });
}

int MemberTable::Copy(CMsg& message, std::uint16_t id, std::uint16_t index, void* out) const {
    if (!out) return 0;
    const Member* row = Find(id, Member::Copies);
    if (!row) return 0;
    int result = 1;
    CMsg* object = ObjectOf(*row, message, index, result);
    if (!object) return result;
    if (row->elementId) return object->MemberCopy(row->elementId, index, out);
    if (row->copiesText)
        return ZeroWithoutMemory([&] {
            CString text;
            row->textOf(*object, text);
            CopyText(text.View(), out);
            return 1;
        });
    if (row->block) {
        std::memcpy(out, row->block(*object), sizeof(ThreeFlags));
        return 1;
    }
    VisitField(*row, *object, [out](auto& field) {
        if constexpr (std::is_same_v<decltype(field), CString&>)
            CopyText(field.View(), out);
        else
            std::memcpy(out, &field, sizeof field);
    });
    return 1;
}

int MemberTable::GetAny(CMsg& message, std::uint16_t id, std::uint16_t index, double* out) const {
    for (const MemberTable* table = this; table; table = table->base_) {
        const auto slot = static_cast<std::uint16_t>(id - table->firstId_);
        if (slot >= kMostRows || table->slots_[slot] == 0) continue;
        const Member& row = table->rows_[table->slots_[slot] - 1u];
        if (row.kind != Kind::Double || row.fetch) return GetBy(row, message, index, out);
        *out = message.*row.field.double_;
        return 1;
    }
    return 0;
}

int MemberTable::GetOfElement(const Member& row, CMsg& message, std::uint16_t index, double* out) {
    if (!(row.served & Member::Gets)) return 0;
    int result = 1;
    CMsg* object = row.fetch(message, index, result);
    return object ? object->GetMemberValue(row.elementId, index, out) : result;
}

int MemberTable::GetBy(const Member& row, CMsg& message, std::uint16_t index, double* out) {
    if (!(row.served & Member::Gets)) return 0;
    CMsg* object = &message;
    if (row.elementId) return GetOfElement(row, message, index, out);
    if (row.fetch) {
        int result = 1;
        object = row.fetch(message, index, result);
        if (!object) return result;
    }
    VisitField(row, *object, [out](auto& field) {
        if constexpr (!std::is_same_v<decltype(field), CString&>) *out = field;
    });
    return 1;
}

int MemberTable::Set(CMsg& message, std::uint16_t id, std::uint16_t index, double value) const {
    const Member* row = Find(id, Member::Sets);
    if (!row) return 0;
    int result = 1;
    CMsg* object = ObjectOf(*row, message, index, result);
    if (!object) return result;
    if (row->elementId) return object->SetMemberValue(row->elementId, index, value);
    VisitField(*row, *object, [value](auto& field) {
        using Value = std::remove_reference_t<decltype(field)>;
        if constexpr (std::is_same_v<Value, double>)
            field = value;
        else if constexpr (std::is_integral_v<Value>)
            field = static_cast<Value>(ToInteger(value));
    });
    return 1;
}

namespace {

bool IdentifierText(CMsg& message, CString& out) {
    if (message.InstanceIdentifier.IsEmpty()) message.SetInstanceIdentifier();
    out = message.InstanceIdentifier;
    return true;
}

// clang-format off
constexpr RowsOf<CMsg> row;
constexpr Member kRows[] = {
    row(1, "Msg Time", &CMsg::MsgTime).Time(),
    row(2, "Msg Key", &CMsg::MsgKey).NotListed(),
    row(3, "Source Task", &CMsg::SourceTask).NotListed(),
    row(4, "Source Number", &CMsg::SourceNumber).NotListed(),
    row(5, "Source Node", &CMsg::SourceNode).NotListed(),
    row(6, "Instance Identifier", &CMsg::InstanceIdentifier).Reads<IdentifierText>().NotListed(),
};
// clang-format on

}  // namespace

constinit const MemberTable kMsgTable = {kRows, nullptr};

}  // namespace surveymsg::detail

using surveymsg::detail::kMsgTable;

SURVEYMSG_MEMBERS_BY_TABLE(CMsg, kMsgTable)
