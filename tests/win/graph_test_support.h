// Helpers of the graph tests: an open editor embedded in a parent window with a known
// view, curves loaded point by point, the graph's picture read back from its off-screen
// buffer, and the GDI records of one drawing captured through an enhanced metafile.
#pragma once

#include "control/curve_control.h"
#include "editor/curve_ctl_window.h"
#include "editor/view_mapping.h"
#include "tests/win/editor_test_support.h"

#include <string>
#include <vector>

namespace graphtest {

inline CurveKnot Knot(float x, float y, uint32_t flags = KNOT_CORNER, Point2 in = Point2(),
                      Point2 out = Point2()) {
    return CurveKnot(Point2(x, y), in, out, flags);
}

/// Replaces the points of `c` (no undo record, no message).
void LoadPoints(Curve& c, const std::vector<CurveKnot>& knots);

/// An editor embedded in a `width` x `height` parent, for a control with `curves` curves
/// (all shown), x range 0 .. 100, y range -1000 .. 1000 and the flag word `flags`.
class OpenEditor {
public:
    OpenEditor(int curves, DWORD flags, int width = 420, int height = 320);
    ~OpenEditor();
    OpenEditor(const OpenEditor&) = delete;
    OpenEditor& operator=(const OpenEditor&) = delete;

    CurveControl& control() { return *control_; }
    CurveCtlWindow& editor() { return *edtest::EditorOf(*control_); }
    Curve& curve(int i) { return *control_->GetCurveObject(i); }
    HWND graph() { return editor().Graph().Handle(); }
    HWND strip() { return editor().Strip()->Handle(); }
    HWND hbar() { return editor().HorizontalBar(); }
    HWND vbar() { return editor().VerticalBar(); }

    /// Sets the view: the scales and the two scroll positions (X0 = 2 * hpos - 7, Y0 from
    /// vpos in hundredths of Hm + 1). The bars' ranges are widened to take them.
    void SetView(float xs, float ys, int hpos, int vpos);
    /// The view the editor draws with now.
    view::ViewMapping View();
    /// Repaints the graph now (cache dropped) and returns its picture's pixel.
    void Repaint();
    COLORREF Pixel(int x, int y);

private:
    edtest::ParentWindow parent_;
    edtest::ControlPtr control_;
};

/// A memory DC with a bitmap filled with grey: a 32-bit DIB section, top-down or
/// bottom-up, or a bitmap compatible with the screen.
class Canvas {
public:
    enum Kind { TopDown, BottomUp, ScreenBitmap };
    static constexpr int kW = 420, kH = 260;
    explicit Canvas(Kind kind = TopDown);
    ~Canvas();
    Canvas(const Canvas&) = delete;
    Canvas& operator=(const Canvas&) = delete;

    HDC dc() const { return dc_; }
    /// The pixels, top row first (0x00RRGGBB).
    std::vector<uint32_t> Pixels() const;
    /// How many pixels differ from those of `other`.
    int Differences(const Canvas& other) const;

private:
    HDC dc_;
    HBITMAP bitmap_ = nullptr;
    HGDIOBJ old_ = nullptr;
};

/// One GDI call of a recorded drawing that the tests look at.
struct Record {
    enum Kind { MoveTo, LineTo, Text, Other } kind = Other;
    int x = 0, y = 0; // point of MoveTo/LineTo, reference point of Text
    std::string text; // Text only
};

/// Records what `draw(hdc)` does into an enhanced metafile whose reference is the screen
/// and returns the calls in order.
template <class Draw> std::vector<Record> RecordDrawing(Draw draw);

/// The texts of `records`, with their positions.
std::vector<Record> Texts(const std::vector<Record>& records);
/// The (from, to) pairs of the lines: each LineTo with the MoveTo before it.
struct Line {
    int x0, y0, x1, y1;
};
std::vector<Line> Lines(const std::vector<Record>& records);

/// Decodes the records of an enhanced metafile (implementation of RecordDrawing).
std::vector<Record> DecodeMetafile(HENHMETAFILE emf);
HDC BeginRecording();
HENHMETAFILE EndRecording(HDC hdc);

template <class Draw> std::vector<Record> RecordDrawing(Draw draw) {
    HDC hdc = BeginRecording();
    draw(hdc);
    HENHMETAFILE emf = EndRecording(hdc);
    std::vector<Record> out = DecodeMetafile(emf);
    DeleteEnhMetaFile(emf);
    return out;
}

} // namespace graphtest
