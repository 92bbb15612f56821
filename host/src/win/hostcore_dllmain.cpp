// Entry point of hostcore.dll: the custom-control classes exist from the moment the
// library is loaded, as the common controls' classes do, so plug-ins can create the
// windows by class name before they call anything else of the host.

#include "cust_internal.h"

extern "C" BOOL WINAPI DllMain(HINSTANCE, DWORD reason, LPVOID reserved) {
    if (reason == DLL_PROCESS_ATTACH) {
        hostwin::RegisterControlClasses();
    } else if (reason == DLL_PROCESS_DETACH && reserved == nullptr) {
        // FreeLibrary, not process exit: the class procedures are about to go away.
        hostwin::UnregisterControlClasses();
    }
    return TRUE;
}
