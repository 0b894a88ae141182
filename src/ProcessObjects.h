#pragma once

#include "ZelUtil/CVar.h"

/// \file
/// ProcessObjects.cpp defines every process-wide object that has a constructor, and every one that callers or
/// several sources use. Those that callers do not see are declared here.

namespace zel
{

inline constexpr unsigned int kVariableCapacity = 1024;

/// The records of the variable table.
extern CVar g_variables[kVariableCapacity];

} // namespace zel
