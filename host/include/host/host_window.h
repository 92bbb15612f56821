// The host application's main window, for the demo host and for tests that need a host
// around a plug-in: a top-level window (class "HostMainWindow") holding the viewport panel
// (class "ViewPanel", the left part) and the command panel (class "CommandPanel", a
// fixed-width column on the right, where plug-ins embed their panels).
//
// The main window is the host's main window for GetCOREInterface()->GetMAXHWnd() while it
// exists. The Delete key processes deleteRouter (host/event_router.h): pressed in the
// main window or its panels, or anywhere in the thread's windows when the message loop
// passes its messages through HostPreTranslateMessage, except inside edit controls,
// where Delete edits text.
//
// Windows only.
#pragma once

#include "host/export.h"
#include "host/win_types.h"

#define HOST_MAIN_WINDOW_CLASS "HostMainWindow"
#define HOST_VIEW_PANEL_CLASS "ViewPanel"
#define HOST_COMMAND_PANEL_CLASS "CommandPanel"

/// Width of the command panel in pixels.
#define HOST_COMMAND_PANEL_WIDTH 240

/// Creates the main window (`width` x `height` outer size at x, y; shown when `show`)
/// with its two panels, and makes it the core interface's main window. Null when the
/// window could not be created.
HOST_API HWND CreateHostMainWindow(const char* title, int x, int y, int width, int height,
                                   BOOL show);
/// Destroys the main window; the core interface's main window becomes null when it was
/// this one. Null is ignored.
HOST_API void DestroyHostMainWindow(HWND mainWindow);

/// The panels of a main window made by CreateHostMainWindow (null for any other window).
HOST_API HWND GetHostViewPanel(HWND mainWindow);
HOST_API HWND GetHostCommandPanel(HWND mainWindow);

/// For the host's message loop, before TranslateMessage/DispatchMessage: handles the
/// Delete key (WM_KEYDOWN VK_DELETE to any window of the thread that is not an edit
/// control) by processing deleteRouter. TRUE when the message was used and must not be
/// dispatched.
HOST_API BOOL HostPreTranslateMessage(MSG* msg);

/// Runs the host's message loop (with HostPreTranslateMessage) until WM_QUIT; answers its
/// exit code. Closing the main window posts WM_QUIT.
HOST_API int RunHostMessageLoop();
