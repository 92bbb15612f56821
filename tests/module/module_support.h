// What the module tests share: the plug-in module loaded the way a host loads it, and a
// real window that records the client messages sent to it.
#pragma once

#include "curvectl/icurvectl.h"
#include "host/class_desc.h"
#include "host/win_types.h"

#include <string>
#include <vector>

namespace moduletest {

/// curvectl.dll (next to the test program) and its five exported functions, resolved by
/// their plain names with GetProcAddress. Loaded on first use, never unloaded.
struct PluginModule {
    HMODULE handle = nullptr;
    const char* (*LibDescription)() = nullptr;
    int (*LibNumberClasses)() = nullptr;
    ClassDesc* (*LibClassDesc)(int) = nullptr;
    unsigned long (*LibVersion)() = nullptr;
    int (*CanAutoDefer)() = nullptr;
};
const PluginModule& Plugin();

/// The names in the export directory of a loaded module, read from its PE headers, in
/// the directory's (sorted) order; and the address each name resolves to.
struct ExportEntry {
    std::string name;
    const void* address;
};
std::vector<ExportEntry> ReadExportDirectory(HMODULE module, std::string* dllName = nullptr,
                                             DWORD* functionCount = nullptr);

/// One message as the notify window received it.
struct Message {
    UINT msg;
    WPARAM wParam;
    LPARAM lParam;
};

/// A top-level hidden window that records every client message (0x2F70 .. 0x2F77).
class NotifyWindow {
public:
    NotifyWindow();
    ~NotifyWindow();
    NotifyWindow(const NotifyWindow&) = delete;
    NotifyWindow& operator=(const NotifyWindow&) = delete;

    HWND hwnd() const { return hwnd_; }
    std::vector<Message> messages; // oldest first

private:
    static LRESULT CALLBACK proc(HWND hwnd, UINT msg, WPARAM wParam, LPARAM lParam);
    HWND hwnd_ = nullptr;
};

/// The object a descriptor's Create made, seen as what it is: every object of the module
/// derives from ReferenceTarget first, so the pointer is that object's address.
template <class T> T* As(void* created) {
    return static_cast<T*>(static_cast<ReferenceTarget*>(created));
}

} // namespace moduletest
