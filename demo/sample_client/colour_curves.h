// ColourCurves: the sample client of the curve control. A view effect that maps the red,
// green and blue channels of its picture through three curves of one curve control.
//
// What it shows a plug-in author, file by file:
//   colour_curves.cpp         creating the control through the module's class descriptor,
//                             configuring it, holding it as a reference, saving and loading
//   colour_curves_client.cpp  the client callback interface: button images and texts, the
//                             default curves behind "Reset Curves", the new-curve notice
//   colour_panel.cpp          the editor embedded in the command panel or floating, and the
//                             notification messages
//   curve_filter.cpp          evaluating the curves with the lookup table, a row at a time
//                             (ICurveBatch), on several threads
//   picture.cpp               the picture itself, drawn by code
#pragma once

#include "curvectl/client.h"
#include "curvectl/icurvectl.h"
#include "host/view_effect.h"

#include <memory>

class ColourPanel;

/// The three channels, in curve order.
enum Channel { kRed = 0, kGreen = 1, kBlue = 2, kChannels = 3 };

class ColourCurves : public ViewEffect, public ICurveCtlClient {
public:
    /// With `loading` FALSE a new effect with its control and default curves; with TRUE an
    /// empty shell that the scene loader fills (the control arrives as reference 0).
    explicit ColourCurves(BOOL loading);
    ~ColourCurves() override;

    /// The curve control; null only when the curve control module is not loaded.
    ICurveCtl* Control() const { return control_; }
    /// Curve c of the control, or null.
    ICurve* ChannelCurve(int c) const;

    /// @name Host-facing face
    /// @{
    void GetClassName(CStr& s) override { s = "Colour Curves"; }
    Class_ID ClassID() override;
    void* GetInterface(ULONG id) override;
    int NumSubs() override { return 1; }
    Animatable* SubAnim(int i) override;
    CStr SubAnimName(int i) override;
    int NumRefs() override { return 1; }
    RefTargetHandle GetReference(int i) override;
    RefResult NotifyRefChanged(const Interval& changeInt, RefTargetHandle hTarget, PartID& partID,
                               RefMessage message, BOOL propagate) override;
    RefTargetHandle Clone(RemapDir& remap) override;
    IOResult Save(ISave* isave) override;
    IOResult Load(ILoad* iload) override;
    /// @}

    /// @name ViewEffect
    /// @{
    void DrawSource(int width, int height, float* rgb) override;
    void Apply(TimeValue t, int width, int height, const float* src, uint32_t* out) override;
    void BeginEditParams(HWND panel) override;
    void EndEditParams() override;
    void ViewPointer(const float* rgb) override;
    /// @}

    /// @name ICurveCtlClient (colour_curves_client.cpp)
    /// @{
    BOOL GetCurveButtonImages(HIMAGELIST* images, ICurveCtl* control) override;
    BOOL GetCurveButtonText(int i, CStr& text, ICurveCtl* control) override;
    void ResetCurve(int i, ICurveCtl* control) override;
    void NewCurveCreated(int i, ICurveCtl* control) override;
    /// @}

    /// Tells the host (every dependent) that the picture changed.
    void PictureChanged();

protected:
    void SetReference(int i, RefTargetHandle target) override;

private:
    /// Ranges, title, flags and shown curves of a new control; then three curves, which
    /// the control shapes through NewCurveCreated.
    void ConfigureNewControl();

    ICurveCtl* control_ = nullptr;                    // reference 0
    curvectl::ClientRegistration registration_{this}; // registers this object with control_
    std::unique_ptr<ColourPanel> panel_; // the command-panel UI while parameters are edited
};

/// Curve c's name: "Red", "Green" or "Blue".
const char* ChannelName(int c);
/// Curve c's pen colour.
COLORREF ChannelColour(int c);
/// Puts curve `curve` into its default shape for channel c: the identity, with one free
/// Bezier point on the diagonal at a quarter, half or three quarters of the range.
void SetDefaultCurve(ICurve* curve, int c);
