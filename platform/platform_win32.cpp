#include "platform/platform.h"

namespace {
HINSTANCE moduleInstance = nullptr; // set once on process attach
}

namespace platform {

HINSTANCE ModuleInstance() { return moduleInstance; }
void SetModuleInstance(HINSTANCE instance) { moduleInstance = instance; }

int LoadResourceString(int id, char* buffer, int size) {
    if (!moduleInstance || !buffer || size <= 0)
        return 0;
    return LoadStringA(moduleInstance, UINT(id), buffer, size);
}

LRESULT SendToWindow(HWND window, UINT msg, WPARAM wParam, LPARAM lParam) {
    return SendMessageA(window, msg, wParam, lParam);
}

bool AskYesNo(HWND owner, const char* caption, const char* text) {
    return MessageBoxA(owner, text, caption, MB_YESNO) == IDYES;
}

} // namespace platform
