// Screenshots: what the screen shows, read back from the display.
#pragma once

#include "host/win_types.h"
#include "png/png_file.h"

namespace session {

/// The pixels of `screen` (screen coordinates) as the display shows them.
RgbImage CaptureScreen(const RECT& screen);
/// The pixels of a window (with its frame), or of a client rectangle of it.
RgbImage CaptureWindow(HWND hwnd);
RgbImage CaptureClient(HWND hwnd, const RECT& client);
/// The smallest rectangle around both windows (screen coordinates).
RECT Around(HWND a, HWND b);

} // namespace session
