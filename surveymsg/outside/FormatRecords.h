#pragma once

#include <cstddef>
#include <cstdint>

/// Head of a format record: the description of a message whose layout is defined at run time. It is
/// one self-contained block; what follows the head is for the record format library alone.
struct msgfmt {
    std::uint8_t Private[4];   ///< read by the record format library only
    char Version[8];           ///< text of the version, terminated: at most 7 characters
    std::uint16_t Length;      ///< bytes of the whole record, head included
    std::uint16_t FieldCount;  ///< entries that any listing of the format can give, structures included
};
static_assert(sizeof(msgfmt) == 16 && offsetof(msgfmt, Length) == 12);

/// Description of one field of a record. Tables of such rows make a format, and a format lists its
/// fields as such rows.
struct msguser {
    std::uint8_t Storage;   ///< one of `MsgStorage`
    std::uint8_t Display;   ///< one of `MsgDisplay`
    std::uint16_t Count;    ///< elements of an array; 0 for a single value
    const char* Name;       ///< terminated, without any path; null on a row that closes a structure
    std::uint16_t Offset;   ///< bytes from the start of the enclosing structure
    std::uint16_t Size;     ///< bytes of one element
    std::uint32_t Private;  ///< the record format library's; kept when a row is copied
};

/// How a field is stored, in the byte order of the machine that made the record.
enum MsgStorage : std::uint8_t {
    MsgStorageText = 1,  ///< `Size` bytes, a terminator among them if the text is shorter
    MsgStorageInt8 = 2,
    MsgStorageUInt8 = 3,
    MsgStorageInt16 = 4,
    MsgStorageUInt16 = 5,
    MsgStorageInt32 = 6,
    MsgStorageUInt32 = 7,
    MsgStorageFloat = 8,   ///< IEEE binary32
    MsgStorageDouble = 9,  ///< IEEE binary64
    MsgStorageOpen = 10,   ///< opens a structure; in a listing, the structure itself
    MsgStorageClose = 11,  ///< closes the structure last opened
};

/// How a field is shown. Codes not named here, 0 included, show the value by its storage.
enum MsgDisplay : std::uint8_t {
    MsgDisplayTimeFirst = 1,  ///< 1 to 5 are rendered by `LmbFormatField`
    MsgDisplayTime = 3,       ///< seconds since 1980-01-06 UTC
    MsgDisplayTimeLast = 5,
    MsgDisplayAngleFirst = 10,  ///< 10 to 13 are angles in degrees
    MsgDisplayAngle = 11,
    MsgDisplayAngleLast = 13,
};
