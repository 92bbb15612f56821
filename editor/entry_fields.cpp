// The X and Y entry fields of the view toolbar: typing a value moves the selected points
// of the displayed curves; the fields show where the selection is at the current time.
#include "control/curve_control.h"
#include "editor/curve_ctl_window.h"
#include "host/core_interface.h"
#include "host/hold.h"
#include "platform/res_string.h"

#include <cstdio>
#include <cstdlib>
#include <cstring>

namespace {

constexpr int kMaxEntry = 64; // characters read from a field

/// "%.3f" without trailing zeros (and without a trailing point).
void formatValue(float v, char (&buf)[32]) {
    std::snprintf(buf, sizeof buf, "%.3f", double(v));
    if (!std::strchr(buf, '.'))
        return;
    size_t n = std::strlen(buf);
    while (n > 0 && buf[n - 1] == '0')
        buf[--n] = '\0';
    if (n > 0 && buf[n - 1] == '.')
        buf[--n] = '\0';
}

/// Whether x may be given to `curve`'s selected points: inside the x range, or beyond an
/// end whose point is free to leave it (KNOT_FREE_END_X).
bool xAllowed(Curve& curve, float x, const Point2& range) {
    if (x >= range.x && x <= range.y)
        return true;
    const int n = curve.PointCount();
    const CurveKnot* k = curve.Knots();
    if (n <= 0 || !k)
        return false;
    if (x < range.x)
        return (k[0].flags & KNOT_FREE_END_X) != 0;
    return (k[n - 1].flags & KNOT_FREE_END_X) != 0;
}

} // namespace

LRESULT CurveCtlWindow::EditEnter(int id, LPARAM) {
    const bool isX = id == editor_id::kXEntry;
    ICustEdit* field = isX ? toolbars_.xEntry.get() : toolbars_.yEntry.get();
    if (!field || (!isX && id != editor_id::kYEntry))
        return 0;

    const TimeValue t = GetCOREInterface()->GetTime();
    theHold.Begin();
    char text[kMaxEntry + 1] = {};
    field->GetText(text, int(sizeof text));
    bool changed = false;
    if (text[0] != '\0') {
        const float value = float(std::strtod(text, nullptr));
        const Point2 range = control_->GetXRange();
        for (int i = 0; i < control_->GetCurveCount(); ++i) {
            Curve* curve = control_->GetCurveObject(i);
            if (!curve || !shown_[i])
                continue;
            if (isX) {
                if (xAllowed(*curve, value, range) && curve->SetSelectedX(t, value))
                    changed = true;
            } else if (curve->SetSelectedY(t, value)) {
                changed = true;
            }
        }
    }
    if (changed) {
        theHold.Accept(GetResString(IDS_MOVE_POINTS));
        InvalidateGraph();
        UpdateWindow(graph_.Handle());
    } else {
        theHold.End();
    }
    UpdateEntryFields(t);
    return 0;
}

void CurveCtlWindow::UpdateEntryFields(TimeValue time) {
    if (entryValid_.InInterval(time))
        return;
    entryValid_ = FOREVER;

    int result = 0;
    Point2 pos;
    for (int i = 0; control_ && i < control_->GetCurveCount(); ++i) {
        Curve* curve = control_->GetCurveObject(i);
        if (!curve || !shown_[i])
            continue;
        Point2 p;
        const int r = curve->GetSelectedPosition(time, p, entryValid_);
        if (!(r & SELPOS_HAS_POINTS))
            continue;
        if (!(result & SELPOS_HAS_POINTS)) {
            result = r;
            pos = p;
            continue;
        }
        // Across curves a coordinate is shown only while every selection agrees on it.
        if (!(r & SELPOS_X_UNIFORM) || p.x != pos.x)
            result &= ~SELPOS_X_UNIFORM;
        if (!(r & SELPOS_Y_UNIFORM) || p.y != pos.y)
            result &= ~SELPOS_Y_UNIFORM;
    }

    char buf[32];
    auto show = [&](ICustEdit* field, bool uniform, float v) {
        if (!field)
            return;
        if (uniform) {
            formatValue(v, buf);
            field->SetText(buf);
            field->Enable(TRUE);
        } else {
            field->SetText("");
            field->Enable(FALSE);
        }
    };
    show(toolbars_.xEntry.get(), (result & SELPOS_X_UNIFORM) != 0, pos.x);
    show(toolbars_.yEntry.get(), (result & SELPOS_Y_UNIFORM) != 0, pos.y);
    ShowPrompt();
}

LRESULT CurveCtlWindow::NextDlgCtl(WPARAM) {
    ICustEdit* x = toolbars_.xEntry.get();
    if (!x || !x->HasFocus())
        return 0;
    if (ICustEdit* y = toolbars_.yEntry.get())
        y->GiveFocus();
    else
        x->GiveFocus();
    return 0;
}
