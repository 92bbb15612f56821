// CurveCtlWindow: the editor of one CurveControl, inside its frame window. It owns the
// two host toolbars, the scroll bars, the ruler strip and the graph, a mouse manager with
// one object of each mouse mode, and the view state (scales, scroll positions) that the
// painting, scrolling and mouse-mode code share.
//
// [SECTION] index of the files that implement it:
//   curve_ctl_window.cpp  Init, teardown, Layout, Size, Paint (corner box), the
//                         IEditorView face the control calls
//   toolbar_setup.cpp     both toolbars: items, ids, order, fly-offs, tooltips; the curve
//                         display buttons
//   editor_commands.cpp   Command, SetEditMode, SetViewMode, prompts
//   entry_fields.cpp      EditEnter, UpdateEntryFields, NextDlgCtl
//   view_range.cpp        scales, offsets, scroll ranges, scroll bars, wheel, extents
//   time_change.cpp       DefTimeChangeCallback
#pragma once

#include "control/editor_ids.h"
#include "control/editor_link.h"
#include "editor/base_window.h"
#include "editor/mode_link.h"
#include "editor/sub_windows.h"
#include "editor/time_change.h"
#include "host/bitarray.h"
#include "host/custctrl.h"
#include "host/interval.h"
#include "host/mouse_manager.h"

#include <climits>
#include <memory>
#include <vector>

class CurveControl;

/// @name Host custom-control references, released when their holder goes
/// @{
struct ToolbarRelease {
    void operator()(ICustToolbar* p) const { ReleaseICustToolbar(p); }
};
struct ButtonRelease {
    void operator()(ICustButton* p) const { ReleaseICustButton(p); }
};
struct EditRelease {
    void operator()(ICustEdit* p) const { ReleaseICustEdit(p); }
};
struct StatusRelease {
    void operator()(ICustStatus* p) const { ReleaseICustStatus(p); }
};
using ToolbarRef = std::unique_ptr<ICustToolbar, ToolbarRelease>;
using ButtonRef = std::unique_ptr<ICustButton, ButtonRelease>;
using EditRef = std::unique_ptr<ICustEdit, EditRelease>;
using StatusRef = std::unique_ptr<ICustStatus, StatusRelease>;
/// @}

/// View modes of the editor (SetViewMode); -1 is none.
enum EditorViewMode {
    kViewNone = -1,
    kViewPan = 0,
    kViewZoomHorizontal = 1,
    kViewZoomVertical = 2,
    kViewZoomRegion = 3,
    kViewZoom = 4,
};

/// The view's scales (pixels per curve unit). The offsets are the scroll positions.
struct ViewScale {
    float xs = view_scale::kInitialXScale; // x scale, within [kXScaleMin, kXScaleMax]
    float ys = view_scale::kInitialYScale; // y scale, within [kYScaleMin, kYScaleMax]
    float third = 1.0f;                    // kept with the scales; read by nothing here
    int reserved[2] = {};                  // zeroed field that follows the scales
};

/// What the painting code caches between paints.
struct PaintState {
    int graphValid = 0;                 // the graph's buffer holds a valid picture
    int wholeWindow = 0;                // the next graph paint covers the whole window
    int rulerValid = 0;                 // the ruler's buffer holds a valid picture
    POINT lastCursor{INT_MIN, INT_MIN}; // last cursor position; INT_MIN = none
    float gridStep = 0.0f;              // grid step of the last paint (0: no grid)
};

/// The toolbars and the host controls in them. Buttons, fields and the status item are
/// references that the window releases before the toolbars; the toolbar windows are
/// children of the editor window and die with it.
struct EditorToolbars {
    HWND topWindow = nullptr;    // edit toolbar (flag 4), or null
    HWND bottomWindow = nullptr; // view toolbar (flag 16), or null
    ToolbarRef top;
    ToolbarRef bottom;
    /// Buttons by command id (edit and view toolbars).
    struct Entry {
        int id;
        ButtonRef button;
    };
    std::vector<Entry> buttons;
    std::vector<ButtonRef> curveButtons; // entry i: curve i's display button, or null
    StatusRef status;                    // status item 1000
    EditRef xEntry;                      // field 1070
    EditRef yEntry;                      // field 1080
    int topItemCount = 0;                // items placed in the top toolbar

    ICustButton* Button(int id) const;
};

class CurveCtlWindow : public BaseWindow, public IEditorView {
public:
    CurveCtlWindow();
    /// Tears the editor down in the order the host expects (see the .cpp).
    ~CurveCtlWindow() override;

    /// Builds the whole window inside `frame` for `control`. `mode` 4 selects the
    /// aspect-locked Zoom Extents behaviour.
    void Init(HWND frame, CurveControl* control, int mode);
    /// Places every child in the current client rectangle.
    void Layout();

    /// @name Message operations
    /// @{
    LRESULT Command(int notifyCode, int id, HWND control) override;
    LRESULT Paint() override;
    LRESULT Size(int type, int width, int height) override;
    LRESULT HScroll(int code, int position, HWND bar) override;
    LRESULT VScroll(int code, int position, HWND bar) override;
    LRESULT MouseActivate(HWND hwnd, UINT msg, WPARAM wParam, LPARAM lParam) override;
    LRESULT EditEnter(int id, LPARAM lParam) override;
    LRESULT NextDlgCtl(WPARAM wParam) override;
    /// @}

    /// @name IEditorView (what the control asks of its open editor)
    /// @{
    HWND Handle() override { return hWnd_; }
    void RedrawGraph() override;
    void InvalidateGraph() override;
    void CaptureView(float& hZoom, float& vZoom, int& hScroll, int& vScroll) override;
    void SetZoom(float hZoom, float vZoom) override;
    void SetScroll(int hScroll, int vScroll) override;
    void SetCaption(const char* title) override;
    void SelectEditMode(int mode, int flyOff) override;
    void GetEditMode(int& mode, int& flyOff) override;
    void SetDisplayMode(const BitArray& bits) override;
    BitArray DisplayMode() override { return shown_; }
    void RebuildCurveButtons() override;
    void SendCommand(int id) override;
    bool AspectRescale(int direction) override;
    void InvalidateRuler() override;
    void RedrawRuler() override;
    /// @}

    /// @name Edit and view modes (editor_commands.cpp)
    /// @{
    /// Checks the edit button `id` (editor_id::kMove, kScale, kAddPoint; kHostCommandMode
    /// the host's own command mode) and installs its mouse mode; leaves any view mode.
    void SetEditMode(int id);
    /// 0 pan, 1 zoom horizontally, 2 zoom vertically, 3 zoom region, 4 zoom; choosing the
    /// current one again returns to the edit mode.
    void SetViewMode(int mode);
    int EditMode() const { return editMode_; }
    int ViewMode() const { return viewMode_; }
    /// Shows the prompt of the current edit or view mode in the status item.
    void ShowPrompt();
    /// @}

    /// Refreshes the X and Y entry fields for `time` (entry_fields.cpp).
    void UpdateEntryFields(TimeValue time);

    /// @name View state (view_range.cpp)
    /// @{
    ViewScale& Scale() { return scale_; }
    PaintState& Cache() { return paint_; }
    static float ClampXScale(float xs);
    static float ClampYScale(float ys);
    /// The graph's usable area (inset for the rulers under control flag 2).
    RECT UsableArea() const;
    /// X0 = 2 * hpos - 7.
    int HorizontalOffset() const;
    void SetHorizontalOffset(int x0);
    /// vpos as stored, or (inPixels) Y0 = trunc((Hm + 1) * vpos * 0.01) with bit 0 clear.
    int GetVerticalOffset(bool inPixels) const;
    void SetVerticalOffset(int value, bool inPixels);
    /// Both offsets in pixels (X0, Y0): the view a pan or zoom started from.
    void SetOffsets(int x0, int y0) {
        SetHorizontalOffset(x0);
        SetVerticalOffset(y0, true);
    }
    void UpdateHorizontalRange(int expandOnly);
    void UpdateVerticalRange(TimeValue time);
    /// Lowest and highest value of all curves at `time` (0, 0 without curves).
    void ValueBounds(TimeValue time, float& lo, float& hi) const;
    void ZoomHorizontalExtents(bool redraw);
    void ZoomVerticalExtents(TimeValue time, bool redraw);
    void ZoomExtents();
    /// The aspect coupling of the zoom modes: 1 when it applied (mode 4, locked).
    int AspectCoupling(int argument);
    /// Marks the caches invalid and invalidates the graph and the ruler (erasing only
    /// without double buffering); resets the last cursor position.
    void RefreshView();
    /// RefreshView, then the ruler and the graph painted at once (live pans and zooms).
    void RefreshViewNow();
    /// The frame's repaint request (message 0x2400): as RefreshView, never erasing.
    void RepaintRequest();
    /// The repaint of one step of a point or handle drag: the graph drawn again at once,
    /// and the ruler strip repainted from the picture it keeps (a drag step changes the
    /// view only by auto-scrolling, which drops that picture itself).
    void RepaintDragStep();
    /// The repaint as a drag ends: RepaintDragStep, then the whole editor window.
    void RepaintDragEnd();
    /// @}

    /// @name Parts, for the sub-windows, the modes and the view code
    /// @{
    CurveControl* Control() const { return control_; }
    HWND Frame() const { return frame_; }
    DWORD Flags() const;
    int InitMode() const { return mode_; }
    bool HasTopToolbar() const { return toolbars_.topWindow != nullptr; }
    bool HasBottomToolbar() const { return toolbars_.bottomWindow != nullptr; }
    EditorToolbars& Toolbars() { return toolbars_; }
    HWND VerticalBar() const { return vScrollBar_; }
    HWND HorizontalBar() const { return hScrollBar_; }
    CurveWindow& Graph() { return graph_; }
    PosWindow* Strip() { return strip_.get(); }
    MouseManager& Mice() { return mice_; }
    /// The mouse modes (one object of each, owned by the window).
    IEditorModes& Modes() { return *modes_; }
    const BitArray& ShownCurves() const { return shown_; }
    bool MouseActivated() const { return mouseActivated_ != 0; }
    /// @}

private:
    void createToolbars(); // toolbar_setup.cpp
    void buildViewToolbar();
    void buildEditToolbar();
    void addCurveButtons();
    void releaseControls();
    void flyOffSetup();
    void repaintStripNow(); // the strip's kept picture, at once (view_range.cpp)

    // Order matters for teardown: members are destroyed last to first, so the graph (and
    // its buffer) goes last, after the mouse manager and the modes.
    CurveWindow graph_;                   // the graph (member)
    std::unique_ptr<IEditorModes> modes_; // one object of each mouse mode (owned)
    MouseManager mice_;                   // hands the graph's mouse input to the modes
    DefTimeChangeCallback timeChange_;    // registered with the host while the window lives
    std::unique_ptr<PosWindow> strip_;    // the ruler strip (owned)

    CurveControl* control_ = nullptr; // the control shown (not owned)
    HWND frame_ = nullptr;            // the frame window ("DefPopUp") that owns this
    HWND vScrollBar_ = nullptr;       // child scroll bars (die with the window)
    HWND hScrollBar_ = nullptr;
    EditorToolbars toolbars_;  // toolbars and their controls
    int mode_ = 0;             // construction mode (4: aspect-locked extents)
    int editMode_ = -1;        // id of the checked edit button, -1 none
    int viewMode_ = kViewNone; // EditorViewMode
    BitArray shown_;           // the curves displayed, copied from the control
    ViewScale scale_;          // view scales
    PaintState paint_;         // painting caches
    int aspectLocked_ = 0;     // the scales are coupled (mode 4 only)
    Interval entryValid_;      // times the entry fields are right for (empty)
    int mouseActivated_ = 0;   // the window was activated by the mouse
};

/// The per-process double-buffering switch of the painting code (default on).
int& DoubleBuffering();
