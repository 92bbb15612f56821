/// @file
/// ICurveCtlEx: the curve control's extensions. Every behaviour of the editor that goes
/// beyond what ICurveCtl describes is switched on here, one bit per feature, by the client;
/// a control whose client never asks for this interface (or leaves its flag word at 0)
/// behaves, saves and draws exactly as ICurveCtl says.
///
///     if (ICurveCtlEx* ex = curvectl::GetCurveCtlEx(control)) {
///         ex->SetExtendedFlags(CCX_ALL);        // every extension of this version
///         ex->SetOnionSkin(4, 160);              // 4 skins each side, one frame apart
///     }
///
/// A module older than this interface answers null for its id: check before use.
#pragma once

#include "curvectl/icurvectl.h"
#include "host/win_types.h"

/// The interface id under which a curve control answers its host interface query
/// (`control->GetInterface(CURVE_CTL_EX_INTERFACE_ID)`) with its ICurveCtlEx. The
/// pointer is to be cast to ICurveCtlEx*; null from a module that has no extensions.
#define CURVE_CTL_EX_INTERFACE_ID 0x2474334C

/// @name Extended flags (ICurveCtlEx::SetExtendedFlags); the default is 0, every extension off
/// Each bit switches one feature of the editor on. Bits read "when the editor opens" take
/// effect at the next opening, as the control flags do; the others at once.
/// @{

/// The keyboard: a click in the graph gives it the keyboard focus (embedded as well as
/// floating; the focus goes back to the window that had it when the editor closes). The
/// arrow keys nudge the selected points (or the tangent handle last gripped) by one
/// pixel's worth of curve units, ten with Shift, one grid step with snapping on; each
/// press is one undo step "Nudge Points", and presses of the same key in quick succession
/// merge into one. Delete deletes the selected points, Ctrl+A selects every point of the
/// displayed curves, Escape cancels a drag in progress or else clears the selection, F
/// frames the selected points (all points when none is selected), Home zooms to the
/// extents.
#define CCX_KEYBOARD 0x1
/// Snapping: a toggle button on the edit toolbar (read when the editor opens), whose state
/// is ICurveCtlEx::SetSnapEnabled's. While it is on, moves, inserts and nudges put the
/// points on the grid lines the graph shows (the step follows the zoom) and dragged
/// tangent handles turn in 15-degree steps; Shift held during a drag inverts the toggle
/// for that drag. Numbers typed into the entry fields are never snapped.
#define CCX_SNAP 0x2
/// The mouse wheel zooms about the cursor (the curve point under the cursor stays under
/// it) instead of about the middle of the graph.
#define CCX_WHEEL_AT_CURSOR 0x4
/// A double-click counts as a press (so a quick second click on a point can start a
/// drag); a double-click on a curve's line, away from its points, inserts a Bezier point
/// there as one undo step "Insert Points".
#define CCX_DOUBLE_CLICK 0x8
/// The floating editor opens wide enough to show both toolbars whole (read when the
/// editor opens; a saved placement still wins).
#define CCX_WIDE_FLOATING 0x10
/// Onion skins: a curve with animated points is also drawn as it is a number of frames
/// before and after the current time, in fading pens behind the live curve, and drawn
/// again when the time changes (ICurveCtlEx::SetOnionSkin sets how many and how far).
#define CCX_ONION_SKIN 0x20
/// Reserved for copy and paste of points and curves (section "Copy, paste and presets"
/// of ICurveCtlEx); kept as given.
#define CCX_CLIPBOARD 0x40
/// Reserved for curve presets (section "Copy, paste and presets" of ICurveCtlEx); kept as
/// given.
#define CCX_PRESETS 0x80
/// Every extension this version names.
#define CCX_ALL                                                                                    \
    (CCX_KEYBOARD | CCX_SNAP | CCX_WHEEL_AT_CURSOR | CCX_DOUBLE_CLICK | CCX_WIDE_FLOATING |        \
     CCX_ONION_SKIN | CCX_CLIPBOARD | CCX_PRESETS)
/// @}

/// @name Onion skin limits (ICurveCtlEx::SetOnionSkin)
/// What SetOnionSkin takes, and what a new control starts with. The default step is one
/// frame of a host that counts 160 of its time units per frame.
/// @{
#define CCX_ONION_MAX_FRAMES 16    ///< The most skins drawn on each side of the current time.
#define CCX_ONION_DEFAULT_FRAMES 2 ///< Skins on each side of a new control.
#define CCX_ONION_DEFAULT_STEP 160 ///< Time between two skins of a new control.
/// @}

/// The extensions of a curve control, which a client gets from
/// `control->GetInterface(CURVE_CTL_EX_INTERFACE_ID)` (or curvectl::GetCurveCtlEx).
///
/// **Lifetime.** The interface is part of its control: the pointer is valid exactly as
/// long as the control, and is the same pointer every time it is asked for. Never delete
/// it.
///
/// **Threads.** Every operation runs on the host's user-interface thread, like ICurveCtl's.
///
/// **Saving and undo.** The flag word and the settings below are saved with the control in
/// the scene file, and copied with it (a clone keeps them); a control whose flag word is
/// 0 saves none of them, so its file is exactly what a module without extensions writes,
/// and a file without them loads with the word 0 and every setting at its default. None of
/// these operations is recorded for undo: they configure the control, as
/// ICurveCtl::SetControlFlags does.
///
/// **Errors.** Nothing is thrown and no error is reported: a value out of range is refused
/// (nothing changes), as each operation says.
///
/// Its table holds these operations in this slot order (slot 0 first, no virtual
/// destructor): later versions append operations at the end and never move one.
class ICurveCtlEx {
public:
    /// @name The extension switch
    /// @{

    /// Slot 0. Sets the CCX_... flag word; 0 (the default) turns every extension off.
    /// Bits this version does not name are kept as given (saved, loaded and answered by
    /// GetExtendedFlags) and do nothing, so a file written by a newer module keeps them.
    /// An open editor repaints at once; the bits read when the editor opens (the snap
    /// button, the floating width) apply at its next opening.
    virtual void SetExtendedFlags(DWORD flags) = 0;
    /// Slot 1. The flag word as last set or loaded (0 for a new control).
    virtual DWORD GetExtendedFlags() = 0;
    /// @}

    /// @name Keyboard, snapping and view
    /// @{

    /// Slot 2. Turns snapping on or off (non-zero is on): the state of the edit toolbar's
    /// snap button, which the user flips as well. It takes effect only while CCX_SNAP is
    /// set; an open editor's button follows at once. Off for a new control.
    virtual void SetSnapEnabled(BOOL on) = 0;
    /// Slot 3. Whether snapping is on (TRUE or FALSE), whatever CCX_SNAP says.
    virtual BOOL GetSnapEnabled() = 0;
    /// Slot 4. How the onion skins are drawn (CCX_ONION_SKIN): `framesEachSide` skins
    /// before and as many after the current time, 0 .. CCX_ONION_MAX_FRAMES (0 draws
    /// none), `frameStep` apart in the host's time units, at least 1. Anything else is
    /// refused and changes nothing. An open editor repaints at once. A new control has
    /// CCX_ONION_DEFAULT_FRAMES and CCX_ONION_DEFAULT_STEP.
    virtual void SetOnionSkin(int framesEachSide, int frameStep) = 0;
    /// Slot 5. The onion skin settings into the non-null outputs.
    virtual void GetOnionSkin(int* framesEachSide, int* frameStep) = 0;
    /// @}

    /// @name Copy, paste and presets
    /// (Empty in this version: the operations of CCX_CLIPBOARD and CCX_PRESETS come here,
    /// after slot 5.)
    /// @{
    /// @}

protected:
    /// Made only as part of a curve control.
    ICurveCtlEx() = default;
    /// Copied only with its control.
    ICurveCtlEx(const ICurveCtlEx&) = default;
    /// Assigned only with its control.
    ICurveCtlEx& operator=(const ICurveCtlEx&) = default;
    /// Not virtual, and not public: the interface belongs to its control, and `delete`
    /// through it does not compile.
    ~ICurveCtlEx() = default;
};

namespace curvectl {

/// The extensions of `control`: null when `control` is null or its module has none (a
/// module older than this interface).
///
/// User-interface thread; the pointer is valid as long as the control.
inline ICurveCtlEx* GetCurveCtlEx(ICurveCtl* control) {
    return control ? static_cast<ICurveCtlEx*>(control->GetInterface(CURVE_CTL_EX_INTERFACE_ID))
                   : nullptr;
}

} // namespace curvectl
