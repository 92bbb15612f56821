/// @file
/// ICurve: one editable function curve y = f(x) of a curve control, as clients see it.
///
/// A curve is a table of points (CurveKnot) in x order joined by cubic Bezier segments.
/// Clients get curves from ICurveCtl::GetCurve and must not delete them. All operations
/// but ValueAt run on the host's user-interface thread; ValueAt may be called from any
/// number of threads at once.
#pragma once

#include "curvectl/curve_knot.h"
#include "host/animatable.h"
#include "host/bitarray.h"
#include "host/interval.h"
#include "host/win_types.h"

/// The most points a curve holds and the most curves a control holds. SetPointCount and
/// ICurveCtl::SetCurveCount refuse a larger count (nothing changes), InsertKnot does not
/// grow a curve that holds this many, and a scene file that announces more is damaged
/// (its load ends with a read error).
#define CURVECTL_MAX_COUNT 16384

/// @name Interface ids
/// The ids under which a curve answers its host interface query (`GetInterface`) with
/// itself.
/// @{
#define I_CURVE_INTERFACE 0x66B073EA     ///< The curve as ICurve.
#define I_CURVE_INTERFACE_ALT 0x02F96F73 ///< The same interface under its second id.
/// @}

/// @name Selection modes
/// The `mode` argument of ICurve::SetSelection.
/// @{
#define CURVE_SELECT_ADD 1     ///< Adds the given points to the selection.
#define CURVE_SELECT_REMOVE 2  ///< Removes the given points from the selection.
#define CURVE_SELECT_REPLACE 4 ///< Makes the given points the whole selection.
/// @}

/// @name End behaviours
/// How a curve continues outside the control's x range (ICurve::SetEndBehaviour).
/// @{
#define CURVE_END_LINEAR 0 ///< Continues in a straight line along the end tangent (default).
#define CURVE_END_HOLD 1   ///< Holds the value of the end point.
/// @}

/// One editable function curve of a curve control.
///
/// **Threads.** Every operation but ValueAt runs on the host's user-interface thread only.
/// ValueAt may run on any number of threads at once, also while the user-interface thread
/// edits the curve.
///
/// **Lifetime.** The control owns its curves: never delete one, and do not keep the
/// pointer longer than the curve belongs to the control (see ICurveCtl::GetCurve for what
/// ends that). Hand a curve to worker threads only for work that has finished before the
/// user-interface thread next changes the control's set of curves.
///
/// **Errors.** Nothing is thrown and no error is reported: an index out of range gives an
/// all-zero record, FALSE or no change, as each operation says.
///
/// **Undo.** Every change that the user could undo puts an undo record while the host's
/// hold is holding; outside a hold the change is made without one.
class ICurve : public ReferenceTarget {
public:
    /// @name Pens
    /// The pen the editor draws the curve with while it is displayed (enabled) or hidden
    /// (disabled). Setting one repaints an open editor.
    /// @{

    /// Sets the pen of the displayed curve: any colour, a width in pixels (0 draws one
    /// pixel wide) and a Windows pen style (`PS_SOLID` ...). User-interface thread.
    virtual void SetPen(COLORREF colour, int width, int style) = 0;
    /// Writes the pen of the displayed curve into the three arguments (black, 0, solid
    /// until set). User-interface thread.
    virtual void GetPen(COLORREF& colour, int& width, int& style) = 0;
    /// Sets the pen of the curve while it is not displayed; as SetPen.
    virtual void SetDisabledPen(COLORREF colour, int width, int style) = 0;
    /// Writes the pen of the curve while it is not displayed (grey 0xC0C0C0, 0, solid
    /// until set). User-interface thread.
    virtual void GetDisabledPen(COLORREF& colour, int& width, int& style) = 0;
    /// @}

    /// y at x at time t. Outside the control's x range the curve continues by its end
    /// behaviour. `valid` is narrowed to the times for which the answer holds. With
    /// `useLookup` the answer comes from a table of evenly spaced samples (faster,
    /// approximate). A curve without points answers 0.
    ///
    /// Any x may be passed, inside or outside the range; t is any host time (it matters
    /// only for animated points); `valid` is intersected, never widened, so start it at
    /// FOREVER. The lookup table has GetLookupSize() intervals over the x range and is
    /// rebuilt after each change; FALSE evaluates the Bezier segments exactly.
    ///
    /// Any thread, any number at once, also while the user-interface thread edits the
    /// curve; never throws.
    virtual float ValueAt(TimeValue t, float x, Interval& valid, BOOL useLookup = TRUE) = 0;

    /// @name Animation of points
    /// An animated point takes its position from a host controller at each time. In the
    /// host's animate mode, points that the user moves in the editor get a controller
    /// (and a key) when the curve is animatable. User-interface thread.
    /// @{

    /// Allows (TRUE) or forbids (FALSE) controllers on the points; new curves allow them.
    /// FALSE removes every point controller at once.
    virtual void SetAnimatable(BOOL on) = 0;
    /// Whether points may get controllers.
    virtual BOOL IsAnimatable() = 0;
    /// Whether point i has a controller; FALSE for i at or beyond the count.
    virtual BOOL IsPointAnimated(int i) = 0;
    /// @}

    /// @name Points
    /// User-interface thread.
    /// @{

    /// The number of points, 0 or more.
    virtual int PointCount() = 0;
    /// Discards every point and makes n zeroed points (the first and last flagged
    /// KNOT_ENDPOINT | KNOT_CORNER), as one undoable step. Also resets the end behaviour.
    /// Even an n equal to the count discards the points: set each one again afterwards
    /// with SetKnot. A negative n makes no points. A count above CURVECTL_MAX_COUNT, or
    /// one the memory cannot hold, is refused: nothing changes.
    virtual void SetPointCount(int n) = 0;
    /// One bit per point: set when the point is selected. The array has PointCount() bits.
    virtual BitArray GetSelection() = 0;
    /// mode 1 adds `sel` to the selection, 2 removes it, 4 replaces the selection by it.
    /// The modes are named CURVE_SELECT_ADD, CURVE_SELECT_REMOVE and CURVE_SELECT_REPLACE;
    /// any other mode changes nothing. Bits of `sel` beyond the point count are ignored
    /// and missing bits count as clear. A change is recorded for undo and the client
    /// window hears CURVE_MSG_SELECTION, unless the selection was and stays empty.
    virtual void SetSelection(BitArray sel, int mode) = 0;
    /// Replaces point i (ignored when i is out of range). With `checkConstraints` the
    /// point is kept between its neighbours and in the y range; with `notify` the
    /// client window hears CURVE_MSG_POINT_CHANGED (and tangent messages).
    /// Also ignored when a coordinate of `knot` is not finite. `knot.pos` is the position
    /// at time t: an animated point's controller is set at t. Handles are relative to the
    /// position. The flags of `knot` are taken over; a change of its KNOT_SELECTED bit
    /// goes through the selection (with its record and message), and a change of its
    /// point type converts the handles as the editor's point menu does.
    virtual void SetKnot(TimeValue t, int i, const CurveKnot& knot, BOOL checkConstraints = TRUE,
                         BOOL notify = TRUE) = 0;
    /// Point i at time t; an all-zero record for an index out of range.
    /// An animated point's position is its controller's at t, and `valid` is narrowed to
    /// the times for which that holds; handles and flags come from the table.
    virtual CurveKnot GetKnot(TimeValue t, int i, Interval& valid) = 0;
    /// @}

    /// @name Outside the x range
    /// 0 continues along the end tangent, 1 holds the end value; other values are ignored.
    /// The values are named CURVE_END_LINEAR and CURVE_END_HOLD. User-interface thread.
    /// @{

    /// Sets the end behaviour of both ends; it is not an undoable change.
    virtual void SetEndBehaviour(int mode) = 0;
    /// The end behaviour, CURVE_END_LINEAR or CURVE_END_HOLD.
    virtual int GetEndBehaviour() = 0;
    /// @}

    /// @name Inserting and deleting
    /// User-interface thread.
    /// @{

    /// Inserts `knot` as it is at index `where` (clamped into 0 .. PointCount()); returns
    /// the index, or -1 (nothing changes) for a knot with a non-finite coordinate or a
    /// curve that holds CURVECTL_MAX_COUNT points already. The new point has no controller.
    /// The client window hears CURVE_MSG_POINT_INSERTED, then, when the knot is selected,
    /// CURVE_MSG_SELECTION. `noRecord` TRUE makes no undo record and sends no message (used
    /// by undo itself).
    /// The caller keeps the points in x order: the knot is not moved to where its x
    /// belongs. -1 also answers a failed allocation; the curve is then unchanged.
    virtual int InsertKnotEx(int where, CurveKnot knot, BOOL noRecord) = 0;
    /// InsertKnotEx(where, knot, FALSE): recorded for undo while the hold is holding.
    virtual int InsertKnot(int where, CurveKnot knot) = 0;
    /// Deletes point i and its controller (ignored when i is out of range); the client
    /// window hears CURVE_MSG_POINT_DELETED. When the first or last point goes, its
    /// neighbour becomes the new end point (KNOT_ENDPOINT, never Bezier-Smooth).
    virtual void DeleteKnot(int i) = 0;
    /// @}

    /// @name Lookup table
    /// Number of intervals of the lookup table that ValueAt uses (default 1000).
    /// User-interface thread.
    /// @{

    /// Sets the number of intervals; a new size empties the table, which the next
    /// ValueAt with lookup rebuilds. Sizes below 1, or too large to build (above 2^24),
    /// are kept as given but evaluate exactly instead.
    virtual void SetLookupSize(int n) = 0;
    /// The number of intervals, as last set.
    virtual int GetLookupSize() = 0;
    /// @}
};
