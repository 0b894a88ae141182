#pragma once

#include "ZelUtil/Errors.h"

/// \file
/// A debug log for errors that a caller has caught. It is off when the library is loaded. While it is on,
/// each call appends one line to "C:\Palmora.log" (off Windows to /var/tmp/Palmora.log, unless that is a
/// symbolic link). The line begins with the day, the month and the local time:
///
///     5.3  9:7:2 >> ENTRY
///
/// ENTRY has one of these forms, of which the first is for BasicError and EStdException. "UE" is a single
/// letter in the file, the byte 0xDC of Windows-1252:
///
///     METHODE: MSG FILE = FILE LINE = LINE
///     METHODE: MSG MEMBERLOG FUER MEMBER  FILE = FILE LINE = LINE
///     METHODE: MSG PARAMETERLOG FUER PARAMETER  FILE = FILE LINE = LINE
///     METHODE( PARAMETERS ): MSG FILE = FILE LINE = LINE
///
/// ENTRY is cut to 1,023 characters and repeated on standard error, after a line end. The type by which the
/// error was caught decides the form; ENotFound and EFileAccess have no texts and cannot be logged. LINE is
/// printed as a signed 32-bit number. If the file cannot be opened, the entry is lost, and standard error
/// gets a message in German instead. The file is open during a call only, and nothing limits its growth.
/// Nothing here throws, except for the copying of an error that is passed by value.
/// @{

ZELUTIL_API void EXCEPTION_LOG(BasicError error);
ZELUTIL_API void EXCEPTION_LOG(MemberError error);
ZELUTIL_API void EXCEPTION_LOG(ParameterError error);
ZELUTIL_API void EXCEPTION_LOG(const EStdException& error);
ZELUTIL_API void EXCEPTION_LOG(const EConstruction& error);

namespace OSDependant
{

/// Switches the log on or off.
ZELUTIL_API void ActivateDebugLog(bool active);

} // namespace OSDependant

/// @}
