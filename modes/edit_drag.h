// The hold and repaint protocol that the move and scale modes share for one drag:
//
//   press    BeginDrag: SuperBegin; an inner step that prepares the selected points
//            (accepted under its own name, so undoing the drag removes any controllers the
//            preparation made); then the drag's own hold with a CurveAFlagHandler
//   each     RestorePressState: the hold rolls back to the press state, the curves' caches
//   move     are dropped; the mode re-applies the whole offset from the press; then
//            the window's RepaintDragStep
//   release  EndDrag(accept): Accept and SuperAccept under one name, dependents notified
//   abort    EndDrag(cancel): Cancel and SuperCancel
//
// Only the curves the editor displays are edited.
#pragma once

#include "control/curve_control.h"
#include "editor/curve_ctl_window.h"
#include "host/interval.h"

struct DragLimits;

namespace edit_drag {

/// The host's current time: the time at which the drag reads and sets the points.
TimeValue Now();

/// Calls `f(curve, index)` for every curve of the control that the editor displays.
template <class F> void ForEachDisplayed(CurveCtlWindow& w, F f) {
    CurveControl* control = w.Control();
    if (!control)
        return;
    const BitArray& shown = w.ShownCurves();
    for (int i = 0; i < control->GetCurveCount() && i < shown.GetSize(); ++i)
        if (shown[i])
            if (Curve* c = control->GetCurveObject(i))
                f(*c, i);
}

/// The limits of the whole selection moving together: over all displayed curves the
/// largest low and the smallest high of GetMoveRange (x) and GetMoveYRange (y). A
/// displayed curve without points has the x range [0, 0] and so holds every x still.
void SelectionLimits(CurveCtlWindow& w, TimeValue t, DragLimits& limits);

/// v clamped into [lo, hi] by two tests in this order, so an inverted range (neighbours
/// that already overlap) gives hi rather than undefined behaviour.
inline float ClampInto(float v, float lo, float hi) {
    if (v < lo)
        v = lo;
    if (v > hi)
        v = hi;
    return v;
}

/// Opens the drag's holds. With `prepare`, the selected points of the displayed curves
/// get their controllers in animate mode first, in an inner step accepted as string
/// `prepareName`.
void BeginDrag(CurveCtlWindow& w, bool prepare, int prepareName);

/// Rolls the drag's hold back to the press state and drops the caches of the displayed
/// curves (the roll-back keeps them, so without this the next read would see the last
/// step's positions). The restored curves' own repaint requests are held back: the step
/// repaints once, at its end.
void RestorePressState(CurveCtlWindow& w);

/// Ends the drag: `accept` keeps it as one undo step named by string `name` and notifies
/// the control's dependents; otherwise the drag is rolled back. Either way the graph, the
/// strip and the editor window are repainted (CurveCtlWindow::RepaintDragEnd).
void EndDrag(CurveCtlWindow& w, bool accept, int name);

/// Rolls back a drag whose editor is going away: the holds are cancelled and the caches
/// of the control's curves dropped; nothing of the window is touched.
void AbandonDrag(CurveControl& control);

} // namespace edit_drag
