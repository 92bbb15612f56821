// Helpers of the mouse-mode tests: real mouse messages sent to the graph window (with the
// modifier keys set in the thread's keyboard state, where the host's mouse manager reads
// them), pixels of curve points in the editor's current view, the undo list by name, and
// a notify window that logs the client messages.
//
// Every helper pumps the thread's messages afterwards, so paints and posted messages have
// run by the time a test looks at the result.
#pragma once

#include "tests/win/graph_test_support.h"

#include <initializer_list>
#include <string>
#include <vector>

namespace mousetest {

/// Modifier keys held during a message. `true` passed where keys are expected means Ctrl.
enum Keys : int {
    kNoKeys = 0,
    kCtrl = 0x1,  // MK_CONTROL and VK_CONTROL: add to the selection
    kShift = 0x2, // MK_SHIFT and VK_SHIFT: breaks a tangent while dragging a handle
    kAlt = 0x4,   // VK_MENU: the subtract modifier of the selection
};

/// Sets the thread's keyboard state so that exactly `keys` are held.
void HoldKeys(int keys);

/// @name One mouse message to `hwnd` at `p` (client coordinates), keys held as given
/// @{
void Press(HWND hwnd, IPoint2 p, int keys = kNoKeys);
/// A move with the left button held.
void MoveTo(HWND hwnd, IPoint2 p, int keys = kNoKeys);
void Release(HWND hwnd, IPoint2 p, int keys = kNoKeys);
/// A move without a button (hover).
void Hover(HWND hwnd, IPoint2 p, int keys = kNoKeys);
/// @}

/// Press at `from`, `steps` moves evenly spaced towards `to` (the last one at `to`),
/// release at `to`. `steps` below 1 counts as 1.
void Drag(HWND hwnd, IPoint2 from, IPoint2 to, int steps = 4, int keys = kNoKeys);
/// Press and release at `p`.
void Click(HWND hwnd, IPoint2 p, int keys = kNoKeys);
/// Right button press and release at `p`.
void RightClick(HWND hwnd, IPoint2 p, int keys = kNoKeys);
/// Escape while a gesture holds the mouse: the host's manager aborts it.
void Escape(HWND hwnd);

/// The graph pixel of curve point `p` in the editor's current view.
IPoint2 PixelOf(graphtest::OpenEditor& ed, Point2 p);
/// The pixel of point i of curve c, and of its absolute in- and out-handle, at time 0.
IPoint2 PointPixel(graphtest::OpenEditor& ed, int c, int i);
IPoint2 InHandlePixel(graphtest::OpenEditor& ed, int c, int i);
IPoint2 OutHandlePixel(graphtest::OpenEditor& ed, int c, int i);

/// Names of the undo steps, newest first.
std::vector<std::string> UndoNames();

/// Positions of every point of a curve (time 0), for comparing states exactly.
std::vector<Point2> Positions(Curve& c);
/// Indices of the selected points of a curve.
std::vector<int> Selected(Curve& c);

/// A hidden window that records the client messages (0x2F70 .. 0x2F77) it receives.
/// Only one may exist at a time.
class ClientLog {
public:
    struct Message {
        UINT msg;
        WPARAM wParam;
        LPARAM lParam;
    };

    ClientLog();
    ~ClientLog();
    ClientLog(const ClientLog&) = delete;
    ClientLog& operator=(const ClientLog&) = delete;

    HWND get() const { return hwnd_; }
    const std::vector<Message>& messages() const { return messages_; }
    /// How many messages `msg` arrived.
    int Count(UINT msg) const;
    void Clear() { messages_.clear(); }

private:
    static LRESULT CALLBACK proc(HWND hwnd, UINT msg, WPARAM w, LPARAM l);

    HWND hwnd_ = nullptr;           // owned: destroyed with the log
    std::vector<Message> messages_; // in arrival order
};

/// The editing modes' test scene: an embedded editor with two curves in the tool mode
/// `toolMode`, view xs 2, ys 1, X0 -61, Y0 0. Curve 0: corner points at (0, 0), (20, 30),
/// (50, 60), (80, -40), (100, 0); curve 1: (0, 10), (30, -30), (60, 20), (100, 10). No
/// selection.
struct TwoCurves {
    graphtest::OpenEditor ed;
    TwoCurves(int toolMode, DWORD flags) : ed(2, flags) {
        using graphtest::Knot;
        graphtest::LoadPoints(
            ed.curve(0), {Knot(0, 0), Knot(20, 30), Knot(50, 60), Knot(80, -40), Knot(100, 0)});
        graphtest::LoadPoints(ed.curve(1),
                              {Knot(0, 10), Knot(30, -30), Knot(60, 20), Knot(100, 10)});
        ed.SetView(2.0f, 1.0f, -27, 0);
        ed.control().SetToolMode(toolMode);
        ed.Repaint();
    }
    HWND graph() { return ed.graph(); }
    Curve& curve(int c) { return ed.curve(c); }
    IPoint2 at(int c, int i) { return PointPixel(ed, c, i); }
    void select(int c, std::initializer_list<int> points) {
        for (int i : points)
            ed.curve(c).Knots()[i].flags |= KNOT_SELECTED;
    }
};

} // namespace mousetest
