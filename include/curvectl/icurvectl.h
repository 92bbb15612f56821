// ICurveCtl: a curve control. Clients create one through the module's class descriptor
// (ClassDirectory::FindClass with CURVE_CONTROL_CLASS_ID), configure it and read its
// curves. Every operation runs on the host's user-interface thread; no operation throws
// or reports errors: out-of-range arguments give null, FALSE or no change.
#pragma once

#include "curvectl/icurve.h"
#include "curvectl/messages.h"
#include "host/animatable.h"
#include "host/bitarray.h"
#include "host/geom.h"
#include "host/win_types.h"

#define CURVE_CONTROL_CLASS_ID Class_ID(0x14585773, 0x483A7DCF)
#define CURVE_CLASS_ID Class_ID(0x5F2D3A0A, 0x4BE75269)
#define CURVE_CONTROL_SUPER_CLASS_ID 0x00000100

/// @name Control flags (SetControlFlags); the default is 0x3FFFF. Bits not named here are
/// kept as stored.
/// @{
#define CC_DRAWBG 0x1                 // 3-D frame and background grid
#define CC_DRAWRULER 0x2              // rulers with value labels
#define CC_SHOWTOOLBAR 0x4            // upper toolbar: modes, curve buttons, delete, reset
#define CC_SHOWRESET 0x8              // "Reset Curves" in the upper toolbar
#define CC_SHOWZOOMTOOLBAR 0x10       // lower toolbar: status, entry fields, view tools
#define CC_SHOWSCROLLBARS 0x20        // scroll bars and view navigation (wheel)
#define CC_AUTOSCROLL 0x40            // drags near the edge scroll the view
#define CC_SHOWPOSWINDOW 0x80         // the ruler strip
#define CC_ASPOPUP 0x100              // floating editor instead of embedded
#define CC_CONSTRAIN_Y 0x200          // points and handles stay inside the y range
#define CC_HIDE_DISABLED_CURVES 0x400 // curves not displayed are not drawn at all
#define CC_SHOW_CURRENTXVAL 0x40000   // marker line at SetMarkerX
#define CC_SINGLESELECT 0x80000       // a click stops at the first curve with a point hit
#define CC_NOFILTERBUTTONS 0x100000   // no per-curve display buttons
#define CC_DEFAULT_FLAGS 0x3FFFF
/// @}

/// Tool modes (SetToolMode).
#define CC_TOOL_MOVE_XY 0
#define CC_TOOL_MOVE_X 1
#define CC_TOOL_MOVE_Y 2
#define CC_TOOL_SCALE 3
#define CC_TOOL_INSERT_CORNER 4
#define CC_TOOL_INSERT_BEZIER 5

class ICurveCtl : public ReferenceTarget {
public:
    /// @name The editor window
    /// @{
    virtual BOOL IsEditorOpen() = 0;
    /// Opens (floating with CC_ASPOPUP, else embedded in the parent window) or closes the
    /// editor; TRUE when it is open afterwards. An embedded editor needs a parent window.
    virtual BOOL SetEditorOpen(BOOL open) = 0;
    virtual HWND GetEditorWindow() = 0;
    /// @}

    /// @name Curves
    /// @{
    /// Grows or shrinks the set of curves; a negative n counts as 0. New curves run flat
    /// at y 0 across the x range. With `undoable` the change is one undo record.
    virtual void SetCurveCount(int n, BOOL undoable = TRUE) = 0;
    virtual int GetCurveCount() = 0;
    /// @}

    /// @name Ranges
    /// @{
    /// Ignored when low > high. With `rescale` every point is mapped into the new range.
    virtual void SetXRange(float low, float high, BOOL rescale = TRUE) = 0;
    virtual void SetYRange(float low, float high) = 0;
    virtual Point2 GetXRange() = 0;
    virtual Point2 GetYRange() = 0;
    /// @}

    /// The client's own object, asked (GetInterface) for the client callback interface.
    /// No reference is made.
    virtual void RegisterClientObject(ReferenceTarget* client) = 0;

    /// @name View state
    /// Get... returns FALSE (and writes nothing) until a value was set or captured from
    /// an open editor; either pointer may be null.
    /// @{
    virtual BOOL GetZoomState(float* h, float* v) = 0;
    virtual void SetZoomState(float h, float v) = 0;
    virtual BOOL GetScrollState(int* h, int* v) = 0;
    virtual void SetScrollState(int h, int v) = 0;
    virtual void ZoomExtents() = 0;
    /// @}

    virtual void SetTitle(const char* title) = 0;
    /// Curve i; null when i is out of range.
    virtual ICurve* GetCurve(int i) = 0;

    /// @name Which curves are displayed (and editable)
    /// @{
    virtual void SetShownCurves(BitArray mode) = 0;
    virtual BitArray GetShownCurves() = 0;
    /// @}

    /// @name Flags and windows
    /// @{
    virtual void SetControlFlags(DWORD flags) = 0;
    virtual DWORD GetControlFlags() = 0;
    virtual void SetParentWindow(HWND parent) = 0;
    /// The window that receives the CURVE_MSG_... messages; 0 sends none.
    virtual void SetNotifyWindow(HWND notify) = 0;
    virtual void SetToolMode(int mode) = 0;
    virtual int GetToolMode() = 0;
    /// @}

    /// Repaints an open editor (unless drawing is disabled).
    virtual void Redraw() = 0;
    /// The times at t for which every curve's value stays the same.
    virtual Interval GetValidity(TimeValue t) = 0;
    /// Narrows `valid` by GetValidity(t).
    virtual void Update(TimeValue t, Interval& valid) = 0;
    /// The x of the marker line (CC_SHOW_CURRENTXVAL).
    virtual void SetMarkerX(float x) = 0;
    virtual void EnableRedraw(BOOL enable) = 0;
    /// Removes curve i (as one undo record while the hold is active).
    virtual void DeleteCurve(int i) = 0;
    /// Calls the client's ResetCurve for every displayed curve, as one undo step.
    virtual void ResetSelectedCurves() = 0;
};

/// The client callback interface, which a client object returns from
/// GetInterface(CURVE_CLIENT_INTERFACE_ID).
#define CURVE_CLIENT_INTERFACE_ID 0x2474334A

class ICurveCtlClient {
public:
    virtual ~ICurveCtlClient() = default;
    /// Supplies the image list of the curve display buttons; FALSE keeps the built-in one.
    virtual BOOL GetCurveButtonImages(HIMAGELIST* images, ICurveCtl* control) = 0;
    /// Supplies the tooltip of curve i's display button; TRUE when `text` was written.
    virtual BOOL GetCurveButtonText(int i, CStr& text, ICurveCtl* control) = 0;
    /// Resets curve i to the client's default shape.
    virtual void ResetCurve(int i, ICurveCtl* control) = 0;
    /// Curve i was just created by SetCurveCount.
    virtual void NewCurveCreated(int i, ICurveCtl* control) = 0;
};
