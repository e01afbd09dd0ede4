#include <surveymsg/extension/ExtMsg.h>

#include <algorithm>
#include <cstring>

#include <surveymsg/core/detail/ValueText.h>
#include <surveymsg/extension/detail/ExtFormatDefn.h>
#include <surveymsg/outside/Lumbra.h>
#include <surveymsg/platform/detail/Memory.h>

using surveymsg::detail::FormatAngle;
using surveymsg::detail::FormatNumber;
using surveymsg::detail::FormatText;
using surveymsg::detail::ToInteger;
using surveymsg::detail::ZeroWithoutMemory;

namespace {

constexpr std::uint16_t kFirstId = 100;
constexpr std::size_t kFieldText = 80;
constexpr int kFormatSelector = 2;
constexpr const char* kTimeFormat = "%d %m %y %H:%M:%S";

bool IsRendered(std::uint8_t display) { return display >= MsgDisplayTimeFirst && display <= MsgDisplayTimeLast; }
bool IsAngle(std::uint8_t display) { return display >= MsgDisplayAngleFirst && display <= MsgDisplayAngleLast; }

// Hands a value of the type that `storage` names to `use`, which may change it; false for a storage that
// holds no number. The one place that tells the storages apart.
template <class Use>
bool WithNumber(std::uint8_t storage, Use&& use) {
    switch (storage) {
        case MsgStorageInt8:
            return use(std::int8_t{}), true;
        case MsgStorageUInt8:
            return use(std::uint8_t{}), true;
        case MsgStorageInt16:
            return use(std::int16_t{}), true;
        case MsgStorageUInt16:
            return use(std::uint16_t{}), true;
        case MsgStorageInt32:
            return use(std::int32_t{}), true;
        case MsgStorageUInt32:
            return use(std::uint32_t{}), true;
        case MsgStorageFloat:
            return use(float{}), true;
        case MsgStorageDouble:
            return use(double{}), true;
        default:
            return false;
    }
}

// Bytes of one element: a number's own, else what the format says.
std::size_t SizeOfElement(const msguser& field) {
    std::size_t size = field.Size;
    WithNumber(field.Storage, [&size](auto value) { size = sizeof value; });
    return size;
}

template <class Number>
Number Load(const char* place) {
    Number value;
    std::memcpy(&value, place, sizeof value);
    return value;
}

void FormatValue(const msguser& field, const char* place, const char* format, CString& out) {
    WithNumber(field.Storage, [&](auto kind) {
        using Number = decltype(kind);
        const auto value = Load<Number>(place);
        if constexpr (std::is_floating_point_v<Number>)
            IsAngle(field.Display) ? FormatAngle(out, format, value) : FormatNumber(out, format, double{value});
        else if (!IsAngle(field.Display))  // an angle that is no float has no text
            FormatNumber(out, format, static_cast<std::int32_t>(value));
    });
}

void FormatRendered(const CString& body, const msguser& field, const char* format, CString& out) {
    char text[kFieldText] = "";
    LmbFormatField(text, body, static_cast<std::uint32_t>(body.GetLength()), &field, kFormatSelector,
                   format && *format ? format : kTimeFormat);
    text[kFieldText - 1] = '\0';
    out = text;
}

}  // namespace

CExtMsg::CExtMsg() = default;

CExtMsg::~CExtMsg() = default;

void CExtMsg::Serialize(CArchive& /*ar*/) {}

CExtMsg& CExtMsg::operator=(CExtMsg& source) {
    if (&source == this) return *this;
    CExtFormatDefn* format = source.FormatRoot;  // `source` may be one that this message owns
    const bool hasTable = source.MemberTable != nullptr;
    CMsg::operator=(source);
    FormatRoot = format;
    MemberTable.reset();
    if (hasTable) surveymsg::detail::RaisingMemoryException([this] { BuildTable(); });
    return *this;
}

int CExtMsg::GetVersion(CString* out) {
    if (!FormatRoot || !out) return 0;
    *out = FormatRoot->Version;
    return 1;
}

int CExtMsg::GetInstanceIdentifier(CString* out) {
    if (!out || InstanceIdentifier.IsEmpty()) return 0;
    *out = InstanceIdentifier;
    return 1;
}

void CExtMsg::BuildTable() {
    const int count = FormatRoot->Fields.GetCount();
    auto table = std::make_unique<MemberDefinition[]>(static_cast<std::size_t>(count) + 1);
    for (int i = 0; i < count; ++i) {
        table[static_cast<std::size_t>(i)] = {static_cast<std::uint16_t>(kFirstId + i),
                                              FormatRoot->FieldAt(i).Field.Size, FormatRoot->NameAt(i)};
    }
    MemberTable = std::move(table);
    tableFormat_ = FormatRoot;
}

int CExtMsg::GetMemberDefinitions(CPtrArray* rows) {
    if (!FormatRoot || FormatRoot->Fields.IsEmpty()) return 0;
    return ZeroWithoutMemory([&] {
        if (!MemberTable) BuildTable();
        if (!rows) return 0;
        for (MemberDefinition* row = MemberTable.get(); row->Id != 0; ++row) rows->Add(row);
        return 1;
    });
}

const msguser* CExtMsg::FindField(std::uint16_t id, std::uint16_t index) const {
    const int row = id - kFirstId;
    if (row < 0 || row >= FormatRoot->Fields.GetCount() || row >= tableFormat_->Fields.GetCount()) return nullptr;
    const CExtFieldDefn* leaf = &FormatRoot->FieldAt(row);
    if (FormatRoot != tableFormat_) {  // the message has another format since: its rows go by name
        CObject* found = nullptr;
        if (!FormatRoot->Fields.Lookup(tableFormat_->NameAt(row), found)) return nullptr;
        leaf = static_cast<const CExtFieldDefn*>(found);
    }
    return index == 0 || index < leaf->Field.Count ? &leaf->Field : nullptr;
}

// Null if the element, `size` bytes, does not lie within the record that has arrived.
char* CExtMsg::ElementAt(const msguser& field, std::uint16_t index, std::size_t size) {
    const std::size_t begin = field.Offset + index * size;
    const auto length = static_cast<std::size_t>(Body.GetLength());
    if (begin > length || length - begin < size) return nullptr;
    return Body.GetBuffer(0) + begin;
}

int CExtMsg::FormatString(std::uint16_t id, std::uint16_t index, const char* format, CString* out) {
    if (!out || !FormatRoot || !MemberTable) return 0;
    if (id < kFirstId) return CMsg::FormatString(id, index, format, out);
    const msguser* field = FindField(id, index);
    if (!field) return 0;
    const bool isNumber = !IsRendered(field->Display) && field->Storage != MsgStorageText;
    const char* place = isNumber ? ElementAt(*field, index, SizeOfElement(*field)) : ElementAt(*field, 0, field->Size);
    if (!place) return 0;
    return ZeroWithoutMemory([&] {
        if (IsRendered(field->Display))
            FormatRendered(Body, *field, format, *out);
        else if (isNumber)
            FormatValue(*field, place, format, *out);
        else if (!IsAngle(field->Display))
            FormatText(*out, format, {place, field->Size});
        return 1;
    });
}

int CExtMsg::MemberCopy(std::uint16_t id, std::uint16_t index, void* out) {
    if (!out || !FormatRoot || !MemberTable) return 0;
    if (id < kFirstId) return CMsg::MemberCopy(id, index, out);
    const msguser* field = FindField(id, index);
    const char* place = field ? ElementAt(*field, index, field->Size) : nullptr;
    if (!place) return 0;
    std::memcpy(out, place, field->Size);
    return 1;
}

int CExtMsg::GetMemberValue(std::uint16_t id, std::uint16_t index, double* out) {
    if (!out || !FormatRoot || !MemberTable) return 0;
    if (id < kFirstId) return CMsg::GetMemberValue(id, index, out);
    const msguser* field = FindField(id, index);
    const char* place = field ? ElementAt(*field, index, SizeOfElement(*field)) : nullptr;
    if (!place) return 0;
    WithNumber(field->Storage, [&](auto kind) { *out = Load<decltype(kind)>(place); });
    return 1;
}

int CExtMsg::SetMemberValue(std::uint16_t id, std::uint16_t index, double value) {
    if (!FormatRoot || !MemberTable) return 0;
    if (id < kFirstId) return CMsg::SetMemberValue(id, index, value);
    const msguser* field = FindField(id, index);
    char* place = field ? ElementAt(*field, index, SizeOfElement(*field)) : nullptr;
    if (!place) return 0;
    WithNumber(field->Storage, [&](auto number) {
        using Number = decltype(number);
        if constexpr (std::is_floating_point_v<Number>)
            number = static_cast<Number>(value);
        else
            number = static_cast<Number>(ToInteger(value));
        std::memcpy(place, &number, sizeof number);
    });
    return 1;
}
