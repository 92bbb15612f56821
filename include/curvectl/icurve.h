// ICurve: one editable function curve y = f(x) of a curve control, as clients see it.
//
// A curve is a table of points (CurveKnot) in x order joined by cubic Bezier segments.
// Clients get curves from ICurveCtl::GetCurve and must not delete them. All operations
// but ValueAt run on the host's user-interface thread; ValueAt may be called from any
// number of threads at once.
#pragma once

#include "curvectl/curve_knot.h"
#include "host/animatable.h"
#include "host/bitarray.h"
#include "host/interval.h"
#include "host/win_types.h"

/// Interface ids under which a curve answers GetInterface.
#define I_CURVE_INTERFACE 0x66B073EA
#define I_CURVE_INTERFACE_ALT 0x02F96F73

class ICurve : public ReferenceTarget {
public:
    /// @name Pens
    /// The pen the editor draws the curve with while it is displayed (enabled) or hidden
    /// (disabled). Setting one repaints an open editor.
    /// @{
    virtual void SetPen(COLORREF colour, int width, int style) = 0;
    virtual void GetPen(COLORREF& colour, int& width, int& style) = 0;
    virtual void SetDisabledPen(COLORREF colour, int width, int style) = 0;
    virtual void GetDisabledPen(COLORREF& colour, int& width, int& style) = 0;
    /// @}

    /// y at x at time t. Outside the control's x range the curve continues by its end
    /// behaviour. `valid` is narrowed to the times for which the answer holds. With
    /// `useLookup` the answer comes from a table of evenly spaced samples (faster,
    /// approximate). A curve without points answers 0.
    virtual float ValueAt(TimeValue t, float x, Interval& valid, BOOL useLookup = TRUE) = 0;

    /// @name Animation of points
    /// @{
    /// FALSE removes every point controller at once.
    virtual void SetAnimatable(BOOL on) = 0;
    virtual BOOL IsAnimatable() = 0;
    /// Whether point i has a controller; FALSE for i at or beyond the count.
    virtual BOOL IsPointAnimated(int i) = 0;
    /// @}

    /// @name Points
    /// @{
    virtual int PointCount() = 0;
    /// Discards every point and makes n zeroed points (the first and last flagged
    /// KNOT_ENDPOINT | KNOT_CORNER), as one undoable step. Also resets the end behaviour.
    virtual void SetPointCount(int n) = 0;
    /// One bit per point: set when the point is selected.
    virtual BitArray GetSelection() = 0;
    /// mode 1 adds `sel` to the selection, 2 removes it, 4 replaces the selection by it.
    virtual void SetSelection(BitArray sel, int mode) = 0;
    /// Replaces point i (ignored when i is out of range). With `checkConstraints` the
    /// point is kept between its neighbours and in the y range; with `notify` the
    /// client window hears CURVE_MSG_POINT_CHANGED (and tangent messages).
    virtual void SetKnot(TimeValue t, int i, const CurveKnot& knot, BOOL checkConstraints = TRUE,
                         BOOL notify = TRUE) = 0;
    /// Point i at time t; an all-zero record for an index out of range.
    virtual CurveKnot GetKnot(TimeValue t, int i, Interval& valid) = 0;
    /// @}

    /// @name Outside the x range
    /// 0 continues along the end tangent, 1 holds the end value; other values are ignored.
    /// @{
    virtual void SetEndBehaviour(int mode) = 0;
    virtual int GetEndBehaviour() = 0;
    /// @}

    /// @name Inserting and deleting
    /// @{
    /// Inserts `knot` as it is at index `where` (clamped into 0 .. PointCount()); returns
    /// the index, or -1 for a knot with a non-finite coordinate. The new point has no
    /// controller. The client window hears CURVE_MSG_POINT_INSERTED, then, when the knot is
    /// selected, CURVE_MSG_SELECTION. `noRecord` TRUE makes no undo record and sends no
    /// message (used by undo itself).
    virtual int InsertKnotEx(int where, CurveKnot knot, BOOL noRecord) = 0;
    virtual int InsertKnot(int where, CurveKnot knot) = 0;
    /// Deletes point i and its controller (ignored when i is out of range); the client
    /// window hears CURVE_MSG_POINT_DELETED. When the first or last point goes, its
    /// neighbour becomes the new end point (KNOT_ENDPOINT, never Bezier-Smooth).
    virtual void DeleteKnot(int i) = 0;
    /// @}

    /// @name Lookup table
    /// Number of intervals of the lookup table that ValueAt uses (default 1000).
    /// @{
    virtual void SetLookupSize(int n) = 0;
    virtual int GetLookupSize() = 0;
    /// @}
};
