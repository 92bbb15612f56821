// Finding the control and its editor's windows; the editor's view mapping; curve states.
#include "editor_probe.h"

#include "host/animatable.h"
#include "host/view_effect.h"

#include <cmath>
#include <cstring>

namespace session {
namespace {

struct Search {
    const char* cls;
    const char* text;
    HWND found;
};

BOOL CALLBACK Match(HWND hwnd, LPARAM lParam) {
    auto* s = reinterpret_cast<Search*>(lParam);
    char name[64] = {};
    GetClassNameA(hwnd, name, sizeof name);
    if (_stricmp(name, s->cls) != 0)
        return TRUE;
    if (s->text) {
        char text[128] = {};
        GetWindowTextA(hwnd, text, sizeof text);
        if (std::strcmp(text, s->text) != 0)
            return TRUE;
    }
    s->found = hwnd;
    return FALSE;
}

bool Near(float a, float b) { return std::fabs(a - b) <= 1e-6f; }

bool Near(Point2 a, Point2 b) { return Near(a.x, b.x) && Near(a.y, b.y); }

} // namespace

ICurveCtl* FindCurveControl(ReferenceTarget* target) {
    if (!target)
        return nullptr;
    if (target->ClassID() == CURVE_CONTROL_CLASS_ID)
        return static_cast<ICurveCtl*>(target);
    for (int i = 0; i < target->NumRefs(); ++i)
        if (ICurveCtl* found = FindCurveControl(target->GetReference(i)))
            return found;
    return nullptr;
}

HWND FindChild(HWND parent, const char* cls, const char* text) {
    Search s = {cls, text, nullptr};
    EnumChildWindows(parent, Match, reinterpret_cast<LPARAM>(&s));
    return s.found;
}

HWND EditorGraph(ICurveCtl* control) {
    if (!control || !control->IsEditorOpen())
        return nullptr;
    return FindChild(control->GetEditorWindow(), "DefCurveWindow");
}

POINT GraphPixel(ICurveCtl* control, HWND graph, Point2 p) {
    float xs = 0.0f, ys = 0.0f;
    int hpos = 0, vpos = 0;
    control->GetZoomState(&xs, &ys); // both read the open editor's current view
    control->GetScrollState(&hpos, &vpos);
    RECT rc = {};
    GetClientRect(graph, &rc);
    if (control->GetControlFlags() & CC_DRAWRULER) {
        rc.top += 6;
        rc.bottom -= 6;
    }
    const int height = rc.bottom - rc.top + 1; // Hm + 1
    const int x0 = 2 * hpos - 7;
    const int y0 = int(height * (vpos * 0.01)) & ~1;
    return POINT{int(p.x * xs) - x0, height / 2 + 4 - y0 - int(p.y * ys)};
}

CurveState Snapshot(ICurveCtl* control, TimeValue t) {
    CurveState state;
    for (int c = 0; control && c < control->GetCurveCount(); ++c) {
        ICurve* curve = control->GetCurve(c);
        std::vector<CurveKnot> knots;
        for (int i = 0; i < curve->PointCount(); ++i) {
            Interval valid = FOREVER;
            knots.push_back(curve->GetKnot(t, i, valid));
        }
        state.push_back(knots);
    }
    return state;
}

bool SamePoints(const CurveState& a, const CurveState& b) {
    if (a.size() != b.size())
        return false;
    for (std::size_t c = 0; c < a.size(); ++c) {
        if (a[c].size() != b[c].size())
            return false;
        for (std::size_t i = 0; i < a[c].size(); ++i) {
            const CurveKnot &p = a[c][i], &q = b[c][i];
            if (!Near(p.pos, q.pos) || !Near(p.inTan, q.inTan) || !Near(p.outTan, q.outTan) ||
                (p.flags & KNOT_TYPE_MASK) != (q.flags & KNOT_TYPE_MASK))
                return false;
        }
    }
    return true;
}

std::vector<float> ValueTable(ICurveCtl* control, const std::vector<int>& frames) {
    std::vector<float> values;
    for (int c = 0; control && c < control->GetCurveCount(); ++c)
        for (int frame : frames)
            for (int k = 0; k <= 64; ++k) {
                Interval valid = FOREVER;
                values.push_back(control->GetCurve(c)->ValueAt(frame * VIEW_TICKS_PER_FRAME,
                                                               float(k) / 64.0f, valid, FALSE));
            }
    return values;
}

} // namespace session
