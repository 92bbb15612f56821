// What the editor window asks of its mouse modes. The modes sit above the editor (modes/,
// which calls the window's operations); the window reaches them only through this
// interface: it owns one set of them, made by CreateEditorModes, and installs the set's
// objects on its mouse manager as the edit and view modes change.
#pragma once

#include "host/mouse_manager.h"

#include <memory>

class CurveCtlWindow;

class IEditorModes {
public:
    /// The modes, by what they do; each is one object of the set.
    enum Mode {
        kSelect,     // clicks, selection and region boxes; hands drags to the drag mode
        kMove,       // a drag mode: drags the selected points or the handles hit
        kScale,      // a drag mode: scales the y of the selected points
        kInsert,     // inserts points where a curve is clicked
        kPointMenu,  // the point context menu on the right button
        kPan,        // pans the view
        kZoom,       // the three zoom view modes
        kZoomRegion, // zooms to a dragged box
        kIdle,       // the left button's mode while none applies: does nothing
    };

    virtual ~IEditorModes() = default;
    /// The object of `mode`; it lives as long as the set.
    virtual MouseCallBack* Get(Mode mode) = 0;
    /// Where kSelect hands the drags that start on a point or handle: kMove or kScale.
    virtual void SetDragMode(Mode mode) = 0;
};

/// One object of each mode for `window`, which outlives them. Implemented by the modes
/// layer (modes/mode_set.cpp).
std::unique_ptr<IEditorModes> CreateEditorModes(CurveCtlWindow* window);
