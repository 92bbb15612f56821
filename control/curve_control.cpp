// CurveControl: construction, the ICurveCtl operations that configure the control and its
// editor, and the reference face the host sees. The curve set itself is managed in
// control_curves.cpp.
#include "control/curve_control.h"

#include "control/editor_ids.h"
#include "host/controller.h"
#include "host/core_interface.h"
#include "host/hold.h"
#include "platform/platform.h"
#include "platform/res_string.h"

#include <algorithm>
#include <cmath>

CurveControl::CurveControl() : shownCurves_(32), title_("Curve Control") {}

CurveControl::~CurveControl() {
    if (hWnd_)
        SetEditorOpen(FALSE);
    clearButtonTexts();
    DropAllCurves();
}

// ---------------------------------------------------------------------------------------
// Host-facing face

Class_ID CurveControl::ClassID() { return CURVE_CONTROL_CLASS_ID; }
SClass_ID CurveControl::SuperClassID() { return CURVE_CONTROL_SUPER_CLASS_ID; }

void* CurveControl::GetInterface(ULONG id) {
    if (id == CURVE_CTL_EX_INTERFACE_ID)
        return static_cast<ICurveCtlEx*>(&ext_);
    return ICurveCtl::GetInterface(id);
}

CStr CurveControl::SubAnimName(int i) {
    CStr name;
    if (const char* fmt = GetResString(IDS_CURVE_NAME))
        name.printf(fmt, i + 1);
    return name;
}

RefTargetHandle CurveControl::GetReference(int i) {
    if (i < 0 || i >= curves_.Count())
        return nullptr;
    return curves_[i];
}

void CurveControl::SetReference(int i, RefTargetHandle target) {
    if (i < 0 || i >= curves_.Count())
        return;
    // Only a Curve can be one: a damaged scene file may name any object as reference i.
    Curve* c = dynamic_cast<Curve*>(target);
    curves_[i] = c;
    if (c)
        c->SetOwner(this);
}

RefResult CurveControl::NotifyRefChanged(const Interval&, RefTargetHandle, PartID&, RefMessage,
                                         BOOL) {
    return REF_SUCCEED;
}

// Nothing is thrown back to the host: a clone that memory runs out for is null.
RefTargetHandle CurveControl::Clone(RemapDir& remap) {
    CurveControl* c = nullptr;
    try {
        c = new CurveControl;
        c->CopyFrom(*this);
        BaseClone(this, c, remap);
        return c;
    } catch (...) {
        if (c)
            c->DeleteThis();
        return nullptr;
    }
}

// ---------------------------------------------------------------------------------------
// Editor

BOOL CurveControl::IsEditorOpen() {
    return (editorWindow_ && editorWindow_->Handle()) ? TRUE : FALSE;
}

BOOL CurveControl::SetEditorOpen(BOOL open) { return ShowEditor(this, open); }

void CurveControl::AttachEditor(HWND frame, IEditorView* editor) {
    hWnd_ = frame;
    editorWindow_ = editor;
}

void CurveControl::DetachEditor() {
    hWnd_ = nullptr;
    editorWindow_ = nullptr;
}

bool CurveControl::SavedPlacement(WINDOWPLACEMENT& wp) const {
    if (!placementSaved_)
        return false;
    wp = placement_;
    return true;
}

void CurveControl::StorePlacement(const WINDOWPLACEMENT& wp) {
    placement_ = wp;
    placement_.length = sizeof(WINDOWPLACEMENT);
    placementSaved_ = 1;
}

void CurveControl::Redraw() {
    if (editorWindow_ && drawEnabled_)
        editorWindow_->RedrawGraph();
}

void CurveControl::InvalidateGraph() {
    if (editorWindow_)
        editorWindow_->InvalidateGraph();
}

void CurveControl::SetControlFlags(DWORD flags) {
    flags_ = flags;
    if (IsEditorOpen())
        Redraw();
}

void CurveControl::SetMarkerX(float x) {
    if (x == currentX_)
        return;
    currentX_ = x;
    Redraw();
}

// ---------------------------------------------------------------------------------------
// View state

namespace {
/// The stored pair (a, b) into the non-null outputs; FALSE, touching neither, while
/// nothing is stored.
template <class T> BOOL readStoredPair(int stored, T a, T b, T* outA, T* outB) {
    if (!stored)
        return FALSE;
    if (outA)
        *outA = a;
    if (outB)
        *outB = b;
    return TRUE;
}
} // namespace

// An open editor's view is read whole, zoom and scroll together, whichever is asked for.
void CurveControl::captureView() {
    if (!IsEditorOpen())
        return;
    editorWindow_->CaptureView(hZoom_, vZoom_, hScroll_, vScroll_);
    zoomSet_ = scrollSet_ = 1;
}

BOOL CurveControl::GetZoomState(float* h, float* v) {
    captureView();
    return readStoredPair(zoomSet_, hZoom_, vZoom_, h, v);
}

void CurveControl::SetZoomState(float h, float v) {
    hZoom_ = h;
    vZoom_ = v;
    zoomSet_ = 1;
    if (!IsEditorOpen())
        return;
    editorWindow_->SetZoom(std::clamp(h, view_scale::kXScaleMin, view_scale::kXScaleMax),
                           std::clamp(v, view_scale::kYScaleMin, view_scale::kYScaleMax));
    Redraw();
}

BOOL CurveControl::GetScrollState(int* h, int* v) {
    captureView();
    return readStoredPair(scrollSet_, hScroll_, vScroll_, h, v);
}

void CurveControl::SetScrollState(int h, int v) {
    hScroll_ = h;
    vScroll_ = v;
    scrollSet_ = 1;
    if (!IsEditorOpen())
        return;
    editorWindow_->SetScroll(h, v);
    Redraw();
}

void CurveControl::ZoomExtents() {
    if (IsEditorOpen())
        editorWindow_->SendCommand(editor_id::kZoomExtents);
}

// ---------------------------------------------------------------------------------------
// Tool modes: 0..2 move (fly-off 0 xy, 1 x, 2 y), 3 scale, 4..5 insert (0 corner, 1 Bezier)

void CurveControl::SetToolMode(int mode) {
    toolMode_ = mode;
    if (!IsEditorOpen())
        return;
    switch (mode) {
    case CC_TOOL_MOVE_XY:
    case CC_TOOL_MOVE_X:
    case CC_TOOL_MOVE_Y:
        editorWindow_->SelectEditMode(editor_id::kMove, mode);
        break;
    case CC_TOOL_SCALE:
        editorWindow_->SelectEditMode(editor_id::kScale, -1);
        break;
    case CC_TOOL_INSERT_CORNER:
    case CC_TOOL_INSERT_BEZIER:
        editorWindow_->SelectEditMode(editor_id::kAddPoint, mode - CC_TOOL_INSERT_CORNER);
        break;
    default:
        editorWindow_->SelectEditMode(editor_id::kMove, -1);
        break;
    }
}

int CurveControl::GetToolMode() {
    if (IsEditorOpen()) {
        int mode = 0, flyOff = 0;
        editorWindow_->GetEditMode(mode, flyOff);
        if (mode == editor_id::kMove && flyOff >= CC_TOOL_MOVE_XY && flyOff <= CC_TOOL_MOVE_Y)
            toolMode_ = flyOff;
        else if (mode == editor_id::kScale)
            toolMode_ = CC_TOOL_SCALE;
        else if (mode == editor_id::kAddPoint && (flyOff == 0 || flyOff == 1))
            toolMode_ = CC_TOOL_INSERT_CORNER + flyOff;
    }
    return toolMode_;
}

// ---------------------------------------------------------------------------------------
// Curves and display

ICurve* CurveControl::GetCurve(int i) {
    if (i < 0 || i >= curves_.Count())
        return nullptr;
    return curves_[i];
}

void CurveControl::SetShownCurves(BitArray mode) {
    if (mode.GetSize() < curves_.Count())
        mode.SetSize(curves_.Count(), 1);
    shownCurves_ = mode;
    if (editorWindow_) {
        editorWindow_->SetCaption(title_.data());
        if (IsEditorOpen()) {
            editorWindow_->SetDisplayMode(shownCurves_);
            Redraw();
        }
    }
}

void CurveControl::ToggleCurveDisplay(int i) {
    BitArray bits = shownCurves_;
    if (i >= bits.GetSize())
        bits.SetSize(i + 1, 1);
    bits.Set(i, !bits[i]);
    SetShownCurves(bits);
}

const char* CurveControl::CurveButtonText(int i) const {
    if (i < 0 || i >= curveButtonTexts_.Count() || !curveButtonTexts_[i])
        return "";
    return curveButtonTexts_[i]->data();
}

ICurveCtlClient* CurveControl::Client() {
    if (!clientObject_)
        return nullptr;
    return static_cast<ICurveCtlClient*>(clientObject_->GetInterface(CURVE_CLIENT_INTERFACE_ID));
}

void CurveControl::RefreshCurveButtonTexts() {
    ICurveCtlClient* client = Client();
    if (!client)
        return;
    HIMAGELIST images = nullptr;
    if (client->GetCurveButtonImages(&images, this))
        buttonImages_ = images;
    for (int i = 0; i < curveButtonTexts_.Count(); ++i) {
        CStr text;
        if (client->GetCurveButtonText(i, text, this) && curveButtonTexts_[i])
            *curveButtonTexts_[i] = text;
    }
}

void CurveControl::SendClientMessage(UINT msg, WPARAM wParam, LPARAM lParam) {
    if (notifyWindow_)
        platform::SendToWindow(notifyWindow_, msg, wParam, lParam);
}

// ---------------------------------------------------------------------------------------
// Validity

Interval CurveControl::GetValidity(TimeValue t) {
    Interval valid = FOREVER;
    for (int i = 0; i < curves_.Count(); ++i)
        if (curves_[i])
            valid &= curves_[i]->CacheValidity(t);
    return valid;
}

void CurveControl::Update(TimeValue t, Interval& valid) { valid &= GetValidity(t); }

// ---------------------------------------------------------------------------------------
// Ranges

namespace {
// x' = ((low - (oldLow - x) * s) + (high - (oldHigh - x) * s)) * 0.5: each end of the new
// range measured from the matching end of the old one, averaged.
float mapX(float x, float low, float high, float oldLow, float oldHigh, float s) {
    return ((low - (oldLow - x) * s) + (high - (oldHigh - x) * s)) * 0.5f;
}
} // namespace

// A range without width, or with an end that is not a finite number, is ignored as
// low > high is: the next rescale would divide by its width and turn every point into a
// not-a-number. A range that came from a file without width (or inverted) has nothing to
// map from, so the points then stay where they are.
//
// Rescaling goes through the operations that record the change (the point-position
// setter and StoreTangents, one position record per curve in an open hold): the tangents
// of a point first, so that its position message finds the point whole, and undo and
// redo give back both states exactly.
void CurveControl::SetXRange(float low, float high, BOOL rescale) {
    if (!(low < high) || !std::isfinite(low) || !std::isfinite(high))
        return;
    const float oldLow = xRange_.x, oldHigh = xRange_.y;
    const float s = (high - low) / (oldHigh - oldLow);
    xRange_ = Point2(low, high);
    SuspendAnimate();
    const TimeValue now = GetCOREInterface()->GetTime();
    const bool mappable = oldLow < oldHigh && std::isfinite(s);
    auto map = [&](float x) { return mapX(x, low, high, oldLow, oldHigh, s); };
    for (int c = 0; rescale && mappable && c < curves_.Count(); ++c) {
        Curve* curve = curves_[c];
        // A client's message handler may change the points: each is read afresh.
        for (int i = 0; curve && curve->Knots() && i < curve->PointCount(); ++i) {
            const CurveKnot k = curve->Knots()[i];
            // Handles follow in absolute position; a corner has no handles to keep.
            if ((k.flags & KNOT_TYPE_MASK) != KNOT_TYPE_CORNER) {
                const float px = map(k.pos.x);
                const Point2 in(map(k.pos.x + k.inTan.x) - px, k.inTan.y);
                const Point2 out(map(k.pos.x + k.outTan.x) - px, k.outTan.y);
                curve->StoreTangents(i, in, out);
            }
            auto* ctrl = dynamic_cast<Control*>(curve->Controller(i));
            if (!ctrl) {
                curve->SetKnotPosition(now, i, Point2(map(k.pos.x), k.pos.y));
                continue;
            }
            for (int key = 0; key < ctrl->NumKeys(); ++key) {
                const TimeValue kt = ctrl->GetKeyTime(key);
                Interval iv = FOREVER;
                Point3 v;
                ctrl->GetValue(kt, &v, iv, CTRL_ABSOLUTE);
                curve->SetKnotPosition(kt, i, Point2(map(v.x), v.y));
            }
            if (ctrl->NumKeys() == 0) {
                Interval iv = FOREVER;
                Point3 v;
                ctrl->GetValue(now, &v, iv, CTRL_ABSOLUTE);
                curve->SetKnotPosition(now, i, Point2(map(v.x), v.y));
            }
        }
        if (curve)
            curve->InvalidateCache();
    }
    ResumeAnimate();
    if (IsEditorOpen())
        Redraw();
}

// ---------------------------------------------------------------------------------------
// Reset

void CurveControl::ResetSelectedCurves() {
    theHold.Begin();
    ICurveCtlClient* client = Client();
    for (int i = 0; i < GetCurveCount(); ++i)
        if (shownCurves_[i] && client)
            client->ResetCurve(i, this);
    theHold.Accept(GetResString(IDS_RESET_CURVE));
    Redraw();
}
