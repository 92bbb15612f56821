/// @file
/// ICurveCtl: a curve control. Clients create one through the module's class descriptor
/// (ClassDirectory::FindClass with CURVE_CONTROL_CLASS_ID), configure it and read its
/// curves. Every operation runs on the host's user-interface thread; no operation throws
/// or reports errors: out-of-range arguments give null, FALSE or no change.
/// curvectl/client.h does the finding and creating in one call.
#pragma once

#include "curvectl/icurve.h"
#include "curvectl/messages.h"
#include "host/animatable.h"
#include "host/bitarray.h"
#include "host/geom.h"
#include "host/win_types.h"

/// @name Class ids
/// Saved scenes name the two classes of the module by these ids; they never change.
/// @{
#define CURVE_CONTROL_CLASS_ID Class_ID(0x14585773, 0x483A7DCF) ///< The curve control.
#define CURVE_CLASS_ID Class_ID(0x5F2D3A0A, 0x4BE75269)         ///< One curve of a control.
/// The super class id of both classes (a reference target).
#define CURVE_CONTROL_SUPER_CLASS_ID 0x00000100
/// @}

/// @name Control flags (SetControlFlags); the default is 0x3FFFF. Bits not named here are
/// kept as stored.
/// @{
#define CC_DRAWBG 0x1                 ///< 3-D frame and background grid
#define CC_DRAWRULER 0x2              ///< rulers with value labels
#define CC_SHOWTOOLBAR 0x4            ///< upper toolbar: modes, curve buttons, delete, reset
#define CC_SHOWRESET 0x8              ///< "Reset Curves" in the upper toolbar
#define CC_SHOWZOOMTOOLBAR 0x10       ///< lower toolbar: status, entry fields, view tools
#define CC_SHOWSCROLLBARS 0x20        ///< scroll bars and view navigation (wheel)
#define CC_AUTOSCROLL 0x40            ///< drags near the edge scroll the view
#define CC_SHOWPOSWINDOW 0x80         ///< the ruler strip
#define CC_ASPOPUP 0x100              ///< floating editor instead of embedded
#define CC_CONSTRAIN_Y 0x200          ///< points and handles stay inside the y range
#define CC_HIDE_DISABLED_CURVES 0x400 ///< curves not displayed are not drawn at all
#define CC_SHOW_CURRENTXVAL 0x40000   ///< marker line at SetMarkerX
#define CC_SINGLESELECT 0x80000       ///< a click stops at the first curve with a point hit
#define CC_NOFILTERBUTTONS 0x100000   ///< no per-curve display buttons
/// The flags of a new control: bits 0 to 17 (the marker line, single selection and
/// hidden filter buttons are off).
#define CC_DEFAULT_FLAGS 0x3FFFF
/// @}

/// @name Tool modes
/// The mouse mode of the editor's graph (ICurveCtl::SetToolMode).
/// @{
#define CC_TOOL_MOVE_XY 0       ///< Move points in x and y (the default).
#define CC_TOOL_MOVE_X 1        ///< Move points in x only.
#define CC_TOOL_MOVE_Y 2        ///< Move points in y only.
#define CC_TOOL_SCALE 3         ///< Scale the selected points' y.
#define CC_TOOL_INSERT_CORNER 4 ///< Insert corner points where the curve is clicked.
#define CC_TOOL_INSERT_BEZIER 5 ///< Insert Bezier points where the curve is clicked.
/// @}

/// A curve control: a set of editable function curves with their ranges, flags and
/// editor.
///
/// **Creating one.** Through the module's class descriptor, never with `new`: a client
/// does not link the module. curvectl::CreateCurveControl (curvectl/client.h) does it in
/// one call. Hold the control as a reference of your object (`ReplaceReference`), so that
/// it is saved, undone and deleted with it; never delete it yourself.
///
/// **Threads.** Every operation runs on the host's user-interface thread. Only the
/// curves' ICurve::ValueAt may run on other threads.
///
/// **Errors.** Nothing is thrown and no error is reported: an argument out of range gives
/// null, FALSE or no change, as each operation says.
///
/// **Messages.** While the user edits, the window named with SetNotifyWindow hears the
/// CURVE_MSG_... messages (curvectl/messages.h), synchronously, after the change is made.
class ICurveCtl : public ReferenceTarget {
public:
    /// @name The editor window
    /// @{

    /// Whether the editor is open (embedded or floating).
    virtual BOOL IsEditorOpen() = 0;
    /// Opens (floating with CC_ASPOPUP, else embedded in the parent window) or closes the
    /// editor; TRUE when it is open afterwards. An embedded editor needs a parent window.
    /// Opening an open editor does nothing and answers TRUE. The flags (toolbars, rulers,
    /// CC_ASPOPUP) are read when the editor opens: close and open it again to apply new
    /// ones. A closing floating editor keeps its place for the next opening.
    virtual BOOL SetEditorOpen(BOOL open) = 0;
    /// The editor's outer window; 0 while it is closed. The handle is valid until the
    /// editor closes (SetEditorOpen(FALSE), the control's deletion, or the user closing a
    /// floating editor).
    virtual HWND GetEditorWindow() = 0;
    /// @}

    /// @name Curves
    /// @{

    /// Grows or shrinks the set of curves; a negative n counts as 0. New curves run flat
    /// at y 0 across the x range. With `undoable` the change is one undo record.
    /// The registered client's ICurveCtlClient::NewCurveCreated is called for each new
    /// curve, in index order, to shape it. Curves 0 .. n - 1 that existed keep their
    /// objects; a shrink removes the curves from n on, and their pointers become invalid
    /// (undo may bring the same objects back as curves of the control). A count above
    /// CURVECTL_MAX_COUNT (icurve.h), or a growth the memory cannot hold, is refused:
    /// nothing changes.
    virtual void SetCurveCount(int n, BOOL undoable = TRUE) = 0;
    /// The number of curves, 0 or more.
    virtual int GetCurveCount() = 0;
    /// @}

    /// @name Ranges
    /// The x range is the domain of every curve: the end points sit on its ends. The y
    /// range is what the editor shows (and, with CC_CONSTRAIN_Y, where points stay).
    /// Both start as 0 .. 1.
    /// @{

    /// Ignored (nothing changes) unless low < high and both are finite numbers: a range
    /// without width, an inverted one or one with a not-a-number or infinite end. With
    /// `rescale` every point is mapped into the new range, as one undoable change of the
    /// positions and tangents when the hold is holding. Without it the points keep their
    /// x (the end points still sit on the range's ends).
    virtual void SetXRange(float low, float high, BOOL rescale = TRUE) = 0;
    /// Sets the y range; no point is moved or clamped, and nothing is redrawn.
    virtual void SetYRange(float low, float high) = 0;
    /// The x range: x is the low end, y the high end.
    virtual Point2 GetXRange() = 0;
    /// The y range: x is the low end, y the high end.
    virtual Point2 GetYRange() = 0;
    /// @}

    /// The client's own object, asked (GetInterface) for the client callback interface.
    /// No reference is made.
    /// The control keeps the plain pointer and calls the object whenever it needs it
    /// (new curves, reset, the editor's buttons), so it must be cleared with null before
    /// the object dies: curvectl::ClientRegistration (curvectl/client.h) does both. Null
    /// unregisters; an object without the interface is never called. The registration is
    /// not saved: register again when a scene load or undo hands you the control.
    virtual void RegisterClientObject(ReferenceTarget* client) = 0;

    /// @name View state
    /// Get... returns FALSE (and writes nothing) until a value was set or captured from
    /// an open editor; either pointer may be null.
    /// The view state is saved with the control.
    /// @{

    /// The horizontal and vertical zoom of the graph (an open editor's current zoom).
    virtual BOOL GetZoomState(float* h, float* v) = 0;
    /// Sets the zoom; an open editor takes it at once, clamped to its limits.
    virtual void SetZoomState(float h, float v) = 0;
    /// The horizontal and vertical scroll bar positions of the graph.
    virtual BOOL GetScrollState(int* h, int* v) = 0;
    /// Sets the scroll positions; an open editor takes them at once.
    virtual void SetScrollState(int h, int v) = 0;
    /// Zooms an open editor so that every displayed curve fits; nothing while closed.
    virtual void ZoomExtents() = 0;
    /// @}

    /// The caption of a floating editor (default "Curve Control"); null counts as empty.
    /// The text is copied. An open editor shows it at the next SetShownCurves.
    virtual void SetTitle(const char* title) = 0;
    /// Curve i; null when i is out of range.
    ///
    /// The pointer is valid while the curve belongs to the control: it becomes invalid
    /// when SetCurveCount shrinks the set below i + 1, when DeleteCurve removes it (the
    /// curves after it move down one index and keep their objects), when undo or redo of
    /// such a change takes it out of the set, and when the control itself goes (a scene
    /// load replaces the whole control, and your object gets the new one through
    /// SetReference). Ask again after any of these rather than keeping pointers; never
    /// delete a curve.
    virtual ICurve* GetCurve(int i) = 0;

    /// @name Which curves are displayed (and editable)
    /// @{

    /// Bit i set: curve i is displayed and editable in the editor. A shorter array is
    /// lengthened to the curve count keeping its bits; the array is copied. With the
    /// editor open the change is recorded for undo and repainted.
    virtual void SetShownCurves(BitArray mode) = 0;
    /// A copy of the display bits; it may have more bits than there are curves.
    virtual BitArray GetShownCurves() = 0;
    /// @}

    /// @name Flags and windows
    /// @{

    /// Sets the CC_... flags; bits that are not named are kept as given. An open editor
    /// repaints but keeps its toolbars and layout until it is opened again.
    virtual void SetControlFlags(DWORD flags) = 0;
    /// The flags as last set (CC_DEFAULT_FLAGS for a new control).
    virtual DWORD GetControlFlags() = 0;
    /// The window an embedded editor fills, or that owns a floating one; 0 for none (a
    /// floating editor is then owned by the host's main window). Read when the editor
    /// opens; the window must outlive the open editor.
    virtual void SetParentWindow(HWND parent) = 0;
    /// The window that receives the CURVE_MSG_... messages; 0 sends none.
    /// Set 0 before the window is destroyed.
    virtual void SetNotifyWindow(HWND notify) = 0;
    /// Selects the editor's mouse mode, one of the CC_TOOL_... values; another value is
    /// stored but selects moving in x and y.
    virtual void SetToolMode(int mode) = 0;
    /// The mouse mode, one of the CC_TOOL_... values (an open editor's current one).
    virtual int GetToolMode() = 0;
    /// @}

    /// Repaints an open editor (unless drawing is disabled).
    virtual void Redraw() = 0;
    /// The times at t for which every curve's value stays the same.
    /// FOREVER when no point is animated.
    virtual Interval GetValidity(TimeValue t) = 0;
    /// Narrows `valid` by GetValidity(t).
    virtual void Update(TimeValue t, Interval& valid) = 0;
    /// The x of the marker line (CC_SHOW_CURRENTXVAL).
    /// An open editor repaints when x differs from the stored value.
    virtual void SetMarkerX(float x) = 0;
    /// FALSE stops Redraw from repainting (to batch many changes); TRUE allows it again.
    /// Call Redraw after turning it back on.
    virtual void EnableRedraw(BOOL enable) = 0;
    /// Removes curve i (as one undo record while the hold is active).
    /// Ignored when i is out of range. The pointer to curve i becomes invalid; the curves
    /// after it move down one index and keep their objects.
    virtual void DeleteCurve(int i) = 0;
    /// Calls the client's ResetCurve for every displayed curve, as one undo step.
    /// With no client registered it only adds the (empty) step and repaints.
    virtual void ResetSelectedCurves() = 0;
};

/// The interface id under which the control asks a client object (RegisterClientObject)
/// for its ICurveCtlClient.
#define CURVE_CLIENT_INTERFACE_ID 0x2474334A

/// The client callback interface, which a client object returns from
/// GetInterface(CURVE_CLIENT_INTERFACE_ID).
///
/// The control calls these on the user-interface thread, from inside the operation that
/// needs them; the ICurveCtl argument is the calling control. A client must not delete
/// the control or its curves from a callback.
///
/// Its table holds exactly these four operations, in this slot order, and nothing else:
/// 0 GetCurveButtonImages, 1 GetCurveButtonText, 2 ResetCurve, 3 NewCurveCreated. A client
/// written in another language (or in C) builds the same table as a plain structure of
/// four function pointers, each taking the interface pointer first. So the interface
/// declares no virtual destructor (which would take slots of its own ahead of the
/// operations): the destructor is protected and not virtual, and the control never
/// deletes a client interface. The client owns and deletes its object as its own type.
class ICurveCtlClient {
public:
    /// Slot 0. Supplies the image list of the curve display buttons; FALSE keeps the
    /// built-in one.
    /// Called when the editor builds its curve buttons: write the list to `*images` and
    /// answer TRUE. Image i is curve i's button (16 x 15 pixels). The control keeps the
    /// handle and does not destroy it: keep the list alive while any editor may show it.
    virtual BOOL GetCurveButtonImages(HIMAGELIST* images, ICurveCtl* control) = 0;
    /// Slot 1. Supplies the tooltip of curve i's display button; TRUE when `text` was
    /// written.
    /// Called for each curve when the editor builds its buttons; FALSE keeps the default.
    virtual BOOL GetCurveButtonText(int i, CStr& text, ICurveCtl* control) = 0;
    /// Slot 2. Resets curve i to the client's default shape.
    /// Called by ICurveCtl::ResetSelectedCurves (the editor's "Reset Curves") for each
    /// displayed curve, inside its undo step: the changes made here are undone with it.
    virtual void ResetCurve(int i, ICurveCtl* control) = 0;
    /// Slot 3. Curve i was just created by SetCurveCount.
    /// Give it its pens, points and settings here (`control->GetCurve(i)`).
    virtual void NewCurveCreated(int i, ICurveCtl* control) = 0;

protected:
    /// Made only as a base of the client's own object.
    ICurveCtlClient() = default;
    /// Copied only with the client's own object.
    ICurveCtlClient(const ICurveCtlClient&) = default;
    /// Assigned only with the client's own object.
    ICurveCtlClient& operator=(const ICurveCtlClient&) = default;
    /// Not virtual, and not public: the control never deletes a client interface, and
    /// `delete` through one does not compile.
    ~ICurveCtlClient() = default;
};
