// Real input for a scripted session: the mouse is moved and its buttons pressed through
// SendInput, so every message arrives as it would from a hand on the mouse (hit testing,
// capture, activation and all), and the thread's messages are run until it is quiet.
#pragma once

#include "host/win_types.h"

namespace session {

/// Runs the thread's messages (paints included) for `ms` milliseconds, and at least until
/// the queue is empty once.
void Pump(int ms = 40);

/// The cursor moves to `client` (client coordinates of `hwnd`), buttons as they are.
void MoveTo(HWND hwnd, POINT client);
/// Left button press and release where the cursor is.
void Press();
void Release();

/// Moves to `at`, presses and releases the left button.
void Click(HWND hwnd, POINT at);
/// Moves to `from`, presses, moves in `steps` even steps to `to`, releases there.
void Drag(HWND hwnd, POINT from, POINT to, int steps);

/// Where the cursor is, in the client coordinates of `hwnd`.
POINT CursorIn(HWND hwnd);

} // namespace session
