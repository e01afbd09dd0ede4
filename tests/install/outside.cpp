#include <surveymsg/surveymsg.h>

int main() {
    CPosnMsg position;
    position.Name = "ROV";
    CMsg* copy = nullptr;
    if (!AllocMsg(position.MsgKey, nullptr, &copy)) return 1;
    *copy = position;
    const bool same = copy->InstanceIdentifier == "ROV";
    return FreeMsg(copy) && same && position.Send() ? 0 : 1;
}
