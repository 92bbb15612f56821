// The two child windows of a CurveCtlWindow: the ruler strip (PosWindow) and the graph
// (CurveWindow). Each owns an off-screen buffer for its picture.
//
//   pos_window.cpp    PosWindow: creation, size, the strip's placement and divider drag
//   curve_window.cpp  CurveWindow: creation, size, mouse manager
//   point_menu_commands.cpp  CurveWindow: the point menu's commands
//   view_paint.cpp    Paint of both: the cache and double-buffering pipeline
#pragma once

#include "editor/base_window.h"
#include "editor/hit_record.h"
#include "host/interval.h"

#include <vector>

class IOffScreenBuf;

/// Frees an off-screen buffer when its owner goes.
class OffScreenBuffer {
public:
    OffScreenBuffer() = default;
    ~OffScreenBuffer();
    OffScreenBuffer(const OffScreenBuffer&) = delete;
    OffScreenBuffer& operator=(const OffScreenBuffer&) = delete;

    /// Creates the buffer for `hwnd` with the view-shade background colour.
    void Create(HWND hwnd);
    void Destroy();
    IOffScreenBuf* get() const { return buf_; }
    IOffScreenBuf* operator->() const { return buf_; }
    explicit operator bool() const { return buf_ != nullptr; }

private:
    IOffScreenBuf* buf_ = nullptr; // owned
};

/// The x-axis ruler: a 16-pixel strip the user drags up and down over the graph.
class PosWindow : public BaseSubWindow {
public:
    /// Height of the strip in pixels.
    static constexpr int kHeight = 16;

    void Create(CurveCtlWindow* owner) override;
    LRESULT Move(int x, int y, int width, int height) override;
    LRESULT LButtonDown(int x, int y, int keys) override;
    LRESULT MouseMove(int x, int y, int keys) override;
    LRESULT LButtonUp(int x, int y, int keys) override;
    LRESULT Paint() override;
    LRESULT Size(int type, int width, int height) override;
    LRESULT MouseActivate(HWND hwnd, UINT msg, WPARAM wParam, LPARAM lParam) override;

    /// Clamps the top edge between the toolbars and moves the strip there, on top of its
    /// siblings.
    void Place();
    int Top() const { return top_; }
    bool Dragging() const { return dragging_ != 0; }
    IOffScreenBuf* Buffer() const { return buffer_.get(); }

private:
    /// The strip's top edge after the cursor moved to `y` (own client coordinates).
    int parentY(int x, int y) const;

    int top_ = 0;            // top edge in the owner's client coordinates
    int dragOffset_ = 0;     // top edge minus the cursor's y when the drag began
    int dragging_ = 0;       // a divider drag holds the capture
    OffScreenBuffer buffer_; // the ruler's picture
};

/// The graph, where the curves are drawn and edited.
class CurveWindow : public BaseSubWindow {
public:
    void Create(CurveCtlWindow* owner) override;
    LRESULT Move(int x, int y, int width, int height) override;
    MouseManager* GetMouseManager() override;
    /// The point menu's commands, 40001..40012 (point_menu_commands.cpp); other ids are
    /// ignored.
    LRESULT Command(int notifyCode, int id, HWND control) override;
    LRESULT Paint() override;
    LRESULT Size(int type, int width, int height) override;
    LRESULT MouseActivate(HWND hwnd, UINT msg, WPARAM wParam, LPARAM lParam) override;
    /// Zooms about the middle of the graph (view_range.cpp).
    LRESULT MouseWheel(int delta) override;

    /// Hit-tests the displayed curves at the host's current time (hit_test_graph.cpp):
    /// the box is 4 pixels around `a` with CURVE_HIT_CLICK, the rectangle a-b normalised
    /// and 4 pixels wider with CURVE_HIT_REGION. `records` is refilled with one record per
    /// curve hit; returns the CURVE_HIT_RESULT_... bits of all of them. With
    /// CURVE_HIT_STOP_FIRST, or for a click when the control has CC_SINGLESELECT, the
    /// search ends after the first curve with a point hit. A window other than this graph
    /// gets no hits.
    int HitTestGraph(HWND hwnd, IPoint2 a, IPoint2 b, GraphHits& records, int request);
    int HitTestGraph(HWND hwnd, IPoint2 p, GraphHits& records, int request) {
        return HitTestGraph(hwnd, p, p, records, request);
    }

    IOffScreenBuf* Buffer() const { return buffer_.get(); }
    /// Frees the off-screen buffer (the editor's last teardown step).
    void DestroyBuffer() { buffer_.Destroy(); }

    /// @name What the edit modes' press found (modes/): the selection mode fills it, the
    /// move mode drags the handles in it
    /// @{
    /// The handle hits of the press, in hit order: handleCurves[k] is the curve of
    /// handleHits[k]. Both empty when the press hit no handle.
    std::vector<int>& HandleCurves() { return handleCurves_; }
    std::vector<CurveHit>& HandleHits() { return handleHits_; }
    /// Curve of the first hit record of the press, -1 when none.
    int CurrentCurve() const { return currentCurve_; }
    void SetCurrentCurve(int i) { currentCurve_ = i; }
    /// Set while a move drag is in progress.
    bool Moving() const { return moving_ != 0; }
    void SetMoving(bool on) { moving_ = on ? 1 : 0; }
    /// @}

private:
    OffScreenBuffer buffer_;           // the graph's picture
    std::vector<int> handleCurves_;    // curve index of each handle hit of the press
    std::vector<CurveHit> handleHits_; // (point index, part) of each handle hit
    int currentCurve_ = -1;            // curve of the press's first hit record, -1 none
    int moving_ = 0;                   // a move drag is in progress
};
