// Editor benchmarks: the graph's repaint and its hit tests on a real editor window of a
// control with 16 curves of 1,000 points each, zoomed to its extents in a 1,200 x 800
// graph. Prints one JSON object per line:
//   {"name": ..., "ns_per_op": ..., "ratio": ...}
// where ratio is the time over the target (below 1 meets it):
//
//   repaint_16x1000         a full repaint of the graph (cache dropped, WM_PAINT handled
//                           at once): grid, labels, 16 curves with markers and the handles
//                           of every tenth point, selected; target 16 ms
//   hittest_click_16x1000   a click box in the middle of the graph tested for segments,
//                           points and handles on every curve, without stopping; target 1 ms
//   hittest_region_16x1000  a region over the middle third of the graph tested for points;
//                           target 1 ms
//   drag_step_16x1000       one step of a move drag with every point of every curve
//                           selected (a mouse move through the graph's window procedure):
//                           the hold rolls back to the press, the points move again, the
//                           graph repaints; target 16 ms
//   scale_step_16x1000      the same for a scale drag of the same selection: each point
//                           read as the cache has it after the points before it moved;
//                           target 16 ms
//
// Times are the measuring thread's CPU time per operation, the fastest of several rounds
// of many operations (other programs sharing the machine do not count; the copy to the
// screen, done by the display server, does not either). Windows only: run it under Wine with an X
// display. CURVECTL_BENCH_SCALE scales the repetitions (default 1).
#include "control/curve_control.h"
#include "editor/curve_ctl_window.h"
#include "editor/graph_paint.h"
#include "editor/hit_record.h"
#include "host/core_interface.h"
#include "platform/platform.h"

#include <algorithm>
#include <cmath>
#include <cstdint>
#include <cstdio>
#include <cstdlib>
#include <random>
#include <vector>

namespace {

constexpr int kCurves = 16;
constexpr int kPoints = 1000;
constexpr int kGraphWidth = 1200;
constexpr int kGraphHeight = 800;

/// CPU time of the calling thread, in nanoseconds. Wall-clock time would count every
/// other program that shares the machine; the system counts thread time in ticks, so each
/// measured round runs long enough (a few hundred milliseconds) for a tick not to matter.
double threadCpuNs() {
    FILETIME created, exited, kernel, user;
    GetThreadTimes(GetCurrentThread(), &created, &exited, &kernel, &user);
    const auto ns = [](const FILETIME& f) {
        return double((uint64_t(f.dwHighDateTime) << 32) | f.dwLowDateTime) * 100.0;
    };
    return ns(kernel) + ns(user);
}

int scale() {
    const char* s = std::getenv("CURVECTL_BENCH_SCALE");
    const int v = s ? std::atoi(s) : 1;
    return v > 0 ? v : 1;
}

void report(const char* name, double nsPerOp, double targetNs) {
    std::printf("{\"name\": \"%s\", \"ns_per_op\": %.0f, \"ratio\": %.3f}\n", name, nsPerOp,
                nsPerOp / targetNs);
    std::fflush(stdout);
}

/// The fastest of `reps` rounds of `perRound` calls of `op`, in CPU time per call.
template <class Op> double fastest(int reps, int perRound, Op op) {
    double best = 1e300;
    for (int r = 0; r < reps; ++r) {
        const double t0 = threadCpuNs();
        for (int i = 0; i < perRound; ++i)
            op();
        GdiFlush();
        best = std::min(best, (threadCpuNs() - t0) / perRound);
    }
    return best;
}

void pump() {
    MSG msg;
    while (PeekMessageA(&msg, nullptr, 0, 0, PM_REMOVE)) {
        TranslateMessage(&msg);
        DispatchMessageA(&msg);
    }
}

LRESULT CALLBACK parentProc(HWND hwnd, UINT msg, WPARAM wParam, LPARAM lParam) {
    return DefWindowProcA(hwnd, msg, wParam, lParam);
}

HWND makeParent(int width, int height) {
    WNDCLASSA wc{};
    wc.lpfnWndProc = parentProc;
    wc.hInstance = GetModuleHandleA(nullptr);
    wc.hCursor = LoadCursorA(nullptr, IDC_ARROW);
    wc.lpszClassName = "EditorBenchParent";
    RegisterClassA(&wc);
    return CreateWindowExA(0, wc.lpszClassName, "bench", WS_POPUP | WS_VISIBLE | WS_CLIPCHILDREN, 0,
                           0, width, height, nullptr, nullptr, wc.hInstance, nullptr);
}

/// 1,000 points over the x range 0 .. 100: a wave per curve, every third point a Bezier
/// point with handles a third of the way to its neighbours, every tenth point selected.
void fillCurve(Curve& c, int index, std::mt19937& rng) {
    std::uniform_real_distribution<float> noise(-3.0f, 3.0f);
    c.SetPointCount(kPoints);
    CurveKnot* k = c.Knots();
    const float dx = 100.0f / float(kPoints - 1);
    for (int i = 0; i < kPoints; ++i) {
        const float x = dx * float(i);
        const float y = 40.0f * std::sin(x * 0.2f + float(index)) + noise(rng);
        uint32_t flags = (i % 3 == 0) ? KNOT_BEZIER : KNOT_CORNER;
        if (i % 10 == 0)
            flags |= KNOT_SELECTED;
        if (i == 0 || i == kPoints - 1)
            flags |= KNOT_ENDPOINT;
        const float h = (flags & KNOT_BEZIER) ? dx / 3.0f : 0.0f;
        k[i] = CurveKnot(Point2(x, y), Point2(-h, 0.0f), Point2(h, 0.0f), flags);
    }
    c.InvalidateCache();
}

/// One step of a drag in tool mode `tool`: the press on the middle point of curve 0, a
/// first move 6 pixels up that starts the drag, then moves that alternate between 4 and 6
/// pixels above the press. Returns the CPU time per step; prints where the point went.
double dragStep(CurveControl& control, CurveCtlWindow& editor, int tool, int reps,
                const char* label) {
    HWND graph = editor.Graph().Handle();
    control.SetToolMode(tool);
    const Point2 before = control.GetCurveObject(0)->CachedPosition(0, kPoints / 2);
    const IPoint2 grip = GraphCurveScreen(editor).Pixel(before.x, before.y);
    const auto at = [](int x, int y) { return LPARAM(MAKELONG(WORD(short(x)), WORD(short(y)))); };
    SendMessageA(graph, WM_LBUTTONDOWN, MK_LBUTTON, at(grip.x, grip.y));
    SendMessageA(graph, WM_MOUSEMOVE, MK_LBUTTON, at(grip.x, grip.y - 6));
    int step = 0;
    const double perStep = fastest(reps, 20, [&] {
        const int up = (++step & 1) ? 4 : 6;
        SendMessageA(graph, WM_MOUSEMOVE, MK_LBUTTON, at(grip.x, grip.y - up));
    });
    SendMessageA(graph, WM_LBUTTONUP, 0, at(grip.x, grip.y - 6));
    pump();
    const Point2 after = control.GetCurveObject(0)->CachedPosition(0, kPoints / 2);
    std::fprintf(stderr, "%s: point %d of curve 0 from (%g, %g) to (%g, %g)\n", label, kPoints / 2,
                 before.x, before.y, after.x, after.y);
    return perStep;
}

} // namespace

int main() {
    platform::SetModuleInstance(GetModuleHandleA(nullptr));
    GetCOREInterface()->SetTime(0, FALSE);
    const int reps = 5 * scale();

    // The editor embedded in a parent sized so that the graph is 1,200 x 800.
    HWND parent = makeParent(kGraphWidth + 40, kGraphHeight + 120);
    CurveControl* control = new CurveControl;
    control->SetCurveCount(kCurves, FALSE);
    control->SetXRange(0.0f, 100.0f, FALSE);
    control->SetYRange(-100.0f, 100.0f);
    BitArray all(kCurves);
    all.SetAll();
    control->SetShownCurves(all);
    control->SetControlFlags(CC_DEFAULT_FLAGS & ~DWORD(CC_ASPOPUP));
    control->SetParentWindow(parent);
    std::mt19937 rng(20261121);
    for (int i = 0; i < kCurves; ++i) {
        Curve& c = *control->GetCurveObject(i);
        fillCurve(c, i, rng);
        c.SetPen(RGB(40 * (i % 6), 20 * (i % 11), 255 - 15 * i), 1, PS_SOLID);
    }
    control->SetEditorOpen(TRUE);
    pump();
    CurveCtlWindow* editor = static_cast<CurveCtlWindow*>(control->Editor());
    HWND graph = editor->Graph().Handle();
    for (int attempt = 0; attempt < 3; ++attempt) {
        RECT g{}, p{};
        GetClientRect(graph, &g);
        GetClientRect(parent, &p);
        if (g.right == kGraphWidth && g.bottom == kGraphHeight)
            break;
        SetWindowPos(parent, nullptr, 0, 0, p.right + kGraphWidth - g.right,
                     p.bottom + kGraphHeight - g.bottom, SWP_NOMOVE | SWP_NOZORDER);
        // The embedded frame covers the parent's client area: follow the new size.
        GetClientRect(parent, &p);
        MoveWindow(control->GetEditorWindow(), 0, 0, p.right, p.bottom, TRUE);
        pump();
    }
    RECT g{};
    GetClientRect(graph, &g);
    if (g.right != kGraphWidth || g.bottom != kGraphHeight)
        std::fprintf(stderr, "graph is %ld x %ld, not %d x %d\n", g.right, g.bottom, kGraphWidth,
                     kGraphHeight);
    control->ZoomExtents();
    pump();

    // Full repaint: drop the cache, invalidate, paint now.
    const double repaint = fastest(reps, 40, [&] { editor->RedrawGraph(); });
    report("repaint_16x1000", repaint, 16e6);

    // A click in the middle of the graph, among the curves, testing everything and
    // stopping nowhere.
    GraphHits hits;
    const RECT usable = editor->UsableArea();
    const IPoint2 middle((usable.left + usable.right) / 2, (usable.top + usable.bottom) / 2);
    const int clickRequest =
        CURVE_HIT_CLICK | CURVE_HIT_CURVE | CURVE_HIT_POINTS | CURVE_HIT_HANDLES;
    const double click = fastest(
        reps, 1000, [&] { editor->Graph().HitTestGraph(graph, middle, hits, clickRequest); });
    report("hittest_click_16x1000", click, 1e6);

    // A region over the middle third, full height.
    const int third = (usable.right - usable.left) / 3;
    const IPoint2 a(usable.left + third, usable.top), b(usable.left + 2 * third, usable.bottom);
    const double region = fastest(reps, 4000, [&] {
        editor->Graph().HitTestGraph(graph, a, b, hits, CURVE_HIT_REGION | CURVE_HIT_POINTS);
    });
    report("hittest_region_16x1000", region, 1e6);
    size_t found = 0;
    for (const CurveHitList& h : hits)
        found += size_t(h.hits.Count());
    std::fprintf(stderr, "region: %zu points on %zu curves\n", found, hits.size());

    // A move drag of every point, all selected. The points become corner points: at this
    // zoom a Bezier point's handles lie within a pixel of it, and a press there would grip
    // the handles instead.
    for (int i = 0; i < kCurves; ++i) {
        Curve& c = *control->GetCurveObject(i);
        for (int k = 0; k < c.PointCount(); ++k) {
            uint32_t& flags = c.Knots()[k].flags;
            flags = (flags & ~uint32_t(KNOT_BEZIER)) | KNOT_CORNER | KNOT_SELECTED;
        }
    }
    const double drag = dragStep(*control, *editor, CC_TOOL_MOVE_XY, reps, "drag");
    report("drag_step_16x1000", drag, 16e6);
    // A scale drag of the same selection, pressed on the same point.
    const double scaleStep = dragStep(*control, *editor, CC_TOOL_SCALE, reps, "scale");
    report("scale_step_16x1000", scaleStep, 16e6);

    control->SetEditorOpen(FALSE);
    control->DeleteThis();
    DestroyWindow(parent);
    return 0;
}
