// The client callback interface of ColourCurves: what the curve control asks its client.
#include "colour_curves.h"

#include "colour_panel.h"
#include "host/actctx.h"

namespace {

struct ChannelLook {
    const char* name;  // button tooltip and the panel's texts
    COLORREF colour;   // pen of the displayed curve and the button swatch
    COLORREF disabled; // pen of the curve while it is not displayed
};

constexpr ChannelLook kLooks[kChannels] = {
    {"Red", RGB(220, 40, 40), RGB(240, 180, 180)},
    {"Green", RGB(30, 160, 50), RGB(170, 220, 180)},
    {"Blue", RGB(40, 80, 230), RGB(180, 190, 240)},
};

// Curve button images are 16 x 15 (the editor's toolbar size).
constexpr int kImageWidth = 16;
constexpr int kImageHeight = 15;

/// One swatch per channel: a filled rounded square on a transparent background.
HIMAGELIST MakeSwatches() {
    HIMAGELIST list =
        ActCtxImageList_Create(kImageWidth, kImageHeight, ILC_COLOR24 | ILC_MASK, kChannels, 0);
    if (!list)
        return nullptr;
    HDC screen = GetDC(nullptr);
    HDC dc = CreateCompatibleDC(screen);
    for (int c = 0; c < kChannels; ++c) {
        HBITMAP image = CreateCompatibleBitmap(screen, kImageWidth, kImageHeight);
        HBITMAP mask = CreateBitmap(kImageWidth, kImageHeight, 1, 1, nullptr);
        const RECT all = {0, 0, kImageWidth, kImageHeight};

        // Mask: white (transparent) everywhere but the swatch.
        HGDIOBJ old = SelectObject(dc, mask);
        FillRect(dc, &all, static_cast<HBRUSH>(GetStockObject(WHITE_BRUSH)));
        SelectObject(dc, GetStockObject(BLACK_BRUSH));
        SelectObject(dc, GetStockObject(BLACK_PEN));
        RoundRect(dc, 2, 1, 14, 13, 4, 4);

        // Image: the swatch in the channel's colour with a dark outline; black elsewhere,
        // as a masked image list wants.
        SelectObject(dc, image);
        FillRect(dc, &all, static_cast<HBRUSH>(GetStockObject(BLACK_BRUSH)));
        HBRUSH fill = CreateSolidBrush(kLooks[c].colour);
        HPEN outline = CreatePen(PS_SOLID, 1, RGB(40, 40, 40));
        SelectObject(dc, fill);
        SelectObject(dc, outline);
        RoundRect(dc, 2, 1, 14, 13, 4, 4);
        SelectObject(dc, old);
        DeleteObject(fill);
        DeleteObject(outline);

        ActCtxImageList_Add(list, image, mask); // the list copies both bitmaps
        DeleteObject(image);
        DeleteObject(mask);
    }
    DeleteDC(dc);
    ReleaseDC(nullptr, screen);
    return list;
}

} // namespace

const char* ChannelName(int c) { return c >= 0 && c < kChannels ? kLooks[c].name : ""; }

COLORREF ChannelColour(int c) { return c >= 0 && c < kChannels ? kLooks[c].colour : 0; }

void SetDefaultCurve(ICurve* curve, int c) {
    if (!curve || c < 0 || c >= kChannels)
        return;
    // The identity y = x: corner end points at (0, 0) and (1, 1), and a smooth Bezier point
    // on the diagonal whose handles lie on it too, so the three control polygons and with
    // them the curve stay on the line. The free point sits at a different x per channel,
    // so each curve offers its own point to grab.
    const float at = 0.25f * float(c + 1);
    const float handle = 0.1f;
    curve->SetPointCount(3);
    curve->SetKnot(0, 0,
                   CurveKnot(Point2(0.0f, 0.0f), Point2(), Point2(), KNOT_CORNER | KNOT_ENDPOINT),
                   FALSE);
    curve->SetKnot(
        0, 1,
        CurveKnot(Point2(at, at), Point2(-handle, -handle), Point2(handle, handle), KNOT_BEZIER),
        FALSE);
    curve->SetKnot(0, 2,
                   CurveKnot(Point2(1.0f, 1.0f), Point2(), Point2(), KNOT_CORNER | KNOT_ENDPOINT),
                   FALSE);
}

BOOL ColourCurves::GetCurveButtonImages(HIMAGELIST* images, ICurveCtl*) {
    // One list for the life of the process, as the control keeps the handle and every
    // editor of every ColourCurves shows it.
    static HIMAGELIST swatches = MakeSwatches();
    if (!images || !swatches)
        return FALSE;
    *images = swatches;
    return TRUE;
}

BOOL ColourCurves::GetCurveButtonText(int i, CStr& text, ICurveCtl*) {
    if (i < 0 || i >= kChannels)
        return FALSE;
    text = kLooks[i].name;
    return TRUE;
}

void ColourCurves::ResetCurve(int i, ICurveCtl* control) {
    // Called inside the control's "Reset Curve" hold: the point changes below are its
    // undo records.
    SetDefaultCurve(control ? control->GetCurve(i) : nullptr, i);
    PictureChanged();
}

void ColourCurves::NewCurveCreated(int i, ICurveCtl* control) {
    ICurve* curve = control ? control->GetCurve(i) : nullptr;
    if (!curve || i >= kChannels)
        return;
    curve->SetPen(kLooks[i].colour, 0, PS_SOLID);
    curve->SetDisabledPen(kLooks[i].disabled, 0, PS_SOLID);
    // Points that the user moves in animate mode get keys.
    curve->SetAnimatable(TRUE);
    SetDefaultCurve(curve, i);
    if (panel_)
        panel_->ShowText("%s curve created", kLooks[i].name);
}
