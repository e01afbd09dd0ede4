#include <surveymsg/transponders/detail/TransponderTexts.h>

#include <iterator>

#include <surveymsg/core/detail/ValueText.h>

namespace surveymsg::detail {
namespace {

constexpr double kTurnAroundUnit = 62.5;
constexpr int kMethods = 6;

struct TypeRow {
    const char* text;
    const char* methods[kMethods];
    const char* otherMethods;  // for every number beyond
};

constexpr TypeRow kTypes[] = {
    {"Compatt", {"Fixed", "CI(Array To Mobile)", "CI(Mobile To Array)", "SI", "CY", "FS"}, nullptr},
    {"DMT", {"Fixed", "CI(Array To Mobile)"}, nullptr},
    {"Hydrophone", {"Fixed", "II", "LB"}, nullptr},
    {"MicroNav", {"None", "None", "None", "None", "None", "None"}, "None"},
};

const TypeRow* RowOf(std::int32_t type) {
    return type >= 0 && type < static_cast<std::int32_t>(std::size(kTypes)) ? &kTypes[type] : nullptr;
}

void Give(const char* text, CString& out) {
    if (text) out = text;
}

}  // namespace

bool IsInterrogated(std::int32_t type, CString& out) {
    if (type == CTransMsg::Compatt) return true;
    out = "n/a";
    return false;
}

void ModeText(const InterrogationModes& modes, CString& out) {
    const auto add = [&out](int isSet, const char* name) {
        if (!isSet) return;
        if (!out.IsEmpty()) out += "/";
        out += name;
    };
    out.Empty();
    add(modes.CIF, "CIF");
    add(modes.IIF, "IIF");
    add(modes.USBL, "USBL");
}

void TurnAroundText(std::int32_t count, const char* format, CString& out) {
    FormatNumber(out, format, count * kTurnAroundUnit);
}

void TypeText(std::int32_t type, CString& out) {
    if (const TypeRow* row = RowOf(type)) Give(row->text, out);
}

void MethodText(std::int32_t type, std::int32_t method, CString& out) {
    const TypeRow* row = RowOf(type);
    if (!row) return;
    Give(method >= 0 && method < kMethods ? row->methods[method] : row->otherMethods, out);
}

}  // namespace surveymsg::detail
