// The host's core interface: current time, the main window, view redraws and command
// modes.
#pragma once

#include "host/export.h"
#include "host/interval.h"
#include "host/win_types.h"

/// Told about every change of the current time.
class TimeChangeCallback {
public:
    virtual ~TimeChangeCallback() = default;
    virtual void TimeChanged(TimeValue t) = 0;
};

class HOST_API Interface {
public:
    virtual ~Interface() = default;
    virtual TimeValue GetTime() = 0;
    /// Sets the current time and tells every time-change callback.
    virtual void SetTime(TimeValue t, BOOL redraw = TRUE) = 0;
    virtual void RegisterTimeChangeCallback(TimeChangeCallback* tc) = 0;
    virtual void UnRegisterTimeChangeCallback(TimeChangeCallback* tc) = 0;
    /// The host's main window (null until the host application sets one).
    virtual HWND GetMAXHWnd() = 0;
    virtual void SetMAXHWnd(HWND hwnd) = 0;
    /// Asks the host to redraw its views at time t.
    virtual void RedrawViews(TimeValue t) = 0;
    /// Leaves the current command mode and returns to the default one.
    virtual void PopCommandMode() = 0;

    /// How many redraw and command-mode requests were made (for the host's status bar).
    virtual int RedrawRequests() = 0;
    virtual int CommandModePops() = 0;
};

HOST_API Interface* GetCOREInterface();
