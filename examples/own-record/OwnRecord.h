#pragma once

// The two halves of the example, which would be two programs on a bus between processes.

/// Publishes the format of the sender's own struct and sends one. False if the bus refuses.
bool SendSonarStatus();

/// Subscribes to every message of every sender.
bool ListenToEverything();
/// Shows the next message, field by field; false if none comes within a second.
bool ShowNextMessage();
