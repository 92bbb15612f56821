// ColourCurves: the control as a reference, the effect's host-facing face, persistence.
#include "colour_curves.h"

#include "client_module.h"
#include "colour_panel.h"
#include "curve_filter.h"
#include "host/chunk_values.h"
#include "picture.h"

#include <chrono>
#include <new>

namespace {

/// The effect's own chunk: a format number, so later versions can read older scenes.
constexpr USHORT kVersionChunk = 0x0100;
constexpr int32_t kFormatVersion = 1;

} // namespace

ColourCurves::ColourCurves(BOOL loading) {
    if (loading)
        return; // the loader restores the control as reference 0
    // Made through the module's class descriptor: the client never links to the module.
    // Null when the curve control module is not loaded.
    if (ICurveCtl* control = curvectl::CreateCurveControl()) {
        // SetReference registers this object as the control's client first, so that
        // SetCurveCount below can ask it to shape every new curve.
        ReplaceReference(0, control);
        ConfigureNewControl();
    }
}

ColourCurves::~ColourCurves() {
    panel_.reset();
    // Undo records may keep the control alive longer than this effect; the registration
    // tells it that its client is gone (here, through SetReference, or at the latest when
    // the registration itself goes).
    DeleteAllRefsFromMe();
}

void ColourCurves::ConfigureNewControl() {
    control_->SetTitle("Colour Curves");
    control_->SetXRange(0.0f, 1.0f, FALSE);
    control_->SetYRange(0.0f, 1.0f);
    // Every part of the editor, embedded (CC_ASPOPUP clear) until the user floats it, with
    // the marker line that shows the value under the mouse in the viewport.
    control_->SetControlFlags((CC_DEFAULT_FLAGS & ~CC_ASPOPUP) | CC_SHOW_CURRENTXVAL);
    control_->SetCurveCount(kChannels, FALSE);
    BitArray shown(kChannels);
    shown.SetAll();
    control_->SetShownCurves(shown);
}

ICurve* ColourCurves::ChannelCurve(int c) const {
    return control_ ? control_->GetCurve(c) : nullptr;
}

void ColourCurves::PictureChanged() { NotifyDependents(FOREVER, PART_ALL, REFMSG_CHANGE); }

// ---------------------------------------------------------------------------------------
// Host-facing face

Class_ID ColourCurves::ClassID() { return COLOUR_CURVES_CLASS_ID; }

void* ColourCurves::GetInterface(ULONG id) {
    // The control asks for its client callbacks under this id.
    if (id == CURVE_CLIENT_INTERFACE_ID)
        return static_cast<ICurveCtlClient*>(this);
    return ViewEffect::GetInterface(id);
}

Animatable* ColourCurves::SubAnim(int i) { return i == 0 ? control_ : nullptr; }

CStr ColourCurves::SubAnimName(int i) { return i == 0 ? CStr("Colour Curves") : CStr(); }

RefTargetHandle ColourCurves::GetReference(int i) { return i == 0 ? control_ : nullptr; }

void ColourCurves::SetReference(int i, RefTargetHandle target) {
    if (i != 0)
        return;
    // A damaged scene could hold another class here: only a curve control is taken.
    control_ = curvectl::AsCurveControl(target);
    // The client object is not a reference of the control; a control restored by a scene
    // or by undo is told again who its client is, and one that goes is told it has none.
    registration_.Attach(control_);
}

RefResult ColourCurves::NotifyRefChanged(const Interval&, RefTargetHandle, PartID&, RefMessage,
                                         BOOL) {
    // Every change of the curves (undo and redo included) changes the picture; the notice
    // travels on to the host, which repaints its viewport.
    return REF_SUCCEED;
}

RefTargetHandle ColourCurves::Clone(RemapDir& remap) {
    auto* copy = new (std::nothrow) ColourCurves(TRUE);
    if (!copy)
        return nullptr;
    if (control_)
        copy->ReplaceReference(0, remap.CloneRef(control_));
    BaseClone(this, copy, remap);
    return copy;
}

IOResult ColourCurves::Save(ISave* isave) {
    isave->BeginChunk(kVersionChunk);
    const IOResult r = WriteLE32(isave, kFormatVersion);
    isave->EndChunk();
    return r;
}

IOResult ColourCurves::Load(ILoad* iload) {
    return ReadChunks(iload, [&](USHORT id) {
        int32_t version = 0;
        // Version 1 is all there is; a newer file still loads what this one knows.
        return id == kVersionChunk ? ReadLE32(iload, version) : IO_OK;
    });
}

// ---------------------------------------------------------------------------------------
// ViewEffect

void ColourCurves::DrawSource(int width, int height, float* rgb) {
    DrawPicture(width, height, rgb);
}

void ColourCurves::Apply(TimeValue t, int width, int height, const float* src, uint32_t* out) {
    ICurve* curves[kChannels] = {ChannelCurve(kRed), ChannelCurve(kGreen), ChannelCurve(kBlue)};
    const auto start = std::chrono::steady_clock::now();
    const int threads = ApplyCurves(curves, t, width, height, src, out);
    const std::chrono::duration<double, std::milli> took = std::chrono::steady_clock::now() - start;
    if (panel_)
        panel_->ShowFrameTime(took.count(), width, height, threads);
}

void ColourCurves::BeginEditParams(HWND panel) {
    panel_.reset();
    panel_ = std::make_unique<ColourPanel>(*this, panel);
}

void ColourCurves::EndEditParams() { panel_.reset(); }

void ColourCurves::ViewPointer(const float* rgb) {
    if (!rgb || !control_)
        return;
    // The marker shows where the colour under the mouse sits on the curves' x axis: the
    // channel's own value when one curve is displayed, its luminance otherwise.
    BitArray shown = control_->GetShownCurves();
    float x = 0.299f * rgb[kRed] + 0.587f * rgb[kGreen] + 0.114f * rgb[kBlue];
    if (shown.NumberSet() == 1) {
        for (int c = 0; c < kChannels; ++c)
            if (shown[c])
                x = rgb[c];
    }
    control_->SetMarkerX(x);
    if (panel_)
        panel_->ShowPointer(rgb, x);
}
