#include "tests/win/mouse_test_support.h"

#include "host/hold.h"

#include <algorithm>

namespace mousetest {

namespace {

LPARAM at(IPoint2 p) { return MAKELPARAM(WORD(short(p.x)), WORD(short(p.y))); }

WPARAM keyBits(int keys) {
    WPARAM w = 0;
    if (keys & kCtrl)
        w |= MK_CONTROL;
    if (keys & kShift)
        w |= MK_SHIFT;
    return w;
}

void send(HWND hwnd, UINT msg, WPARAM buttons, IPoint2 p, int keys) {
    HoldKeys(keys);
    SendMessageA(hwnd, msg, buttons | keyBits(keys), at(p));
    edtest::Pump();
    HoldKeys(kNoKeys);
}

} // namespace

void HoldKeys(int keys) {
    BYTE state[256] = {};
    GetKeyboardState(state);
    auto set = [&](int vk, bool down) { state[vk] = down ? 0x80 : 0; };
    set(VK_CONTROL, keys & kCtrl);
    set(VK_LCONTROL, keys & kCtrl);
    set(VK_SHIFT, keys & kShift);
    set(VK_LSHIFT, keys & kShift);
    set(VK_MENU, keys & kAlt);
    set(VK_LMENU, keys & kAlt);
    SetKeyboardState(state);
}

void Press(HWND hwnd, IPoint2 p, int keys) { send(hwnd, WM_LBUTTONDOWN, MK_LBUTTON, p, keys); }

void MoveTo(HWND hwnd, IPoint2 p, int keys) { send(hwnd, WM_MOUSEMOVE, MK_LBUTTON, p, keys); }

void Release(HWND hwnd, IPoint2 p, int keys) { send(hwnd, WM_LBUTTONUP, 0, p, keys); }

void Hover(HWND hwnd, IPoint2 p, int keys) { send(hwnd, WM_MOUSEMOVE, 0, p, keys); }

void Drag(HWND hwnd, IPoint2 from, IPoint2 to, int steps, int keys) {
    steps = std::max(1, steps);
    Press(hwnd, from, keys);
    for (int k = 1; k <= steps; ++k)
        MoveTo(hwnd,
               IPoint2(from.x + (to.x - from.x) * k / steps, from.y + (to.y - from.y) * k / steps),
               keys);
    Release(hwnd, to, keys);
}

void Click(HWND hwnd, IPoint2 p, int keys) {
    Press(hwnd, p, keys);
    Release(hwnd, p, keys);
}

void RightClick(HWND hwnd, IPoint2 p, int keys) {
    send(hwnd, WM_RBUTTONDOWN, MK_RBUTTON, p, keys);
    send(hwnd, WM_RBUTTONUP, 0, p, keys);
}

void Escape(HWND hwnd) {
    // Posted, so it comes through the thread's queue, where the manager's hook sees it.
    PostMessageA(hwnd, WM_KEYDOWN, VK_ESCAPE, 0);
    edtest::Pump();
}

IPoint2 PixelOf(graphtest::OpenEditor& ed, Point2 p) {
    const view::ViewMapping m = ed.View();
    return IPoint2(m.Column(p.x), m.Row(p.y));
}

IPoint2 PointPixel(graphtest::OpenEditor& ed, int c, int i) {
    return PixelOf(ed, ed.curve(c).CachedPosition(0, i));
}

IPoint2 InHandlePixel(graphtest::OpenEditor& ed, int c, int i) {
    return PixelOf(ed, ed.curve(c).CachedInHandle(0, i));
}

IPoint2 OutHandlePixel(graphtest::OpenEditor& ed, int c, int i) {
    return PixelOf(ed, ed.curve(c).CachedOutHandle(0, i));
}

std::vector<std::string> UndoNames() {
    std::vector<std::string> names;
    for (int i = 0; i < theHold.NumUndo(); ++i)
        names.emplace_back(theHold.UndoName(i).data());
    return names;
}

std::vector<Point2> Positions(Curve& c) {
    std::vector<Point2> out;
    for (int i = 0; i < c.PointCount(); ++i)
        out.push_back(c.CachedPosition(0, i));
    return out;
}

std::vector<int> Selected(Curve& c) {
    std::vector<int> out;
    for (int i = 0; i < c.PointCount(); ++i)
        if (c.Knots()[i].flags & KNOT_SELECTED)
            out.push_back(i);
    return out;
}

// ---------------------------------------------------------------------------------------
// ClientLog

namespace {
ClientLog* current = nullptr; // the one live log
const char* kLogClass = "MouseTestClientLog";
} // namespace

LRESULT CALLBACK ClientLog::proc(HWND hwnd, UINT msg, WPARAM w, LPARAM l) {
    if (current && msg >= 0x2F70 && msg <= 0x2F77)
        current->messages_.push_back({msg, w, l});
    return DefWindowProcA(hwnd, msg, w, l);
}

ClientLog::ClientLog() {
    static bool registered = false;
    if (!registered) {
        registered = true;
        WNDCLASSA wc{};
        wc.lpfnWndProc = proc;
        wc.hInstance = GetModuleHandleA(nullptr);
        wc.lpszClassName = kLogClass;
        RegisterClassA(&wc);
    }
    hwnd_ = CreateWindowExA(0, kLogClass, "", WS_POPUP, 0, 0, 1, 1, nullptr, nullptr,
                            GetModuleHandleA(nullptr), nullptr);
    current = this;
}

ClientLog::~ClientLog() {
    if (current == this)
        current = nullptr;
    DestroyWindow(hwnd_);
}

int ClientLog::Count(UINT msg) const {
    return int(std::count_if(messages_.begin(), messages_.end(),
                             [&](const Message& m) { return m.msg == msg; }));
}

} // namespace mousetest
