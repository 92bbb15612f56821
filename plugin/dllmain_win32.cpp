// The module's entry point. It runs under the loader lock, so it only stores the
// instance handle; the class descriptors are ordinary static objects.
#include "platform/platform.h"

#include <windows.h>

extern "C" BOOL WINAPI DllMain(HINSTANCE instance, DWORD reason, LPVOID) {
    if (reason == DLL_PROCESS_ATTACH) {
        platform::SetModuleInstance(instance);
        DisableThreadLibraryCalls(instance);
    }
    return TRUE;
}
