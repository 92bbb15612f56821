// CurveCtlWindow: building and tearing down the editor, its layout, the corner box, and
// the face the control sees (IEditorView).
//
// [SECTION] Construction and teardown
// [SECTION] Layout and size
// [SECTION] Corner box
// [SECTION] IEditorView
#include "editor/curve_ctl_window.h"

#include "control/control_undo.h"
#include "control/curve_control.h"
#include "editor/editor_resources.h"
#include "host/core_interface.h"
#include "host/gdi_tracking.h"
#include "host/hold.h"

#include <algorithm>

// ---------------------------------------------------------------------------------------
// [SECTION] Construction and teardown

namespace {
constexpr int kTopToolbarHeight = 29;
constexpr int kBottomToolbarHeight = 24;
constexpr int kBottomBand = 25; // the bottom toolbar and the line above it
} // namespace

CurveCtlWindow::CurveCtlWindow() : modes_(CreateEditorModes(this)), shown_(32) {
    shown_.ClearAll();
}

CurveCtlWindow::~CurveCtlWindow() {
    strip_.reset();
    GetCOREInterface()->UnRegisterTimeChangeCallback(&timeChange_);
    releaseControls();
    if (control_)
        control_->DetachEditor();
    // The mouse manager and the modes go with the members (manager first), and the
    // graph's buffer last of all.
}

DWORD CurveCtlWindow::Flags() const { return control_ ? control_->GetControlFlags() : 0; }

void CurveCtlWindow::Init(HWND frame, CurveControl* control, int mode) {
    timeChange_.window = this;
    GetCOREInterface()->RegisterTimeChangeCallback(&timeChange_);
    mode_ = mode;
    control_ = control;
    frame_ = frame;
    scale_ = ViewScale{};
    LoadEditorResources();
    RegisterEditorClasses();

    RECT client{};
    GetClientRect(frame, &client);
    HWND own = CreateWindowExA(0, kEditorWindowClass, "", WS_CHILD, 0, 0, client.right,
                               client.bottom, frame, nullptr, EditorInstance(), nullptr);
    Attach(own);
    vScrollBar_ = CreateWindowExA(0, "SCROLLBAR", "", WS_CHILD | WS_VISIBLE | SBS_VERT, 0, 0, 0, 0,
                                  own, nullptr, EditorInstance(), nullptr);
    hScrollBar_ = CreateWindowExA(0, "SCROLLBAR", "", WS_CHILD | WS_VISIBLE, 0, 0, 0, 0, own,
                                  nullptr, EditorInstance(), nullptr);

    toolbars_.curveButtons.resize(size_t(std::max(0, control->GetCurveCount())));
    createToolbars();

    mice_.SetMouseProc(modes_->Get(IEditorModes::kPointMenu), RIGHT_BUTTON, 1);
    if (Flags() & CC_SHOWSCROLLBARS)
        mice_.SetMouseProc(modes_->Get(IEditorModes::kPan), MIDDLE_BUTTON, 2);

    graph_.Create(this);
    strip_ = std::make_unique<PosWindow>();
    strip_->Create(this);
    SetDisplayMode(control->GetShownCurves());
    Layout();
    ShowWindow(own, SW_SHOW);
}

// ---------------------------------------------------------------------------------------
// [SECTION] Layout and size

void CurveCtlWindow::Layout() {
    RECT client;
    GetClientRect(hWnd_, &client);
    const int w = client.right;
    int h = client.bottom;
    const DWORD flags = Flags();
    const bool scrollBars = (flags & CC_SHOWSCROLLBARS) != 0;
    const bool top = HasTopToolbar();
    const int cx = GetSystemMetrics(SM_CXVSCROLL);
    const int cy = GetSystemMetrics(SM_CYHSCROLL);

    if (top) {
        MoveWindow(toolbars_.topWindow, 0, 0, w, kTopToolbarHeight, TRUE);
        ShowWindow(toolbars_.topWindow, SW_SHOW);
    }
    if (HasBottomToolbar()) {
        MoveWindow(toolbars_.bottomWindow, 0, h - kBottomToolbarHeight, w, kBottomToolbarHeight,
                   TRUE);
        ShowWindow(toolbars_.bottomWindow, SW_SHOW);
        h -= kBottomBand;
    }

    MoveWindow(vScrollBar_, w + 1 - cx, top ? 28 : 1, cx, top ? h - 26 - cy : h + 3 - cy, TRUE);
    ShowWindow(vScrollBar_, scrollBars ? SW_SHOW : SW_HIDE);
    MoveWindow(hScrollBar_, -1, h + 1 - cy, w + 3 - cx, cy, TRUE);
    ShowWindow(hScrollBar_, scrollBars ? SW_SHOW : SW_HIDE);

    if (strip_) {
        strip_->Place();
        ShowWindow(strip_->Handle(), (flags & CC_SHOWPOSWINDOW) ? SW_SHOW : SW_HIDE);
    }

    graph_.Move(0, top ? kTopToolbarHeight : 0, w + 1 - (scrollBars ? cx : 0),
                (top ? h - 28 : h + 1) - (scrollBars ? cy : 0));
    ShowWindow(graph_.Handle(), SW_SHOW);

    UpdateVerticalRange(GetCOREInterface()->GetTime());
    UpdateHorizontalRange(0);
}

LRESULT CurveCtlWindow::Size(int type, int, int) {
    if (type == SIZE_MINIMIZED)
        return 0;
    Layout();
    if (mode_ == 4 && aspectLocked_)
        AspectCoupling(0);
    InvalidateRect(hWnd_, nullptr, FALSE);
    return 0;
}

// ---------------------------------------------------------------------------------------
// [SECTION] Corner box

LRESULT CurveCtlWindow::Paint() {
    PaintDC dc(hWnd_);
    // The box exists only between shown scroll bars; elsewhere the graph covers the place.
    if (!(Flags() & CC_SHOWSCROLLBARS))
        return 0;
    RECT client;
    GetClientRect(hWnd_, &client);
    const int cx = GetSystemMetrics(SM_CXVSCROLL);
    const int cy = GetSystemMetrics(SM_CYHSCROLL);
    SelectedObject brush(dc.get(), GetStockObject(LTGRAY_BRUSH));
    SelectedObject pen(dc.get(), GetStockObject(NULL_PEN));
    // The square between the ends of the two scroll bars.
    Rectangle(dc.get(), client.right - cx, client.bottom - cy - 25, client.right + 1,
              client.bottom - 23);
    return 0;
}

LRESULT CurveCtlWindow::MouseActivate(HWND, UINT, WPARAM, LPARAM) {
    mouseActivated_ = 1;
    return MA_ACTIVATE;
}

// ---------------------------------------------------------------------------------------
// [SECTION] IEditorView

// Anything that repaints the graph may have changed the selection or the points, so
// the entry fields are refreshed by the next paint whatever time they were last right for.

void CurveCtlWindow::RedrawGraph() {
    entryValid_.SetEmpty();
    paint_.graphValid = 0;
    InvalidateRect(graph_.Handle(), nullptr, FALSE);
    paint_.lastCursor = POINT{INT_MIN, INT_MIN};
    UpdateWindow(graph_.Handle());
}

void CurveCtlWindow::InvalidateGraph() {
    entryValid_.SetEmpty();
    paint_.graphValid = 0;
    InvalidateRect(graph_.Handle(), nullptr, FALSE);
    paint_.lastCursor = POINT{INT_MIN, INT_MIN};
}

void CurveCtlWindow::CaptureView(float& hZoom, float& vZoom, int& hScroll, int& vScroll) {
    hZoom = scale_.xs;
    vZoom = scale_.ys;
    hScroll = GetScrollPos(hScrollBar_, SB_CTL);
    vScroll = GetScrollPos(vScrollBar_, SB_CTL);
}

void CurveCtlWindow::SetZoom(float hZoom, float vZoom) {
    scale_.xs = hZoom;
    scale_.ys = vZoom;
}

void CurveCtlWindow::SetScroll(int hScroll, int vScroll) {
    SetScrollPos(hScrollBar_, SB_CTL, hScroll, TRUE);
    SetScrollPos(vScrollBar_, SB_CTL, vScroll, TRUE);
    InvalidateRect(graph_.Handle(), nullptr, FALSE);
    repaintStripNow();
}

void CurveCtlWindow::SetCaption(const char* title) { SetWindowTextA(frame_, title); }

void CurveCtlWindow::SelectEditMode(int mode, int flyOff) {
    ICustButton* button = toolbars_.Button(mode);
    if (button && flyOff >= 0)
        button->SetCurFlyOff(flyOff);
    SetEditMode(mode);
    ShowPrompt();
}

void CurveCtlWindow::GetEditMode(int& mode, int& flyOff) {
    mode = editMode_;
    ICustButton* button = toolbars_.Button(editMode_);
    // Without the button there is no fly-off to report: the control keeps its own mode.
    flyOff = button ? button->GetCurFlyOff() : -1;
}

void CurveCtlWindow::SetDisplayMode(const BitArray& bits) {
    const BitArray before = shown_;
    shown_ = bits;
    if (shown_.GetSize() < before.GetSize())
        shown_.SetSize(before.GetSize(), 1);
    if (control_ && control_->GetCurveCount() >= 2) {
        for (size_t i = 0; i < toolbars_.curveButtons.size(); ++i)
            if (ICustButton* b = toolbars_.curveButtons[i].get())
                b->SetCheck(shown_[int(i)]);
    }
    if (theHold.Holding())
        theHold.Put(new DeformDispModeRestore(control_, before, shown_));
}

void CurveCtlWindow::SendCommand(int id) { SendMessageA(hWnd_, WM_COMMAND, WPARAM(id), 0); }

bool CurveCtlWindow::AspectRescale(int direction) {
    const bool applied = AspectCoupling(direction) != 0;
    paint_.graphValid = 0;
    paint_.lastCursor = POINT{INT_MIN, INT_MIN};
    InvalidateRect(graph_.Handle(), nullptr, FALSE);
    if (applied)
        InvalidateRuler();
    return applied;
}

void CurveCtlWindow::InvalidateRuler() {
    paint_.rulerValid = 0;
    if (strip_)
        InvalidateRect(strip_->Handle(), nullptr, FALSE);
}

void CurveCtlWindow::RedrawRuler() {
    InvalidateRuler();
    if (strip_)
        UpdateWindow(strip_->Handle());
}
