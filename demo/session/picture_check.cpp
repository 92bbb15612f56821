// Viewport pixels against the curves.
#include "picture_check.h"

#include "session_capture.h"
#include "viewport.h"

#include <algorithm>
#include <cmath>
#include <cstdlib>
#include <vector>

namespace session {
namespace {

int Level(float v) { return int(std::lround(std::clamp(v, 0.0f, 1.0f) * 255.0f)); }

struct Covers {
    HWND own;                // the viewport's top-level window
    HWND view;               // the viewport, whose client coordinates the rectangles use
    std::vector<RECT> rects; // other visible top-level windows of the thread
};

BOOL CALLBACK AddCover(HWND hwnd, LPARAM lParam) {
    auto* c = reinterpret_cast<Covers*>(lParam);
    if (hwnd == c->own || !IsWindowVisible(hwnd))
        return TRUE;
    RECT r = {};
    GetWindowRect(hwnd, &r);
    MapWindowPoints(nullptr, c->view, reinterpret_cast<POINT*>(&r), 2);
    c->rects.push_back(r);
    return TRUE;
}

bool Covered(const Covers& c, int x, int y) {
    const POINT p = {x, y};
    return std::any_of(c.rects.begin(), c.rects.end(),
                       [&](const RECT& r) { return PtInRect(&r, p) != FALSE; });
}

} // namespace

PictureCheck CheckPicture(Viewport& view, ICurveCtl* control, TimeValue t) {
    PictureCheck result;
    const RECT pic = view.PictureRect();
    const RgbImage shown = CaptureClient(view.Window(), pic);
    const int w = view.SourceWidth(), h = view.SourceHeight();
    if (shown.width != w || shown.height != h || view.Source().empty())
        return result; // no samples: the check fails
    ICurve* curves[3] = {};
    for (int c = 0; c < 3; ++c)
        curves[c] = control ? control->GetCurve(c) : nullptr;

    Covers covers = {GetAncestor(view.Window(), GA_ROOT), view.Window(), {}};
    EnumThreadWindows(GetCurrentThreadId(), AddCover, reinterpret_cast<LPARAM>(&covers));

    constexpr int kStep = 4;
    for (int y = 0; y < h; y += kStep)
        for (int x = 0; x < w; x += kStep) {
            if (Covered(covers, pic.left + x, pic.top + y))
                continue;
            const std::size_t i = std::size_t(y) * std::size_t(w) + std::size_t(x);
            bool off = false, moved = false;
            for (int c = 0; c < 3; ++c) {
                const float in = view.Source()[i * 3 + std::size_t(c)];
                Interval valid = FOREVER;
                const float out = curves[c] ? curves[c]->ValueAt(t, in, valid, FALSE) : in;
                const int diff = std::abs(int(shown.rgb[i * 3 + std::size_t(c)]) - Level(out));
                result.worst = std::max(result.worst, diff);
                off = off || diff > PictureCheck::kTolerance;
                moved = moved || std::abs(Level(out) - Level(in)) > PictureCheck::kTolerance;
            }
            ++result.samples;
            result.mismatches += off ? 1 : 0;
            result.changed += moved ? 1 : 0;
        }
    return result;
}

} // namespace session
