#pragma once

#include "ZelUtil/CVar.h"

/// \file
/// ProcessObjects.cpp defines the process-wide objects that callers see, and those whose order of
/// construction matters. Those that callers do not see are declared here.

namespace zel
{

inline constexpr unsigned int kVariableCapacity = 1024;

/// The records of the variable table.
extern CVar g_variables[kVariableCapacity];

} // namespace zel
