#include "examples/own-record/OwnRecord.h"

int main() { return ListenToEverything() && SendSonarStatus() && ShowNextMessage() ? 0 : 1; }
