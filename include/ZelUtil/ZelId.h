#pragma once

#include "ZelUtil/Errors.h"
#include "ZelUtil/Export.h"

/// An identifier of 16 bytes for graphic objects, read as one unsigned number whose byte 0 is the lowest.
/// Fresh ones count up from zero, for the whole process and anew with every load of the library. A plain
/// value to copy and compare. The counter has no lock: identifiers are made by one thread at a time.
class ZELUTIL_API ZelId
{
public:
    /// A fresh identifier. The counter steps on behind it. Throws EOutOfBounds
    /// ("ZelId::incrementInternalCounter", "Maximum index for graphic IDs reached") where sixteen bytes 0xFF
    /// are next: they are never handed out, and the counter starts at zero again.
    static ZelId create();

    /// Brings an identifier back. Where it is not less than the next fresh one, the counter steps behind it,
    /// so that it is not handed out again. Sixteen bytes 0xFF throw as above and leave the counter at zero.
    ZelId(const unsigned char (&bytes)[16]);

    /// Copies the 16 bytes out.
    void get(unsigned char (&bytes)[16]) const;

    /// \name Comparison as numbers. The forms that take bytes leave the counter alone.
    /// @{
    bool operator==(const ZelId& other) const;
    bool operator!=(const ZelId& other) const;
    bool operator<(const ZelId& other) const;
    bool operator<=(const ZelId& other) const;
    bool operator>(const ZelId& other) const;
    bool operator>=(const ZelId& other) const;
    bool operator==(const unsigned char (&bytes)[16]) const;
    bool operator!=(const unsigned char (&bytes)[16]) const;
    bool operator<(const unsigned char (&bytes)[16]) const;
    bool operator<=(const unsigned char (&bytes)[16]) const;
    bool operator>(const unsigned char (&bytes)[16]) const;
    bool operator>=(const unsigned char (&bytes)[16]) const;
    /// @}

private:
    ZelId();
    static void incrementInternalCounter();

    static unsigned char m_unassignedId[16]; ///< the next fresh identifier

    unsigned char m_id[16];
};

ZELUTIL_CONST_RESULTS_BEGIN

/// \name Bytes as hexadecimal text
/// `length` counts bytes, 0 to 65535; the text takes 2 * length characters and a terminating zero. Text and
/// bytes do not overlap.
/// @{

/// Two lower-case digits a byte, high half first, from the first byte to the last: 0x01, 0xAB give "01ab".
ZELUTIL_API void BinToString(const void* const bytes, unsigned short length, char* const text);

/// From the last byte to the first, as one writes a little-endian number: 0x01, 0xAB give "ab01".
ZELUTIL_API void RBinToString(const void* const bytes, unsigned short length, char* const text);

/// Reads what BinToString writes. Each pair of characters is a text of its own: white space is skipped, a
/// sign is taken, then come hexadecimal digits of either case up to the first other character. The byte is
/// the low eight bits of that value (" f" and "f " give 15, "-1" gives 255). Characters behind the last pair
/// do not count. False, with nothing written, where `text` is shorter than 2 * length, null counting as
/// empty, or a pair has no digit in its place.
ZELUTIL_API const bool StringToBin(const char* const text, void* const bytes, unsigned short length);

/// The same, but the first pair fills the last byte: reads what RBinToString writes.
ZELUTIL_API const bool RStringToBin(const char* const text, void* const bytes, unsigned short length);

/// @}

ZELUTIL_CONST_RESULTS_END
