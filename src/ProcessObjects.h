#pragma once

#include "ZelUtil/CVar.h"

/// The process-wide objects that callers do not see. They stand in ZelUtil.cpp with the others.
namespace zel
{

inline constexpr unsigned int kVariableCapacity = 1024;

extern CVar g_variables[kVariableCapacity];

} // namespace zel
