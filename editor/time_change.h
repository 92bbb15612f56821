// DefTimeChangeCallback: keeps an open editor in step with the host's current time.
#pragma once

#include "host/core_interface.h"

class CurveCtlWindow;

class DefTimeChangeCallback : public TimeChangeCallback {
public:
    /// Repaints the graph for time `t` and refreshes the entry fields.
    void TimeChanged(TimeValue t) override;

    CurveCtlWindow* window = nullptr; // the editor told about changes; not owned
};
