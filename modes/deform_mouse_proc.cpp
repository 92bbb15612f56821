// DeformMouseProc: the clicking and selecting every editing mode shares. A click picks a
// point, Ctrl-click adds or removes one, a drag on empty space draws a region box, a drag
// on a point or handle goes to the editing mode (subMode: move, scale). Each selection
// change is one undo step "Select", begun and accepted within one message; the editing
// mode keeps its own hold across its drag.
//
// [SECTION] Index
//   Hits and selection steps ... the hit requests, the "Select" step, hits as point sets
//   proc ....................... the dispatcher
//   Press ...................... what the press hit decides
//   Move ....................... the 2-pixel threshold, region box or sub-mode
//   Release, abort ............. the click's selection, the region's selection
//   Free move .................. the point cursor
#include "control/curve_control.h"
#include "editor/curve_ctl_window.h"
#include "editor/editor_resources.h"
#include "host/colorman.h"
#include "host/hold.h"
#include "modes/mouse_modes.h"
#include "platform/res_string.h"

// ---------------------------------------------------------------------------------------
// [SECTION] Hits and selection steps

namespace {

/// Hit requests of the selection (CURVE_HIT_... words).
constexpr int kPressRequest =
    CURVE_HIT_CLICK | CURVE_HIT_POINTS | CURVE_HIT_HANDLES | CURVE_HIT_SKIP_UNSELECTED; // 0x419
constexpr int kUnselectedRequest =
    CURVE_HIT_CLICK | CURVE_HIT_POINTS | CURVE_HIT_SKIP_SELECTED; // 0x412
constexpr int kHoverRequest =
    CURVE_HIT_CLICK | CURVE_HIT_POINTS | CURVE_HIT_HANDLES | CURVE_HIT_STOP_FIRST; // 0x41C
constexpr int kRegionSelectedRequest =
    CURVE_HIT_REGION | CURVE_HIT_POINTS | CURVE_HIT_SKIP_UNSELECTED; // 0x811
constexpr int kRegionUnselectedRequest =
    CURVE_HIT_REGION | CURVE_HIT_POINTS | CURVE_HIT_SKIP_SELECTED;     // 0x812
constexpr int kRegionAllRequest = CURVE_HIT_REGION | CURVE_HIT_POINTS; // 0x810

/// Selection modes of Curve::SetSelectionEx.
constexpr int kAdd = CURVE_SELECT_ADD;
constexpr int kRemove = CURVE_SELECT_REMOVE;
constexpr int kReplace = CURVE_SELECT_REPLACE;

/// More than 2 pixels from the press (squared distance above 4) makes a drag.
constexpr int kDragThreshold2 = 4;

/// One undo step "Select" around `change`, then a repaint of the graph. A change that
/// changes nothing puts no record, and the hold then adds no step.
template <class Change> void selectStep(CurveCtlWindow& w, Change change) {
    theHold.Begin();
    change();
    theHold.Accept(GetResString(IDS_SELECT));
    w.RedrawGraph();
}

/// Clears the selection of every curve of the control.
void clearAll(CurveControl& control) {
    for (int i = 0; i < control.GetCurveCount(); ++i)
        if (Curve* c = control.GetCurveObject(i))
            c->SetSelectionEx(BitArray(c->PointCount()), kReplace, TRUE);
}

/// The point hits of one record as a point set of its curve; with `firstOnly`, only the
/// first of them.
BitArray pointSet(Curve& c, const CurveHitList& record, bool firstOnly) {
    BitArray bits(c.PointCount());
    for (int k = 0; k < record.hits.Count(); ++k) {
        const CurveHit& h = record.hits[k];
        if (h.part != KNOT_PART_POINT || h.index < 0 || h.index >= c.PointCount())
            continue;
        bits.Set(h.index);
        if (firstOnly)
            break;
    }
    return bits;
}

/// Applies `mode` with the hit points of every record to their curves.
void applyHits(CurveControl& control, const GraphHits& hits, int mode, bool firstOnly) {
    for (const CurveHitList& record : hits)
        if (Curve* c = control.GetCurveObject(record.curve))
            c->SetSelectionEx(pointSet(*c, record, firstOnly), mode, TRUE);
}

/// The curve of the first record that holds hits, -1 when none.
int firstHitCurve(const GraphHits& hits) {
    for (const CurveHitList& record : hits)
        if (record.hits.Count() > 0)
            return record.curve;
    return -1;
}

} // namespace

// ---------------------------------------------------------------------------------------
// [SECTION] proc

// Owns nothing: the window, the sub-mode and the graph's press state belong to the window.
DeformMouseProc::~DeformMouseProc() = default;

int DeformMouseProc::proc(HWND hwnd, int msg, int point, int flags, IPoint2 m) {
    if (!window || !window->Control())
        return 1;
    switch (msg) {
    case MOUSE_ABORT:
        abort(hwnd, point, flags, m);
        break;
    case MOUSE_POINT:
        if (point == 0)
            press(hwnd, flags, m);
        else
            release(hwnd, point, flags, m);
        break;
    case MOUSE_MOVE:
        move(hwnd, point, flags, m);
        break;
    case MOUSE_FREEMOVE:
        freeMove(hwnd, m);
        break;
    default:
        break;
    }
    return 1;
}

// ---------------------------------------------------------------------------------------
// [SECTION] Press

void DeformMouseProc::press(HWND hwnd, int flags, IPoint2 m) {
    CurveWindow& graph = window->Graph();
    CurveControl& control = *window->Control();
    dragging = pendingSelect = region = clearOnRelease = subModeDragging = 0;
    add = flags & MOUSE_CTRL;
    subtract = flags & MOUSE_ALT;
    pressPoint = lastPoint = m;
    graph.SetCurrentCurve(-1);

    GraphHits hits;
    int result = graph.HitTestGraph(hwnd, m, hits, kPressRequest);

    graph.HandleCurves().clear();
    graph.HandleHits().clear();
    if (result & CURVE_HIT_RESULT_HANDLE) {
        // A tangent drag: the sub-mode drags these handles.
        for (const CurveHitList& record : hits) {
            for (int k = 0; k < record.hits.Count(); ++k) {
                if (record.hits[k].part == KNOT_PART_POINT)
                    continue;
                graph.HandleCurves().push_back(record.curve);
                graph.HandleHits().push_back(record.hits[k]);
            }
        }
        return;
    }

    if (result & CURVE_HIT_RESULT_POINT) {
        if (add || subtract)
            selectStep(*window, [&] { applyHits(control, hits, kRemove, true); });
        else
            pendingSelect = 1; // a click without a drag picks it alone at the release
    } else if (subtract) {
        region = 1;
    } else {
        result = graph.HitTestGraph(hwnd, m, hits, kUnselectedRequest);
        if (result & CURVE_HIT_RESULT_POINT) {
            selectStep(*window, [&] {
                if (!add)
                    clearAll(control);
                applyHits(control, hits, kAdd, false);
            });
        } else {
            region = 1;
            clearOnRelease = add ? 0 : 1;
        }
    }

    graph.SetCurrentCurve(firstHitCurve(hits));
    if (!subMode)
        region = 1;
}

// ---------------------------------------------------------------------------------------
// [SECTION] Move

void DeformMouseProc::move(HWND hwnd, int point, int flags, IPoint2 m) {
    if (!dragging) {
        const int dx = m.x - pressPoint.x, dy = m.y - pressPoint.y;
        if (dx * dx + dy * dy > kDragThreshold2) {
            dragging = 1;
            if (region) {
                XORDottedRect(hwnd, pressPoint, m);
            } else if (subMode && subMode->proc(hwnd, MOUSE_POINT, 0, flags, pressPoint)) {
                // A sub-mode that refuses the press (a scale at its baseline) hears
                // nothing more of this drag.
                subModeDragging = 1;
                subMode->proc(hwnd, MOUSE_MOVE, point, flags, m);
            }
        }
    } else if (region) {
        XORDottedRect(hwnd, pressPoint, lastPoint); // erases the previous box
        XORDottedRect(hwnd, pressPoint, m);
    } else if (subModeDragging && subMode) {
        subMode->proc(hwnd, MOUSE_MOVE, point, flags, m);
    }
    lastPoint = m;
}

// ---------------------------------------------------------------------------------------
// [SECTION] Release, abort

void DeformMouseProc::release(HWND hwnd, int point, int flags, IPoint2 m) {
    CurveControl& control = *window->Control();
    if (!region && !dragging) {
        if (pendingSelect) {
            GraphHits hits;
            if (window->Graph().HitTestGraph(hwnd, m, hits, kUnselectedRequest) &
                CURVE_HIT_RESULT_POINT)
                selectStep(*window, [&] {
                    clearAll(control);
                    applyHits(control, hits, kAdd, false);
                });
        }
    } else if (!region) {
        if (subModeDragging && subMode)
            subMode->proc(hwnd, MOUSE_POINT, point, flags, m);
    } else if (!dragging) {
        if (clearOnRelease)
            selectStep(*window, [&] { clearAll(control); });
    } else {
        XORDottedRect(hwnd, pressPoint, lastPoint); // erases the box
        selectStep(*window, [&] {
            if (!add && !subtract)
                clearAll(control);
            GraphHits hits;
            if (subtract) {
                window->Graph().HitTestGraph(hwnd, pressPoint, m, hits, kRegionSelectedRequest);
                applyHits(control, hits, kRemove, false);
            } else if (add) {
                window->Graph().HitTestGraph(hwnd, pressPoint, m, hits, kRegionUnselectedRequest);
                applyHits(control, hits, kAdd, false);
            } else {
                window->Graph().HitTestGraph(hwnd, pressPoint, m, hits, kRegionAllRequest);
                applyHits(control, hits, kAdd, false);
            }
        });
    }
    dragging = region = pendingSelect = clearOnRelease = subModeDragging = 0;
}

void DeformMouseProc::abort(HWND hwnd, int point, int flags, IPoint2 m) {
    if (dragging) {
        if (region)
            XORDottedRect(hwnd, pressPoint, lastPoint);
        else if (subModeDragging && subMode)
            subMode->proc(hwnd, MOUSE_ABORT, point, flags, m);
    }
    dragging = region = pendingSelect = clearOnRelease = subModeDragging = 0;
}

// ---------------------------------------------------------------------------------------
// [SECTION] Free move

void DeformMouseProc::freeMove(HWND hwnd, IPoint2 m) {
    GraphHits hits;
    if (window->Graph().HitTestGraph(hwnd, m, hits, kHoverRequest))
        SetCursor(LoadEditorResources().pointCursor);
    else
        SetCursor(LoadCursorA(nullptr, IDC_ARROW));
}
