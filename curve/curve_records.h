// The cache records' move limits and the two moves a rebuild makes (curve_eval.cpp), shared
// with the records that follow single-point edits (curve_settled_records.cpp).
//
// A rebuild first makes every point's record (Curve::initialRecord) and their limits, then
// a forward pass moves a record left of what its neighbours allow to the right (and, with
// the y range enforced, one below it up), and a backward pass the same to the left and
// down. A record's limits depend on it and its two neighbours only.
#pragma once

#include "curve/curve_eval_cache.h"
#include "curve/move_limits.h"
#include "host/geom.h"
#include "host/win_types.h"

#include <algorithm>

class CurveControl;

namespace curve_records {

using curve_eval::CachedKnot;

/// Start value of every move limit (an unconstrained move); end points keep it.
using move_limits::kUnbounded;

/// The owner's ranges and flag word; a curve without owner uses (0, 1), (0, 1) and 0.
struct OwnerSettings {
    Point2 x{0.0f, 1.0f};
    Point2 y{0.0f, 1.0f};
    DWORD flags = 0;
    bool ConstrainY() const;
    bool operator==(const OwnerSettings& o) const {
        return x == o.x && y == o.y && flags == o.flags;
    }
};

OwnerSettings ReadOwner(CurveControl* owner);

/// `room` becomes `v` when `v` is larger (a not-a-number candidate never wins).
inline void RaiseTo(float& room, float v) {
    if (v > room)
        room = v;
}
/// `room` becomes `v` when `v` is smaller.
inline void LowerTo(float& room, float v) {
    if (v < room)
        room = v;
}

/// The move limits of record i among n: only interior records are limited, by the
/// neighbours' positions and facing handles in x and by the y range in y.
inline void ComputeRoom(CachedKnot* k, int n, int i, float ylo, float yhi) {
    CachedKnot& r = k[i];
    r.right = kUnbounded;
    r.left = -kUnbounded;
    r.up = kUnbounded;
    r.down = -kUnbounded;
    if (i <= 0 || i >= n - 1)
        return;
    const CachedKnot& p = k[i - 1];
    const CachedKnot& nx = k[i + 1];
    RaiseTo(r.left, p.outX - r.px);
    RaiseTo(r.left, p.px - r.inX);
    LowerTo(r.right, nx.inX - r.px);
    LowerTo(r.right, nx.px - r.outX);
    LowerTo(r.up, yhi - r.py);
    LowerTo(r.up, yhi - r.inY);
    LowerTo(r.up, yhi - r.outY);
    RaiseTo(r.down, ylo - r.py);
    RaiseTo(r.down, ylo - r.inY);
    RaiseTo(r.down, ylo - r.outY);
}

/// After record i moved, the limits of i and its two neighbours are the only ones that
/// changed: recomputing them equals recomputing all of them.
inline void RecomputeAround(CachedKnot* k, int n, int i, float ylo, float yhi) {
    for (int j = std::max(0, i - 1); j <= std::min(n - 1, i + 1); ++j)
        ComputeRoom(k, n, j, ylo, yhi);
}

inline void ShiftX(CachedKnot& r, float d) {
    r.px += d;
    r.inX += d;
    r.outX += d;
}

/// Puts the position's y at `y` and moves both handles by the same amount.
inline void PlaceY(CachedKnot& r, float y) {
    const float d = y - r.py;
    r.py = y;
    r.inY += d;
    r.outY += d;
}

/// Whether either pass would move record `r` as its limits stand.
inline bool WouldMove(const CachedKnot& r, const OwnerSettings& o) {
    if (r.left > 0.0f || r.right < 0.0f)
        return true;
    return o.ConstrainY() && (r.py < o.y.x || r.py > o.y.y);
}

} // namespace curve_records
