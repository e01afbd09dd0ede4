// A part of a program that is loaded and unloaded, and brings the message library with it.

#include <surveymsg/surveymsg.h>

extern "C" __attribute__((visibility("default"))) int SendFromPlugin() {
    CPosnMsg position;
    position.Name = "plugin";
    return position.Send();
}
