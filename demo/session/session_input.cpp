// Mouse input through SendInput, and the message pump that lets it arrive.
#include "session_input.h"

#include <algorithm>

namespace session {
namespace {

void Send(DWORD flags, LONG dx = 0, LONG dy = 0) {
    INPUT in = {};
    in.type = INPUT_MOUSE;
    in.mi.dx = dx;
    in.mi.dy = dy;
    in.mi.dwFlags = flags;
    SendInput(1, &in, sizeof in);
}

/// Normalised absolute coordinate (0 .. 65535 across the screen) that lands on `pixel`.
LONG Normalised(int pixel, int extent) {
    return LONG((pixel * 65536 + extent / 2) / std::max(1, extent));
}

void MoveScreen(POINT screen) {
    const int w = GetSystemMetrics(SM_CXSCREEN), h = GetSystemMetrics(SM_CYSCREEN);
    Send(MOUSEEVENTF_MOVE | MOUSEEVENTF_ABSOLUTE, Normalised(screen.x, w), Normalised(screen.y, h));
    Pump(15);
    // Rounding of the normalised position may leave the cursor a pixel off; put it
    // exactly where it was meant to go (the move message has arrived already).
    POINT now;
    GetCursorPos(&now);
    if (now.x != screen.x || now.y != screen.y) {
        SetCursorPos(screen.x, screen.y);
        Pump(15);
    }
}

} // namespace

void Pump(int ms) {
    // A fixed time rather than "until quiet": tooltips and other timers of the windows
    // under the cursor never let the queue fall quiet for long.
    const DWORD start = GetTickCount();
    for (;;) {
        MSG msg;
        while (PeekMessageA(&msg, nullptr, 0, 0, PM_REMOVE)) {
            if (msg.message == WM_QUIT) {
                PostQuitMessage(int(msg.wParam)); // leave it for whoever runs the loop
                return;
            }
            TranslateMessage(&msg);
            DispatchMessageA(&msg);
        }
        const DWORD elapsed = GetTickCount() - start;
        if (elapsed >= DWORD(ms))
            return;
        MsgWaitForMultipleObjects(0, nullptr, FALSE, DWORD(ms) - elapsed, QS_ALLINPUT);
    }
}

void MoveTo(HWND hwnd, POINT client) {
    POINT screen = client;
    ClientToScreen(hwnd, &screen);
    MoveScreen(screen);
}

void Press() {
    Send(MOUSEEVENTF_LEFTDOWN);
    Pump();
}

void Release() {
    Send(MOUSEEVENTF_LEFTUP);
    Pump();
}

void Click(HWND hwnd, POINT at) {
    MoveTo(hwnd, at);
    Press();
    Release();
}

void Drag(HWND hwnd, POINT from, POINT to, int steps) {
    steps = std::max(1, steps);
    MoveTo(hwnd, from);
    Press();
    for (int i = 1; i <= steps; ++i) {
        const POINT p = {from.x + (to.x - from.x) * i / steps,
                         from.y + (to.y - from.y) * i / steps};
        MoveTo(hwnd, p);
    }
    Release();
}

POINT CursorIn(HWND hwnd) {
    POINT p;
    GetCursorPos(&p);
    ScreenToClient(hwnd, &p);
    return p;
}

} // namespace session
