#include "ZelUtil/WinTypes.h"

/// The DLL's first call: it has no use for being told of every thread that starts or ends.
extern "C" BOOL WINAPI DllMain(HINSTANCE module, DWORD reason, void*)
{
    if (reason == DLL_PROCESS_ATTACH)
        DisableThreadLibraryCalls(module);
    return TRUE;
}
