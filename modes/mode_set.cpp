// The editor's set of mouse modes (editor/mode_link.h): one object of each, pointed at the
// window that owns the set.
#include "modes/mouse_modes.h"

MouseModeSet::MouseModeSet(CurveCtlWindow* w) {
    base.window = zoom.window = zoomRegion.window = pan.window = dummy.window = w;
    right.window = w;
    move.window = w;
    scale.window = w;
    insert.window = w;
}

MouseCallBack* MouseModeSet::Get(Mode mode) {
    switch (mode) {
    case kSelect:
        return &base;
    case kMove:
        return &move;
    case kScale:
        return &scale;
    case kInsert:
        return &insert;
    case kPointMenu:
        return &right;
    case kPan:
        return &pan;
    case kZoom:
        return &zoom;
    case kZoomRegion:
        return &zoomRegion;
    case kIdle:
        return &dummy;
    }
    return &dummy;
}

void MouseModeSet::SetDragMode(Mode mode) {
    if (mode == kMove)
        base.subMode = &move;
    else if (mode == kScale)
        base.subMode = &scale;
}

std::unique_ptr<IEditorModes> CreateEditorModes(CurveCtlWindow* window) {
    return std::make_unique<MouseModeSet>(window);
}
