#pragma once

#include "ZelUtil/Errors.h"

/// \file
/// A debug log for errors that a caller caught. It is off when the library is loaded. While it is on, each
/// entry is appended as one line to "C:\Palmora.log" (/var/tmp/Palmora.log off Windows, never through a
/// symbolic link), behind the day, the month and the local time:
///
///     5.3  9:7:2 >> ENTRY
///
/// ENTRY has one of these forms, the first for BasicError and EStdException (UE there is one letter, 0xDC in
/// Windows-1252):
///
///     METHODE: MSG FILE = FILE LINE = LINE
///     METHODE: MSG MEMBERLOG FUER MEMBER  FILE = FILE LINE = LINE
///     METHODE: MSG PARAMETERLOG FUER PARAMETER  FILE = FILE LINE = LINE
///     METHODE( PARAMETERS ): MSG FILE = FILE LINE = LINE
///
/// It ends after 1,023 characters, and is repeated, behind a line end, on standard error. The form is that of
/// the type by which the error was caught; ENotFound and EFileAccess, which have no texts, have none. LINE is
/// a signed number of 32 bits. An entry whose file cannot be opened is lost, and standard error says so in
/// German. The file is open during the call only, and grows without bound. Nothing here throws, but for the
/// copy of an error that is handed over by value.
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
