// The host's main window stand-in: panels, the core interface's main window, Delete.

#include "host/core_interface.h"
#include "host/event_router.h"
#include "host/host_window.h"
#include "win/host_win_fixture.h"

#include <doctest/doctest.h>

#include <cstring>

using namespace hostwin_test;

namespace {

struct CountingUser : EventUser {
    int notified = 0;
    void Notify() override { ++notified; }
};

// Registered for the length of a test.
struct DeleteUser : CountingUser {
    DeleteUser() { deleteRouter.Register(this); }
    ~DeleteUser() { deleteRouter.UnRegister(this); }
};

// Hidden unless asked: under Wine without a window manager, destroying a shown top-level
// window waits two seconds.
struct MainWindow {
    HWND hwnd;
    explicit MainWindow(BOOL show = FALSE)
        : hwnd(CreateHostMainWindow("Host", 20, 20, 800, 500, show)) {}
    ~MainWindow() { DestroyHostMainWindow(hwnd); }
};

// The first child of class "ViewPanel", found the way plug-ins look for it.
HWND FindViewPanel(HWND main) {
    struct Search {
        HWND found = nullptr;
    } search;
    EnumChildWindows(
        main,
        [](HWND child, LPARAM p) -> BOOL {
            char name[50];
            GetClassNameA(child, name, 50);
            if (strcmp(name, "ViewPanel") != 0)
                return TRUE;
            reinterpret_cast<Search*>(p)->found = child;
            return FALSE;
        },
        reinterpret_cast<LPARAM>(&search));
    return search.found;
}

} // namespace

TEST_CASE("the main window is the core interface's main window while it exists") {
    HWND before = GetCOREInterface()->GetMAXHWnd();
    {
        MainWindow m(TRUE);
        REQUIRE(m.hwnd != nullptr);
        CHECK(GetCOREInterface()->GetMAXHWnd() == m.hwnd);
        CHECK(IsWindowVisible(m.hwnd));
        MainWindow hidden;
        CHECK_FALSE(IsWindowVisible(hidden.hwnd));
        CHECK(GetCOREInterface()->GetMAXHWnd() == hidden.hwnd); // the newest one
    }
    CHECK(GetCOREInterface()->GetMAXHWnd() == nullptr);
    GetCOREInterface()->SetMAXHWnd(before);
}

TEST_CASE("the viewport panel fills the left part and the command panel the right") {
    MainWindow m;
    HWND view = GetHostViewPanel(m.hwnd);
    HWND command = GetHostCommandPanel(m.hwnd);
    REQUIRE(view != nullptr);
    REQUIRE(command != nullptr);
    CHECK(FindViewPanel(m.hwnd) == view);
    RECT client, vr, cr;
    GetClientRect(m.hwnd, &client);
    GetWindowRect(view, &vr);
    GetWindowRect(command, &cr);
    MapWindowPoints(nullptr, m.hwnd, reinterpret_cast<POINT*>(&vr), 2);
    MapWindowPoints(nullptr, m.hwnd, reinterpret_cast<POINT*>(&cr), 2);
    CHECK(vr.left == 0);
    CHECK(vr.top == 0);
    CHECK(vr.right == client.right - HOST_COMMAND_PANEL_WIDTH);
    CHECK(vr.bottom == client.bottom);
    CHECK(cr.left == vr.right);
    CHECK(cr.right == client.right);

    SetWindowPos(m.hwnd, nullptr, 0, 0, 900, 600, SWP_NOMOVE | SWP_NOZORDER);
    GetClientRect(m.hwnd, &client);
    GetWindowRect(command, &cr);
    MapWindowPoints(nullptr, m.hwnd, reinterpret_cast<POINT*>(&cr), 2);
    CHECK(cr.right == client.right);
    CHECK(cr.bottom == client.bottom);

    CHECK(GetHostViewPanel(nullptr) == nullptr);
    CHECK(GetHostViewPanel(view) == nullptr); // not a main window
}

TEST_CASE("Delete in the main window or its panels processes the delete router") {
    MainWindow m;
    DeleteUser user;
    SendMessageA(m.hwnd, WM_KEYDOWN, VK_DELETE, 0);
    CHECK(user.notified == 1);
    SendMessageA(GetHostViewPanel(m.hwnd), WM_KEYDOWN, VK_DELETE, 0);
    CHECK(user.notified == 2);
    SendMessageA(m.hwnd, WM_KEYDOWN, VK_BACK, 0);
    CHECK(user.notified == 2);
}

TEST_CASE("the message loop's Delete goes to the router, except inside edit controls") {
    MainWindow m;
    HWND edit =
        CreateWindowExA(0, "EDIT", "", WS_CHILD | WS_VISIBLE, 0, 0, 80, 20,
                        GetHostCommandPanel(m.hwnd), nullptr, GetModuleHandleA(nullptr), nullptr);
    MSG msg = {};
    msg.message = WM_KEYDOWN;
    msg.wParam = VK_DELETE;
    msg.hwnd = GetHostCommandPanel(m.hwnd);
    CHECK_FALSE(HostPreTranslateMessage(&msg)); // nobody registered: dispatch as usual

    DeleteUser user;
    CHECK(HostPreTranslateMessage(&msg));
    CHECK(user.notified == 1);
    msg.hwnd = edit;
    CHECK_FALSE(HostPreTranslateMessage(&msg));
    CHECK(user.notified == 1);
    msg.hwnd = GetHostViewPanel(m.hwnd);
    msg.message = WM_KEYUP;
    CHECK_FALSE(HostPreTranslateMessage(&msg));
    CHECK_FALSE(HostPreTranslateMessage(nullptr));
    CHECK(user.notified == 1);
}

TEST_CASE("closing the main window ends the host's message loop") {
    MainWindow m;
    PostMessageA(m.hwnd, WM_CLOSE, 0, 0);
    CHECK(RunHostMessageLoop() == 0);
    CHECK_FALSE(IsWindow(m.hwnd));
}
