#include "module/module_support.h"

#include <doctest/doctest.h>

namespace moduletest {

namespace {
template <class F> F resolve(HMODULE m, const char* name) {
    return reinterpret_cast<F>(reinterpret_cast<void*>(GetProcAddress(m, name)));
}
} // namespace

const PluginModule& Plugin() {
    static const PluginModule module = [] {
        PluginModule m;
        m.handle = LoadLibraryA("curvectl.dll");
        if (!m.handle)
            return m;
        m.LibDescription = resolve<const char* (*)()>(m.handle, "LibDescription");
        m.LibNumberClasses = resolve<int (*)()>(m.handle, "LibNumberClasses");
        m.LibClassDesc = resolve<ClassDesc* (*)(int)>(m.handle, "LibClassDesc");
        m.LibVersion = resolve<unsigned long (*)()>(m.handle, "LibVersion");
        m.CanAutoDefer = resolve<int (*)()>(m.handle, "CanAutoDefer");
        return m;
    }();
    REQUIRE_MESSAGE(module.handle != nullptr, "curvectl.dll did not load");
    return module;
}

std::vector<ExportEntry> ReadExportDirectory(HMODULE module, std::string* dllName,
                                             DWORD* functionCount) {
    std::vector<ExportEntry> entries;
    const auto* base = reinterpret_cast<const BYTE*>(module);
    const auto* dos = reinterpret_cast<const IMAGE_DOS_HEADER*>(base);
    if (dos->e_magic != IMAGE_DOS_SIGNATURE)
        return entries;
    const auto* nt = reinterpret_cast<const IMAGE_NT_HEADERS*>(base + dos->e_lfanew);
    if (nt->Signature != IMAGE_NT_SIGNATURE)
        return entries;
    const IMAGE_DATA_DIRECTORY& dir =
        nt->OptionalHeader.DataDirectory[IMAGE_DIRECTORY_ENTRY_EXPORT];
    if (dir.VirtualAddress == 0 || dir.Size == 0)
        return entries;
    const auto* exports =
        reinterpret_cast<const IMAGE_EXPORT_DIRECTORY*>(base + dir.VirtualAddress);
    if (dllName)
        *dllName = reinterpret_cast<const char*>(base + exports->Name);
    if (functionCount)
        *functionCount = exports->NumberOfFunctions;
    const auto* names = reinterpret_cast<const DWORD*>(base + exports->AddressOfNames);
    const auto* ordinals = reinterpret_cast<const WORD*>(base + exports->AddressOfNameOrdinals);
    const auto* functions = reinterpret_cast<const DWORD*>(base + exports->AddressOfFunctions);
    for (DWORD i = 0; i < exports->NumberOfNames; ++i) {
        ExportEntry e;
        e.name = reinterpret_cast<const char*>(base + names[i]);
        e.address = base + functions[ordinals[i]];
        entries.push_back(e);
    }
    return entries;
}

// ---------------------------------------------------------------------------------------
// NotifyWindow

namespace {
const char* const kNotifyClass = "CurveCtlModuleTestNotify";
}

NotifyWindow::NotifyWindow() {
    static const ATOM atom = [] {
        WNDCLASSA wc{};
        wc.lpfnWndProc = &NotifyWindow::proc;
        wc.hInstance = GetModuleHandleA(nullptr);
        wc.lpszClassName = kNotifyClass;
        return RegisterClassA(&wc);
    }();
    REQUIRE(atom != 0);
    hwnd_ = CreateWindowExA(0, kNotifyClass, "notify", WS_OVERLAPPED, 0, 0, 10, 10, nullptr,
                            nullptr, GetModuleHandleA(nullptr), this);
    REQUIRE(hwnd_ != nullptr);
}

NotifyWindow::~NotifyWindow() {
    if (hwnd_)
        DestroyWindow(hwnd_);
}

LRESULT CALLBACK NotifyWindow::proc(HWND hwnd, UINT msg, WPARAM wParam, LPARAM lParam) {
    if (msg == WM_NCCREATE) {
        auto* cs = reinterpret_cast<CREATESTRUCTA*>(lParam);
        SetWindowLongPtrA(hwnd, GWLP_USERDATA, reinterpret_cast<LONG_PTR>(cs->lpCreateParams));
    }
    auto* self = reinterpret_cast<NotifyWindow*>(GetWindowLongPtrA(hwnd, GWLP_USERDATA));
    if (self && msg >= CURVE_MSG_SELECTION && msg <= CURVE_MSG_LBUTTONUP) {
        self->messages.push_back(Message{msg, wParam, lParam});
        return 0;
    }
    return DefWindowProcA(hwnd, msg, wParam, lParam);
}

} // namespace moduletest
