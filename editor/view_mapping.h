// The editor's view as plain numbers: scales, the scroll-bar encodings of the offsets, the
// usable area, the mapping between curve space and graph pixels, the scroll ranges and
// extents, and the steps of the value grid and the ruler. Pure functions of their
// arguments: the windows read the scroll bars and call these.
//
// The view is four numbers: x scale xs and y scale ys (pixels per curve unit) and the
// positions of the two scroll bars, which are the offsets:
//     X0 = 2 * hpos - 7                              hpos = (X0 + 7) / 2
//     Y0 = trunc((Hm + 1) * (vpos * 0.01)) & ~1      vpos = Y0 * 100 / (Hm + 1)
// (integer division truncating toward zero; Hm is the usable area's height), and
//     column = trunc(x * xs) - X0
//     row    = (Hm + 1) / 2 + 4 - Y0 - trunc(y * ys)
// so y grows upwards. The curves use the same mapping (CurveScreen, curve/curve_screen.h).
//
// [SECTION] Index
//   Scales and offsets ...... clamps, X0/hpos, Y0/vpos, usable area
//   Mapping ................. ViewMapping: curve point <-> pixel
//   Scroll ranges ........... horizontal and vertical ranges, bar steps
//   Extents and wheel ....... the scales and positions the zoom commands set
//   Value grid .............. major and minor steps, label text
//   Ruler ................... label and tick steps, label text
#pragma once

#include "control/editor_ids.h"
#include "curve/curve_screen.h"
#include "host/geom.h"
#include "host/win_types.h"

#include <cstddef>

namespace view {

// ---------------------------------------------------------------------------------------
// [SECTION] Scales and offsets

// The scale limits and the scales of a newly opened editor (control/editor_ids.h).
using view_scale::kInitialXScale;
using view_scale::kInitialYScale;
using view_scale::kXScaleMax;
using view_scale::kXScaleMin;
using view_scale::kYScaleMax;
using view_scale::kYScaleMin;

/// A value above the top becomes the top; one not at least the bottom (NaN too) the bottom.
float ClampXScale(float xs);
float ClampYScale(float ys);

inline int X0FromHpos(int hpos) { return WrapSub(WrapAdd(hpos, hpos), 7); }
inline int HposFromX0(int x0) { return int((int64_t(x0) + 7) / 2); }
/// `height` is Hm + 1, the usable height plus one.
int Y0FromVpos(int vpos, int height);
int VposFromY0(int y0, int height);

/// The client rectangle, inset to left 32, top 6, right - 6, bottom - 6 with control flag
/// CC_DRAWRULER (room for the value labels).
RECT UsableArea(const RECT& client, DWORD controlFlags);

// ---------------------------------------------------------------------------------------
// [SECTION] Mapping

/// One view: the usable area, both scales and both offsets.
struct ViewMapping {
    RECT usable{}; // the graph's usable area
    float xs = kInitialXScale;
    float ys = kInitialYScale;
    int x0 = 0; // X0, from hpos
    int y0 = 0; // Y0, from vpos

    /// Hm + 1.
    int Height() const { return usable.bottom - usable.top + 1; }
    int Column(float x) const { return WrapSub(TruncToInt(x * xs), x0); }
    int Row(float y) const {
        return WrapSub(WrapSub(WrapAdd(Height() / 2, 4), y0), TruncToInt(y * ys));
    }
    /// The curve x at a pixel column and the curve y at a pixel row (the inverse mapping
    /// the zoom and insert modes use).
    float XAt(int column) const { return float(double(column) + x0) / xs; }
    float YAt(int row) const { return float(double(Height() / 2) - (double(row) - 4 + y0)) / ys; }
    /// The mapping curves draw and hit-test with; `yScale` is ys as the curves see it.
    CurveScreen Screen(float yScale, const CurveYTransform* transform = nullptr) const {
        CurveScreen s;
        s.rect = usable;
        s.xScale = xs;
        s.xScroll = x0;
        s.yScale = yScale;
        s.yScroll = y0;
        s.transform = transform;
        return s;
    }
};

// ---------------------------------------------------------------------------------------
// [SECTION] Scroll ranges

struct ScrollRange {
    int lo = 0;
    int hi = 0;
    bool operator==(const ScrollRange& o) const { return lo == o.lo && hi == o.hi; }
};

/// The horizontal bar's range for the x range (xlo, xhi) at scale xs in a strip `width`
/// pixels wide: span = trunc((xhi - xlo) * xs) - width; lo = (trunc(xs * xlo) - 200) / 2;
/// hi = lo + (span + 408) / 2, or lo when span + 408 is 0.
ScrollRange HorizontalRange(Point2 xRange, float xs, int width);
/// `current` widened to cover `wanted` (the expand-only update).
ScrollRange Union(ScrollRange current, ScrollRange wanted);
/// The vertical bar's range for values lo .. hi at scale ys, `height` being Hm + 1:
/// ((-1 - trunc(ys * hi / h)) * 100, 100 - trunc(ys * lo / h) * 100).
ScrollRange VerticalRange(float lo, float hi, float ys, int height);

/// Scroll-bar codes as HScroll and VScroll receive them.
enum ScrollCode {
    kLineUp = 0,        // SB_LINEUP, SB_LINELEFT
    kLineDown = 1,      // SB_LINEDOWN, SB_LINERIGHT
    kPageUp = 2,        // SB_PAGEUP
    kPageDown = 3,      // SB_PAGEDOWN
    kThumbPosition = 4, // SB_THUMBPOSITION: keeps the position
    kThumbTrack = 5,    // SB_THUMBTRACK: jumps to the thumb
};
/// The bar position after `code`: lines move by 1, pages by 10, SB_THUMBTRACK jumps to
/// `thumb`, every other code keeps `pos`; the result is clamped to `range`.
int ScrolledPosition(int pos, int code, int thumb, ScrollRange range);

// ---------------------------------------------------------------------------------------
// [SECTION] Extents and wheel

/// "Zoom Horizontal Extents": xs = clamp((width - 34) / ((xhi - xlo) * 1.1)). An empty
/// range divides by zero and the clamp makes the infinity the top (a NaN the bottom).
float HorizontalExtentsScale(Point2 xRange, int width);
/// The hpos that centres the x range: (trunc(((xhi - xlo) * 0.5 + xlo) * xs)
/// - (width + 1) / 2 - 6) / 2.
int CentredHpos(Point2 xRange, float xs, int width);
/// "Zoom Vertical Extents": d = (hi - lo) * 1.4; clamp(height / d) when d > 0.001, else
/// clamp(height) (flat curves), `height` being Hm + 1.
float VerticalExtentsScale(float lo, float hi, int height);
/// The vpos that centres lo .. hi: trunc(-c * 100 / height), c = trunc((hi + lo) * 0.5 * ys).
int CentredVpos(float lo, float hi, float ys, int height);

/// One wheel step: the factor and the curve point that stays put.
struct WheelZoom {
    float g = 1.2f;  // 0.8 for a negative delta, else 1.2 (a zero delta zooms in)
    float ax = 0.0f; // curve x under the middle of the graph
    float ay = 0.0f; // curve y under the middle of the graph
};
/// The wheel's factor and anchor for a graph client of `clientWidth` x `clientHeight`:
/// ax = (trunc(W / 2) + X0) / xs, ay = (trunc((Hm + 1) / 2) - (trunc(H / 2) - 4 + Y0)) / ys.
WheelZoom WheelStep(int delta, const ViewMapping& m, int clientWidth, int clientHeight);
/// Y0 after the wheel: trunc(ay * (1 - g) * ysUnclamped) + Y0.
int WheelY0(const WheelZoom& w, float ysUnclamped, int y0);
/// hpos after the wheel: (2 * hpos - trunc(ax * (1 - g) * xsUnclamped)) / 2.
int WheelHpos(const WheelZoom& w, float xsUnclamped, int hpos);

// ---------------------------------------------------------------------------------------
// [SECTION] Value grid

/// The horizontal lines of the value grid for the rows top .. bottom of the graph.
struct ValueGrid {
    double step = 1.0;  // major step (a power of ten, times 5 per precision retry)
    double minor = 0.0; // minor step, 0 when no divisor gives lines 4 pixels apart
    double vb = 0.0;    // first value, at or below the bottom row (aligned to the step)
    double vt = 0.0;    // value at the top row: lines are drawn up to it
    /// The grid step the window remembers: the minor step when minor lines are drawn,
    /// else the major step.
    double GridStep() const { return minor > 0.0 ? minor : step; }
    /// Labels are "%f" without trailing zeros for steps below 1, else "%d".
    bool FractionalLabels() const { return step < 1.0; }
};
/// The major step alone: 10^trunc(log10(50 / ys) - 0.5) from ys >= 50 * sqrt(10) up,
/// else 10^trunc(log10(50 / ys) + 0.5). So at ys = 158.12 it drops from 1 to 0.1.
double MajorGridStep(float ys);
/// The whole grid for the mapping `m` and the rows top .. bottom: minor divisors 20, 10,
/// 5 and 2 are tried in order; the first whose step is at least 4 pixels on screen wins.
ValueGrid ComputeValueGrid(const ViewMapping& m, int top, int bottom);
/// The row of grid value v: the curves' row of y = v.
int GridRow(const ViewMapping& m, double v);
/// The label of grid value v: "%f" with trailing zeros (and a bare point) stripped when
/// `fractional`, else "%d" of trunc(v). Values that are zero but for rounding print "0".
void FormatGridLabel(double v, double step, bool fractional, char* out, size_t size);

// ---------------------------------------------------------------------------------------
// [SECTION] Ruler

/// The steps of the ruler strip at x scale xs, with u = 60 / (xs * 5) the x distance of
/// 12 pixels.
struct RulerSteps {
    float u = 0.0f;          // x distance of 12 pixels
    bool fractional = false; // u <= 0.5: labels with decimals
    float labelStep = 0.0f;  // fractional: s (2.5, 1, 0.5, 0.25 or 0.1)
    float tickStep = 0.0f;   // fractional: s * 0.1
    int wholeLabelStep = 0;  // whole: L (5, or 5 * n rounded up to even n)
    int wholeTickStep = 0;   // whole: L / 10 when L is a multiple of 10, else L / 5
};
RulerSteps ComputeRulerSteps(float xs);
/// The x of the first fractional tick for a strip whose left edge is `left`.
float FirstFractionalTick(const RulerSteps& r, int left, int x0, float xs);
/// The first whole-number tick: s = k - k mod T with k = trunc(left / xs) + trunc(X0 / xs).
int FirstWholeTick(const RulerSteps& r, int left, int x0, float xs);
/// Whether a fractional tick at x carries a label: x / s within 0.0001 of a whole number.
bool IsFractionalLabel(const RulerSteps& r, float x);
/// "%.4f" of x with trailing zeros (and a bare point) stripped; |x| < 0.0001 gives "0".
void FormatRulerLabel(float x, char* out, size_t size);

} // namespace view
