#pragma once

// The message bus, a shared library of its own (`libtarvex`). A program may put another library with
// these functions in its place, or define them itself.
//
// A message is addressed by five keys: node, task and number of its sender, message key, identifier.
// A sender gives the last two; the bus adds the first three. Every result is non-zero for success. A
// call that fails leaves its reason in the thread's last error value, to be read straight after it.
//
// All texts are terminated. A key is any text of up to 1,000 bytes, a body any 0 to 1,310,720 bytes;
// what is longer is refused. A null identifier is the same as an empty one. All functions may be
// called from any thread.

#include <stdint.h>

#include <surveymsg/outside/FormatRecords.h>

#if defined(_WIN32)
#define TARVEX_API
#else
#define TARVEX_API __attribute__((visibility("default")))
#endif

/// Last error values. All bits of `TvxErrorTooSmall` mean a buffer was too small; every other value
/// lacks at least one of them.
enum TvxError : uint32_t {
    TvxErrorTooSmall = 0x20000220,      ///< a buffer is too small; the call can be made again with larger ones
    TvxErrorInvalid = 0x20000057,       ///< an argument is missing or not of its form
    TvxErrorTooLong = 0x2000006F,       ///< a key or a body is longer than any reader could take
    TvxErrorQueueFull = 0x2000006A,     ///< a queue that nobody reads is full; nothing was sent
    TvxErrorNothing = 0x20000103,       ///< there is no message to read, no such subscription or pair
    TvxErrorNoMemory = 0x20000008,      ///< memory is at its end
    TvxErrorNotConnected = 0x200008CA,  ///< the bus named by the environment cannot be reached
    TvxErrorDenied = 0x20000005,        ///< the bus's server does not permit it to this program
    TvxErrorRefused = 0x2000001D,       ///< the bus's store does not take it
    TvxErrorTimeout = 0x200005B4,       ///< the bus's server has not answered in time
    TvxErrorLost = 0x20000017,          ///< messages for this reader may be missing at this place; told once
};

extern "C" {

/// Messages that match all five keys will reach `TvxWait` and `TvxRead`. "*" (0 for `number`) in a
/// place matches anything. `reserved` is 0; `value` is 0 unless the bus says otherwise.
TARVEX_API int TvxSubscribe(const char* node, const char* task, uint32_t number, const char* msgKey,
                            const char* identifier, uint32_t reserved, uint16_t value);

/// Ends the subscription made with these keys. Messages that nothing else asks for are dropped unread.
TARVEX_API int TvxUnsubscribe(const char* node, const char* task, uint32_t number, const char* msgKey,
                              const char* identifier);

/// Announces a pair of keys, with the record that describes its messages or null and 0. The record is
/// copied and answered to `TvxQueryFormat` until the pair is withdrawn or published with another one;
/// announcing the pair again without a record leaves it.
TARVEX_API int TvxPublish(const char* msgKey, const char* identifier, const msgfmt* format, uint16_t formatSize);

/// Withdraws a pair and its format. Messages sent before stay on their way.
TARVEX_API int TvxUnpublish(const char* msgKey, const char* identifier);

/// Sends `count` bytes to the pair's subscribers, unchanged. They are copied before the call returns.
TARVEX_API int TvxSend(const char* msgKey, const char* identifier, const void* bytes, uint32_t count);

/// Waits at most `wait` milliseconds for a message: 0 only looks, 0xFFFFFFFF waits for ever. Non-zero
/// if `TvxRead` may follow. Nothing is consumed.
TARVEX_API int TvxWait(uint32_t wait);

/// Takes the oldest message. Each size is that of the storage before it, terminator included for the
/// texts. If one is too small the result is 0 with `TvxErrorTooSmall`, nothing is written, and the
/// message is there to be read again. `further` receives 0.
TARVEX_API int TvxRead(char* node, uint32_t nodeSize, char* task, uint32_t taskSize, uint32_t* number, char* msgKey,
                       uint32_t msgKeySize, char* identifier, uint32_t identifierSize, uint32_t* further, void* body,
                       uint32_t bodySize, uint32_t* bodyLength);

/// Copies the format of the pair that a key text names into `buffer`. `selector` is 4, `keyTextSize`
/// counts the terminator. The key text may hold wildcards; the first match in order of publishing
/// answers. Non-zero: `needed` is the record's length, or 0 if nobody has published one. 0 with
/// `TvxErrorTooSmall`: `needed` is the length that `buffer` must have.
TARVEX_API int TvxQueryFormat(int selector, const char* keyText, uint32_t keyTextSize, void* buffer,
                              uint32_t bufferSize, uint32_t* needed);

/// Writes the five keys as one terminated text. If it does not fit, the text is empty and the result 0.
TARVEX_API int TvxCombineKeys(char* text, uint32_t textSize, const char* node, const char* task, uint32_t number,
                              const char* msgKey, const char* identifier);

/// Takes such a text apart, in place: the results point into it. `*text` is moved past what was parsed.
/// If it is no key text the result is 0 and no key is set; the text may have been changed all the same.
TARVEX_API int TvxExtractKeys(char** text, char** node, char** task, uint32_t* number, char** msgKey,
                              char** identifier);

#if !defined(_WIN32)
TARVEX_API uint32_t GetLastError(void);
TARVEX_API void SetLastError(uint32_t value);
#endif
}
