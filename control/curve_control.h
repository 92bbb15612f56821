// CurveControl: the object a client creates, configures and queries to offer its user a
// set of editable function curves. It holds its curves as references 0 .. n-1, carries
// every setting of the editor, opens and closes the editor window, and tells the client
// about changes through its notify window and the client callback interface.
//
//   curve_control.cpp     construction, the ICurveCtl operations, the reference face
//   control_curves.cpp    SetCurveCount, DeleteCurve, CopyFrom and the curve set
//   control_io.cpp        saving and loading
//   control_undo.cpp      the control's undo records (control_undo.h)
//   control_commands.cpp  the editor's whole-curve commands
//   control_ext.cpp       the extensions (CurveControlEx, control_ext.h)
#pragma once

#include "control/control_ext.h"
#include "control/editor_link.h"
#include "curve/curve.h"
#include "curvectl/icurvectl.h"
#include "host/bitarray.h"
#include "host/cstr.h"
#include "host/tab.h"

class CurveControl : public ICurveCtl {
public:
    CurveControl();
    ~CurveControl() override;

    /// @name ICurveCtl
    /// @{
    BOOL IsEditorOpen() override;
    BOOL SetEditorOpen(BOOL open) override;
    HWND GetEditorWindow() override { return hWnd_; }
    void SetCurveCount(int n, BOOL undoable = TRUE) override;
    int GetCurveCount() override { return curves_.Count(); }
    void SetXRange(float low, float high, BOOL rescale = TRUE) override;
    void SetYRange(float low, float high) override { yRange_ = Point2(low, high); }
    Point2 GetXRange() override { return xRange_; }
    Point2 GetYRange() override { return yRange_; }
    void RegisterClientObject(ReferenceTarget* client) override { clientObject_ = client; }
    BOOL GetZoomState(float* h, float* v) override;
    void SetZoomState(float h, float v) override;
    BOOL GetScrollState(int* h, int* v) override;
    void SetScrollState(int h, int v) override;
    void ZoomExtents() override;
    void SetTitle(const char* title) override { title_ = title; }
    ICurve* GetCurve(int i) override;
    void SetShownCurves(BitArray mode) override;
    BitArray GetShownCurves() override { return shownCurves_; }
    void SetControlFlags(DWORD flags) override;
    DWORD GetControlFlags() override { return flags_; }
    void SetParentWindow(HWND parent) override { parentWindow_ = parent; }
    void SetNotifyWindow(HWND notify) override { notifyWindow_ = notify; }
    void SetToolMode(int mode) override;
    int GetToolMode() override;
    void Redraw() override;
    Interval GetValidity(TimeValue t) override;
    void Update(TimeValue t, Interval& valid) override;
    void SetMarkerX(float x) override;
    void EnableRedraw(BOOL enable) override { drawEnabled_ = enable; }
    /// What EnableRedraw last set (TRUE initially).
    BOOL RedrawEnabled() const { return drawEnabled_; }
    void DeleteCurve(int i) override;
    void ResetSelectedCurves() override;
    /// @}

    /// @name Host-facing face
    /// @{
    void GetClassName(CStr& s) override { s = "CurveControl"; }
    Class_ID ClassID() override;
    SClass_ID SuperClassID() override;
    /// The extensions (ICurveCtlEx) for CURVE_CTL_EX_INTERFACE_ID; otherwise the host's
    /// answer.
    void* GetInterface(ULONG id) override;
    int NumSubs() override { return GetCurveCount(); }
    Animatable* SubAnim(int i) override { return GetReference(i); }
    /// "Curve %d" with i + 1.
    CStr SubAnimName(int i) override;
    int NumRefs() override { return GetCurveCount(); }
    RefTargetHandle GetReference(int i) override;
    RefResult NotifyRefChanged(const Interval& changeInt, RefTargetHandle hTarget, PartID& partID,
                               RefMessage message, BOOL propagate) override;
    RefTargetHandle Clone(RemapDir& remap) override;
    IOResult Save(ISave* isave) override;
    IOResult Load(ILoad* iload) override;
    /// @}

    /// @name Used by the curves, the undo records and the editor
    /// @{
    Curve* GetCurveObject(int i) { return static_cast<Curve*>(GetCurve(i)); }
    /// The extension switch and its settings.
    CurveControlEx& Extensions() { return ext_; }
    const CurveControlEx& Extensions() const { return ext_; }
    /// Sends a client message to the notify window, if one is set.
    void SendClientMessage(UINT msg, WPARAM wParam, LPARAM lParam);
    HWND NotifyWindow() const { return notifyWindow_; }
    HWND ParentWindow() const { return parentWindow_; }
    /// The client callback interface, or null.
    ICurveCtlClient* Client();
    /// The editor window object while the editor is open.
    IEditorView* Editor() const { return editorWindow_; }
    /// Called by the editor layer as the editor opens and closes.
    void AttachEditor(HWND frame, IEditorView* editor);
    void DetachEditor();
    /// Invalidates an open editor's graph without updating it.
    void InvalidateGraph();
    const char* Title() const { return title_.data(); }
    int InstanceIndex() const { return instanceIndex_; }
    void SetInstanceIndex(int i) { instanceIndex_ = i; }
    float MarkerX() const { return currentX_; }
    int ZoomFlyOff() const { return zoomFlyOff_; }
    void SetZoomFlyOff(int f) { zoomFlyOff_ = f; }
    /// The placement of the floating editor when it was last closed.
    bool SavedPlacement(WINDOWPLACEMENT& wp) const;
    void StorePlacement(const WINDOWPLACEMENT& wp);
    HIMAGELIST ButtonImages() const { return buttonImages_; }
    void SetButtonImages(HIMAGELIST images) { buttonImages_ = images; }
    /// Tooltip text of curve i's display button (empty when out of range).
    const char* CurveButtonText(int i) const;
    /// Flips the display bit of curve i (through SetShownCurves).
    void ToggleCurveDisplay(int i);
    /// The curves the editor treats as displayed: the open editor's copy of the display
    /// bits, or the shown-curves bits while the editor is closed (control_commands.cpp).
    BitArray DisplayedCurves();
    /// Copies every setting and curve of `other` (Clone). Throws std::bad_alloc when
    /// memory runs out part way.
    void CopyFrom(CurveControl& other);
    /// Asks the client callback for button images and texts.
    void RefreshCurveButtonTexts();
    /// Drops every reference to the curves without deleting the curves' records.
    void DropAllCurves();
    /// @}

protected:
    void SetReference(int i, RefTargetHandle target) override;

private:
    friend class DeleteCurveRestore;
    friend class CurveControlPostLoad;

    /// An open editor's zoom and scroll into the stored view state.
    void captureView();
    void clearButtonTexts();
    /// Appends a text; false when the table cannot grow. Throws std::bad_alloc when the
    /// text itself cannot be made (callers catch it).
    bool appendButtonText(const char* text);
    /// False (and no change) when the table cannot hold n entries.
    bool setCurveTableSize(int n);
    /// Grows the set from `count` to n new curves; false, with the set as it was, when
    /// memory runs out on the way.
    bool growCurveSet(int count, int n);
    /// Drops the curves and texts from index `count` on.
    void truncateCurveSet(int count);
    /// SetCurveCount's change itself; false when a growth was refused.
    bool changeCurveCount(int n);
    /// Load itself, which may throw std::bad_alloc (control_io.cpp).
    IOResult loadChunks(ILoad* iload);
    /// Reads chunk 0x042E (control_io.cpp).
    IOResult loadCurveCount(ILoad* iload);

    Tab<Curve*> curves_;                      // entry i is reference i
    Tab<CStr*> curveButtonTexts_;             // owned texts, one per curve
    ReferenceTarget* clientObject_ = nullptr; // the client's object; not a reference
    int legacyInt_ = 1;                       // saved and copied, read by nothing else
    BitArray shownCurves_;                    // bit i: curve i is displayed (and editable)
    int zoomFlyOff_ = 0;                      // last entry of the zoom fly-off button
    HWND hWnd_ = nullptr;                     // the editor's outer window while open
    HWND parentWindow_ = nullptr;             // parent (embedded) or owner (floating)
    HWND notifyWindow_ = nullptr;             // receives the client messages; 0 sends none
    int instanceIndex_ = 0;                   // cascade step of a new floating window
    IEditorView* editorWindow_ = nullptr;     // owned through its window, not by the control
    float vZoom_ = 0.0f, hZoom_ = 0.0f;       // zoom last set or captured
    int zoomSet_ = 0;                         // 1 once a zoom is stored
    int hScroll_ = 0, vScroll_ = 0;           // scroll last set or captured
    int scrollSet_ = 0;                       // 1 once a scroll is stored
    WINDOWPLACEMENT placement_{};             // the floating editor's last placement
    int placementSaved_ = 0;                  // 1 once placement_ holds one
    HIMAGELIST buttonImages_ = nullptr;       // client-supplied images of the curve buttons
    Point2 xRange_{0.0f, 1.0f};               // x range of all curves
    Point2 yRange_{0.0f, 1.0f};               // y range shown and enforced
    CStr title_;                              // caption of the editor window
    DWORD flags_ = CC_DEFAULT_FLAGS;          // the flag word
    int toolMode_ = 0;                        // the selected mouse mode, 0..5
    float currentX_ = 0.0f;                   // marker line x (left unset by construction: 0)
    int drawEnabled_ = 1;                     // 0 suppresses Redraw
    CurveControlEx ext_{*this};               // the extensions (ICurveCtlEx), a part of this
};
