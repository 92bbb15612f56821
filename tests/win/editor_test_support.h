// Shared helpers of the editor's window tests: a clean host state, controls with the
// flags a test wants, a parent window to embed editors in, and reading windows back.
#pragma once

#include "control/curve_control.h"
#include "editor/curve_ctl_window.h"
#include "host/win_types.h"
#include "modes/mouse_modes.h"

#include <memory>
#include <string>

namespace edtest {

/// The editor's mouse modes as the objects they are (the window holds them as IEditorModes).
inline MouseModeSet& ModeSetOf(CurveCtlWindow& w) { return dynamic_cast<MouseModeSet&>(w.Modes()); }

/// Module instance set (resources load from the test program), hold emptied, time 0.
void ResetHostState();

struct EditorFixture {
    EditorFixture() { ResetHostState(); }
    ~EditorFixture() { ResetHostState(); }
};

struct ControlDelete {
    void operator()(CurveControl* c) const;
};
using ControlPtr = std::unique_ptr<CurveControl, ControlDelete>;

/// The default flag word without CC_ASPOPUP: an editor embedded in the parent window.
constexpr DWORD kEmbedded = CC_DEFAULT_FLAGS & ~DWORD(CC_ASPOPUP);

/// A control with `curves` curves, all shown, the flag word `flags` and `parent` as its
/// parent window (may be null).
ControlPtr MakeControl(int curves, DWORD flags, HWND parent);

/// A visible top-level window whose client area is `width` x `height`, for embedding.
class ParentWindow {
public:
    ParentWindow(int width, int height);
    ~ParentWindow();
    ParentWindow(const ParentWindow&) = delete;
    ParentWindow& operator=(const ParentWindow&) = delete;
    HWND get() const { return hwnd_; }

private:
    HWND hwnd_;
};

/// The open editor of `control` (null when closed).
CurveCtlWindow* EditorOf(CurveControl& control);

/// Handles every message waiting for this thread.
void Pump();

/// `child`'s window rectangle in `reference`'s client coordinates.
RECT RectIn(HWND child, HWND reference);
bool HasVisibleStyle(HWND hwnd);
std::string WindowText(HWND hwnd);

/// Writes the screen under `hwnd` as a PNG file (`path` relative to the working folder,
/// which ctest makes the build tree). False when it could not be written.
bool SaveScreenshot(HWND hwnd, const std::string& path);

} // namespace edtest
