// Writes docs/members.md from the member tables themselves.

#include <cstdio>
#include <memory>
#include <string>
#include <type_traits>

#include <surveymsg/core/detail/MemberTable.h>
#include <surveymsg/surveymsg.h>

namespace {

using surveymsg::detail::Kind;
using surveymsg::detail::Member;

static_assert(std::is_standard_layout_v<Member>, "a listed row is the first member of its table's row");

const char* NameOf(const Member& row) {
    if (row.elementId) return "the element's";
    switch (row.kind) {
        case Kind::Byte:
            return "8 bits";
        case Kind::Word:
            return "16 bits";
        case Kind::SignedWord:
            return "16 bits, signed";
        case Kind::Long:
            return "32 bits";
        case Kind::SignedLong:
            return "32 bits, signed";
        case Kind::Double:
            return "double";
        case Kind::Text:
            return "text";
        case Kind::Flags:
            return "three flags of 32 bits";
        case Kind::None:
            break;
    }
    return "";
}

void WriteRow(const Member& row) {
    std::string operations;
    const auto add = [&](int operation, const char* name) {
        if (row.served & operation) operations += (operations.empty() ? "" : ", ") + std::string(name);
    };
    add(Member::Formats, "format");
    add(Member::Copies, "copy");
    add(Member::Gets, "get");
    add(Member::Sets, "set");
    const char* shown = row.textOf || row.formOf                     ? "its own"
                        : row.show == surveymsg::detail::Show::Angle ? "angle"
                        : row.show == surveymsg::detail::Show::Time  ? "time"
                                                                     : "plain";
    std::printf("| %u | 0x%X | %s%s | %s | %s | %s | %s |\n", row.definition.Id, row.definition.Width,
                row.definition.Label, row.served & Member::Lists ? "" : " (not listed)", NameOf(row), row.unit, shown,
                operations.c_str());
}

void WriteHead(const char* title, const char* behind) {
    std::printf("\n## `%s`\n\n%s", title, behind);
    std::printf(
        "| Id | Width | Label | Kind | Unit | Text | Operations |\n| --- | --- | --- | --- | --- | --- | --- |\n");
}

// The rows of a class, without those of its base, which stand behind them in its listing.
template <class Message, class Base>
void WriteClass(const char* name, const char* baseName) {
    Message message;
    Base base;
    CPtrArray rows, baseRows;
    message.GetMemberDefinitions(&rows);
    base.GetMemberDefinitions(&baseRows);
    const std::string behind =
        "In a listing " + std::to_string(rows.GetSize()) + " rows: these, then those of `" + baseName + "`.\n\n";
    if (rows.GetSize() == baseRows.GetSize()) {
        std::printf("\n## `%s`\n\nNo members of its own: the rows of `%s`.\n", name, baseName);
        return;
    }
    WriteHead(name, behind.c_str());
    for (int i = 0; i < rows.GetSize() - baseRows.GetSize(); ++i) WriteRow(*static_cast<const Member*>(rows.GetAt(i)));
}

}  // namespace

int main() {
    std::printf(
        "# Members by number\n\n"
        "Every member that the operations of `CMsg` serve, generated from the member tables (`./dev docs`).\n\n"
        "*Width* is the most bytes that `MemberCopy` writes. *Text* tells how `FormatString` treats its format: plain\n"
        "(a printf template), angle (that or a degree format), time (a strftime template), its own (the member has a\n"
        "text of its own). \"[]\" marks one value for each element of a list. \"linear unit\" is the survey's own.\n");
    WriteHead("CMsg", "");
    for (const Member& row : surveymsg::detail::kMsgTable.Rows()) WriteRow(row);
    WriteClass<CObsMsg, CMsg>("CObsMsg", "CMsg");
    WriteClass<CAcObsMsg, CObsMsg>("CAcObsMsg", "CObsMsg");
    WriteClass<CPosnMsg, CMsg>("CPosnMsg", "CMsg");
    WriteClass<CCompPosnMsg, CPosnMsg>("CCompPosnMsg", "CPosnMsg");
    WriteClass<CProfProcessedMsg, CPosnMsg>("CProfProcessedMsg", "CPosnMsg");
    WriteClass<CPosnListMsg, CMsg>("CPosnListMsg", "CMsg");
    WriteClass<CTargMsg, CMsg>("CTargMsg", "CMsg");
    WriteClass<CTransMsg, CMsg>("CTransMsg", "CMsg");
    WriteClass<CTransRange, CTransMsg>("CTransRange", "CTransMsg");
    WriteClass<CMobTransMsg, CTransMsg>("CMobTransMsg", "CTransMsg");
    WriteClass<CCopMsg, CMsg>("CCopMsg", "CMsg");
    std::printf("\n## `CExtMsg`\n\nIds from 100 in the order of the format's fields; no rows of `CMsg` behind them.\n");
    return 0;
}
