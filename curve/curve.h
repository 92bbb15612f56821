// Curve: one editable function curve y = f(x) of a curve control.
//
// A Curve is a host ReferenceTarget whose references are its point controllers (reference
// i animates point i, null when point i is not animated). Its owner, the CurveControl that
// holds it, supplies the x and y ranges and the flag word and receives redraw requests;
// the owner's notify window receives the client messages.
//
// Where each group of operations is implemented:
//   curve.cpp         construction, copying, resizing, the host-facing face, simple queries
//   curve_eval.cpp    evaluation and its caches
//   curve_batch.cpp   batch evaluation (ICurveBatch; kernels in curve_batch_*.cpp)
//   curve_lookup_accuracy.cpp  lookup sizes chosen by measured accuracy (ICurveBatch)
//   curve_undo.cpp    the undo records (curve_undo.h)
//   curve_edit.cpp    point editing under constraints, selection, insertion, deletion
//   curve_io.cpp      saving and loading
//   curve_mirror.cpp  mirror and rotate
//   curve_hit_test.cpp    hit testing against a screen box (curve_screen.h)
//   curve_draw_win32.cpp  drawing (window layer)
#pragma once

#include "curve/curve_eval_cache.h"
#include "curvectl/icurve.h"
#include "curvectl/icurve_batch.h"
#include "host/bitarray.h"
#include "host/geom.h"
#include "host/interval.h"
#include "host/tab.h"

#include <atomic>
#include <cstddef>
#include <memory>
#include <mutex>
#include <vector>

class CurveControl;
class DeformPtPosChange;
struct CurveHit;
struct CurveScreen;

/// Point-type change modes of ChangeKnotType (see curve_edit.cpp).
#define KNOT_TYPE_CHANGE_FROM_MENU 0
#define KNOT_TYPE_CHANGE_REFIT 3

/// Result flags of GetSelectedPosition.
#define SELPOS_HAS_POINTS 0x1
#define SELPOS_X_UNIFORM 0x2
#define SELPOS_Y_UNIFORM 0x8

class Curve : public ICurve, public ICurveBatch {
public:
    /// A curve without points. `owner` may be null (curves made by the class descriptor
    /// or as temporaries); such a curve sends no client messages and asks for no redraw.
    Curve(CurveControl* owner, int tag);
    ~Curve() override;

    /// Makes this curve a copy of `src`: points, pens, lookup size, fitted width, curve
    /// flags, owner and animatable flag. Point controllers are cloned, never shared.
    void Copy(const Curve& src);

    /// @name Host-facing face (Animatable, ReferenceMaker, ReferenceTarget)
    /// @{
    void GetClassName(CStr& s) override { s = "Curve"; }
    Class_ID ClassID() override;
    SClass_ID SuperClassID() override;
    void* GetInterface(ULONG id) override;
    int NumSubs() override { return count_; }
    Animatable* SubAnim(int i) override { return GetReference(i); }
    /// "Point %d" with i + 1.
    CStr SubAnimName(int i) override;
    BOOL IsAnimated() override;
    int NumRefs() override { return count_; }
    RefTargetHandle GetReference(int i) override;
    RefResult NotifyRefChanged(const Interval& changeInt, RefTargetHandle hTarget, PartID& partID,
                               RefMessage message, BOOL propagate) override;
    int RemapRefOnLoad(int iref) override { return iref; }
    RefTargetHandle Clone(RemapDir& remap) override;
    IOResult Save(ISave* isave) override;
    IOResult Load(ILoad* iload) override;
    /// @}

    /// @name ICurve
    /// @{
    void SetPen(COLORREF colour, int width, int style) override;
    void GetPen(COLORREF& colour, int& width, int& style) override;
    void SetDisabledPen(COLORREF colour, int width, int style) override;
    void GetDisabledPen(COLORREF& colour, int& width, int& style) override;
    float ValueAt(TimeValue t, float x, Interval& valid, BOOL useLookup = TRUE) override;
    void SetAnimatable(BOOL on) override;
    BOOL IsAnimatable() override { return animatable_; }
    BOOL IsPointAnimated(int i) override;
    int PointCount() override { return count_; }
    void SetPointCount(int n) override;
    BitArray GetSelection() override;
    void SetSelection(BitArray sel, int mode) override;
    void SetKnot(TimeValue t, int i, const CurveKnot& knot, BOOL checkConstraints = TRUE,
                 BOOL notify = TRUE) override;
    CurveKnot GetKnot(TimeValue t, int i, Interval& valid) override;
    void SetEndBehaviour(int mode) override;
    int GetEndBehaviour() override;
    int InsertKnotEx(int where, CurveKnot knot, BOOL noRecord) override;
    int InsertKnot(int where, CurveKnot knot) override { return InsertKnotEx(where, knot, FALSE); }
    void DeleteKnot(int i) override { DeleteKnotEx(i, FALSE); }
    void SetLookupSize(int n) override;
    int GetLookupSize() override { return lookupSize_; }
    /// @}

    /// @name ICurveBatch (curve_batch.cpp, curve_lookup_accuracy.cpp)
    /// Reached through GetInterface(I_CURVE_BATCH_INTERFACE); contracts in
    /// curvectl/icurve_batch.h. The batch calls are safe from any thread, as ValueAt.
    /// @{
    int ValuesAt(TimeValue t, const float* xs, float* ys, int n, Interval& valid,
                 BOOL useLookup = TRUE) override;
    int ValuesAtStrided(TimeValue t, const float* xs, int xStride, float* ys, int yStride, int n,
                        Interval& valid, BOOL useLookup = TRUE) override;
    int SetLookupTolerance(float maxError) override;
    float GetLookupError() override;
    /// @}

    /// @name Evaluation (curve_eval.cpp)
    /// Safe to call from any thread. Positions are those of the per-time cache: from the
    /// point controllers at t, end points pinned to the x range, points pushed into order.
    /// Every query brings the cache up to date for t first (EnsureCache).
    ///
    /// A curve without an owner evaluates as if its owner had the x range (0, 1), the
    /// y range (0, 1) and the flag word 0, so temporaries and loaded curves never crash.
    ///
    /// Threads. Evaluation may run on any number of threads while the UI thread edits.
    /// The cache is a chain of immutable states published through an atomic pointer
    /// (curve_eval_cache.h): readers take no lock, and a replaced state is freed only when
    /// no reader can still hold it. The point table (points, controllers, count, curve
    /// flags) belongs to the UI thread; evaluation threads read it only while rebuilding,
    /// and a rebuild holds the lock of LockPointTable(). Hence the rule for every change of
    /// the point table or of a point controller's value: make it on the UI thread while
    /// holding LockPointTable(), and invalidate the cache inside the same lock (before or
    /// after the change). The UI thread reads the table without the lock. The settings that
    /// evaluation reads unlocked (end behaviour, the owner's ranges and flags) are single
    /// words changed only by the UI thread; an evaluation running at that moment sees the
    /// old or the new value.
    ///
    /// ValueAt (declared with the ICurve operations) answers y at x at time t and narrows
    /// `valid` to the times the answer holds. With `useLookup` it interpolates the lookup
    /// table (built on first use after each rebuild). Outside the owner's x range the end
    /// segments are continued (end behaviour 0) or the end value is held (1). A lookup size
    /// below 1 leaves no interval to interpolate in: such a curve answers with the exact
    /// value, and so does an x whose table index falls outside the table (a not-a-number x,
    /// a zero-width range).
    /// @{
    /// Solves segment i (point i to point (i + 1) mod count) for x by 20 halvings of the
    /// Bezier parameter: mode 1 gives the parameter, any other mode y. 0 for a curve
    /// without points or an index outside 0 .. count - 1.
    float SegmentValue(TimeValue t, int i, float x, int mode);
    /// The point of segment i at parameter u: with v = 1 - u, each coordinate is
    /// ((P0 v + 3u P1) v + 3u^2 P2) v + u^3 P3 (P0, P3 the positions of point i and
    /// point (i + 1) mod count, P1 the out-handle of i, P2 the in-handle of the other).
    /// (0, 0) for an index out of range.
    Point2 SegmentPoint(TimeValue t, int i, float u);
    /// Resolved position of point i at t; (0, 0) for an index out of range.
    Point2 CachedPosition(TimeValue t, int i);
    /// Absolute handles of point i: its resolved position plus its tangent; (0, 0) for an
    /// index out of range. For an end point pinned to a range end away from its stored x
    /// these differ from the handles its segment is drawn and solved with, which keep the
    /// stored x; the continuation outside the range, move ranges, handle drags and
    /// insertion all measure from these.
    Point2 CachedInHandle(TimeValue t, int i);
    Point2 CachedOutHandle(TimeValue t, int i);
    /// Move limits of point i from the cache: right, left, up and down room (all 0 for an
    /// index out of range). Only interior points are limited; end points get +-1e8.
    void CachedRoom(TimeValue t, int i, float& right, float& left, float& up, float& down);
    /// Brings the cache up to date for t (rebuilding it at most once per validity).
    void EnsureCache(TimeValue t);
    /// The times around t for which the cache (and so every value) stays the same.
    Interval CacheValidity(TimeValue t);
    /// Lowest and highest y of the curve at t, over the points' positions and, per segment
    /// 0 .. count - 2, the ten pieces the editor draws it with (u = 0.1, 0.2 .. 1.0).
    /// Not-a-number values are skipped; 0 and 0 for a curve without points.
    void GetValueBounds(TimeValue t, float& lo, float& hi);
    /// Drops the cache: the next evaluation rebuilds it. Every change of points calls it.
    void InvalidateCache();
    /// Rebuilds the cache for t now and makes it current; `valid` becomes the times for
    /// which it holds. EnsureCache calls it when the cache does not hold t.
    void Initialize(TimeValue t, Interval& valid);
    /// Fills the lookup table of the cache for t, when that cache has none yet.
    void BuildLookup(TimeValue t);
    /// Evaluations counted: one per cache test, one more per rebuild, one per segment
    /// solve (each lookup-table entry counts as one), summed over threads.
    long LookupCount() const;
    /// The lock under which the UI thread changes the point table (see Threads above).
    [[nodiscard]] std::unique_lock<std::recursive_mutex> LockPointTable() const {
        return std::unique_lock<std::recursive_mutex>(evalCache_.Lock());
    }
    /// @}

    /// @name Point editing (curve_edit.cpp, curve_select.cpp, curve_insert_delete.cpp)
    /// t is the time at which animated points are read and set; positions are read through
    /// the cache (CachedPosition ...). Indices outside the table and non-finite values are
    /// ignored. Each change puts its undo record while theHold is holding, stores the new
    /// state under LockPointTable(), drops the cache, and sends its client message last.
    /// @{
    /// The point-position setter: stores the position of point i (through its controller
    /// when animated), records it in the hold's DeformPtPosChange, sends
    /// CURVE_MSG_POINT_CHANGED every time, even when the point did not move.
    void SetKnotPosition(TimeValue t, int i, const Point2& pos);
    /// Sets the absolute in- (out-) handle. Returns 1 (in) or 2 (out) when the tangent
    /// changed by more than 0.0001, else 0 (and then stores and records nothing).
    int SetInHandle(TimeValue t, int i, const Point2& handle, BOOL invalidate, BOOL notify);
    int SetOutHandle(TimeValue t, int i, const Point2& handle, BOOL invalidate, BOOL notify);
    /// Stores both tangents of point i as given (no 0.0001 threshold), recorded in the
    /// hold's position record; no client message. Non-finite tangents are ignored.
    void StoreTangents(int i, const Point2& inTan, const Point2& outTan);
    /// Allowed dx of point i ([0, 0] for the first and last point and for a curve without
    /// points), or of the whole selection moving together for an index out of range.
    void GetMoveRange(TimeValue t, int i, float& lo, float& hi);
    /// Allowed dy of point i or of the selection; +-1e8 unless the owner has CC_CONSTRAIN_Y.
    void GetMoveYRange(TimeValue t, int i, float& lo, float& hi);
    /// Allowed dx / dy of one handle (selector 0x200 out, else in).
    void GetHandleXRange(TimeValue t, int i, int selector, float& lo, float& hi);
    void GetHandleYRange(TimeValue t, int i, int selector, float& lo, float& hi);
    /// Clamps a requested position of point i into its move ranges, in place.
    void ClampKnotPosition(TimeValue t, int i, Point2& pos);
    /// Sets a tangent (relative) as a drag clamped into the handle's ranges.
    void SetHandleConstrained(TimeValue t, int i, int selector, const Point2& tangent);
    /// Drags a handle by (dx, dy); selector bit 0x2 breaks the tangent first. A
    /// Bezier-Smooth point's other handle follows, collinear, inside its segment.
    void DragHandle(TimeValue t, int i, int selector, float dx, float dy);
    /// y' = (y - origin) * factor + origin for the selected points and their handles.
    void ScaleSelectedY(TimeValue t, float origin, float factor, BOOL skipAnimated);
    /// Splits segment i at x, kind 0 corner, 1 Bezier (which keeps the shape exactly); the
    /// new point becomes the only selected one. 1 when a point was inserted, else 0.
    int InsertKnotAtX(TimeValue t, int i, float x, int kind);
    /// Deletes point i; with `noRecord` no undo record and no message (undo's own use).
    void DeleteKnotEx(int i, BOOL noRecord);
    /// Deletes every selected point but the end points, last first; returns how many.
    int DeleteSelectedKnots();
    /// Selection change, mode 1 add, 2 remove, 4 replace; `notify` FALSE sends no
    /// CURVE_MSG_SELECTION. A change that changes nothing puts no record.
    void SetSelectionEx(const BitArray& sel, int mode, BOOL notify);
    /// Changes point i to type `type` (flags & 3), re-deriving its tangents (rules in
    /// curve_edit.cpp); an end point may not become Bezier-Smooth. KNOT_TYPE_CHANGE_REFIT:
    /// the point has just become an end point of a refit; only the type changes.
    void ChangeKnotType(TimeValue t, int i, int type, int mode = KNOT_TYPE_CHANGE_FROM_MENU);
    /// Moves x (or y) of every selected point towards the value as far as the constraints
    /// allow (end points keep their x); TRUE when a point moved.
    BOOL SetSelectedX(TimeValue t, float x);
    BOOL SetSelectedY(TimeValue t, float y);
    /// Position of the first selected point at t and SELPOS_... flags (x / y shared by
    /// every selected point); 0 and (0, 0) without a selection, else `valid` narrowed.
    int GetSelectedPosition(TimeValue t, Point2& pos, Interval& valid);
    /// Gives selected points controllers in animate mode; TRUE when any was made.
    BOOL AnimateSelectedKnots(BOOL create, BitArray* created);
    /// Stores point i whole with a DeformPtChange record.
    void StoreKnot(int i, const CurveKnot& knot);
    /// @}

    /// @name Drawing and hit testing (curve_draw_win32.cpp, curve_hit_test.cpp)
    /// Positions are those of the per-time cache at t, in pixels of `screen`, the graph's
    /// mapping (curve_screen.h). Only the points that can be on screen are drawn and tested
    /// (VisibleCurveSpan); a window wholly outside the owner's x range shows and hits
    /// nothing, and so does a curve without points.
    /// @{
    /// Draws the curve into `hdc`: each segment of the visible span as ten straight pieces
    /// in the enabled pen, a marker per point and, for selected Bezier points, their
    /// handles; the handles of the first and last point of a curve that is not cyclic are
    /// never drawn. `index` is the curve's index in its owner: a curve its owner's editor
    /// does not display is drawn in the disabled pen without selection decoration.
    /// Windows only.
    void DrawCurve(TimeValue t, HDC hdc, const CurveScreen& screen, int index);
    /// Tests the segments (CURVE_HIT_CURVE), then the points (CURVE_HIT_POINTS), then the
    /// handles of selected Bezier points (CURVE_HIT_HANDLES) against `box`, as `request`
    /// asks; appends one CurveHit per hit to `hits` and returns CURVE_HIT_RESULT_... bits.
    /// With CURVE_HIT_STOP_FIRST or CURVE_HIT_STOP_IN_CURVE it returns at the first hit.
    int HitTestCurve(TimeValue t, const CurveScreen& screen, const Box2& box, int request,
                     Tab<CurveHit>& hits);
    /// @}

    /// @name Whole-curve operations (curve_mirror.cpp)
    /// @{
    void Mirror(int axis);
    void Rotate(int clockwise, int tag);
    /// @}

    /// @name State shared with the undo records, the control and the editor
    /// @{
    CurveControl* Owner() const { return owner_; }
    void SetOwner(CurveControl* owner) { owner_ = owner; }
    int Tag() const { return tag_; }
    const CurveKnot* Knots() const { return points_; }
    CurveKnot* Knots() { return points_; }
    float FittedWidth() const { return fittedWidth_; }
    void SetFittedWidth(float w) { fittedWidth_ = w; }
    DWORD CurveFlags() const { return curveFlags_; }
    void SetCurveFlags(DWORD f) { curveFlags_ = f; }
    bool IsCyclic() const { return (curveFlags_ & 0x1) != 0; }
    int NotifySuspended() const { return notifySuspended_; }
    void SetNotifySuspended(int s) { notifySuspended_ = s; }
    DeformPtPosChange* OpenPosRecord() const { return openPosRecord_; }
    void SetOpenPosRecord(DeformPtPosChange* r) { openPosRecord_ = r; }
    /// Set while an editor drag of the curve's points is in progress.
    bool DragMark() const { return dragMark_; }
    void SetDragMark(bool m) { dragMark_ = m; }
    ReferenceTarget* Controller(int i) const;
    /// Replaces the point table as undo records do: no reference bookkeeping.
    void InstallTable(int count, const CurveKnot* knots, ReferenceTarget* const* controllers);
    /// The common tail of undo records: drop the cache, notify dependents (unless
    /// suspended), redraw the owner. `full` FALSE skips the first two steps.
    void Refresh(bool full = true);
    /// Sends a client message to the owner's notify window, if there is one.
    void SendClientMessage(UINT msg, WPARAM wParam);
    /// @}

protected:
    void SetReference(int i, RefTargetHandle target) override;

private:
    friend class CurveEvaluator;
    /// Drops every point and controller, then makes n zeroed points (end points 0x102).
    void Resize(int n);
    /// SetPointCount's change itself; may throw std::bad_alloc.
    void setPointCount(int n);
    /// Load itself, which may throw std::bad_alloc, and its chunk readers (curve_io.cpp).
    IOResult loadChunks(ILoad* iload);
    IOResult loadCount(ILoad* iload);
    IOResult loadOldPoints(ILoad* iload);
    IOResult loadPoint(ILoad* iload, int k);
    IOResult loadPens(ILoad* iload);
    void freeTables();
    void redrawOwnerIfOpen();

    // --- Pens --------------------------------------------------------------------------
    COLORREF penColour_ = 0x000000;         // enabled pen colour
    COLORREF disabledPenColour_ = 0xC0C0C0; // disabled pen colour
    int penWidth_ = 0;                      // enabled pen width
    int disabledPenWidth_ = 0;
    int penStyle_ = 0; // enabled pen style (Windows PS_...)
    int disabledPenStyle_ = 0;

    // --- Evaluation cache (curve_eval.cpp) -----------------------------------------------
    /// Builds a cache state for t from the point table; caller holds the cache lock.
    std::unique_ptr<curve_eval::CacheState> buildCacheState(TimeValue t);
    /// Gives `s` the handles its cached-point queries answer, from its records and the
    /// point table: of every record (`all`) or of the two end records; false when out of
    /// memory.
    bool placeQueryHandles(curve_eval::CacheState& s, bool all) const;
    /// The state for t, rebuilt when needed; counts one cache test (and one rebuild).
    const curve_eval::CacheState* acquireState(curve_eval::EvalCache::Reader& r, TimeValue t);
    /// acquireState's locked half: the test again, and the rebuild.
    const curve_eval::CacheState* rebuildState(curve_eval::EvalCache::Reader& r, TimeValue t);
    /// The lookup table of `s`, built when it has none; counts the entries solved.
    const curve_eval::LookupTable* acquireLookup(curve_eval::EvalCache::Reader& r,
                                                 const curve_eval::CacheState& s);
    /// ValueAt in every case; ValueAt itself answers the common one.
    float valueAtGeneral(TimeValue t, float x, Interval& valid, BOOL useLookup);
    /// acquireLookup's locked half: the test again, and the build.
    const curve_eval::LookupTable* buildLookupTable(curve_eval::EvalCache::Reader& r,
                                                    const curve_eval::CacheState& s);
    /// Forgets the values the lookup table held (a new size, a copy); under the lock.
    void resetLookupMemory();
    /// The x range and the end behaviour as evaluation reads them (unlocked, per call).
    Point2 evalXRange() const;
    bool endsHold() const;
    /// acquireState and acquireLookup for the other evaluation files.
    const curve_eval::CacheState* sharedState(curve_eval::EvalCache::Reader& r, TimeValue t);
    const curve_eval::LookupTable* sharedLookup(curve_eval::EvalCache::Reader& r,
                                                const curve_eval::CacheState& s);
    /// The batch calls after their arguments are checked (curve_batch.cpp).
    int valuesAt(TimeValue t, const char* xs, std::ptrdiff_t xStride, char* ys,
                 std::ptrdiff_t yStride, int n, Interval& valid, BOOL useLookup);
    /// The states at which the lookup accuracy is measured (curve_lookup_accuracy.cpp);
    /// empty when there is nothing to measure. False when memory ran out.
    bool measuredStates(std::vector<std::unique_ptr<curve_eval::CacheState>>& states);

    curve_eval::EvalCache evalCache_; // published states, reader slots, the cache lock
    int lookupSize_ = 1000;           // intervals of the lookup table
    uint64_t invalidations_ = 0;      // InvalidateCache calls so far (see SettledRecords)

    /// The records the cache would hold at one time, followed through edits of single
    /// points without a rebuild per edit, for loops that edit many points and read each
    /// one through the cache after the edits before it (curve_settled_records.cpp).
    class SettledRecords;
    /// Point i's cache record at t before the ordering passes of a rebuild: its position
    /// (from its controller, if any, which narrows `valid`), its absolute handles, and
    /// for an end point of an open curve the pinned x. Move limits are left unset.
    curve_eval::CachedKnot initialRecord(TimeValue t, int i, Point2 xRange, Interval& valid);
    /// Whether the cache at t (rebuilt if needed) holds exactly the n records `k`, bit for bit.
    bool cacheHolds(TimeValue t, const curve_eval::CachedKnot* k, int n);

    // --- Editing state --------------------------------------------------------------------
    int notifySuspended_ = 0;                    // non-zero: controller changes are quiet
    DeformPtPosChange* openPosRecord_ = nullptr; // the hold's position record, not owned
    bool dragMark_ = false;                      // an editor drag is in progress
    int animatable_ = 1;                         // points may get controllers

    // --- Points ---------------------------------------------------------------------------
    CurveControl* owner_;                     // the control holding this curve, or null
    int tag_;                                 // kept as given; not copied
    int count_ = 0;                           // number of points
    CurveKnot* points_ = nullptr;             // owned: count_ points in x order
    ReferenceTarget** controllers_ = nullptr; // owned array; entries are references
    float fittedWidth_ = 1.0f;                // x-range width the points were last fitted to
    DWORD curveFlags_ = 0;                    // 0x1 cyclic, 0x2 / 0x4 end behaviour 0 / 1
};
