// The half that knows only the bus: it takes whatever comes, asks the bus for the format, and shows every
// field by its path. It has never seen the sender's struct.

#include <cstdio>

#include <surveymsg/surveymsg.h>

#include "examples/own-record/OwnRecord.h"

namespace {

void ShowElements(CMsg& message, const MemberDefinition& member) {
    const bool isArray = CString(member.Label).Find("[]") >= 0;
    for (std::uint16_t index = 0; index == 0 || isArray; ++index) {
        CString text;
        if (!message.FormatString(member.Id, index, nullptr, &text)) return;  // past the end of the array
        std::printf("%-14s %s\n", member.Label, static_cast<const char*>(text));
    }
}

void Show(CMsg& received) {
    CString keyText;
    received.CombineKeys(&keyText);
    CMsg* message = nullptr;
    if (!AllocMsg(received.MsgKey, keyText, &message)) {
        std::printf("%s has no format\n", static_cast<const char*>(keyText));
        return;
    }
    std::printf("%s \"%s\", %d bytes\n", static_cast<const char*>(received.MsgKey),
                static_cast<const char*>(received.InstanceIdentifier), received.Body.GetLength());
    CPtrArray rows;
    message->GetMemberDefinitions(&rows);
    *message << received;  // keys and record; nothing is decoded
    for (int i = 0; i < rows.GetSize(); ++i) ShowElements(*message, *static_cast<MemberDefinition*>(rows[i]));

    // The same members in other forms: times by strftime, angles by a degree format.
    CString time, heading;
    message->FormatString(100, 0, "%Y-%m-%d %H:%M:%S", &time);
    message->FormatString(106, 0, "DEG%03.0f MIN%04.1f", &heading);
    std::printf("also: %s, %s\n", static_cast<const char*>(time), static_cast<const char*>(heading));
    FreeMsg(message);
}

}  // namespace

bool ListenToEverything() {
    CMsg anything;
    anything.MsgKey = "*";
    anything.InstanceIdentifier = "*";
    return anything.Subscribe(0) == 1;
}

bool ShowNextMessage() {
    constexpr std::uint32_t kMilliseconds = 1000;
    CMsg received;
    if (!received.Receive(kMilliseconds)) return false;
    Show(received);
    return true;
}
