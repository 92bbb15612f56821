// The view's arithmetic (view_mapping.h). Each formula keeps the number types it is
// defined with (float scales, double constants such as 0.01, 1.1 and 1.4, integer
// division), because they decide the last pixel. Conversions to int go through
// TruncToInt and sums through WrapAdd/WrapSub, so that absurd zooms give absurd pixels
// rather than undefined behaviour.
#include "editor/view_mapping.h"

#include "curvectl/icurvectl.h"

#include <algorithm>
#include <cmath>
#include <cstdint>
#include <cstdio>
#include <cstring>

namespace view {

namespace {

/// An int64 result put back into int range (scroll ranges of absurd scales).
int saturate(int64_t v) { return int(std::clamp<int64_t>(v, INT32_MIN, INT32_MAX)); }

/// Drops trailing zeros after a decimal point, then a bare point, then a minus sign that
/// is left in front of a zero.
void stripZeros(char* s) {
    if (!std::strchr(s, '.'))
        return;
    size_t n = std::strlen(s);
    while (n > 0 && s[n - 1] == '0')
        s[--n] = '\0';
    if (n > 0 && s[n - 1] == '.')
        s[--n] = '\0';
    if (std::strcmp(s, "-0") == 0)
        std::strcpy(s, "0");
}

/// How often a step may be multiplied by 5 before the grid gives up refining it: far more
/// than any double needs (5^64 covers the whole exponent range).
constexpr int kMaxStepWidenings = 64;

} // namespace

// ---------------------------------------------------------------------------------------
// [SECTION] Scales and offsets

float ClampXScale(float xs) {
    if (xs > kXScaleMax)
        return kXScaleMax;
    if (!(xs >= kXScaleMin))
        return kXScaleMin;
    return xs;
}

float ClampYScale(float ys) {
    if (ys > kYScaleMax)
        return kYScaleMax;
    if (!(ys >= kYScaleMin))
        return kYScaleMin;
    return ys;
}

int Y0FromVpos(int vpos, int height) {
    // vpos * 0.01 is a double: the percentage is not rounded to float on the way.
    return TruncToInt(double(height) * (vpos * 0.01)) & ~1;
}

int VposFromY0(int y0, int height) {
    // A usable area of no height (a window shrunk to nothing) has no percentage.
    if (height == 0)
        return 0;
    return saturate(int64_t(y0) * 100 / height);
}

RECT UsableArea(const RECT& client, DWORD controlFlags) {
    RECT r = client;
    if (controlFlags & CC_DRAWRULER) {
        r.left = 32;
        r.top = 6;
        r.right = client.right - 6;
        r.bottom = client.bottom - 6;
    }
    return r;
}

// ---------------------------------------------------------------------------------------
// [SECTION] Scroll ranges

ScrollRange HorizontalRange(Point2 xRange, float xs, int width) {
    const int64_t span = int64_t(TruncToInt((xRange.y - xRange.x) * xs)) - width;
    const int64_t lo = (int64_t(TruncToInt(xs * xRange.x)) - 200) / 2;
    // hi = lo when span + 408 is 0, which is what the halving gives anyway.
    const int64_t hi = lo + (span + 408) / 2;
    return ScrollRange{saturate(lo), saturate(hi)};
}

ScrollRange Union(ScrollRange current, ScrollRange wanted) {
    return ScrollRange{std::min(wanted.lo, current.lo), std::max(wanted.hi, current.hi)};
}

ScrollRange VerticalRange(float lo, float hi, float ys, int height) {
    const float h = float(height);
    const int64_t top = (-1 - int64_t(TruncToInt(ys * hi / h))) * 100;
    const int64_t bottom = 100 - int64_t(TruncToInt(ys * lo / h)) * 100;
    return ScrollRange{saturate(top), saturate(bottom)};
}

int ScrolledPosition(int pos, int code, int thumb, ScrollRange range) {
    int64_t p = pos;
    switch (code) {
    case kLineUp:
        p -= 1;
        break;
    case kLineDown:
        p += 1;
        break;
    case kPageUp:
        p -= 10;
        break;
    case kPageDown:
        p += 10;
        break;
    case kThumbTrack:
        p = thumb;
        break;
    default: // SB_THUMBPOSITION, SB_ENDSCROLL, SB_TOP, SB_BOTTOM: the view stays
        break;
    }
    return int(std::clamp<int64_t>(p, range.lo, std::max(range.lo, range.hi)));
}

// ---------------------------------------------------------------------------------------
// [SECTION] Extents and wheel

float HorizontalExtentsScale(Point2 xRange, int width) {
    return ClampXScale(float(double(width - 34) / ((xRange.y - xRange.x) * 1.1)));
}

int CentredHpos(Point2 xRange, float xs, int width) {
    const int centre = TruncToInt(((xRange.y - xRange.x) * 0.5 + xRange.x) * xs);
    return saturate((int64_t(centre) - (int64_t(width) + 1) / 2 - 6) / 2);
}

float VerticalExtentsScale(float lo, float hi, int height) {
    const double d = (hi - lo) * 1.4;
    // Flat curves (all values equal) get the usable height plus one.
    return ClampYScale(d > 0.001 ? float(height / d) : float(height));
}

int CentredVpos(float lo, float hi, float ys, int height) {
    const int c = TruncToInt((hi + lo) * 0.5 * ys);
    if (height == 0)
        return 0;
    return saturate(-int64_t(c) * 100 / height);
}

WheelZoom WheelStep(int delta, const ViewMapping& m, int clientWidth, int clientHeight) {
    WheelZoom w;
    w.g = delta < 0 ? 0.8f : 1.2f;
    w.ax = float(clientWidth / 2 + m.x0) / m.xs;
    w.ay = float(m.Height() / 2 - (clientHeight / 2 - 4 + m.y0)) / m.ys;
    return w;
}

int WheelY0(const WheelZoom& w, float ysUnclamped, int y0) {
    return WrapAdd(TruncToInt(w.ay * (1.0f - w.g) * ysUnclamped), y0);
}

int WheelHpos(const WheelZoom& w, float xsUnclamped, int hpos) {
    const int64_t shift = TruncToInt(w.ax * (1.0f - w.g) * xsUnclamped);
    return saturate((2 * int64_t(hpos) - shift) / 2);
}

// ---------------------------------------------------------------------------------------
// [SECTION] Value grid

double MajorGridStep(float ys) {
    const float inv = 1.0f / ys;
    const double decades = std::log10(double(50.0f * inv));
    // 50 * sqrt(10): where a 50-pixel spacing of the step crosses half a decade.
    const double e =
        ys >= 50.0 * std::sqrt(10.0) ? std::trunc(decades - 0.5) : std::trunc(decades + 0.5);
    return std::pow(10.0, e);
}

int GridRow(const ViewMapping& m, double v) { return m.Row(float(v)); }

ValueGrid ComputeValueGrid(const ViewMapping& m, int top, int bottom) {
    ValueGrid g;
    const double inv = 1.0 / double(m.ys);
    const int half = m.Height() / 2;
    g.step = MajorGridStep(m.ys);
    g.vb = (half - (double(bottom) - 4 + m.y0)) * inv - g.step;
    g.vb -= std::fmod(g.vb, g.step);
    g.vt = (half - (double(top) - 4 + m.y0)) * inv;

    for (const int divisor : {20, 10, 5, 2}) {
        double minor = std::max(g.step / divisor, 0.00001);
        for (int n = 0; n < kMaxStepWidenings && g.vb + minor == g.vb; ++n)
            minor *= 5;
        // "Apart on screen": the rows the lines land on, not the ideal spacing.
        if (GridRow(m, g.vb) - GridRow(m, g.vb + minor) >= 4) {
            g.minor = minor;
            break;
        }
    }
    for (int n = 0; n < kMaxStepWidenings && g.vb + g.step == g.vb; ++n)
        g.step *= 5;
    return g;
}

void FormatGridLabel(double v, double step, bool fractional, char* out, size_t size) {
    if (size == 0)
        return;
    if (!fractional) {
        std::snprintf(out, size, "%d", TruncToInt(v));
        return;
    }
    // A line reached by adding steps may miss zero by a rounding error.
    if (std::fabs(v) < step * 1e-6)
        v = 0.0;
    std::snprintf(out, size, "%f", v);
    stripZeros(out);
}

// ---------------------------------------------------------------------------------------
// [SECTION] Ruler

RulerSteps ComputeRulerSteps(float xs) {
    RulerSteps r;
    r.u = 60.0f / (xs * 5.0f);
    r.fractional = r.u <= 0.5f;
    if (r.fractional) {
        const float u = r.u;
        r.labelStep = u > 0.25f    ? 2.5f
                      : u > 0.1f   ? 1.0f
                      : u > 0.05f  ? 0.5f
                      : u > 0.025f ? 0.25f
                                   : 0.1f;
        r.tickStep = r.labelStep * 0.1f;
        return r;
    }
    int label = 5;
    if (r.u > 1.0f) {
        int n = TruncToInt(r.u + 1.0f);
        if (n % 2 != 0)
            n += 1;
        label = int(std::min<int64_t>(int64_t(n) * 5, INT32_MAX / 10 * 10));
    }
    r.wholeLabelStep = label;
    r.wholeTickStep = label % 10 == 0 ? label / 10 : label / 5;
    return r;
}

float FirstFractionalTick(const RulerSteps& r, int left, int x0, float xs) {
    const float x = float(WrapAdd(left, x0)) / xs;
    return x - std::fmod(x, r.tickStep);
}

int FirstWholeTick(const RulerSteps& r, int left, int x0, float xs) {
    const int64_t k = int64_t(TruncToInt(left / xs)) + TruncToInt(x0 / xs);
    const int64_t t = r.wholeTickStep > 0 ? r.wholeTickStep : 1;
    return saturate(k - k % t);
}

bool IsFractionalLabel(const RulerSteps& r, float x) {
    const float q = x / r.labelStep;
    return std::fabs(q - std::round(q)) < 0.0001f;
}

void FormatRulerLabel(float x, char* out, size_t size) {
    if (size == 0)
        return;
    if (std::fabs(x) < 0.0001f)
        x = 0.0f;
    std::snprintf(out, size, "%.4f", double(x));
    stripZeros(out);
}

} // namespace view
