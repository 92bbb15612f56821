// DeformRightMouseProc: a right click in the graph shows the point menu (menu 101): the
// type of the point under the click, the edit modes the control allows and Delete. The
// choice arrives at the graph as a WM_COMMAND (editor/point_menu_commands.cpp).
//
// The popup of menu 101, by position:
//   0 "Corner"  1 "Bezier-Smooth"  2 "Bezier-Corner"  3 separator
//   4 "Move" (XY, X, Y)  5 "Scale"  6 "Insert" (Corner, Bezier)  7 separator  8 "Delete"
// Entries the control's flag word does not allow are removed, from the highest position
// down so that the positions still to be removed stay where the resource put them.
#include "control/curve_control.h"
#include "editor/curve_ctl_window.h"
#include "editor/editor_resources.h"
#include "host/hold.h"
#include "modes/mouse_modes.h"
#include "platform/res_string.h"
#include "res/resource.h"

#include <algorithm>
#include <functional>
#include <vector>

namespace {

/// A selected point under the click (the first one found).
constexpr int kSelectedPointAtClick =
    CURVE_HIT_CLICK | CURVE_HIT_POINTS | CURVE_HIT_STOP_FIRST | CURVE_HIT_SKIP_UNSELECTED;
/// An unselected point under the click.
constexpr int kUnselectedPointAtClick =
    CURVE_HIT_CLICK | CURVE_HIT_POINTS | CURVE_HIT_SKIP_SELECTED;
static_assert(kSelectedPointAtClick == 0x415 && kUnselectedPointAtClick == 0x412,
              "right-click requests");

/// @name Control flags that allow the menu's entries
/// @{
constexpr DWORD kAllowMoveXY = 0x800;
constexpr DWORD kAllowMoveX = 0x1000;
constexpr DWORD kAllowMoveY = 0x2000;
constexpr DWORD kAllowScale = 0x4000;
constexpr DWORD kAllowInsertCorner = 0x8000;
constexpr DWORD kAllowInsertBezier = 0x10000;
constexpr DWORD kAllowDelete = 0x20000;
constexpr DWORD kAllowMove = kAllowMoveXY | kAllowMoveX | kAllowMoveY;
constexpr DWORD kAllowInsert = kAllowInsertCorner | kAllowInsertBezier;
constexpr DWORD kAllowAnyMode = kAllowMove | kAllowScale | kAllowInsert;
constexpr DWORD kAllowAnything = kAllowAnyMode | kAllowDelete;
static_assert(kAllowMove == 0x3800 && kAllowAnyMode == 0x1F800 && kAllowAnything == 0x3F800,
              "menu flag groups");
/// @}

/// Positions in the popup as the resource lays it out.
enum MenuPosition {
    kPosCorner = 0,
    kPosBezierSmooth = 1,
    kPosBezierCorner = 2,
    kPosTypeSeparator = 3,
    kPosMove = 4,
    kPosScale = 5,
    kPosInsert = 6,
    kPosDeleteSeparator = 7,
    kPosDelete = 8,
};

/// One edit-mode entry: the flag that allows it, its command, the tool mode it stands for
/// and, for an entry of the popup itself (not of a sub-menu), its position.
struct ModeEntry {
    DWORD flag;
    UINT command;
    int toolMode;
    int position; // -1: inside the Move or Insert sub-menu
};
constexpr ModeEntry kModeEntries[] = {
    {kAllowInsertCorner, IDM_INSERT_CORNER, CC_TOOL_INSERT_CORNER, -1},
    {kAllowInsertBezier, IDM_INSERT_BEZIER, CC_TOOL_INSERT_BEZIER, -1},
    {kAllowMoveXY, IDM_MOVE_XY, CC_TOOL_MOVE_XY, -1},
    {kAllowMoveX, IDM_MOVE_X, CC_TOOL_MOVE_X, -1},
    {kAllowMoveY, IDM_MOVE_Y, CC_TOOL_MOVE_Y, -1},
    {kAllowScale, IDM_SCALE, CC_TOOL_SCALE, kPosScale},
};

/// The popup position of a point type (flags & 3), or -1.
int typePosition(uint32_t flags) {
    switch (flags & KNOT_TYPE_MASK) {
    case KNOT_TYPE_CORNER:
        return kPosCorner;
    case KNOT_TYPE_BEZIER_SMOOTH:
        return kPosBezierSmooth;
    case KNOT_TYPE_BEZIER_CORNER:
        return kPosBezierCorner;
    default:
        return -1;
    }
}

/// Makes point `index` of curve `curveIndex` the only selected point, as one undo step.
void selectOnly(CurveCtlWindow& w, int curveIndex, int index) {
    CurveControl& control = *w.Control();
    theHold.Begin();
    for (int i = 0; i < control.GetCurveCount(); ++i)
        if (Curve* c = control.GetCurveObject(i))
            c->SetSelectionEx(BitArray(c->PointCount()), CURVE_SELECT_REPLACE, TRUE);
    if (Curve* c = control.GetCurveObject(curveIndex)) {
        BitArray bit(c->PointCount());
        bit.Set(index);
        c->SetSelectionEx(bit, CURVE_SELECT_ADD, TRUE);
    }
    theHold.Accept(GetResString(IDS_SELECT));
    w.RedrawGraph();
}

/// The flags of the point under the click, selecting it first when it was not selected;
/// false when no point is there.
bool pointAt(CurveCtlWindow& w, HWND hwnd, IPoint2 m, uint32_t& flags) {
    CurveWindow& graph = w.Graph();
    GraphHits hits;
    const bool selected =
        (graph.HitTestGraph(hwnd, m, hits, kSelectedPointAtClick) & CURVE_HIT_RESULT_POINT) != 0;
    if (!selected &&
        !(graph.HitTestGraph(hwnd, m, hits, kUnselectedPointAtClick) & CURVE_HIT_RESULT_POINT))
        return false;
    // The first point found: the curves are searched in index order.
    auto record = std::find_if(hits.begin(), hits.end(),
                               [](const CurveHitList& r) { return r.hits.Count() > 0; });
    if (record == hits.end())
        return false;
    const int index = record->hits[0].index;
    if (!selected)
        selectOnly(w, record->curve, index);
    Curve* curve = w.Control()->GetCurveObject(record->curve);
    if (!curve || index < 0 || index >= curve->PointCount())
        return false;
    flags = curve->Knots()[index].flags;
    return true;
}

/// Menu 101 loaded afresh (the previous one destroyed); returns its popup.
HMENU freshMenu() {
    HMENU& menu = SharedEditorResources().pointMenu;
    if (menu)
        DestroyMenu(menu);
    menu = LoadMenuA(EditorInstance(), MAKEINTRESOURCEA(IDR_POINT_MENU));
    return menu ? GetSubMenu(menu, 0) : nullptr;
}

/// Checks the point's type and the current edit mode and removes what the flags do not
/// allow. `point` is null when the click hit no point.
void fitMenu(HMENU popup, DWORD controlFlags, int toolMode, const uint32_t* point) {
    if (point) {
        const int type = typePosition(*point);
        if (type >= 0)
            CheckMenuItem(popup, UINT(type), MF_BYPOSITION | MF_CHECKED);
        // End points may not be Bezier-Smooth.
        if (*point & KNOT_ENDPOINT)
            EnableMenuItem(popup, kPosBezierSmooth, MF_BYPOSITION | MF_GRAYED);
    }

    std::vector<int> gone; // popup positions to remove
    if (!(controlFlags & kAllowDelete)) {
        gone.push_back(kPosDeleteSeparator);
        gone.push_back(kPosDelete);
    }
    for (const ModeEntry& e : kModeEntries) {
        if (controlFlags & e.flag) {
            if (e.toolMode == toolMode)
                CheckMenuItem(popup, e.command, MF_BYCOMMAND | MF_CHECKED);
        } else if (e.position >= 0) {
            gone.push_back(e.position);
        } else {
            // Inside a sub-menu: the popup's own positions do not move.
            DeleteMenu(popup, e.command, MF_BYCOMMAND);
        }
    }
    if (!(controlFlags & kAllowInsert))
        gone.push_back(kPosInsert);
    if (!(controlFlags & kAllowMove))
        gone.push_back(kPosMove);
    if (!(controlFlags & kAllowAnyMode))
        gone.push_back(kPosTypeSeparator);
    if (!point) {
        for (int p : {kPosTypeSeparator, kPosBezierCorner, kPosBezierSmooth, kPosCorner})
            gone.push_back(p);
    }

    std::sort(gone.begin(), gone.end(), std::greater<int>());
    gone.erase(std::unique(gone.begin(), gone.end()), gone.end());
    for (int p : gone)
        DeleteMenu(popup, UINT(p), MF_BYPOSITION);
}

} // namespace

int DeformRightMouseProc::proc(HWND hwnd, int msg, int, int, IPoint2 m) {
    if (msg != MOUSE_PROPCLICK || !window || !window->Control())
        return 1;
    CurveCtlWindow& w = *window;
    CurveControl& control = *w.Control();

    uint32_t flags = 0;
    const bool onPoint = pointAt(w, hwnd, m, flags);
    HMENU popup = freshMenu();
    if (!popup)
        return 1;
    const DWORD controlFlags = control.GetControlFlags();
    if (!onPoint && !(controlFlags & kAllowAnything))
        return 1; // nothing to offer: no menu at all
    fitMenu(popup, controlFlags, control.GetToolMode(), onPoint ? &flags : nullptr);

    POINT screen{m.x, m.y};
    ClientToScreen(hwnd, &screen);
    // The graph owns the menu: the choice comes back to it as a command.
    TrackPopupMenu(popup, TPM_RIGHTBUTTON, screen.x, screen.y, 0, w.Graph().Handle(), nullptr);
    return 1;
}
