// What a CurveControl asks of its open editor window. The editor layer (editor/, Windows
// only) implements it; the control never includes a window header.
#pragma once

#include "host/bitarray.h"
#include "host/win_types.h"

class CurveControl;

class IEditorView {
public:
    virtual ~IEditorView() = default;

    /// The editor's outer window.
    virtual HWND Handle() = 0;
    /// Marks the graph's cached picture invalid, invalidates the graph without erasing,
    /// resets the cached mouse positions and updates the window at once.
    virtual void RedrawGraph() = 0;
    /// Invalidates the graph (cached picture and mouse positions) without updating.
    virtual void InvalidateGraph() = 0;
    /// The editor's current zoom and scroll, for GetZoomState/GetScrollState and saving.
    virtual void CaptureView(float& hZoom, float& vZoom, int& hScroll, int& vScroll) = 0;
    /// Zoom values already clamped by the control.
    virtual void SetZoom(float hZoom, float vZoom) = 0;
    /// Sets both scroll bars, invalidates the graph and the ruler and updates the ruler.
    virtual void SetScroll(int hScroll, int vScroll) = 0;
    virtual void SetCaption(const char* title) = 0;
    /// Selects an edit mode (editor_id::kMove, kScale or kAddPoint) with its fly-off entry;
    /// a fly-off of -1 leaves the button's entry as it is.
    virtual void SelectEditMode(int mode, int flyOff) = 0;
    /// The edit mode and its button's fly-off entry; -1 when the button does not exist
    /// (no edit toolbar), so that the control's own tool mode stands.
    virtual void GetEditMode(int& mode, int& flyOff) = 0;
    /// New display bits from SetShownCurves (puts the display undo record).
    virtual void SetDisplayMode(const BitArray& bits) = 0;
    /// The editor's copy of the display bits: bit i set means curve i is displayed, and
    /// so is what the whole-curve commands and the drag marks act on.
    virtual BitArray DisplayMode() = 0;
    /// The curve display buttons follow the control's curves and texts again.
    virtual void RebuildCurveButtons() = 0;
    /// Sends the editor a WM_COMMAND with command `id` (editor_id::..., control/editor_ids.h).
    virtual void SendCommand(int id) = 0;
    /// The aspect-lock rescale of the view for a direction; true when it applied.
    virtual bool AspectRescale(int direction) = 0;
    /// Invalidates the ruler strip.
    virtual void InvalidateRuler() = 0;
    /// Invalidates the ruler strip and repaints it now, before anything else is drawn.
    virtual void RedrawRuler() = 0;
};

/// Opens (show TRUE) or closes the editor of `control`; TRUE when it is open afterwards.
/// Implemented by the editor layer; the native build, which has no window system, never
/// opens an editor.
BOOL ShowEditor(CurveControl* control, BOOL show);
