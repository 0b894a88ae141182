#include "ProcessObjects.h"

#include "ZelUtil/INIFileReader.h"
#include "ZelUtil/ZelBox.h"
#include "ZelUtil/ZelId.h"

// All in one file, because only there the language fixes the order: these objects are constructed from top to
// bottom when the library is loaded and destroyed in reverse. A constinit object has its value before any
// code runs.

constexpr double kPi = 3.14159265358979323846;
constinit const double PI = kPi;
constinit const double TWO_PI = kPi + kPi;
constinit const double HALF_PI = kPi * 0.5;

CVar zel::g_variables[zel::kVariableCapacity];

INIFileReader ini;

constinit const double SQRT_DBL_MAX = 1.3407807929942596e154;

constinit unsigned char ZelId::m_unassignedId[16] = {};
