#pragma once

// The record format library, a shared library of its own (`liblumbra`). It turns a table of field rows
// into a format record, lists a record's fields, and renders a field of a raw message as text.

#include <stdint.h>

#include <surveymsg/outside/FormatRecords.h>

#if defined(_WIN32)
#define LUMBRA_API
#else
#define LUMBRA_API __attribute__((visibility("default")))
#endif

extern "C" {

/// Fields of the formats built next stand at multiples of their own size, at most `alignment` (1, 2, 4
/// or 8). Non-zero for success.
LUMBRA_API int LmbSetAlignment(int alignment);

/// The rows of the formats built next, which must stay in place until then. Rows have `Offset` 0, and
/// `Size` 0 but for a text, which states its size there. A row with `Storage` 10 opens a structure
/// (with `Count` above 1 an array of them), which reaches to its row with `Storage` 11. Non-zero for
/// success.
LUMBRA_API int LmbDefineFields(const msguser* rows, int count);

/// Builds the format of a record of `recordSize` bytes. 0 is success: `*format` is one block, which the
/// caller releases with `free`. Else `*format` is null. `*scratch` receives the bytes that the fields
/// take.
LUMBRA_API int LmbBuildFormat(uint32_t recordSize, msgfmt** format, uint32_t* scratch);

/// Lists the fields directly under `structure` (null: the top), at most `capacity` of them, in order.
/// `Offset` counts from the start of the structure; `Name` points into the format. `*count` is the
/// number written. Non-zero for success.
LUMBRA_API int LmbListFields(const msgfmt* format, const msguser* structure, msguser* fields, int capacity, int* count);

/// Renders the field of the record of `length` bytes into 80 bytes of `text`, always terminated. `two`
/// is 2. Non-zero for success, else the text is empty.
LUMBRA_API int LmbFormatField(char* text, const void* record, uint32_t length, const msguser* field, int two,
                              const char* format);
}
