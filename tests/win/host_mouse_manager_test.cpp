// The mouse manager: gestures from real mouse messages sent to a window that passes its
// mouse messages (and nothing else) to the manager, as the editor's graph does.

#include "host/mouse_manager.h"
#include "win/host_win_fixture.h"

#include <doctest/doctest.h>

#include <vector>

using namespace hostwin_test;

namespace {

struct Event {
    int msg, point, flags, x, y;
    bool operator==(const Event& o) const {
        return msg == o.msg && point == o.point && flags == o.flags && x == o.x && y == o.y;
    }
};

doctest::String toString(const Event& e) {
    char text[96];
    snprintf(text, sizeof text, "{msg %d, point %d, flags %#x, (%d, %d)}", e.msg, e.point, e.flags,
             e.x, e.y);
    return text;
}

// Records every call; answers `answer` (per message) to MOUSE_POINT and MOUSE_MOVE.
class Recorder : public MouseCallBack {
public:
    int proc(HWND hwnd, int msg, int point, int flags, IPoint2 m) override {
        events.push_back({msg, point, flags, m.x, m.y});
        window = hwnd;
        if (onEvent)
            onEvent(msg);
        if (msg == MOUSE_POINT)
            return acceptPoint;
        if (msg == MOUSE_MOVE)
            return acceptMove;
        return 1;
    }
    int override(int numPoints) override { return pointsOverride ? pointsOverride : numPoints; }
    void pan(IPoint2 offset) override { panned.push_back(offset); }

    std::vector<Event> events;
    std::vector<IPoint2> panned;
    HWND window = nullptr;
    int acceptPoint = 1, acceptMove = 1;
    int pointsOverride = 0;
    void (*onEvent)(int) = nullptr;
};

// A window whose procedure hands its mouse messages to a manager and everything else to
// DefWindowProc.
struct MouseWindow {
    ParentWindow parent;
    HWND view = nullptr;
    MouseManager manager;

    static LRESULT CALLBACK Proc(HWND hwnd, UINT msg, WPARAM wParam, LPARAM lParam) {
        auto* mm = reinterpret_cast<MouseManager*>(GetWindowLongPtrA(hwnd, GWLP_USERDATA));
        if (mm && ((msg >= WM_MOUSEFIRST && msg <= WM_MBUTTONDBLCLK)))
            return MouseManager::MouseWinProc(mm, hwnd, msg, wParam, lParam);
        return DefWindowProcA(hwnd, msg, wParam, lParam);
    }

    MouseWindow() {
        static bool registered = false;
        if (!registered) {
            WNDCLASSA wc = {};
            wc.style = CS_DBLCLKS;
            wc.lpfnWndProc = Proc;
            wc.hInstance = GetModuleHandleA(nullptr);
            wc.lpszClassName = "HostTestMouseView";
            RegisterClassA(&wc);
            registered = true;
        }
        view = CreateWindowExA(0, "HostTestMouseView", "", WS_CHILD | WS_VISIBLE, 0, 0, 300, 150,
                               parent.hwnd(), nullptr, GetModuleHandleA(nullptr), nullptr);
        SetWindowLongPtrA(view, GWLP_USERDATA, reinterpret_cast<LONG_PTR>(&manager));
    }
    ~MouseWindow() { SetWindowLongPtrA(view, GWLP_USERDATA, 0); }

    void Send(UINT msg, WPARAM keys, int x, int y) {
        SendMessageA(view, msg, keys, MAKELPARAM(x, y));
    }
};

// Posts a key to the focus window and lets the thread take it from its queue.
void PostKey(HWND to, WPARAM vk) {
    PostMessageA(to, WM_KEYDOWN, vk, 1);
    Pump(30);
}

void SetAltKey(bool down) {
    BYTE keys[256];
    GetKeyboardState(keys);
    keys[VK_MENU] = down ? 0x80 : 0;
    SetKeyboardState(keys);
}

} // namespace

TEST_CASE("press, drag and release give point 0, moves and point 1, with capture between") {
    MouseWindow w;
    Recorder left;
    w.manager.SetMouseProc(&left, LEFT_BUTTON, 2);
    CHECK(w.manager.GetMouseProc(LEFT_BUTTON) == &left);
    CHECK(w.manager.GetNumPoints(LEFT_BUTTON) == 2);

    w.Send(WM_LBUTTONDOWN, MK_LBUTTON, 10, 20);
    CHECK(w.manager.IsActive());
    CHECK(w.manager.ActiveButton() == LEFT_BUTTON);
    CHECK(GetCapture() == w.view);
    w.Send(WM_MOUSEMOVE, MK_LBUTTON, 15, 22);
    w.Send(WM_MOUSEMOVE, MK_LBUTTON | MK_CONTROL, -5, 30); // outside, still captured
    w.Send(WM_LBUTTONUP, 0, -4, 31);
    CHECK_FALSE(w.manager.IsActive());
    CHECK(GetCapture() == nullptr);

    const std::vector<Event> expected = {
        {MOUSE_POINT, 0, MOUSE_LBUTTON, 10, 20},
        {MOUSE_MOVE, 1, MOUSE_LBUTTON, 15, 22},
        {MOUSE_MOVE, 1, MOUSE_LBUTTON | MOUSE_CTRL, -5, 30},
        {MOUSE_POINT, 1, 0, -4, 31},
    };
    CHECK(left.events == expected);
    CHECK(left.window == w.view);
}

TEST_CASE("moves without a button are free moves for the left button's mode") {
    MouseWindow w;
    Recorder left, right;
    w.manager.SetMouseProc(&left, LEFT_BUTTON, 2);
    w.manager.SetMouseProc(&right, RIGHT_BUTTON, 1);
    w.Send(WM_MOUSEMOVE, MK_SHIFT, 40, 50);
    REQUIRE(left.events.size() == 1);
    CHECK(left.events[0] == Event{MOUSE_FREEMOVE, 0, MOUSE_SHIFT, 40, 50});
    CHECK(right.events.empty());
    CHECK_FALSE(w.manager.IsActive());
}

TEST_CASE("Escape from the message queue aborts a drag and releases the capture") {
    MouseWindow w;
    Recorder left;
    w.manager.SetMouseProc(&left, LEFT_BUTTON, 2);
    w.Send(WM_LBUTTONDOWN, MK_LBUTTON, 10, 10);
    w.Send(WM_MOUSEMOVE, MK_LBUTTON, 30, 12);
    // The key goes to another window (the focus), not to the graph.
    PostKey(w.parent.hwnd(), VK_ESCAPE);
    CHECK_FALSE(w.manager.IsActive());
    CHECK(GetCapture() == nullptr);
    REQUIRE(left.events.size() == 3);
    CHECK(left.events[2].msg == MOUSE_ABORT);
    CHECK(left.events[2].point == 1);
    CHECK(left.events[2].x == 30);
    // The release that follows belongs to nobody.
    w.Send(WM_LBUTTONUP, 0, 31, 12);
    CHECK(left.events.size() == 3);
}

TEST_CASE("other keys during a drag reach the mode as MOUSE_KEYBOARD") {
    MouseWindow w;
    Recorder left;
    w.manager.SetMouseProc(&left, LEFT_BUTTON, 2);
    w.Send(WM_LBUTTONDOWN, MK_LBUTTON, 10, 10);
    PostKey(w.parent.hwnd(), 'A');
    REQUIRE(left.events.size() == 2);
    CHECK(left.events[1].msg == MOUSE_KEYBOARD);
    CHECK(left.events[1].point == 'A');
    CHECK(w.manager.IsActive());
    w.Send(WM_LBUTTONUP, 0, 10, 10);
    // Idle: keys are nobody's business.
    PostKey(w.parent.hwnd(), 'B');
    CHECK(left.events.size() == 3);
}

TEST_CASE("losing the capture to another window aborts the drag") {
    MouseWindow w;
    Recorder left;
    w.manager.SetMouseProc(&left, LEFT_BUTTON, 2);
    w.Send(WM_LBUTTONDOWN, MK_LBUTTON, 10, 10);
    SetCapture(w.parent.hwnd());
    CHECK_FALSE(w.manager.IsActive());
    REQUIRE(left.events.size() == 2);
    CHECK(left.events[1].msg == MOUSE_ABORT);
    CHECK(left.events[1].point == 1);
    ReleaseCapture();
    CHECK(left.events.size() == 2);
}

TEST_CASE("the other button during a drag aborts it and its own click is swallowed") {
    MouseWindow w;
    Recorder left, right;
    w.manager.SetMouseProc(&left, LEFT_BUTTON, 2);
    w.manager.SetMouseProc(&right, RIGHT_BUTTON, 1);
    w.Send(WM_LBUTTONDOWN, MK_LBUTTON, 10, 10);
    w.Send(WM_RBUTTONDOWN, MK_LBUTTON | MK_RBUTTON, 12, 10);
    CHECK_FALSE(w.manager.IsActive());
    CHECK(GetCapture() == nullptr);
    REQUIRE(left.events.size() == 2);
    CHECK(left.events[1].msg == MOUSE_ABORT);
    w.Send(WM_RBUTTONUP, MK_LBUTTON, 12, 10);
    w.Send(WM_LBUTTONUP, 0, 12, 10);
    CHECK(right.events.empty()); // no context menu for the aborting click
    CHECK(left.events.size() == 2);

    // The next right click is an ordinary one again.
    w.Send(WM_RBUTTONDOWN, MK_RBUTTON, 50, 60);
    CHECK(right.events.empty());
    w.Send(WM_RBUTTONUP, 0, 51, 61);
    REQUIRE(right.events.size() == 1);
    CHECK(right.events[0] == Event{MOUSE_PROPCLICK, 0, 0, 51, 61});
    CHECK(left.events.size() == 2);
}

TEST_CASE("a middle-button mode with two points drags like the left one") {
    MouseWindow w;
    Recorder left, middle;
    w.manager.SetMouseProc(&left, LEFT_BUTTON, 2);
    w.manager.SetMouseProc(&middle, MIDDLE_BUTTON, 2);
    w.Send(WM_MBUTTONDOWN, MK_MBUTTON, 5, 5);
    CHECK(w.manager.ActiveButton() == MIDDLE_BUTTON);
    w.Send(WM_MOUSEMOVE, MK_MBUTTON, 25, 5);
    w.Send(WM_MBUTTONUP, 0, 25, 6);
    const std::vector<Event> expected = {
        {MOUSE_POINT, 0, MOUSE_MBUTTON, 5, 5},
        {MOUSE_MOVE, 1, MOUSE_MBUTTON, 25, 5},
        {MOUSE_POINT, 1, 0, 25, 6},
    };
    CHECK(middle.events == expected);
    CHECK(left.events.empty()); // no free moves during another button's drag
}

TEST_CASE("a mode that refuses the press gets nothing more of that gesture") {
    MouseWindow w;
    Recorder left;
    left.acceptPoint = 0;
    w.manager.SetMouseProc(&left, LEFT_BUTTON, 2);
    w.Send(WM_LBUTTONDOWN, MK_LBUTTON, 10, 10);
    CHECK_FALSE(w.manager.IsActive());
    CHECK(GetCapture() == nullptr);
    w.Send(WM_MOUSEMOVE, MK_LBUTTON, 20, 10);
    w.Send(WM_LBUTTONUP, 0, 20, 10);
    REQUIRE(left.events.size() == 2);
    CHECK(left.events[0].msg == MOUSE_POINT);
    CHECK(left.events[1].msg == MOUSE_FREEMOVE); // idle again: hover
}

TEST_CASE("a mode that answers 0 to a move ends the gesture without an abort") {
    MouseWindow w;
    Recorder left;
    left.acceptMove = 0;
    w.manager.SetMouseProc(&left, LEFT_BUTTON, 2);
    w.Send(WM_LBUTTONDOWN, MK_LBUTTON, 10, 10);
    w.Send(WM_MOUSEMOVE, MK_LBUTTON, 20, 10);
    CHECK_FALSE(w.manager.IsActive());
    CHECK(GetCapture() == nullptr);
    w.Send(WM_LBUTTONUP, 0, 20, 10);
    REQUIRE(left.events.size() == 2);
    CHECK(left.events[1].msg == MOUSE_MOVE);
}

TEST_CASE("one point: a press is the whole gesture, without capture") {
    MouseWindow w;
    Recorder left;
    w.manager.SetMouseProc(&left, LEFT_BUTTON, 1);
    w.Send(WM_LBUTTONDOWN, MK_LBUTTON, 10, 10);
    CHECK_FALSE(w.manager.IsActive());
    CHECK(GetCapture() == nullptr);
    w.Send(WM_LBUTTONUP, 0, 10, 10);
    REQUIRE(left.events.size() == 1);
    CHECK(left.events[0] == Event{MOUSE_POINT, 0, MOUSE_LBUTTON, 10, 10});

    // The mode may ask for one point when two are installed.
    Recorder single;
    single.pointsOverride = 1;
    w.manager.SetMouseProc(&single, LEFT_BUTTON, 2);
    w.Send(WM_LBUTTONDOWN, MK_LBUTTON, 3, 4);
    CHECK_FALSE(w.manager.IsActive());
    CHECK(single.events.size() == 1);
    w.manager.SetMouseProc(&left, LEFT_BUTTON, 0); // below 1 counts as 1
    CHECK(w.manager.GetNumPoints(LEFT_BUTTON) == 1);
}

TEST_CASE("three points: the first release places point 1, the next press point 2") {
    MouseWindow w;
    Recorder left;
    w.manager.SetMouseProc(&left, LEFT_BUTTON, 3);
    w.Send(WM_LBUTTONDOWN, MK_LBUTTON, 0, 0);
    w.Send(WM_LBUTTONUP, 0, 10, 0);
    CHECK(w.manager.IsActive());
    CHECK(GetCapture() == w.view);
    w.Send(WM_MOUSEMOVE, 0, 15, 5);
    w.Send(WM_LBUTTONDOWN, MK_LBUTTON, 20, 10);
    CHECK_FALSE(w.manager.IsActive());
    CHECK(GetCapture() == nullptr);
    w.Send(WM_LBUTTONUP, 0, 20, 10);
    const std::vector<Event> expected = {
        {MOUSE_POINT, 0, MOUSE_LBUTTON, 0, 0},
        {MOUSE_POINT, 1, 0, 10, 0},
        {MOUSE_MOVE, 2, 0, 15, 5},
        {MOUSE_POINT, 2, MOUSE_LBUTTON, 20, 10},
    };
    CHECK(left.events == expected);
}

TEST_CASE("a double click gives MOUSE_DBLCLICK and then counts as a press") {
    MouseWindow w;
    Recorder left;
    w.manager.SetMouseProc(&left, LEFT_BUTTON, 2);
    w.Send(WM_LBUTTONDBLCLK, MK_LBUTTON, 7, 8);
    w.Send(WM_LBUTTONUP, 0, 7, 8);
    const std::vector<Event> expected = {
        {MOUSE_DBLCLICK, 0, MOUSE_LBUTTON, 7, 8},
        {MOUSE_POINT, 0, MOUSE_LBUTTON, 7, 8},
        {MOUSE_POINT, 1, 0, 7, 8},
    };
    CHECK(left.events == expected);
}

TEST_CASE("modifier flags: Ctrl and Shift from the message, Alt from the keyboard state") {
    MouseWindow w;
    Recorder left;
    w.manager.SetMouseProc(&left, LEFT_BUTTON, 2);
    SetAltKey(true);
    w.Send(WM_LBUTTONDOWN, MK_LBUTTON | MK_CONTROL | MK_SHIFT, 1, 1);
    SetAltKey(false);
    w.Send(WM_LBUTTONUP, 0, 1, 1);
    REQUIRE(left.events.size() == 2);
    CHECK(left.events[0].flags == (MOUSE_LBUTTON | MOUSE_CTRL | MOUSE_SHIFT | MOUSE_ALT));
    CHECK(left.events[1].flags == 0);
}

TEST_CASE("installing another mode during a drag aborts the old one") {
    MouseWindow w;
    Recorder first, second;
    w.manager.SetMouseProc(&first, LEFT_BUTTON, 2);
    w.Send(WM_LBUTTONDOWN, MK_LBUTTON, 1, 1);
    w.manager.SetMouseProc(&second, LEFT_BUTTON, 2);
    CHECK_FALSE(w.manager.IsActive());
    CHECK(GetCapture() == nullptr);
    REQUIRE(first.events.size() == 2);
    CHECK(first.events[1].msg == MOUSE_ABORT);
    w.Send(WM_LBUTTONUP, 0, 1, 1);
    CHECK(second.events.empty());

    // Removing a mode: the button does nothing.
    w.manager.SetMouseProc(nullptr, LEFT_BUTTON, 2);
    w.Send(WM_LBUTTONDOWN, MK_LBUTTON, 1, 1);
    CHECK_FALSE(w.manager.IsActive());
    w.manager.SetMouseProc(&first, 7, 2); // no such button: ignored
    CHECK(w.manager.GetMouseProc(7) == nullptr);
}

TEST_CASE("Abort and Pan act on the gesture in progress") {
    MouseWindow w;
    Recorder left;
    w.manager.SetMouseProc(&left, LEFT_BUTTON, 2);
    w.manager.Abort(); // idle: nothing
    w.manager.Pan(IPoint2(3, 3));
    CHECK(left.events.empty());
    CHECK(left.panned.empty());

    w.Send(WM_LBUTTONDOWN, MK_LBUTTON, 1, 1);
    w.manager.Pan(IPoint2(-4, 2));
    REQUIRE(left.panned.size() == 1);
    CHECK(left.panned[0] == IPoint2(-4, 2));
    w.manager.Abort();
    CHECK_FALSE(w.manager.IsActive());
    CHECK(left.events.back().msg == MOUSE_ABORT);
}

TEST_CASE("destroying the manager during a drag releases the capture without calling modes") {
    ParentWindow parent;
    Recorder left;
    HWND view = CreateWindowExA(0, "STATIC", "", WS_CHILD | WS_VISIBLE, 0, 0, 50, 50, parent.hwnd(),
                                nullptr, GetModuleHandleA(nullptr), nullptr);
    {
        MouseManager manager;
        manager.SetMouseProc(&left, LEFT_BUTTON, 2);
        manager.MouseWinProc(view, WM_LBUTTONDOWN, MK_LBUTTON, MAKELPARAM(2, 2));
        CHECK(GetCapture() == view);
    }
    CHECK(GetCapture() == nullptr);
    CHECK(left.events.size() == 1);
    PostKey(parent.hwnd(), VK_ESCAPE); // the hooks went with the manager
    CHECK(left.events.size() == 1);
}

TEST_CASE("a mode may end its own gesture from inside a call") {
    static MouseManager* manager = nullptr;
    MouseWindow w;
    manager = &w.manager;
    Recorder left;
    left.onEvent = [](int msg) {
        if (msg == MOUSE_MOVE)
            manager->Abort();
    };
    w.manager.SetMouseProc(&left, LEFT_BUTTON, 2);
    w.Send(WM_LBUTTONDOWN, MK_LBUTTON, 1, 1);
    w.Send(WM_MOUSEMOVE, MK_LBUTTON, 9, 1);
    CHECK_FALSE(w.manager.IsActive());
    CHECK(GetCapture() == nullptr);
    REQUIRE(left.events.size() == 3);
    CHECK(left.events[2].msg == MOUSE_ABORT);
    w.Send(WM_LBUTTONUP, 0, 9, 1);
    CHECK(left.events.size() == 3);
}
