// The module's one seam to the platform, below the window layer: the module instance,
// string resources, messages to client windows and the one question the module asks the
// user. platform_win32.cpp implements it with Win32; platform_native.cpp implements it
// for the native build, where tests observe the messages through a sink.
#pragma once

#include "host/win_types.h"

namespace platform {

/// The module instance, set by the entry point on process attach (null until then).
HINSTANCE ModuleInstance();
void SetModuleInstance(HINSTANCE instance);

/// Loads string-table entry `id` into `buffer` (`size` chars); returns its length, 0 when
/// there is no such string.
int LoadResourceString(int id, char* buffer, int size);

/// Sends `msg` synchronously to `window` and returns the handler's result.
LRESULT SendToWindow(HWND window, UINT msg, WPARAM wParam, LPARAM lParam);

/// Asks a Yes/No question in a message box owned by `owner`; true for Yes.
bool AskYesNo(HWND owner, const char* caption, const char* text);

#if !defined(_WIN32)
/// Native build only: where SendToWindow delivers (tests install a recorder).
using MessageSink = LRESULT (*)(HWND, UINT, WPARAM, LPARAM);
void SetMessageSink(MessageSink sink);
/// Native build only: how AskYesNo answers (default: No).
using QuestionSink = bool (*)(HWND, const char*, const char*);
void SetQuestionSink(QuestionSink sink);
#endif

} // namespace platform
