// The colour manager, the grey brushes, the user-interface font, Rect3D and XORDottedRect.
//
// The brushes and the font belong to the host for the life of the process. They are made
// on first use and deliberately not counted by gdi_tracking.h: a leak test that creates
// an editor would otherwise see the host's one-time objects as the editor's leak.

#include "host/colorman.h"

#include <algorithm>
#include <vector>

namespace {

// The host's light theme.
constexpr COLORREF kDefaultColors[kColorCount] = {
    RGB(200, 200, 200), // kColorBackground
    RGB(0, 0, 0),       // kColorText
    RGB(255, 255, 255), // kColorWindow
    RGB(0, 0, 0),       // kColorWindowText
    RGB(255, 214, 72),  // kColorActiveCommand
    RGB(80, 80, 80),    // kColorHover
    RGB(118, 118, 118), // kColorShadow
    RGB(250, 250, 250), // kColorHilight3D
    RGB(51, 102, 204),  // kColorSelection
    RGB(255, 255, 255), // kColorSelectionText
    RGB(140, 140, 140), // kColorDisabledText
    RGB(255, 255, 225), // kColorTooltip
    RGB(0, 0, 0),       // kColorStatusText
    RGB(158, 158, 158), // kColorDarkGrey
    RGB(212, 212, 212), // kColorLightGrey
    RGB(190, 190, 190), // kColorViewShade
    RGB(128, 128, 128), // kColorViewLine
};

class ColorManager final : public IColorManager {
public:
    ColorManager() { std::copy(std::begin(kDefaultColors), std::end(kDefaultColors), colors_); }

    COLORREF GetColor(int id) override { return colors_[Valid(id) ? id : kColorBackground]; }

    void SetColor(int id, COLORREF color) override {
        if (!Valid(id) || colors_[id] == color)
            return;
        colors_[id] = color;
        DropBrush(id);
    }

    HBRUSH GetBrush(int id) override {
        if (!Valid(id))
            id = kColorBackground;
        if (!brushes_[id])
            brushes_[id] = CreateSolidBrush(colors_[id]);
        return brushes_[id];
    }

    void ResetDefaults() override {
        for (int id = 0; id < kColorCount; ++id)
            SetColor(id, kDefaultColors[id]);
    }

private:
    static bool Valid(int id) { return id >= 0 && id < kColorCount; }
    // A brush that callers may still have selected into a DC must not be deleted under
    // them; a replaced brush is kept until the process ends (colour changes are rare).
    void DropBrush(int id) {
        if (brushes_[id])
            retired_.push_back(brushes_[id]);
        brushes_[id] = nullptr;
    }

    COLORREF colors_[kColorCount];     // current theme
    HBRUSH brushes_[kColorCount] = {}; // made on first use
    std::vector<HBRUSH> retired_;      // brushes of replaced colours, kept alive
};

ColorManager& TheColorManager() {
    static ColorManager manager;
    return manager;
}

} // namespace

IColorManager* ColorMan() { return &TheColorManager(); }

HBRUSH GetDarkGreyBrush() { return TheColorManager().GetBrush(kColorDarkGrey); }
HBRUSH GetLightGreyBrush() { return TheColorManager().GetBrush(kColorLightGrey); }

HFONT GetUIFont() {
    static HFONT font = CreateFontA(-11, 0, 0, 0, FW_NORMAL, FALSE, FALSE, FALSE, DEFAULT_CHARSET,
                                    OUT_DEFAULT_PRECIS, CLIP_DEFAULT_PRECIS, DEFAULT_QUALITY,
                                    VARIABLE_PITCH | FF_SWISS, "Tahoma");
    return font ? font : static_cast<HFONT>(GetStockObject(DEFAULT_GUI_FONT));
}

void Rect3D(HDC hdc, const RECT& rect, BOOL in) {
    if (!hdc || rect.right <= rect.left || rect.bottom <= rect.top)
        return;
    HBRUSH dark = ColorMan()->GetBrush(kColorShadow);
    HBRUSH light = ColorMan()->GetBrush(kColorHilight3D);
    HBRUSH topLeft = in ? dark : light;
    HBRUSH bottomRight = in ? light : dark;
    // One-pixel strips filled rather than lines drawn: no pen to create, and the corners
    // come out exact whatever the DC's pen and mapping.
    RECT top = {rect.left, rect.top, rect.right, rect.top + 1};
    RECT left = {rect.left, rect.top, rect.left + 1, rect.bottom};
    RECT bottom = {rect.left, rect.bottom - 1, rect.right, rect.bottom};
    RECT right = {rect.right - 1, rect.top, rect.right, rect.bottom};
    FillRect(hdc, &top, topLeft);
    FillRect(hdc, &left, topLeft);
    FillRect(hdc, &bottom, bottomRight);
    FillRect(hdc, &right, bottomRight);
}

void XORDottedRect(HWND hwnd, IPoint2 p0, IPoint2 p1, int solidToo) {
    if (!hwnd || !IsWindow(hwnd))
        return;
    HDC hdc = GetDC(hwnd);
    if (!hdc)
        return;
    RECT r = {std::min(p0.x, p1.x), std::min(p0.y, p1.y), std::max(p0.x, p1.x) + 1,
              std::max(p0.y, p1.y) + 1};
    if (solidToo) {
        // Four inverted strips; each pixel is inverted exactly once so a second call
        // restores it.
        int w = r.right - r.left, h = r.bottom - r.top;
        PatBlt(hdc, r.left, r.top, w, 1, DSTINVERT);
        if (h > 1)
            PatBlt(hdc, r.left, r.bottom - 1, w, 1, DSTINVERT);
        if (h > 2) {
            PatBlt(hdc, r.left, r.top + 1, 1, h - 2, DSTINVERT);
            if (w > 1)
                PatBlt(hdc, r.right - 1, r.top + 1, 1, h - 2, DSTINVERT);
        }
    } else {
        DrawFocusRect(hdc, &r); // XOR with a dotted pattern: drawing twice erases
    }
    ReleaseDC(hwnd, hdc);
}
