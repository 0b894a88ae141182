#pragma once

#include "ZelUtil/Export.h"

#include <string>

/// A configuration variable: a record of the process-wide table, or a caller's own copy of one.
struct ZELUTIL_API CVar
{
    /// Two empty texts; the other fields are not initialised, and have to be set before the first copy.
    CVar();

    std::string name;
    std::string valueText;
    unsigned int flags; ///< the caller's bits: those of every request so far
    bool created;       ///< true from creation on
    float value;        ///< what std::atof makes of the default text, narrowed
    CVar* next;         ///< the record created just before; null in the first one. A copy joins no table.
};

/// \name The variable table
/// Up to 1024 variables, which live as long as the library is loaded: a pointer to a record stays valid, and
/// no record is ever removed. The table has no lock; callers take turns. Nothing here throws or writes a log.
/// @{

/// The variable of this name, letter case included, created with `defaultText` where there is none yet. The
/// text of an existing one does not change; `flags` are added to its bits. Recently created ones are found
/// first. Null for a new name when `defaultText` is null, the table is full or memory runs out, and for a
/// null name.
ZELUTIL_API CVar* CVar_Get(const char* name, const char* defaultText, unsigned int flags);

/// Variables in use.
ZELUTIL_API unsigned int CVar_GetNb();

/// Variable number `index`, in order of creation; null from CVar_GetNb() on.
ZELUTIL_API CVar* CVar_GetAt(unsigned int index);

/// Part of the interface, but there is nothing for them to do.
ZELUTIL_API void CVar_Init(int, char**);
ZELUTIL_API void CVar_Fini();
ZELUTIL_API void CVar_SaveVars(const char*);

/// @}
