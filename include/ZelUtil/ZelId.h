#pragma once

#include "ZelUtil/Errors.h"
#include "ZelUtil/Export.h"

/// A 16-byte identifier for graphic objects: an unsigned number whose byte 0 is the least significant. Fresh
/// identifiers count up from 0, process-wide, from each load of the library. An identifier is a plain value.
/// The counter has no lock: callers serialise the construction of identifiers.
class ZELUTIL_API ZelId
{
public:
    /// Returns the counter's value and increments the counter. If all of its 16 bytes are 0xFF, throws
    /// EOutOfBounds ("ZelId::incrementInternalCounter", "Maximum index for graphic IDs reached") instead and
    /// resets the counter to 0, so that value is never handed out.
    static ZelId create();

    /// Restores a stored identifier. Unless it is less than the counter, the counter moves to its successor,
    /// so that it is not handed out again. Sixteen bytes of 0xFF throw as above and reset the counter to 0.
    ZelId(const unsigned char (&bytes)[16]);

    /// Copies the 16 bytes out.
    void get(unsigned char (&bytes)[16]) const;

    /// \name Comparison as numbers. Comparing with bytes does not move the counter.
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
/// `length` is a number of bytes; the text has 2 * length characters and a terminating zero. Text and bytes
/// must not overlap.
/// @{

/// Writes two lower-case digits per byte, high nibble first, from the first byte to the last: 0x01, 0xAB give
/// "01ab".
ZELUTIL_API void BinToString(const void* const bytes, unsigned short length, char* const text);

/// Writes from the last byte to the first, as a little-endian number is read: 0x01, 0xAB give "ab01".
ZELUTIL_API void RBinToString(const void* const bytes, unsigned short length, char* const text);

/// Reads what BinToString writes. Each pair of characters is read as a number of its own: white space is
/// skipped, a sign is accepted, then hexadecimal digits of either case follow up to the first other
/// character. The byte is the low eight bits of that number: " f" and "f " give 15, "-1" gives 255.
/// Characters after the last pair are ignored. Returns false, with nothing written, if `text` is shorter than
/// 2 * length (null counts as empty) or a pair has no digit.
ZELUTIL_API const bool StringToBin(const char* const text, void* const bytes, unsigned short length);

/// Reads what RBinToString writes: as above, but the first pair gives the last byte.
ZELUTIL_API const bool RStringToBin(const char* const text, void* const bytes, unsigned short length);

/// @}

ZELUTIL_CONST_RESULTS_END
