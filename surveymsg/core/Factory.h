#pragma once

#include <surveymsg/platform/Export.h>

class CMsg;

extern "C" {

/// Makes the message that goes with `key`, one of `GetMsgList`, and puts it into `*message`: 1, or 0
/// with null there. With any other key and a `formatKey` (a key text), the format that it names is
/// fetched from the bus, and the message is a `CExtMsg` of that format. The object goes back through
/// `FreeMsg`. A null `message` gives 0.
SURVEYMSG_API int AllocMsg(const char* key, const char* formatKey, CMsg** message);

/// Destroys a message of any class. 1, or 0 for null.
SURVEYMSG_API int FreeMsg(CMsg* message);

/// The keys that `AllocMsg` knows, with a null behind the last. The table is the library's.
SURVEYMSG_API const char* const* GetMsgList();
}
