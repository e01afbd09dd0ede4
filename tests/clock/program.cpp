// Shows the time that a new message has.

#include <cstdio>

#include <surveymsg/surveymsg.h>

int main() {
    const CMsg message;
    std::printf("%.1f\n", message.MsgTime);
    return 0;
}
