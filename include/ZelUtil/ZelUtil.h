#pragma once

/// \file
/// Includes the whole interface of the library.

#include "ZelUtil/BitmapCache.h"
#include "ZelUtil/CVar.h"
#include "ZelUtil/Errors.h"
#include "ZelUtil/ExceptionLog.h"
#include "ZelUtil/Export.h"
#include "ZelUtil/INIFileReader.h"
#include "ZelUtil/OSDependant.h"
#include "ZelUtil/PolyApprox.h"
#include "ZelUtil/RGBColor.h"
#include "ZelUtil/SoftGdi.h"
#include "ZelUtil/StdStr.h"
#include "ZelUtil/TarvexDib.h"
#include "ZelUtil/WinDib.h"
#include "ZelUtil/WinTypes.h"
#include "ZelUtil/ZelBox.h"
#include "ZelUtil/ZelId.h"
