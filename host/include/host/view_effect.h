// View effects: the kind of plug-in class the demo host shows in its viewport and its
// command panel. Host and plug-ins both compile against this header.
//
// A view effect has a picture of its own and changes it at each time (its effect). While
// it is the scene's effect, the host
//   - asks it once per viewport size for its source picture (DrawSource) and on every
//     repaint for the result at the current time (Apply);
//   - gives it the command panel for its parameters (BeginEditParams / EndEditParams);
//   - tells it the source colour under the mouse in the viewport (ViewPointer);
//   - holds it as a reference of the scene, saves it with the scene, and repaints the
//     viewport whenever it tells its dependents about a change (REFMSG_CHANGE).
//
// The host finds view effects in its class directory by super class id, and creates them
// through their class descriptors like every other class.
#pragma once

#include "host/animatable.h"
#include "host/interval.h"
#include "host/win_types.h"

#include <cstdint>

#define VIEW_EFFECT_SUPER_CLASS_ID 0x00000C10

/// Host time of one frame: the time slider moves in frames.
#define VIEW_TICKS_PER_FRAME 160

class ViewEffect : public ReferenceTarget {
public:
    SClass_ID SuperClassID() override { return VIEW_EFFECT_SUPER_CLASS_ID; }

    /// Writes the source picture, `width` x `height` pixels (both at least 1), rows top to
    /// bottom, three floats per pixel (red, green, blue, each in [0, 1]) into `rgb`.
    virtual void DrawSource(int width, int height, float* rgb) = 0;

    /// The effect at time t applied to `src` (as DrawSource wrote it): `width` x `height`
    /// pixels into `out`, one 0x00RRGGBB word per pixel, rows top to bottom. Called on the
    /// user-interface thread; the effect may spread the work over threads of its own but
    /// has finished with both buffers when it returns.
    virtual void Apply(TimeValue t, int width, int height, const float* src, uint32_t* out) = 0;

    /// Puts the effect's parameters into `panel` (the host's command panel); from now
    /// until EndEditParams the user may edit them.
    virtual void BeginEditParams(HWND panel) = 0;
    /// Takes the parameters out of the panel again (before the effect leaves the scene).
    virtual void EndEditParams() = 0;

    /// The source colour (three floats) under the mouse in the viewport; null when the
    /// mouse left the picture.
    virtual void ViewPointer(const float* rgb) = 0;
};
