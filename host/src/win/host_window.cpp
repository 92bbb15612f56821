// The host's main window with its viewport and command panels, the Delete key, and the
// host's message loop.

#include "host/host_window.h"

#include <algorithm>
#include <cstring>
#include <new>

#include "cust_internal.h"
#include "host/colorman.h"
#include "host/core_interface.h"
#include "host/event_router.h"

namespace {

struct Panels {
    HWND view = nullptr;    // "ViewPanel"
    HWND command = nullptr; // "CommandPanel"
};

// Delete edits text inside edit controls; everywhere else it is the host's Delete.
bool IsTextInput(HWND hwnd) {
    char cls[64] = {};
    GetClassNameA(hwnd, cls, sizeof cls);
    return _stricmp(cls, "Edit") == 0 || _strnicmp(cls, "RichEdit", 8) == 0 ||
           _stricmp(cls, CUSTEDIT_CLASS) == 0;
}

bool ProcessDelete() { return deleteRouter.Process() != FALSE; }

void LayOut(HWND main) {
    auto* panels = reinterpret_cast<Panels*>(GetWindowLongPtrA(main, GWLP_USERDATA));
    if (!panels)
        return;
    RECT rc;
    GetClientRect(main, &rc);
    int commandWidth = std::min<int>(HOST_COMMAND_PANEL_WIDTH, rc.right);
    MoveWindow(panels->view, 0, 0, rc.right - commandWidth, rc.bottom, TRUE);
    MoveWindow(panels->command, rc.right - commandWidth, 0, commandWidth, rc.bottom, TRUE);
}

LRESULT CALLBACK PanelProc(HWND hwnd, UINT msg, WPARAM wParam, LPARAM lParam) {
    switch (msg) {
    case WM_KEYDOWN:
        if (wParam == VK_DELETE && ProcessDelete())
            return 0;
        break;
    case WM_LBUTTONDOWN:
        SetFocus(hwnd); // so the keyboard (Delete) reaches the host
        return 0;
    default:
        break;
    }
    return DefWindowProcA(hwnd, msg, wParam, lParam);
}

LRESULT CALLBACK MainProc(HWND hwnd, UINT msg, WPARAM wParam, LPARAM lParam) {
    switch (msg) {
    case WM_CREATE: {
        auto* panels = new (std::nothrow) Panels;
        if (!panels)
            return -1;
        HINSTANCE inst = hostwin::HostInstance();
        panels->view = CreateWindowExA(WS_EX_CLIENTEDGE, HOST_VIEW_PANEL_CLASS, "",
                                       WS_CHILD | WS_VISIBLE | WS_CLIPSIBLINGS, 0, 0, 0, 0, hwnd,
                                       nullptr, inst, nullptr);
        panels->command = CreateWindowExA(0, HOST_COMMAND_PANEL_CLASS, "",
                                          WS_CHILD | WS_VISIBLE | WS_CLIPCHILDREN, 0, 0, 0, 0, hwnd,
                                          nullptr, inst, nullptr);
        SetWindowLongPtrA(hwnd, GWLP_USERDATA, reinterpret_cast<LONG_PTR>(panels));
        LayOut(hwnd);
        return 0;
    }
    case WM_SIZE:
        LayOut(hwnd);
        return 0;
    case WM_KEYDOWN:
        if (wParam == VK_DELETE && ProcessDelete())
            return 0;
        break;
    case WM_CLOSE:
        DestroyWindow(hwnd);
        PostQuitMessage(0); // closing the host ends its message loop
        return 0;
    case WM_DESTROY:
        if (GetCOREInterface()->GetMAXHWnd() == hwnd)
            GetCOREInterface()->SetMAXHWnd(nullptr);
        return 0;
    case WM_NCDESTROY:
        delete reinterpret_cast<Panels*>(GetWindowLongPtrA(hwnd, GWLP_USERDATA));
        SetWindowLongPtrA(hwnd, GWLP_USERDATA, 0);
        break;
    default:
        break;
    }
    return DefWindowProcA(hwnd, msg, wParam, lParam);
}

void RegisterHostClasses() {
    static bool registered = false;
    if (registered)
        return;
    HINSTANCE inst = hostwin::HostInstance();
    WNDCLASSA wc = {};
    wc.hInstance = inst;
    wc.hCursor = LoadCursorA(nullptr, IDC_ARROW);

    wc.lpfnWndProc = MainProc;
    wc.hbrBackground = ColorMan()->GetBrush(kColorBackground);
    wc.lpszClassName = HOST_MAIN_WINDOW_CLASS;
    RegisterClassA(&wc);

    wc.lpfnWndProc = PanelProc;
    wc.hbrBackground = static_cast<HBRUSH>(GetStockObject(GRAY_BRUSH));
    wc.lpszClassName = HOST_VIEW_PANEL_CLASS;
    RegisterClassA(&wc);

    wc.hbrBackground = ColorMan()->GetBrush(kColorBackground);
    wc.lpszClassName = HOST_COMMAND_PANEL_CLASS;
    RegisterClassA(&wc);
    registered = true;
}

bool IsHostMainWindow(HWND hwnd) {
    char cls[64] = {};
    return hwnd && IsWindow(hwnd) && GetClassNameA(hwnd, cls, sizeof cls) &&
           strcmp(cls, HOST_MAIN_WINDOW_CLASS) == 0;
}

} // namespace

HWND CreateHostMainWindow(const char* title, int x, int y, int width, int height, BOOL show) {
    RegisterHostClasses();
    HWND main = CreateWindowExA(0, HOST_MAIN_WINDOW_CLASS, title ? title : "",
                                WS_OVERLAPPEDWINDOW | WS_CLIPCHILDREN, x, y, width, height, nullptr,
                                nullptr, hostwin::HostInstance(), nullptr);
    if (!main)
        return nullptr;
    GetCOREInterface()->SetMAXHWnd(main);
    if (show) {
        ShowWindow(main, SW_SHOW);
        UpdateWindow(main);
    }
    return main;
}

void DestroyHostMainWindow(HWND mainWindow) {
    if (IsHostMainWindow(mainWindow))
        DestroyWindow(mainWindow);
}

HWND GetHostViewPanel(HWND mainWindow) {
    if (!IsHostMainWindow(mainWindow))
        return nullptr;
    auto* panels = reinterpret_cast<Panels*>(GetWindowLongPtrA(mainWindow, GWLP_USERDATA));
    return panels ? panels->view : nullptr;
}

HWND GetHostCommandPanel(HWND mainWindow) {
    if (!IsHostMainWindow(mainWindow))
        return nullptr;
    auto* panels = reinterpret_cast<Panels*>(GetWindowLongPtrA(mainWindow, GWLP_USERDATA));
    return panels ? panels->command : nullptr;
}

BOOL HostPreTranslateMessage(MSG* msg) {
    if (!msg || msg->message != WM_KEYDOWN || msg->wParam != VK_DELETE)
        return FALSE;
    if (!msg->hwnd || GetWindowThreadProcessId(msg->hwnd, nullptr) != GetCurrentThreadId())
        return FALSE;
    if (IsTextInput(msg->hwnd))
        return FALSE;
    return ProcessDelete() ? TRUE : FALSE;
}

int RunHostMessageLoop() {
    MSG msg;
    while (GetMessageA(&msg, nullptr, 0, 0) > 0) {
        if (HostPreTranslateMessage(&msg))
            continue;
        TranslateMessage(&msg);
        DispatchMessageA(&msg);
    }
    return msg.message == WM_QUIT ? int(msg.wParam) : 0;
}
