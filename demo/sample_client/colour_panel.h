// ColourPanel: the parameters of a ColourCurves in the host's command panel, while the
// effect is being edited. It shows the curve control's editor embedded in the panel or
// floating, and it is the control's notify window: the control's messages arrive here.
#pragma once

#include "host/win_types.h"

class ColourCurves;

class ColourPanel {
public:
    /// Builds the panel's windows inside `commandPanel` and opens the editor embedded.
    ColourPanel(ColourCurves& effect, HWND commandPanel);
    /// Closes the editor and destroys the panel's windows.
    ~ColourPanel();
    ColourPanel(const ColourPanel&) = delete;
    ColourPanel& operator=(const ColourPanel&) = delete;

    /// Closes the editor and opens it again, floating or embedded in the panel.
    void OpenEditor(bool floating);

    /// Sets the panel's event line (printf format).
    void ShowText(const char* format, ...);
    /// Shows the colour under the mouse in the viewport and where the marker stands.
    void ShowPointer(const float* rgb, float markerX);
    /// Shows how long the last frame of the picture took through the curves.
    void ShowFrameTime(double milliseconds, int width, int height, int threads);

private:
    static LRESULT CALLBACK PanelProc(HWND hwnd, UINT msg, WPARAM wParam, LPARAM lParam);
    LRESULT OnMessage(UINT msg, WPARAM wParam, LPARAM lParam);
    /// One of the control's notification messages (CURVE_MSG_...).
    void OnCurveMessage(UINT msg, WPARAM wParam, LPARAM lParam);
    /// Puts a new floating editor frame where the floating editor last stood.
    void PlaceFloating(HWND frame);
    /// The channel of the curve a curve message names, or -1.
    int ChannelOf(LPARAM curve) const;

    ColourCurves& effect_;   // the effect whose parameters these are; outlives the panel
    HWND panel_ = nullptr;   // owned: the panel window, child of the command panel
    HWND area_ = nullptr;    // the embedded editor's parent (child of panel_)
    HWND event_ = nullptr;   // text line: the last thing the control told us
    HWND pointer_ = nullptr; // text line: the colour under the mouse
    HWND frame_ = nullptr;   // text line: the time of the last frame
    bool dragging_ = false;  // the left button is down in the editor's graph
    int changesInDrag_ = 0;  // point and tangent messages since the button went down
    RECT floatingRect_ = {}; // screen rectangle of the floating editor when it last closed
    bool hasFloatingRect_ = false;
};
