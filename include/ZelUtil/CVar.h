#pragma once

#include "ZelUtil/Export.h"

#include <string>

/// A configuration variable: a record of the process-wide table, or a caller's copy of one.
struct ZELUTIL_API CVar
{
    /// Two empty texts. The other fields are not initialised: set them before the record is copied.
    CVar();

    std::string name;
    std::string valueText;
    unsigned int flags; ///< the union of the flags of all successful CVar_Get calls for this name
    bool created;       ///< true once CVar_Get has created the record
    float value;        ///< std::atof of the default text, as a float
    CVar* next; ///< the record created just before this one; null in the first. A copy is not in the table.
};

/// \name The variable table
/// The table has room for 1024 variables. A record is never moved or removed, so pointers to it stay valid
/// until the library is unloaded. There is no lock: callers serialise their calls. No function throws or
/// logs.
/// @{

/// Returns the variable `name` (case-sensitive) and adds `flags` to its bits; its text and value do not
/// change. If there is none, creates it from `defaultText`. The most recent variables are found fastest.
/// Returns null for a null name, and for a new name if `defaultText` is null, the table is full or memory
/// runs out.
ZELUTIL_API CVar* CVar_Get(const char* name, const char* defaultText, unsigned int flags);

/// Returns the number of variables.
ZELUTIL_API unsigned int CVar_GetNb();

/// Returns a variable by its order of creation, from 0 on. Null if `index` is not below CVar_GetNb().
ZELUTIL_API CVar* CVar_GetAt(unsigned int index);

/// These belong to the interface but do nothing.
ZELUTIL_API void CVar_Init(int, char**);
ZELUTIL_API void CVar_Fini();
ZELUTIL_API void CVar_SaveVars(const char*);

/// @}
