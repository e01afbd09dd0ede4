#include "demo/MemberTool.h"

#include <algorithm>
#include <cmath>
#include <cstdint>
#include <iomanip>
#include <ostream>
#include <string_view>
#include <utility>

#include "demo/LibraryFailure.h"
#include "demo/Text.h"

namespace demo {
namespace {

constexpr std::string_view kListMark = "[]";
constexpr std::size_t kShownElements = 8;
constexpr std::size_t kMostElements = 65'536;  // that an index can tell apart
constexpr const char* kNotServed = "-";
constexpr std::uint16_t kIdentifierId = 6;  // of every class, though no listing names it

/// Members that are worth a second look in another form.
struct OtherForm {
    const char* label;
    const char* format;
};
constexpr OtherForm kOtherForms[] = {
    {"Msg Time", "%Y-%m-%d %H:%M:%S"},
    {"Latitude", "DEG%02.0f MIN%06.3f N"},
    {"Time", "%Y-%m-%d %H:%M:%S"},
    {"GridHding", "DEG%03.0f MIN%04.1f"},
};

std::vector<const MemberDefinition*> MembersOf(CMsg& message) {
    CPtrArray rows;
    if (!message.GetMemberDefinitions(&rows)) throw LibraryFailure("a message does not list its members");
    std::vector<const MemberDefinition*> members;
    members.reserve(static_cast<std::size_t>(rows.GetSize()));
    for (int i = 0; i < rows.GetSize(); ++i) members.push_back(static_cast<const MemberDefinition*>(rows[i]));
    return members;
}

// What a label says before its list mark; nothing for a member that is no list's.
std::optional<std::string_view> ListOf(const MemberDefinition& member) {
    const std::string_view label = member.Label;
    const std::size_t mark = label.find(kListMark);
    if (mark == std::string_view::npos) return std::nullopt;
    return label.substr(0, mark);
}

/// A member as text, or why there is none.
struct Cell {
    enum { Served, NotServed, PastTheEnd } state;
    std::string text;
};

// Nothing tells how many elements a list has. Past its end the text is left as it was, so a text that no
// member holds tells the end.
Cell CellOf(CMsg& message, std::uint16_t id, std::size_t index = 0, const char* format = nullptr) {
    static const CString kUntouched("\x01untouched\x01");
    CString text(kUntouched);
    if (!message.FormatString(id, static_cast<std::uint16_t>(index), format, &text))
        return {Cell::NotServed, kNotServed};
    if (text.View() == kUntouched.View()) return {Cell::PastTheEnd, kNotServed};
    return {Cell::Served, std::string(text.View())};
}

// The texts of one element, or nothing past the end of the list: where every member is left untouched.
std::vector<std::string> ElementAt(CMsg& message, const std::vector<const MemberDefinition*>& columns,
                                   std::size_t index) {
    std::vector<std::string> texts;
    bool pastTheEnd = true;
    for (const MemberDefinition* column : columns) {
        Cell cell = CellOf(message, column->Id, index);
        pastTheEnd = pastTheEnd && cell.state == Cell::PastTheEnd;
        texts.push_back(std::move(cell.text));
    }
    if (pastTheEnd) texts.clear();
    return texts;
}

bool HoldsElement(CMsg& message, const std::vector<const MemberDefinition*>& columns, std::size_t index) {
    return index < kMostElements && std::ranges::any_of(columns, [&](const MemberDefinition* column) {
               return CellOf(message, column->Id, index).state != Cell::PastTheEnd;
           });
}

std::optional<double> ValueOf(CMsg& message, const std::vector<const MemberDefinition*>& members,
                              std::string_view label) {
    for (const MemberDefinition* member : members) {
        double value = 0.0;
        if (member->Label == label && message.GetMemberValue(member->Id, 0, &value)) return value;
    }
    return std::nullopt;
}

std::ostream& WriteMember(std::ostream& out, const MemberDefinition& member) {
    constexpr int kLabelWidth = 30;
    return out << std::right << std::setw(8) << member.Id << "  " << std::left << std::setw(kLabelWidth) << member.Label
               << ' ';
}

}  // namespace

bool MemberTool::Summary::IsSolved() const {
    return north && east && depth && standardDeviation && std::isfinite(*standardDeviation);
}

std::string MemberTool::Summary::Text() const {
    const std::string counts = " used=" + std::to_string(used) + " of=" + std::to_string(observations);
    if (!IsSolved()) return "no solution" + counts;
    return "solved N=" + Fixed(*north, 3) + " E=" + Fixed(*east, 3) + " U=" + Fixed(-*depth, 3) +
           " sd=" + Fixed(*standardDeviation, 3) + counts;
}

void MemberTool::Take(CMsg& message) {
    if (++taken_ == 1 || all_) Show(message);
    Add(message);
}

void MemberTool::Finish() {
    if (taken_ > 1 && !all_)
        out_ << "   ... and " << Grouped(taken_ - 1) << " more of these messages (--all shows them)\n";
}

void MemberTool::Show(CMsg& message) {
    const auto members = MembersOf(message);  // before any other member: a message without a class needs it
    out_ << "   Members of \"" << CellOf(message, kIdentifierId).text << "\" (number, label, text):\n";
    std::vector<std::pair<std::string_view, std::vector<const MemberDefinition*>>> lists;
    for (const MemberDefinition* member : members) {
        if (const auto list = ListOf(*member)) {
            auto place = std::ranges::find(lists, *list, [](const auto& entry) { return entry.first; });
            if (place == lists.end()) place = lists.insert(lists.end(), {*list, {}});
            place->second.push_back(member);
            continue;
        }
        WriteMember(out_, *member) << CellOf(message, member->Id).text << '\n';
    }
    out_ << "   Some of them in another form (number, label, format, text):\n";
    for (const OtherForm& form : kOtherForms)
        for (const MemberDefinition* member : members)
            if (std::string_view(member->Label) == form.label)
                WriteMember(out_, *member)
                    << std::setw(24) << form.format << ' ' << CellOf(message, member->Id, 0, form.format).text << '\n';
    for (const auto& [name, columns] : lists) {
        out_ << "   List \"" << name << "\", one row for each element; its columns:\n";
        ShowList(message, columns);
    }
}

void MemberTool::ShowList(CMsg& message, const std::vector<const MemberDefinition*>& columns) {
    for (const MemberDefinition* column : columns)
        out_ << std::right << std::setw(8) << column->Id << "  " << column->Label << '\n';

    // The first row is the header: the numbers of the members, for the full labels would not fit.
    std::vector<std::vector<std::string>> rows(1);
    for (const MemberDefinition* column : columns) rows[0].push_back(std::to_string(column->Id));
    std::size_t count = 0;
    for (; HoldsElement(message, columns, count); ++count)
        if (all_ || count < kShownElements) rows.push_back(ElementAt(message, columns, count));

    std::vector<std::size_t> widths(columns.size());
    for (const auto& row : rows)
        for (std::size_t i = 0; i < row.size(); ++i) widths[i] = std::max(widths[i], row[i].size());
    for (std::size_t r = 0; r < rows.size(); ++r) {
        out_ << std::right << std::setw(8) << (r == 0 ? "index" : std::to_string(r - 1));
        for (std::size_t i = 0; i < rows[r].size(); ++i)
            out_ << "  " << std::setw(static_cast<int>(widths[i])) << rows[r][i];
        out_ << '\n';
    }
    const std::size_t hidden = count + 1 - rows.size();
    if (hidden > 0) out_ << "        ... and " << Grouped(hidden) << " more (--all shows them)\n";
}

void MemberTool::Add(CMsg& message) {
    const auto members = MembersOf(message);
    if (taken_ == 1) {
        summary_.north = ValueOf(message, members, "North");
        summary_.east = ValueOf(message, members, "East");
        summary_.depth = ValueOf(message, members, "Depth");
        summary_.standardDeviation = ValueOf(message, members, "Standard Deviation");
    }
    for (const MemberDefinition* member : members) {
        if (std::string_view(member->Label) != "Observation[].used in comp?") continue;
        for (std::size_t i = 0; i < kMostElements; ++i) {
            const Cell cell = CellOf(message, member->Id, i);
            if (cell.state == Cell::PastTheEnd) break;
            ++summary_.observations;
            if (cell.text == "USED") ++summary_.used;
        }
    }
}

}  // namespace demo
