// The editor's mouse modes: one object of each lives in every CurveCtlWindow
// (MouseModeSet, which the window sees as IEditorModes, editor/mode_link.h) and is
// installed on its MouseManager as the edit and view modes change.
//
//   DeformMouseProc            clicking, selecting and region boxes; hands drags to its
//                              sub-mode (move, scale or insert)
//   DeformMoveMouseProc        drags the selected points or the hit handles
//   DeformScaleMouseProc       scales the y of the selected points
//   DeformInsertMouseProc      inserts points where the curve is clicked
//   DeformRightMouseProc       the point context menu on a right click
//   DeformPanMouseProc         pans the view
//   DeformZoomMouseProc        the three zoom view modes
//   DeformZoomRegionMouseProc  zooms to a dragged box
//   DeformDummyMouseProc       the left button's mode while none applies: does nothing
//
// Each holds a back pointer to its window, set as the window makes its set, before any
// mode is installed; the window outlives them.
#pragma once

#include "editor/mode_link.h"
#include "host/geom.h"
#include "host/mouse_manager.h"

class CurveControl;
class CurveCtlWindow;

/// Selection and the press/drag/release bookkeeping shared by the editing modes
/// (deform_mouse_proc.cpp).
class DeformMouseProc : public MouseCallBack {
public:
    ~DeformMouseProc() override;
    /// MOUSE_POINT (press at point 0, else release), MOUSE_MOVE, MOUSE_ABORT and
    /// MOUSE_FREEMOVE; everything else is ignored. Always answers 1.
    int proc(HWND hwnd, int msg, int point, int flags, IPoint2 m) override;

    CurveCtlWindow* window = nullptr; // not owned
    MouseCallBack* subMode = nullptr; // the editing mode drags go to; not owned
    int dragging = 0;                 // moved more than 2 pixels since the press
    int pendingSelect = 0;            // the press hit a selected point, no modifiers
    int region = 0;                   // the press started a region box
    int add = 0;                      // Ctrl at the press
    int subtract = 0;                 // the subtract modifier (Alt) at the press
    int clearOnRelease = 0;           // a click on empty space clears the selection
    int subModeDragging = 0;          // the sub-mode accepted the press of this drag
    IPoint2 pressPoint;               // where the press was
    IPoint2 lastPoint;                // where the last move was

private:
    void press(HWND hwnd, int flags, IPoint2 m);
    void move(HWND hwnd, int point, int flags, IPoint2 m);
    void release(HWND hwnd, int point, int flags, IPoint2 m);
    void abort(HWND hwnd, int point, int flags, IPoint2 m);
    void freeMove(HWND hwnd, IPoint2 m);
};

/// Installed on the left button while no edit or view mode applies.
class DeformDummyMouseProc : public DeformMouseProc {
public:
    int proc(HWND, int, int, int, IPoint2) override { return 1; }
};

/// Pans the view while the button is held (pan_mode.cpp).
class DeformPanMouseProc : public DeformMouseProc {
public:
    int proc(HWND hwnd, int msg, int point, int flags, IPoint2 m) override;

    IPoint2 start;   // press point
    int startX0 = 0; // horizontal offset at the press
    int startY0 = 0; // vertical offset at the press
};

/// Zoom Horizontally, Zoom Vertically and Zoom, told apart by the window's view mode
/// (zoom_mode.cpp).
class DeformZoomMouseProc : public DeformMouseProc {
public:
    int proc(HWND hwnd, int msg, int point, int flags, IPoint2 m) override;

    IPoint2 start;         // press point
    float startYScale = 0; // y scale at the press
    float startXScale = 0; // x scale at the press
    int startY0 = 0;       // vertical offset at the press
    int startX0 = 0;       // horizontal offset at the press
    Point2 anchor;         // curve point that stays under the same pixel
};

/// Zooms the dragged box to fill the graph (zoom_region_mode.cpp).
class DeformZoomRegionMouseProc : public DeformMouseProc {
public:
    int proc(HWND hwnd, int msg, int point, int flags, IPoint2 m) override;

    IPoint2 start;    // press point
    IPoint2 previous; // opposite corner of the box drawn last
};

/// The allowed motion of one drag, computed at its first move and kept until the next
/// press (dx and dy for move, dy only for scale).
struct DragLimits {
    int computed = 0;          // the limits below hold for this drag
    float xLow = 0, xHigh = 0; // lowest and highest dx
    float yLow = 0, yHigh = 0; // lowest and highest dy
};

/// What the move and scale modes share: the press opens one drag, each move redoes it from
/// the press state, the release keeps it as one undo step and an abort rolls it back
/// (edit_drag.cpp). A drag still open when the mode goes (the editor closed under it) is
/// rolled back.
class EditDragMouseProc : public MouseCallBack {
public:
    ~EditDragMouseProc() override;
    /// MOUSE_POINT (press at point 0, else release), MOUSE_MOVE and MOUSE_ABORT.
    int proc(HWND hwnd, int msg, int point, int flags, IPoint2 m) final;

    CurveCtlWindow* window = nullptr; // not owned
    IPoint2 press;                    // press point
    DragLimits limits;                // of the drag in progress
    CurveControl* openDrag = nullptr; // control of the drag in progress, or null

protected:
    /// Opens the drag, or refuses the press (0).
    virtual int pressed(IPoint2 m) = 0;
    virtual void drag(int flags, IPoint2 m) = 0;
    /// Closes the drag: kept as one undo step (`accept`) or rolled back.
    virtual void finish(bool accept) = 0;
};

/// Drags the selected points of the displayed curves, or the handles hit at the press
/// (move_mode.cpp).
class DeformMoveMouseProc : public EditDragMouseProc {
public:
    int breakTangent = 0; // latched for the rest of a handle drag

private:
    int pressed(IPoint2 m) override;
    void drag(int flags, IPoint2 m) override;
    void finish(bool accept) override;
    void dragPoints(float dx, float dy);
    void dragHandles(int flags, float dx, float dy);
};

/// Scales the y of the selected points of the displayed curves about y = 0
/// (scale_mode.cpp). Its limits are those of dy only.
class DeformScaleMouseProc : public EditDragMouseProc {
public:
    float pressHeight = 0; // curve height under the press (d0)

private:
    /// The curve height under row `y`: (H - S - y) / yScale.
    float heightAt(int y);
    int pressed(IPoint2 m) override;
    void drag(int flags, IPoint2 m) override;
    void finish(bool accept) override;
};

/// Inserts a point into every curve segment under a click (insert_mode.cpp). Answers 0
/// to the press: the insertion is complete at once and no drag follows.
class DeformInsertMouseProc : public MouseCallBack {
public:
    int proc(HWND hwnd, int msg, int point, int flags, IPoint2 m) override;

    CurveCtlWindow* window = nullptr; // not owned
};

/// The point context menu (menu 101) on the right button's click (right_click_menu.cpp);
/// the graph carries out the chosen command (editor/point_menu_commands.cpp).
class DeformRightMouseProc : public MouseCallBack {
public:
    int proc(HWND hwnd, int msg, int point, int flags, IPoint2 m) override;

    CurveCtlWindow* window = nullptr; // not owned
};

/// One of each mode, as a CurveCtlWindow holds them (through IEditorModes; made by
/// CreateEditorModes, mode_set.cpp).
class MouseModeSet final : public IEditorModes {
public:
    /// Points every mode back at `w`.
    explicit MouseModeSet(CurveCtlWindow* w);

    MouseCallBack* Get(Mode mode) override;
    void SetDragMode(Mode mode) override;

    DeformMouseProc base;
    DeformZoomMouseProc zoom;
    DeformZoomRegionMouseProc zoomRegion;
    DeformPanMouseProc pan;
    DeformRightMouseProc right;
    DeformMoveMouseProc move;
    DeformScaleMouseProc scale;
    DeformInsertMouseProc insert;
    DeformDummyMouseProc dummy;
};
