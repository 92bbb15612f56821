// Viewport: the demo host's view panel. It shows the scene effect's picture at the current
// time, with the time strip below it: the Animate button, the time slider and the frame
// number. A red frame around the picture means animate mode is on.
#pragma once

#include "host/core_interface.h"
#include "host/view_effect.h"
#include "host/win_types.h"

#include <cstdint>
#include <functional>
#include <vector>

class SceneDoc;

/// The last frame of the time slider (the first is 0).
#define VIEW_LAST_FRAME 100

class Viewport : public TimeChangeCallback {
public:
    /// Takes over the painting and input of `viewPanel` (the host's "ViewPanel").
    /// `command` runs a host command (the Animate button sends one).
    Viewport(HWND viewPanel, SceneDoc& scene, std::function<void(int)> command);
    ~Viewport() override;
    Viewport(const Viewport&) = delete;
    Viewport& operator=(const Viewport&) = delete;

    /// The picture changed: repaint it (when the message queue is next empty).
    void Invalidate();
    /// Shows whether animate mode is on (button state and the red frame).
    void ShowAnimate(bool on);
    /// TimeChangeCallback: the slider follows the time and the picture is repainted.
    void TimeChanged(TimeValue t) override;

    /// @name For scripted sessions
    /// @{
    HWND Window() const { return panel_; }
    HWND Slider() const { return slider_; }
    HWND AnimateButton() const { return animate_; }
    /// Where the picture is, in the panel's client coordinates.
    RECT PictureRect() const;
    /// The source picture as last drawn for the current size (3 floats per pixel), and
    /// that size.
    const std::vector<float>& Source() const { return source_; }
    int SourceWidth() const { return sourceWidth_; }
    int SourceHeight() const { return sourceHeight_; }
    /// @}

private:
    static LRESULT CALLBACK PanelProc(HWND hwnd, UINT msg, WPARAM wParam, LPARAM lParam);
    LRESULT OnMessage(UINT msg, WPARAM wParam, LPARAM lParam);
    void Layout();
    void Paint();
    /// Redraws the source picture when the picture's size or the effect changed.
    void EnsureSource(ViewEffect& effect, int width, int height);
    void OnMouseMove(int x, int y);
    void OnSlider();

    HWND panel_;                       // the host's view panel (not owned)
    WNDPROC hostProc_ = nullptr;       // its own window procedure, called for the rest
    SceneDoc& scene_;                  // whose effect is shown
    std::function<void(int)> command_; // runs a host command
    HWND animate_ = nullptr;           // child: the Animate push-like check box
    HWND slider_ = nullptr;            // child: the time slider (trackbar)
    HWND frameLabel_ = nullptr;        // child: "Frame n"
    bool animating_ = false;           // shown state of animate mode
    bool tracking_ = false;            // asked for WM_MOUSELEAVE
    std::vector<float> source_;        // the effect's source picture, RGB floats
    const void* sourceOf_ = nullptr;   // the effect that drew it (compared, never used)
    int sourceWidth_ = 0, sourceHeight_ = 0;
    std::vector<uint32_t> shown_; // the effect's result, 0x00RRGGBB per pixel
};
