// The arithmetic of the pan, zoom and zoom-region modes, as pure functions of the view's
// numbers (see editor/view_mapping.h for the view itself):
//     X0 = 2 * hpos - 7            hpos = (X0 + 7) / 2
//     column = trunc(x * xs) - X0  row = (Hm + 1) / 2 + 4 - Y0 - trunc(y * ys)
// Integer divisions truncate toward zero; float-to-int conversions truncate (TruncToInt).
// Sums that could leave int wrap or saturate as the view code does, so extreme zooms give
// far-away views rather than undefined behaviour.
#pragma once

#include "editor/view_mapping.h"

#include <climits>
#include <cstdint>

namespace viewmode {

inline int Saturate(int64_t v) { return v > INT_MAX ? INT_MAX : v < INT_MIN ? INT_MIN : int(v); }

// ---------------------------------------------------------------------------------------
// Pan

/// hpos after a pan by `dx` = start.x - m.x pixels: (X0start + dx + 7) / 2. The bar keeps
/// half pixels, so the view moves by an even number of pixels.
inline int PannedHpos(int x0Start, int dx) { return Saturate((int64_t(x0Start) + dx + 7) / 2); }

/// Y0 after a pan by `dy` = start.y - m.y pixels (stored as vpos, which makes it even).
inline int PannedY0(int y0Start, int dy) { return WrapAdd(y0Start, dy); }

// ---------------------------------------------------------------------------------------
// Zoom

/// The scale factor of a drag of `d` pixels: f = 1 + 0.01 d, and below 1 it becomes
/// -1 / (f - 2) = 1 / (1 + 0.01 |d|). So +100 doubles, -100 halves, -200 gives a third,
/// and dragging on shrinks towards 0 without reaching it.
inline float ZoomFactor(int d) {
    const double f = 1.0 + 0.01 * d;
    return float(f < 1.0 ? -1.0 / (f - 2.0) : f);
}

/// The curve point at the middle of a window of `width` x `height` client pixels:
/// ax = (trunc(width / 2) + X0) / xs, ay = (trunc((Hm + 1) / 2) - (trunc(height / 2) - 4
/// + Y0)) / ys. It stays under the same pixel while a zoom drag goes on.
inline Point2 ZoomAnchor(const view::ViewMapping& m, int width, int height) {
    const int column = WrapAdd(width / 2, m.x0);
    const int row = WrapSub(m.Height() / 2, WrapAdd(height / 2 - 4, m.y0));
    return Point2(float(column) / m.xs, float(row) / m.ys);
}

/// Y0 that keeps the anchor's y in place when ys goes from `ysStart` to f * ysStart:
/// trunc(ay * (1 - f) * ysStart) + Y0start.
inline int ZoomedY0(float ay, float f, float ysStart, int y0Start) {
    return WrapAdd(TruncToInt(ay * (1.0f - f) * ysStart), y0Start);
}

/// hpos that keeps the anchor's x in place when xs goes from `xsStart` to f * xsStart:
/// (X0start - trunc(ax * (1 - f) * xsStart) + 7) / 2.
inline int ZoomedHpos(float ax, float f, float xsStart, int x0Start) {
    return Saturate((int64_t(x0Start) - TruncToInt(ax * (1.0f - f) * xsStart) + 7) / 2);
}

// ---------------------------------------------------------------------------------------
// Zoom region

/// The horizontal half of a zoom to a box `dx` (> 0) pixels wide whose centre column is
/// `cx` in a usable area `usable`, with the view's xs and hpos before it.
struct RegionX {
    float r = 1.0f;  // W / dx: how much the scale grows
    float xs = 0.0f; // the new scale, clamped
    int hpos = 0;    // the bar position that puts the box's centre mid-area
};
inline RegionX ZoomRegionX(const RECT& usable, int dx, int centreColumn, float xs, int hpos) {
    RegionX out;
    const int width = usable.right - usable.left;
    const float cx = float(WrapAdd(centreColumn, view::X0FromHpos(hpos))) / xs;
    out.r = float(width) / float(dx);
    out.xs = view::ClampXScale(out.r * xs);
    // (c.x - trunc(cx (1 - r) xs) - (left + right) / 2 + 2 hpos) / 2
    const int64_t middle = (int64_t(usable.left) + usable.right) / 2;
    out.hpos = Saturate((int64_t(centreColumn) - TruncToInt(cx * (1.0f - out.r) * xs) - middle +
                         2 * int64_t(hpos)) /
                        2);
    return out;
}

/// The vertical half of a zoom to a box `dy` (> 0) pixels high whose centre row is
/// `centreRow`, with the view's ys and Y0 before it and `height` = Hm + 1.
struct RegionY {
    float ys = 0.0f; // (Hm + 1) / dy * ys, clamped
    int y0 = 0;      // 4 - trunc(cy * ys'): the box's centre value mid-height
};
inline RegionY ZoomRegionY(int height, int dy, int centreRow, float ys, int y0) {
    RegionY out;
    const float cy = float(WrapSub(height / 2, WrapAdd(centreRow - 4, y0))) / ys;
    out.ys = view::ClampYScale(float(height) / float(dy) * ys);
    out.y0 = WrapSub(4, TruncToInt(cy * out.ys));
    return out;
}

} // namespace viewmode
