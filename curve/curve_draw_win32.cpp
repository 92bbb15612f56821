// Curve::DrawCurve: the curve in the graph, as ten straight pieces per segment, with its
// point markers and the tangent handles of its selected Bezier points.
//
// The picture is that of the plain sequence of GDI calls (MoveToEx and ten LineTo per
// segment, one Rectangle per marker); what is drawn differently gives the same pixels:
// - With a solid pen the segments are batched: all segments of the visible span go out in
//   one PolyPolyline of 11 points each, which draws each segment's ten pieces exactly as
//   MoveToEx and ten LineTo calls do. A styled pen (dashes, dots) starts its pattern afresh
//   with every LineTo but carries it on along a polyline, so styled pens get the plain
//   calls. A one-pixel solid pen draws one polyline through fewer points (straightRuns).
// - The marker squares are written into the bitmap's pixels where MarkerFill can.
// Both are checked against the plain calls pixel for pixel by the window tests.
#include "control/curve_control.h"
#include "curve/curve.h"
#include "curve/curve_pixels.h"
#include "curve/marker_fill_win32.h"
#include "host/gdi_tracking.h"

#include <algorithm>
#include <cstdint>
#include <vector>

using curve_eval::CachedKnot;
using curve_eval::CacheState;
using curve_eval::EvalCache;

namespace {

/// Marker squares, as Rectangle corners relative to the pixel: the point's marker, the
/// white centre of a selected point, a handle.
constexpr int kMarkerLo = -3, kMarkerHi = 4;
constexpr int kCentreLo = -2, kCentreHi = 3;
constexpr int kHandleLo = -2, kHandleHi = 3;

/// Scratch buffers reused from one call to the next (drawing runs on the UI thread only).
struct DrawScratch {
    std::vector<POINT> pixels; // segment pixels, kSegmentPixels per segment
    std::vector<DWORD> counts; // kSegmentPixels per segment
};

/// Whether lines of `style` look the same drawn piece by piece or as one polyline.
bool polylineSafe(int style) {
    const int s = style & PS_STYLE_MASK;
    return s == PS_SOLID || s == PS_INSIDEFRAME || s == PS_NULL;
}

DrawScratch& scratch() {
    static DrawScratch s;
    return s;
}

/// The one of the eight directions along an axis or a diagonal that (dx, dy) points in, as
/// a step of -1, 0 or 1 each way; (0, 0) for a zero or any other vector.
POINT straightStep(int64_t dx, int64_t dy) {
    const auto sign = [](int64_t v) { return LONG((v > 0) - (v < 0)); };
    if (dx == 0 || dy == 0 || dx == dy || dx == -dy)
        return POINT{sign(dx), sign(dy)};
    return POINT{0, 0};
}

/// Shortens the polyline `pixels` to one of fewer points that a one-pixel solid pen draws
/// the same, and returns how many points are left (at the front). A piece from a pixel to
/// itself draws nothing and goes. Pieces along an axis or a diagonal need no rounding: the
/// pixels of two such pieces in one direction are those of one line from the first start
/// to the second end, so the point between them goes as well. Other pieces stay as they
/// are, for GDI to round. A curve steeper than a pixel per piece draws mostly vertical
/// pieces: of the editor benchmark's 11,000 points per curve, 2,500 remain.
int straightRuns(std::vector<POINT>& pixels) {
    int count = 0;
    POINT step{0, 0}; // direction of the last kept piece if straight
    for (const POINT& p : pixels) {
        if (count > 0) {
            const POINT& last = pixels[size_t(count) - 1];
            const int64_t dx = int64_t(p.x) - last.x, dy = int64_t(p.y) - last.y;
            if (dx == 0 && dy == 0)
                continue;
            const POINT next = straightStep(dx, dy);
            const bool straight = next.x != 0 || next.y != 0;
            if (count >= 2 && straight && next.x == step.x && next.y == step.y) {
                pixels[size_t(count) - 1] = p; // the run goes on
                continue;
            }
            step = next;
        }
        pixels[size_t(count++)] = p;
    }
    return count;
}

/// Draws segments first .. last - 1 of `s`, each as MoveToEx to its point and ten LineTo.
/// Lines of a one-pixel solid pen (width 0 or 1) leave out their last pixel and a piece
/// from a pixel to the same pixel draws nothing, so for such a pen the whole span is one
/// Polyline (each segment ends on the pixel where the next begins), through the points
/// straightRuns leaves. Wider solid pens get one polyline per segment (their caps and joins
/// are the same round ends); styled pens the plain calls.
void drawSegments(HDC hdc, const CurveScreen& screen, const CacheState& s, int first, int last,
                  int style, int width) {
    DrawScratch& buf = scratch();
    const int segments = last - first;
    buf.pixels.resize(size_t(segments) * curve_pixels::kSegmentPixels);
    IPoint2 px[curve_pixels::kSegmentPixels];
    POINT* out = buf.pixels.data();
    for (int i = first; i < last; ++i) {
        curve_pixels::SegmentPixels(screen, s, i, px);
        for (const IPoint2& p : px)
            *out++ = POINT{p.x, p.y};
    }
    if (!polylineSafe(style)) {
        for (size_t at = 0; at < buf.pixels.size(); at += curve_pixels::kSegmentPixels) {
            MoveToEx(hdc, buf.pixels[at].x, buf.pixels[at].y, nullptr);
            for (int k = 1; k < curve_pixels::kSegmentPixels; ++k)
                LineTo(hdc, buf.pixels[at + k].x, buf.pixels[at + k].y);
        }
        return;
    }
    if (width > 1) {
        buf.counts.assign(size_t(segments), curve_pixels::kSegmentPixels);
        PolyPolyline(hdc, buf.pixels.data(), buf.counts.data(), DWORD(segments));
        return;
    }
    const int count = straightRuns(buf.pixels);
    if (count >= 2)
        Polyline(hdc, buf.pixels.data(), count);
}

RECT squareRect(IPoint2 p, int lo, int hi) {
    return RECT{WrapAdd(p.x, lo), WrapAdd(p.y, lo), WrapAdd(p.x, hi), WrapAdd(p.y, hi)};
}

void drawSquare(HDC hdc, IPoint2 p, int lo, int hi) {
    const RECT r = squareRect(p, lo, hi);
    Rectangle(hdc, r.left, r.top, r.right, r.bottom);
}

/// A handle's line to its point, in the black pen (the null pen again afterwards).
void handleLine(HDC hdc, IPoint2 handle, IPoint2 point) {
    SelectObject(hdc, GetStockObject(BLACK_PEN));
    MoveToEx(hdc, handle.x, handle.y, nullptr);
    LineTo(hdc, point.x, point.y);
    SelectObject(hdc, GetStockObject(NULL_PEN));
}

} // namespace

void Curve::DrawCurve(TimeValue t, HDC hdc, const CurveScreen& screen, int index) {
    if (count_ <= 0 || !hdc)
        return;
    EvalCache::Reader reader(evalCache_);
    // The cache test of every query (acquireState): unlocked first, then the locked test
    // and rebuild.
    reader.Count(1);
    const CacheState* s = reader.Current();
    if (!(s && s->HoldsAt(t)))
        s = rebuildState(reader, t);
    if (!s)
        return;
    const int n = std::min(s->count, count_);
    if (n <= 0)
        return;
    const bool cyclic = IsCyclic();
    const Point2 xRange = owner_ ? owner_->GetXRange() : Point2(0.0f, 1.0f);
    const CurveSpan span = curve_pixels::Span(screen, *s, cyclic, xRange);
    if (span.Empty())
        return;
    const int last = std::min(span.last, n - 1);
    const bool displayed = owner_ ? owner_->DisplayedCurves()[index] != 0 : true;

    GdiPen pen(displayed ? CreatePen(penStyle_, penWidth_, penColour_)
                         : CreatePen(disabledPenStyle_, disabledPenWidth_, disabledPenColour_));
    SavedDC saved(hdc); // pen, brush and current position come back at the end
    SelectObject(hdc, pen.get());

    // Segments first .. last - 1, ten pieces each.
    const int segments = last - span.first;
    if (segments > 0)
        drawSegments(hdc, screen, *s, span.first, last, displayed ? penStyle_ : disabledPenStyle_,
                     displayed ? penWidth_ : disabledPenWidth_);

    // Markers. A displayed curve fills them black with the null pen (Rectangle then
    // leaves out the right and bottom edge: 6 x 6 pixels); a curve not displayed outlines
    // them in its disabled pen over a fill of the same colour, and shows no selection.
    HBRUSH markerBrush = HBRUSH(GetStockObject(DC_BRUSH));
    SelectObject(hdc, markerBrush);
    if (!displayed) {
        SetDCBrushColor(hdc, disabledPenColour_);
        for (int i = span.first; i <= last; ++i)
            drawSquare(hdc, curve_pixels::Position(screen, s->knots[i]), kMarkerLo, kMarkerHi);
        return;
    }
    // The black and white fills are those of the stock black and white brushes; MarkerFill
    // writes them straight into a bitmap's pixels where it can.
    SelectObject(hdc, GetStockObject(NULL_PEN));
    MarkerFill fill(hdc);
    const auto square = [&fill](IPoint2 p, int lo, int hi, COLORREF colour) {
        const RECT r = squareRect(p, lo, hi);
        fill.Square(r.left, r.top, r.right, r.bottom, colour);
    };
    const COLORREF black = RGB(0, 0, 0), white = RGB(255, 255, 255);
    for (int i = span.first; i <= last; ++i) {
        const CachedKnot& k = s->knots[i];
        const IPoint2 p = curve_pixels::Position(screen, k);
        square(p, kMarkerLo, kMarkerHi, black);
        const uint32_t flags = points_[i].flags;
        if (!(flags & KNOT_SELECTED))
            continue;
        if (flags & KNOT_BEZIER) {
            for (const bool in : {true, false}) {
                if (!cyclic && (in ? i == 0 : i == n - 1))
                    continue;
                const IPoint2 h = in ? curve_pixels::InHandle(screen, *s, i)
                                     : curve_pixels::OutHandle(screen, *s, i);
                square(h, kHandleLo, kHandleHi, black);
                handleLine(hdc, h, p);
                fill.AfterGdi();
            }
        }
        square(p, kCentreLo, kCentreHi, white);
    }
}
