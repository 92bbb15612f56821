// The editor's window framework: class registration, the window procedure's routing, the
// frame window's messages, and opening and closing editors.
#include "doctest/doctest.h"
#include "editor/delete_user.h"
#include "editor/editor_resources.h"
#include "host/core_interface.h"
#include "host/event_router.h"
#include "host/gdi_tracking.h"
#include "host/hold.h"
#include "host/host_window.h"
#include "tests/win/editor_test_support.h"

#include <climits>
#include <string>
#include <vector>

using namespace edtest;

namespace {

// ---------------------------------------------------------------------------------------
// A window object that records which operation each message reached, with its arguments.

struct Call {
    std::string slot;
    long long a = 0, b = 0, c = 0;
};

class Probe : public BaseWindow {
public:
    std::vector<Call> calls;
    void log(const char* s, long long a = 0, long long b = 0, long long c = 0) {
        calls.push_back(Call{s, a, b, c});
    }
    LRESULT LButtonDown(int x, int y, int k) override { return log("LButtonDown", x, y, k), 11; }
    LRESULT RButtonDown(int x, int y, int k) override { return log("RButtonDown", x, y, k), 12; }
    LRESULT MButtonDown(int x, int y, int k) override { return log("MButtonDown", x, y, k), 13; }
    LRESULT MouseMove(int x, int y, int k) override { return log("MouseMove", x, y, k), 14; }
    LRESULT LButtonUp(int x, int y, int k) override { return log("LButtonUp", x, y, k), 15; }
    LRESULT RButtonUp(int x, int y, int k) override { return log("RButtonUp", x, y, k), 16; }
    LRESULT MButtonUp(int x, int y, int k) override { return log("MButtonUp", x, y, k), 17; }
    LRESULT Command(int n, int id, HWND h) override {
        return log("Command", n, id, reinterpret_cast<long long>(h)), 18;
    }
    LRESULT Paint() override {
        ValidateRect(hWnd_, nullptr);
        return log("Paint"), 19;
    }
    LRESULT Timer(int id) override { return log("Timer", id), 20; }
    LRESULT SetFocus(HWND h) override {
        return log("SetFocus", reinterpret_cast<long long>(h)), 21;
    }
    LRESULT Size(int t, int w, int h) override { return log("Size", t, w, h), 22; }
    LRESULT Enable(BOOL e) override { return log("Enable", e), 23; }
    LRESULT Notify(LPARAM l) override { return log("Notify", l), 24; }
    LRESULT HScroll(int c, int p, HWND h) override {
        return log("HScroll", c, p, reinterpret_cast<long long>(h)), 25;
    }
    LRESULT VScroll(int c, int p, HWND h) override {
        return log("VScroll", c, p, reinterpret_cast<long long>(h)), 26;
    }
    LRESULT HostControlNotify(int lo, int hi) override {
        return log("HostControlNotify", lo, hi), 27;
    }
    LRESULT InitMenuPopup(HMENU m, int pos, BOOL sys) override {
        return log("InitMenuPopup", reinterpret_cast<long long>(m), pos, sys), 28;
    }
    LRESULT Activate(int s, BOOL mini, HWND o) override {
        return log("Activate", s, mini, reinterpret_cast<long long>(o)), 29;
    }
    LRESULT MouseActivate(HWND, UINT msg, WPARAM w, LPARAM l) override {
        return log("MouseActivate", msg, static_cast<long long>(w), l), 30;
    }
    LRESULT EditEnter(int id, LPARAM l) override { return log("EditEnter", id, l), 31; }
    LRESULT MenuSelect(int item, int flags, HMENU m) override {
        return log("MenuSelect", item, flags, reinterpret_cast<long long>(m)), 32;
    }
    LRESULT NextDlgCtl(WPARAM w) override {
        return log("NextDlgCtl", static_cast<long long>(w)), 33;
    }
    LRESULT MouseWheel(int d) override { return log("MouseWheel", d), 34; }
};

HWND makeProbeWindow(Probe& probe) {
    RegisterEditorClasses();
    HWND hwnd = CreateWindowExA(0, kEditorWindowClass, "", WS_POPUP | WS_VISIBLE, 0, 0, 50, 50,
                                nullptr, nullptr, EditorInstance(), nullptr);
    probe.Attach(hwnd);
    return hwnd;
}

LPARAM point(int x, int y) { return MAKELPARAM(short(x), short(y)); }

bool isProc(WNDPROC a, WNDPROC b) { return a == b; }

} // namespace

TEST_CASE_FIXTURE(EditorFixture, "the four classes are registered once per process") {
    RegisterEditorClasses();
    RegisterEditorClasses();
    CHECK(EditorClassRegistrations() == 1);

    WNDCLASSA wc{};
    REQUIRE(GetClassInfoA(EditorInstance(), kPosWindowClass, &wc));
    CHECK(wc.style == (CS_HREDRAW | CS_VREDRAW));
    CHECK(wc.hCursor == LoadCursorA(nullptr, IDC_SIZENS));
    CHECK(wc.hbrBackground == nullptr);
    CHECK(wc.cbWndExtra == 0);
    CHECK(isProc(wc.lpfnWndProc, EditorWindowProc));

    REQUIRE(GetClassInfoA(EditorInstance(), kCurveWindowClass, &wc));
    CHECK(wc.style == CS_DBLCLKS);
    CHECK(wc.hCursor == nullptr);
    CHECK(wc.hbrBackground == GetStockObject(LTGRAY_BRUSH));
    CHECK(isProc(wc.lpfnWndProc, EditorWindowProc));

    REQUIRE(GetClassInfoA(EditorInstance(), kEditorWindowClass, &wc));
    CHECK(wc.style == CS_DBLCLKS);
    CHECK(wc.hCursor == LoadCursorA(nullptr, IDC_ARROW));
    CHECK(isProc(wc.lpfnWndProc, EditorWindowProc));

    REQUIRE(GetClassInfoA(EditorInstance(), kFrameClassName, &wc));
    CHECK(wc.style == CS_DBLCLKS);
    CHECK(wc.cbWndExtra == 8);
    CHECK(wc.cbClsExtra == 0);
    CHECK(wc.hIcon == nullptr);
    CHECK(isProc(wc.lpfnWndProc, FrameWindowProc));

    // Opening editors registers nothing again.
    ParentWindow parent(400, 300);
    auto control = MakeControl(2, kEmbedded, parent.get());
    CHECK(control->SetEditorOpen(TRUE));
    control->SetEditorOpen(FALSE);
    CHECK(EditorClassRegistrations() == 1);
}

TEST_CASE_FIXTURE(EditorFixture, "the shared resources load once and hold menu 101") {
    const EditorResources& r = LoadEditorResources();
    CHECK(&r == &LoadEditorResources());
    REQUIRE(r.editImages);
    REQUIRE(r.curveImages);
    REQUIRE(r.viewImages);
    CHECK(ImageList_GetImageCount(r.editImages) == 29);
    CHECK(ImageList_GetImageCount(r.curveImages) == 29);
    CHECK(ImageList_GetImageCount(r.viewImages) == 13);
    REQUIRE(r.pointMenu);
    HMENU types = GetSubMenu(r.pointMenu, 0);
    REQUIRE(types);
    CHECK(GetMenuItemCount(types) == 9);
    CHECK(GetMenuItemID(types, 0) == 40001);
    CHECK(GetMenuItemID(types, 8) == 40012);
    CHECK(r.pointCursor);
    CHECK(r.moveCursor);
    CHECK(r.panCursor);
    CHECK(r.zoomCursor);
    CHECK(r.zoomRegionCursor);
}

TEST_CASE_FIXTURE(EditorFixture, "each message reaches its operation") {
    Probe probe;
    HWND hwnd = makeProbeWindow(probe);
    HWND other = reinterpret_cast<HWND>(0x1234);

    struct Case {
        UINT msg;
        WPARAM w;
        LPARAM l;
        const char* slot;
        long long a, b, c;
        LRESULT result;
    };
    const Case cases[] = {
        {WM_LBUTTONDOWN, MK_LBUTTON, point(-3, 7), "LButtonDown", -3, 7, MK_LBUTTON, 11},
        {WM_RBUTTONDOWN, MK_RBUTTON, point(5, -9), "RButtonDown", 5, -9, MK_RBUTTON, 12},
        {WM_MBUTTONDOWN, MK_MBUTTON, point(1, 2), "MButtonDown", 1, 2, MK_MBUTTON, 13},
        {WM_MOUSEMOVE, MK_CONTROL, point(-32768, 32767), "MouseMove", -32768, 32767, MK_CONTROL,
         14},
        {WM_LBUTTONUP, 0, point(4, 4), "LButtonUp", 4, 4, 0, 15},
        {WM_RBUTTONUP, 0, point(6, 6), "RButtonUp", 6, 6, 0, 16},
        {WM_MBUTTONUP, 0, point(8, 8), "MButtonUp", 8, 8, 0, 17},
        {WM_COMMAND, MAKEWPARAM(401, 8187), 0x1234, "Command", 8187, 401, 0x1234, 18},
        {WM_TIMER, 7, 0, "Timer", 7, 0, 0, 20},
        {WM_SETFOCUS, WPARAM(other), 0, "SetFocus", 0x1234, 0, 0, 21},
        {WM_SIZE, SIZE_RESTORED, MAKELPARAM(300, 200), "Size", SIZE_RESTORED, 300, 200, 22},
        {WM_ENABLE, TRUE, 0, "Enable", 1, 0, 0, 23},
        {WM_NOTIFY, 0, 0x55, "Notify", 0x55, 0, 0, 24},
        {WM_HSCROLL, MAKEWPARAM(SB_THUMBTRACK, 0xFFFE), 0x1234, "HScroll", SB_THUMBTRACK, -2,
         0x1234, 25},
        {WM_VSCROLL, MAKEWPARAM(SB_LINEDOWN, 3), 0, "VScroll", SB_LINEDOWN, 3, 0, 26},
        {0x658, MAKEWPARAM(5, 6), 0, "HostControlNotify", 5, 6, 0, 27},
        {WM_INITMENUPOPUP, 0x1234, MAKELPARAM(2, 1), "InitMenuPopup", 0x1234, 2, 1, 28},
        {WM_ACTIVATE, MAKEWPARAM(WA_CLICKACTIVE, 1), 0x1234, "Activate", WA_CLICKACTIVE, 1, 0x1234,
         29},
        {WM_MOUSEACTIVATE, 0x77, 0x99, "MouseActivate", WM_MOUSEACTIVATE, 0x77, 0x99, 30},
        {0x6AD, 1070, 0x42, "EditEnter", 1070, 0x42, 0, 31},
        {WM_MENUSELECT, MAKEWPARAM(40001, MF_POPUP), 0x1234, "MenuSelect", 40001, MF_POPUP, 0x1234,
         32},
        {WM_NEXTDLGCTL, 9, 0, "NextDlgCtl", 9, 0, 0, 1}, // answered 1 whatever the slot says
        {WM_MOUSEWHEEL, MAKEWPARAM(0, WORD(-120)), 0, "MouseWheel", -120, 0, 0, 34},
    };
    for (const Case& c : cases) {
        CAPTURE(c.slot);
        probe.calls.clear();
        CHECK(SendMessageA(hwnd, c.msg, c.w, c.l) == c.result);
        REQUIRE(probe.calls.size() == 1);
        CHECK(probe.calls[0].slot == c.slot);
        CHECK(probe.calls[0].a == c.a);
        CHECK(probe.calls[0].b == c.b);
        CHECK(probe.calls[0].c == c.c);
    }

    // Paint arrives through WM_PAINT.
    probe.calls.clear();
    InvalidateRect(hwnd, nullptr, FALSE);
    UpdateWindow(hwnd);
    REQUIRE(probe.calls.size() == 1);
    CHECK(probe.calls[0].slot == "Paint");

    // Double-clicks go to the default procedure, not to a slot.
    probe.calls.clear();
    SendMessageA(hwnd, WM_LBUTTONDBLCLK, 0, point(1, 1));
    SendMessageA(hwnd, WM_RBUTTONDBLCLK, 0, point(1, 1));
    CHECK(probe.calls.empty());

    // WM_DESTROY detaches the object without deleting it: nothing reaches it any more.
    ShowWindow(hwnd, SW_HIDE);
    probe.calls.clear();
    DestroyWindow(hwnd);
    CHECK(probe.calls.empty());
    CHECK(probe.Handle() == hwnd);
}

TEST_CASE_FIXTURE(EditorFixture, "a window without its object uses the default procedure") {
    RegisterEditorClasses();
    HWND hwnd = CreateWindowExA(0, kEditorWindowClass, "", WS_POPUP, 0, 0, 50, 50, nullptr, nullptr,
                                EditorInstance(), nullptr);
    CHECK(SendMessageA(hwnd, WM_NEXTDLGCTL, 0, 0) == 0); // DefWindowProc answers 0
    CHECK(SendMessageA(hwnd, WM_MOUSEACTIVATE, WPARAM(hwnd), 0) == MA_ACTIVATE);
    DestroyWindow(hwnd);
}

// ---------------------------------------------------------------------------------------
// Button messages: the mode first, then the client

namespace {

std::vector<std::string>* gLog = nullptr;

LRESULT CALLBACK notifyProc(HWND hwnd, UINT msg, WPARAM w, LPARAM l) {
    if (gLog && msg >= 0x2F70 && msg <= 0x2F77)
        gLog->push_back("client " + std::to_string(msg) + " " + std::to_string(w) + " " +
                        std::to_string(l));
    return DefWindowProcA(hwnd, msg, w, l);
}

HWND makeNotifyWindow() {
    static bool registered = false;
    if (!registered) {
        registered = true;
        WNDCLASSA wc{};
        wc.lpfnWndProc = notifyProc;
        wc.hInstance = GetModuleHandleA(nullptr);
        wc.lpszClassName = "EditorTestNotify";
        RegisterClassA(&wc);
    }
    return CreateWindowExA(0, "EditorTestNotify", "", WS_POPUP, 0, 0, 1, 1, nullptr, nullptr,
                           GetModuleHandleA(nullptr), nullptr);
}

class LoggingMode : public MouseCallBack {
public:
    int proc(HWND, int msg, int pt, int, IPoint2) override {
        if (gLog)
            gLog->push_back("mode " + std::to_string(msg) + " " + std::to_string(pt));
        return 1;
    }
};

} // namespace

TEST_CASE_FIXTURE(EditorFixture, "button presses reach the client after the mode") {
    std::vector<std::string> log;
    gLog = &log;
    ParentWindow parent(500, 400);
    HWND notify = makeNotifyWindow();
    auto control = MakeControl(2, kEmbedded, parent.get());
    control->SetNotifyWindow(notify);
    REQUIRE(control->SetEditorOpen(TRUE));
    CurveCtlWindow* editor = EditorOf(*control);
    LoggingMode mode;
    editor->Mice().SetMouseProc(&mode, LEFT_BUTTON, 2);
    editor->Mice().SetMouseProc(&mode, RIGHT_BUTTON, 2);
    HWND graph = editor->Graph().Handle();
    const LPARAM at = point(30, 40);

    SendMessageA(graph, WM_LBUTTONDOWN, MK_LBUTTON, at);
    CHECK(log == std::vector<std::string>{"mode 1 0", "client 12149 1 " + std::to_string(at)});
    log.clear();
    SendMessageA(graph, WM_MOUSEMOVE, MK_LBUTTON, point(35, 45));
    CHECK(log == std::vector<std::string>{"mode 2 1"}); // moves are not told
    log.clear();
    SendMessageA(graph, WM_LBUTTONUP, 0, at);
    CHECK(log == std::vector<std::string>{"mode 1 1", "client 12151 0 " + std::to_string(at)});
    log.clear();
    SendMessageA(graph, WM_RBUTTONDOWN, MK_RBUTTON, at);
    CHECK(log == std::vector<std::string>{"mode 1 0", "client 12150 2 " + std::to_string(at)});
    log.clear();
    SendMessageA(graph, WM_RBUTTONUP, 0, at); // right button up is not told
    CHECK(log == std::vector<std::string>{"mode 1 1"});
    log.clear();
    SendMessageA(graph, WM_MBUTTONDOWN, MK_MBUTTON, at);
    SendMessageA(graph, WM_MBUTTONUP, 0, at);
    SendMessageA(graph, WM_LBUTTONDBLCLK, MK_LBUTTON, at);
    for (const std::string& s : log)
        CHECK(s.rfind("client", 0) != 0);

    // Without a notify window nothing is sent and the mode still gets the press.
    control->SetNotifyWindow(nullptr);
    log.clear();
    SendMessageA(graph, WM_LBUTTONDOWN, MK_LBUTTON, at);
    SendMessageA(graph, WM_LBUTTONUP, 0, at);
    CHECK(log == std::vector<std::string>{"mode 1 0", "mode 1 1"});

    control->SetEditorOpen(FALSE);
    DestroyWindow(notify);
    gLog = nullptr;
}

// ---------------------------------------------------------------------------------------
// The frame

TEST_CASE_FIXTURE(EditorFixture, "the frame lays the editor out on WM_SIZE unless minimised") {
    auto control = MakeControl(2, CC_DEFAULT_FLAGS, nullptr);
    REQUIRE(control->SetEditorOpen(TRUE));
    HWND frame = control->GetEditorWindow();
    CurveCtlWindow* editor = EditorOf(*control);
    HWND graph = editor->Graph().Handle();

    CHECK(SendMessageA(frame, WM_SIZE, SIZE_RESTORED, MAKELPARAM(500, 320)) == 0);
    RECT own{};
    GetClientRect(editor->Handle(), &own);
    CHECK(own.right == 500);
    CHECK(own.bottom == 320);
    const RECT before = RectIn(graph, editor->Handle());

    CHECK(SendMessageA(frame, WM_SIZE, SIZE_MINIMIZED, MAKELPARAM(0, 0)) == 0);
    GetClientRect(editor->Handle(), &own);
    CHECK(own.right == 500);
    CHECK(own.bottom == 320);
    const RECT after = RectIn(graph, editor->Handle());
    CHECK(EqualRect(&before, &after));

    // Minimising the real frame leaves the layout alone as well.
    ShowWindow(frame, SW_MINIMIZE);
    Pump();
    const RECT minimised = RectIn(graph, editor->Handle());
    CHECK(minimised.right - minimised.left == before.right - before.left);
    CHECK(minimised.bottom - minimised.top == before.bottom - before.top);
    control->SetEditorOpen(FALSE);
}

TEST_CASE_FIXTURE(EditorFixture, "activation points the Delete key at the editor") {
    ParentWindow parent(500, 400);
    auto control = MakeControl(1, kEmbedded, parent.get());
    Curve* curve = control->GetCurveObject(0);
    curve->InsertKnot(1, CurveKnot(Point2(0.5f, 0.2f), Point2(), Point2(), KNOT_CORNER));
    BitArray sel(curve->PointCount());
    sel.Set(1);
    curve->SetSelection(sel, 1);
    REQUIRE(curve->PointCount() == 3);
    REQUIRE(control->SetEditorOpen(TRUE));
    HWND frame = control->GetEditorWindow();
    CurveCtlWindow* editor = EditorOf(*control);
    const int registered = deleteRouter.Count();

    CHECK(SendMessageA(frame, WM_ACTIVATE, WA_ACTIVE, 0) == 0);
    CHECK(deleteRouter.Count() == registered + 1);
    CHECK(DeformDeleteUser::Instance().Target() == editor->Handle());
    CHECK(deleteRouter.Process());
    CHECK(curve->PointCount() == 2); // the Delete Point command ran
    CHECK(theHold.UndoName(0) == "Delete Point");

    CHECK(SendMessageA(frame, WM_ACTIVATE, WA_INACTIVE, 0) == 0);
    CHECK(deleteRouter.Count() == registered);

    // A frame that goes while active takes its registration with it.
    SendMessageA(frame, WM_ACTIVATE, WA_CLICKACTIVE, 0);
    CHECK(deleteRouter.Count() == registered + 1);
    control->SetEditorOpen(FALSE);
    CHECK(deleteRouter.Count() == registered);
    CHECK(DeformDeleteUser::Instance().Target() == nullptr);
}

TEST_CASE_FIXTURE(EditorFixture, "the frame's wheel follows flag 32") {
    ParentWindow parent(500, 400);
    auto control = MakeControl(2, kEmbedded & ~DWORD(CC_SHOWSCROLLBARS), parent.get());
    REQUIRE(control->SetEditorOpen(TRUE));
    CurveCtlWindow* editor = EditorOf(*control);
    HWND frame = control->GetEditorWindow();
    const float ys = editor->Scale().ys;
    CHECK(SendMessageA(frame, WM_MOUSEWHEEL, MAKEWPARAM(0, 120), 0) == 0);
    CHECK(editor->Scale().ys == ys);
    CHECK(SendMessageA(frame, WM_COMMAND, 420, 0) == 0);

    control->SetControlFlags(kEmbedded);
    CHECK(SendMessageA(frame, WM_MOUSEWHEEL, MAKEWPARAM(0, 120), 0) == 1);
    CHECK(editor->Scale().ys == doctest::Approx(ys * 1.2f));
    CHECK(SendMessageA(frame, WM_MOUSEWHEEL, MAKEWPARAM(0, WORD(-120)), 0) == 1);
    CHECK(editor->Scale().ys == doctest::Approx(ys * 1.2f * 0.8f));
    control->SetEditorOpen(FALSE);
}

TEST_CASE_FIXTURE(EditorFixture, "message 0x2400 asks for a repaint of graph and ruler") {
    ParentWindow parent(500, 400);
    auto control = MakeControl(2, kEmbedded, parent.get());
    REQUIRE(control->SetEditorOpen(TRUE));
    CurveCtlWindow* editor = EditorOf(*control);
    HWND frame = control->GetEditorWindow();
    UpdateWindow(editor->Graph().Handle());
    UpdateWindow(editor->Strip()->Handle());
    editor->Cache().graphValid = 1;
    editor->Cache().rulerValid = 1;
    editor->Cache().lastCursor = POINT{3, 4};

    CHECK(SendMessageA(frame, 0x2400, 0, 0) == 0);
    CHECK(editor->Cache().graphValid == 0);
    CHECK(editor->Cache().rulerValid == 0);
    CHECK(editor->Cache().lastCursor.x == INT_MIN);
    CHECK(editor->Cache().lastCursor.y == INT_MIN);
    RECT dirty{};
    CHECK(GetUpdateRect(editor->Graph().Handle(), &dirty, FALSE));
    CHECK(GetUpdateRect(editor->Strip()->Handle(), &dirty, FALSE));
    control->SetEditorOpen(FALSE);
}

// ---------------------------------------------------------------------------------------
// Opening and closing

TEST_CASE_FIXTURE(EditorFixture, "a second open creates nothing") {
    ParentWindow parent(500, 400);
    auto control = MakeControl(2, kEmbedded, parent.get());
    REQUIRE(control->SetEditorOpen(TRUE));
    HWND frame = control->GetEditorWindow();
    const int windows = CountThreadWindows();
    CHECK(control->SetEditorOpen(TRUE) == TRUE);
    CHECK(control->GetEditorWindow() == frame);
    CHECK(CountThreadWindows() == windows);
    CHECK(control->IsEditorOpen());
    CHECK(control->SetEditorOpen(FALSE) == FALSE);
    CHECK_FALSE(control->IsEditorOpen());
    CHECK(control->GetEditorWindow() == nullptr);
    CHECK_FALSE(IsWindow(frame));
    CHECK(control->SetEditorOpen(FALSE) == FALSE); // closing a closed editor
}

TEST_CASE_FIXTURE(EditorFixture, "an embedded editor needs a parent") {
    auto control = MakeControl(2, kEmbedded, nullptr);
    const int windows = CountThreadWindows();
    CHECK(control->SetEditorOpen(TRUE) == FALSE);
    CHECK(CountThreadWindows() == windows);
    CHECK(control->GetEditorWindow() == nullptr);
    CHECK(control->Editor() == nullptr);
}

TEST_CASE_FIXTURE(EditorFixture, "an embedded editor fills its parent without a caption") {
    ParentWindow parent(420, 310);
    auto control = MakeControl(2, kEmbedded, parent.get());
    REQUIRE(control->SetEditorOpen(TRUE));
    HWND frame = control->GetEditorWindow();
    CHECK(GetParent(frame) == parent.get());
    CHECK(DWORD(GetWindowLongA(frame, GWL_STYLE)) == (0x40800000u | WS_VISIBLE));
    const RECT r = RectIn(frame, parent.get());
    CHECK(r.left == 0);
    CHECK(r.top == 0);
    CHECK(r.right == 420);
    CHECK(r.bottom == 310);
    char cls[32] = {};
    GetClassNameA(frame, cls, 32);
    CHECK(std::string(cls) == "DefPopUp");
    CHECK(WindowText(frame).empty());
    control->SetEditorOpen(FALSE);
}

TEST_CASE_FIXTURE(EditorFixture, "floating editors cascade from the viewport panel") {
    HWND host = CreateHostMainWindow("host", 60, 50, 900, 600, TRUE);
    REQUIRE(host);
    HWND panel = GetHostViewPanel(host);
    REQUIRE(panel);
    RECT p{};
    GetWindowRect(panel, &p);

    auto control = MakeControl(2, CC_DEFAULT_FLAGS, nullptr);
    control->SetTitle("Falloff");
    control->SetInstanceIndex(2);
    REQUIRE(control->SetEditorOpen(TRUE));
    HWND frame = control->GetEditorWindow();
    RECT r{};
    GetWindowRect(frame, &r);
    CHECK(r.left == p.left - 1 + 40);
    CHECK(r.top == p.top + 40);
    CHECK(r.right - r.left == 600);
    CHECK(r.bottom - r.top == 300);
    CHECK(GetWindow(frame, GW_OWNER) == host); // no parent window: the host's main window
    CHECK(WindowText(frame) == "Falloff");
    CHECK((DWORD(GetWindowLongA(frame, GWL_STYLE)) & WS_CAPTION) == WS_CAPTION);
    control->SetEditorOpen(FALSE);
    DestroyHostMainWindow(host);
}

TEST_CASE_FIXTURE(EditorFixture, "without a viewport panel the cascade starts at the origin") {
    auto control = MakeControl(2, CC_DEFAULT_FLAGS, nullptr);
    control->SetInstanceIndex(1);
    REQUIRE(control->SetEditorOpen(TRUE));
    RECT r{};
    GetWindowRect(control->GetEditorWindow(), &r);
    CHECK(r.left == 20);
    CHECK(r.top == 20);
    control->SetEditorOpen(FALSE);
}

TEST_CASE_FIXTURE(EditorFixture, "closing and reopening a floating editor restores it") {
    auto control = MakeControl(2, CC_DEFAULT_FLAGS, nullptr);
    REQUIRE(control->SetEditorOpen(TRUE));
    MoveWindow(control->GetEditorWindow(), 210, 140, 520, 280, TRUE);
    control->SetEditorOpen(FALSE);
    WINDOWPLACEMENT saved{};
    REQUIRE(control->SavedPlacement(saved));
    CHECK(saved.length == 44);

    REQUIRE(control->SetEditorOpen(TRUE));
    RECT r{};
    GetWindowRect(control->GetEditorWindow(), &r);
    CHECK(r.left == 210);
    CHECK(r.top == 140);
    CHECK(r.right == 730);
    CHECK(r.bottom == 420);

    // The user closing the frame saves the placement too, and the control lets go.
    MoveWindow(control->GetEditorWindow(), 230, 150, 500, 260, TRUE);
    DestroyWindow(control->GetEditorWindow());
    CHECK(control->GetEditorWindow() == nullptr);
    CHECK(control->Editor() == nullptr);
    REQUIRE(control->SetEditorOpen(TRUE));
    GetWindowRect(control->GetEditorWindow(), &r);
    CHECK(r.left == 230);
    CHECK(r.top == 150);
    control->SetEditorOpen(FALSE);
}

TEST_CASE_FIXTURE(EditorFixture, "the mouse-activation operation answers MA_ACTIVATE") {
    ParentWindow parent(500, 400);
    auto control = MakeControl(2, kEmbedded, parent.get());
    REQUIRE(control->SetEditorOpen(TRUE));
    CurveCtlWindow* editor = EditorOf(*control);
    CHECK_FALSE(editor->MouseActivated());
    CHECK(SendMessageA(editor->Handle(), WM_MOUSEACTIVATE, WPARAM(parent.get()), 0) == MA_ACTIVATE);
    CHECK(editor->MouseActivated());
    control->SetEditorOpen(FALSE);
}

TEST_CASE_FIXTURE(EditorFixture, "wheel input reaching the graph itself follows flag 32 too") {
    ParentWindow parent(500, 400);
    auto control = MakeControl(2, kEmbedded & ~DWORD(CC_SHOWSCROLLBARS), parent.get());
    REQUIRE(control->SetEditorOpen(TRUE));
    CurveCtlWindow* editor = EditorOf(*control);
    const float ys = editor->Scale().ys;
    SendMessageA(editor->Graph().Handle(), WM_MOUSEWHEEL, MAKEWPARAM(0, 120), 0);
    CHECK(editor->Scale().ys == ys);
    control->SetControlFlags(kEmbedded);
    SendMessageA(editor->Graph().Handle(), WM_MOUSEWHEEL, MAKEWPARAM(0, 120), 0);
    CHECK(editor->Scale().ys == doctest::Approx(ys * 1.2f));
    control->SetEditorOpen(FALSE);
}
