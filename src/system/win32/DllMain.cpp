#include <windows.h>

// Called when the DLL is loaded. It does not need to be told of every thread that starts or ends.
extern "C" BOOL WINAPI DllMain(HINSTANCE module, DWORD reason, void*)
{
    if (reason == DLL_PROCESS_ATTACH)
        DisableThreadLibraryCalls(module);
    return TRUE;
}
