// The host's colour manager and the small drawing services that go with it: theme colours
// and their brushes, the grey brushes of panels, the user-interface font, 3-D frames and
// the XOR-dotted rubber band.
//
// Every handle handed out here belongs to the host: callers select and use it but never
// delete it. Brushes and the font live until the colour changes or the process ends.
//
// Windows only.
#pragma once

#include "host/export.h"
#include "host/geom.h"
#include "host/win_types.h"

/// Theme colour numbers of IColorManager::GetColor. The numbers are fixed: plug-ins
/// store them.
enum HostColorId {
    kColorBackground = 0,    // panels and toolbars
    kColorText = 1,          // text on panels
    kColorWindow = 2,        // entry fields and lists
    kColorWindowText = 3,    // text in entry fields
    kColorActiveCommand = 4, // fill of checked command buttons (a warm yellow)
    kColorHover = 5,         // outline of the button under the mouse
    kColorShadow = 6,        // dark edge of 3-D frames
    kColorHilight3D = 7,     // light edge of 3-D frames
    kColorSelection = 8,     // selected items
    kColorSelectionText = 9, // text on selected items
    kColorDisabledText = 10, // text and images of disabled controls
    kColorTooltip = 11,      // tooltip background
    kColorStatusText = 12,   // text of status items
    kColorDarkGrey = 13,     // the dark-grey brush (areas outside a valid range)
    kColorLightGrey = 14,    // the light-grey brush (areas of a graph)
    kColorViewShade = 15,    // off-screen buffer background, faint lines on light grey
    kColorViewLine = 16,     // stronger lines on light grey (major grid, ticks)
    kColorCount = 17
};

class HOST_API IColorManager {
public:
    /// The colour `id` (HostColorId); an unknown id answers the panel background.
    virtual COLORREF GetColor(int id) = 0;
    /// Changes a theme colour (ignored for unknown ids); its brush follows.
    virtual void SetColor(int id, COLORREF color) = 0;
    /// A solid brush of colour `id` (owned by the manager; never delete it). An unknown
    /// id answers the background brush.
    virtual HBRUSH GetBrush(int id) = 0;
    /// Puts every colour back to the host's defaults.
    virtual void ResetDefaults() = 0;

protected:
    ~IColorManager() = default;
};

/// The one colour manager of the process.
HOST_API IColorManager* ColorMan();

/// Brushes of colours kColorDarkGrey and kColorLightGrey (owned by the host).
HOST_API HBRUSH GetDarkGreyBrush();
HOST_API HBRUSH GetLightGreyBrush();

/// The host's user-interface font (a small sans-serif face; owned by the host).
HOST_API HFONT GetUIFont();

/// A one-pixel 3-D frame on the edges of `rect` (left/top inclusive, right/bottom
/// exclusive, as GDI rectangles are). `in` non-zero draws it sunken (shadow on the top
/// and left edges, highlight on the bottom and right), 0 raised. The inside is untouched.
HOST_API void Rect3D(HDC hdc, const RECT& rect, BOOL in);

/// Inverts a dotted frame from corner p0 to corner p1 (client coordinates of `hwnd`, either
/// order, both corners on the frame). Drawing the same frame again erases it, so a rubber
/// band is drawn once to show and once more to hide. With `solidToo` the frame is solid.
HOST_API void XORDottedRect(HWND hwnd, IPoint2 p0, IPoint2 p1, int solidToo = 0);
