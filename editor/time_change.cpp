#include "editor/time_change.h"

#include "editor/curve_ctl_window.h"

void DefTimeChangeCallback::TimeChanged(TimeValue t) {
    if (!window)
        return;
    PaintState& cache = window->Cache();
    cache.graphValid = 0;
    InvalidateRect(window->Graph().Handle(), nullptr, FALSE);
    cache.lastCursor = POINT{INT_MIN, INT_MIN};
    window->UpdateEntryFields(t);
    InvalidateRect(window->Graph().Handle(), nullptr, FALSE);
}
