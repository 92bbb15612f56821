// The scripted session, step by step. Each step does what a user would (through the mouse,
// the buttons and the menus) and then checks what the user would see.
#include "session/session.h"

#include "editor_probe.h"
#include "host/controller.h"
#include "host/core_interface.h"
#include "host/hold.h"
#include "host_app.h"
#include "host_menu.h"
#include "picture_check.h"
#include "session_capture.h"
#include "session_input.h"
#include "session_report.h"

#include <algorithm>
#include <cmath>
#include <cstdio>
#include <cstdlib>
#include <cstring>

namespace session {
namespace {

// The points the session moves: the sample client's default curves have one free point
// per channel on the diagonal, red at 0.25 and green at 0.5.
constexpr int kRed = 0, kGreen = 1;
constexpr int kFreePoint = 1;
constexpr Point2 kRedTarget(0.25f, 0.65f);
constexpr Point2 kGreenTarget(0.5f, 0.25f);
constexpr int kKeyFrame = 50;

class ScriptedSession {
public:
    ScriptedSession(HostApp& app, const std::string& folder) : app_(app), folder_(folder) {}

    int Run() {
        std::printf("Scripted session: screenshots and the saved scene go to %s\n",
                    folder_.c_str());
        CreateDirectoryA(folder_.c_str(), nullptr);
        Pump(100);
        if (!Start())
            return Finish();
        EditFloating();
        UndoAndRedo();
        AnimateEmbedded();
        Marker();
        ResetAndUndo();
        SaveAndReopen();
        Close();
        return Finish();
    }

private:
    // -----------------------------------------------------------------------------------
    // Steps

    bool Start() {
        report_.Step("The host started with the scene's effect \"%s\".", app_.EffectName().c_str());
        control_ = FindCurveControl(app_.Scene().Effect());
        if (!report_.Check(control_ != nullptr, "the effect holds a curve control"))
            return false;
        report_.Check(control_->GetCurveCount() == 3, "three curves (%d)",
                      control_->GetCurveCount());
        report_.Check(control_->IsEditorOpen() &&
                          IsChild(app_.CommandPanel(), control_->GetEditorWindow()),
                      "the editor is embedded in the command panel");
        initial_ = Snapshot(control_, 0);
        CheckPicture("the picture is the source through the default curves", 0, false);
        return true;
    }

    void EditFloating() {
        report_.Step("Floating editor: click \"Floating\", then select and drag the red "
                     "curve's free point.");
        ClickButton("Floating");
        HWND frame = control_->GetEditorWindow();
        report_.Check(control_->IsEditorOpen() &&
                          (GetWindowLongPtrA(frame, GWL_STYLE) & WS_POPUP) != 0,
                      "the editor floats in a window of its own");
        HWND graph = EditorGraph(control_);
        if (!report_.Check(graph != nullptr, "its graph window is there"))
            return;

        ICurve* red = control_->GetCurve(kRed);
        before_ = Snapshot(control_, 0);
        const Point2 from = KnotAt(red, kFreePoint, 0);
        const POINT press = GraphPixel(control_, graph, from);
        Click(graph, press);
        // A press soon after a click at the same place would be a double click.
        Pump(int(GetDoubleClickTime()) + 50);
        report_.Note("clicked at graph pixel (%ld, %ld), the point (%.2f, %.2f)", press.x, press.y,
                     double(from.x), double(from.y));
        const BitArray sel = red->GetSelection();
        report_.Check(sel.NumberSet() == 1 && sel[kFreePoint],
                      "the click selected exactly that point (%d selected)", sel.NumberSet());

        const POINT to = GraphPixel(control_, graph, kRedTarget);
        Drag(graph, press, to, 10);
        after_ = Snapshot(control_, 0);
        const Point2 moved = KnotAt(red, kFreePoint, 0);
        report_.Note("dragged to pixel (%ld, %ld): the point is at (%.3f, %.3f)", to.x, to.y,
                     double(moved.x), double(moved.y));
        report_.Check(std::fabs(moved.y - kRedTarget.y) < 0.03f &&
                          std::fabs(moved.x - kRedTarget.x) < 0.03f,
                      "the point followed the mouse to (%.2f, %.2f)", double(kRedTarget.x),
                      double(kRedTarget.y));
        report_.Check(std::strcmp(theHold.UndoName(0).data(), "Move Points") == 0,
                      "the drag is one undo step, \"%s\"", theHold.UndoName(0).data());
        CheckPicture("the picture follows the bent red curve", 0, true);
        Screenshot("floating-editor.png", CaptureScreen(Around(app_.MainWindow(), frame)));
    }

    void UndoAndRedo() {
        report_.Step("Edit menu: Undo, then Redo.");
        std::string text = MenuText(kCmdUndo);
        report_.Check(text.rfind("&Undo Move Points", 0) == 0, "the menu offers \"%s\"",
                      Printable(text).c_str());
        ChooseMenu(kCmdUndo);
        report_.Check(SamePoints(Snapshot(control_, 0), before_),
                      "Undo restored the curves as they were before the drag");
        CheckPicture("the picture is back to the default curves", 0, false);

        text = MenuText(kCmdRedo);
        report_.Check(text.rfind("&Redo Move Points", 0) == 0, "the menu offers \"%s\"",
                      Printable(text).c_str());
        ChooseMenu(kCmdRedo);
        report_.Check(SamePoints(Snapshot(control_, 0), after_),
                      "Redo restored the curves as they were after the drag");
        CheckPicture("the picture follows the bent red curve again", 0, true);
    }

    void AnimateEmbedded() {
        report_.Step("Embedded editor in animate mode: a key at frame %d.", kKeyFrame);
        ClickButton("Embedded");
        report_.Check(control_->IsEditorOpen() &&
                          IsChild(app_.CommandPanel(), control_->GetEditorWindow()),
                      "the editor is embedded in the command panel again");
        Click(app_.View().AnimateButton(), Centre(app_.View().AnimateButton()));
        report_.Check(Animating() != FALSE, "the Animate button turned animate mode on");
        MoveSlider(kKeyFrame);

        HWND graph = EditorGraph(control_);
        if (!report_.Check(graph != nullptr, "the embedded graph window is there"))
            return;
        ICurve* green = control_->GetCurve(kGreen);
        const Point2 from = KnotAt(green, kFreePoint, FrameTime(kKeyFrame));
        Drag(graph, GraphPixel(control_, graph, from), GraphPixel(control_, graph, kGreenTarget),
             8);
        report_.Check(green->IsPointAnimated(kFreePoint) != FALSE,
                      "the moved point got a controller with keys");
        const float atKey = Value(green, kKeyFrame, 0.5f), atStart = Value(green, 0, 0.5f);
        report_.Note("green at x 0.5: %.3f at frame 0, %.3f at frame %d", double(atStart),
                     double(atKey), kKeyFrame);
        report_.Check(std::fabs(atStart - 0.5f) < 0.01f && std::fabs(atKey - 0.25f) < 0.04f,
                      "frame 0 keeps the old curve, frame %d has the new one", kKeyFrame);
        CheckPicture("the picture follows the curves at frame 50", FrameTime(kKeyFrame), true);
        Screenshot("embedded-editor.png", CaptureWindow(app_.MainWindow()));

        const RgbImage atKeyFrame = Picture();
        MoveSlider(0);
        CheckPicture("the picture follows the curves at frame 0", 0, true);
        report_.Check(Picture().rgb != atKeyFrame.rgb,
                      "moving the time slider changed the picture");
        MoveSlider(kKeyFrame / 2);
        CheckPicture("the picture follows the curves at frame 25", FrameTime(kKeyFrame / 2), true);
        Click(app_.View().AnimateButton(), Centre(app_.View().AnimateButton()));
        report_.Check(Animating() == FALSE, "the Animate button turned animate mode off");
    }

    void Marker() {
        report_.Step("The mouse over the picture: the marker line follows the value.");
        Viewport& view = app_.View();
        const RECT pic = view.PictureRect();
        // On the grey ramp (the bottom strip), 30 % of the way across.
        const POINT at = {pic.left + (pic.right - pic.left) * 3 / 10,
                          pic.top + (pic.bottom - pic.top) * 93 / 100};
        MoveTo(view.Window(), at);
        const std::size_t i = (std::size_t(at.y - pic.top) * std::size_t(view.SourceWidth()) +
                               std::size_t(at.x - pic.left)) *
                              3;
        const float grey = view.Source().empty() ? -1.0f : view.Source()[i];
        const std::string text = PanelText("Under the mouse");
        const char* marker = std::strstr(text.c_str(), "Marker at ");
        const float shownX = marker ? float(std::atof(marker + 10)) : -1.0f;
        report_.Note("the client panel says \"%s\"", Printable(text).c_str());
        report_.Check(std::fabs(shownX - grey) < 0.002f,
                      "the marker stands at the grey value under the mouse (%.3f)", double(grey));
    }

    void ResetAndUndo() {
        report_.Step("\"Reset Curves\" in the client panel, then Undo.");
        const TimeValue now = GetCOREInterface()->GetTime();
        const CurveState edited = Snapshot(control_, now);
        ClickButton("Reset Curves");
        report_.Check(SamePoints(Snapshot(control_, now), initial_),
                      "the client's ResetCurve put its default curves back");
        CheckPicture("the picture is the source again", now, false);
        const std::string text = MenuText(kCmdUndo);
        report_.Check(text.rfind("&Undo Reset Curve", 0) == 0, "the menu offers \"%s\"",
                      Printable(text).c_str());
        ChooseMenu(kCmdUndo);
        report_.Check(SamePoints(Snapshot(control_, now), edited),
                      "Undo brought the edited curves back");
        report_.Check(control_->GetCurve(kGreen)->IsPointAnimated(kFreePoint) != FALSE,
                      "and the green point's keys");
        CheckPicture("the picture follows the edited curves again", now, true);
    }

    void SaveAndReopen() {
        report_.Step("File: Save, then Open the saved scene.");
        const std::string path = folder_ + "/colour-curves.scene";
        const std::vector<int> frames = {0, 10, 25, 50, 75, 100};
        const std::vector<float> values = ValueTable(control_, frames);
        std::string error;
        if (!report_.Check(app_.SaveScene(path.c_str(), &error), "saved %s", path.c_str()))
            report_.Note("%s", Printable(error).c_str());
        if (!report_.Check(app_.OpenScene(path.c_str(), &error), "opened it again"))
            report_.Note("%s", Printable(error).c_str());
        control_ = FindCurveControl(app_.Scene().Effect());
        if (!report_.Check(control_ != nullptr, "the reopened effect holds a curve control"))
            return;
        const std::vector<float> reopened = ValueTable(control_, frames);
        int differ = 0;
        float worst = 0.0f;
        for (std::size_t i = 0; i < values.size() && i < reopened.size(); ++i)
            if (values[i] != reopened[i]) {
                ++differ;
                worst = std::max(worst, std::fabs(values[i] - reopened[i]));
            }
        // The file keeps the handles as absolute positions (see docs/scene-format.md), so
        // a reloaded handle may differ from the saved one by its last bit.
        report_.Check(reopened.size() == values.size() && worst <= 1e-6f,
                      "the reopened curves give the same %zu values (3 curves, %zu frames, 65 "
                      "x each): %d differ in the last bit or two, none by more than %g",
                      values.size(), frames.size(), differ, double(worst));
        report_.Check(control_->GetCurve(kGreen)->IsPointAnimated(kFreePoint) != FALSE,
                      "the green point is still animated");
        report_.Check(control_->IsEditorOpen(), "the reopened effect shows its editor");
        Pump(50);
        CheckPicture("the picture follows the reopened curves", 0, true);
        Screenshot("picture.png", Picture());
    }

    void Close() {
        report_.Step("File: Exit.");
        HWND main = app_.MainWindow();
        ChooseMenu(kCmdExit);
        Pump(100);
        report_.Check(!IsWindow(main), "the main window closed");
    }

    int Finish() {
        std::printf("Scripted session: %d checks, %d failed.\n", report_.Checks(),
                    report_.Failures());
        std::fflush(stdout);
        return report_.Failures() == 0 ? 0 : 1;
    }

    // -----------------------------------------------------------------------------------
    // Helpers

    static TimeValue FrameTime(int frame) { return frame * VIEW_TICKS_PER_FRAME; }

    static Point2 KnotAt(ICurve* curve, int i, TimeValue t) {
        Interval valid = FOREVER;
        return curve->GetKnot(t, i, valid).pos;
    }

    static float Value(ICurve* curve, int frame, float x) {
        Interval valid = FOREVER;
        return curve->ValueAt(FrameTime(frame), x, valid, FALSE);
    }

    static POINT Centre(HWND hwnd) {
        RECT rc = {};
        GetClientRect(hwnd, &rc);
        return POINT{rc.right / 2, rc.bottom / 2};
    }

    /// Menu texts with the tab before the shortcut shown as two blanks.
    static std::string Printable(std::string text) {
        for (std::size_t p; (p = text.find_first_of("\t\n")) != std::string::npos;)
            text.replace(p, 1, "  ");
        return text;
    }

    void CheckPicture(const char* what, TimeValue t, bool expectChange) {
        const PictureCheck c = session::CheckPicture(app_.View(), control_, t);
        report_.Check(c.Passed() && (!expectChange || c.changed > 0),
                      "%s (%d pixels compared, %d off, worst %d levels; %d moved by the curves)",
                      what, c.samples, c.mismatches, c.worst, c.changed);
    }

    RgbImage Picture() { return CaptureClient(app_.View().Window(), app_.View().PictureRect()); }

    void Screenshot(const char* name, const RgbImage& image) {
        const std::string path = folder_ + "/" + name;
        report_.Check(WritePngFile(path, image), "screenshot %s (%d x %d)", path.c_str(),
                      image.width, image.height);
    }

    /// A real click on the sample client's button with this text.
    void ClickButton(const char* text) {
        HWND button = FindChild(app_.CommandPanel(), "Button", text);
        if (!report_.Check(button != nullptr, "clicked the client panel's \"%s\" button", text))
            return;
        Click(button, Centre(button));
        Pump(60);
    }

    /// The text of the first static text of the client panel that starts with `prefix`.
    std::string PanelText(const char* prefix) {
        struct Find {
            const char* prefix;
            std::string text;
        } find = {prefix, {}};
        EnumChildWindows(
            app_.CommandPanel(),
            [](HWND hwnd, LPARAM lParam) -> BOOL {
                auto* f = reinterpret_cast<Find*>(lParam);
                char text[256] = {};
                GetWindowTextA(hwnd, text, sizeof text);
                if (std::strncmp(text, f->prefix, std::strlen(f->prefix)) != 0)
                    return TRUE;
                f->text = text;
                return FALSE;
            },
            reinterpret_cast<LPARAM>(&find));
        return find.text;
    }

    /// What a user reads in the menu: the host brings its entries up to date when a menu
    /// opens (WM_INITMENUPOPUP), then the entry's text.
    std::string MenuText(int id) {
        HMENU bar = app_.Menu();
        SendMessageA(app_.MainWindow(), WM_INITMENUPOPUP, reinterpret_cast<WPARAM>(bar), 0);
        char text[128] = {};
        GetMenuStringA(bar, UINT(id), text, sizeof text, MF_BYCOMMAND);
        return text;
    }

    /// What choosing a menu entry sends to the main window.
    void ChooseMenu(int id) {
        PostMessageA(app_.MainWindow(), WM_COMMAND, MAKEWPARAM(id, 0), 0);
        Pump(60);
    }

    /// Drags the time slider's thumb to `frame` with the mouse.
    void MoveSlider(int frame) {
        HWND slider = app_.View().Slider();
        RECT thumb = {}, channel = {};
        SendMessageA(slider, TBM_GETTHUMBRECT, 0, reinterpret_cast<LPARAM>(&thumb));
        SendMessageA(slider, TBM_GETCHANNELRECT, 0, reinterpret_cast<LPARAM>(&channel));
        const POINT from = {(thumb.left + thumb.right) / 2, (thumb.top + thumb.bottom) / 2};
        // The thumb's centre runs from the channel's left end to its right end.
        const int span = (channel.right - channel.left) - (thumb.right - thumb.left);
        const int x = channel.left + (thumb.right - thumb.left) / 2 +
                      int(std::lround(double(span) * frame / VIEW_LAST_FRAME));
        Drag(slider, from, POINT{x, from.y}, 6);
        Pump(60);
        const int at = GetCOREInterface()->GetTime() / VIEW_TICKS_PER_FRAME;
        report_.Check(at == frame, "dragged the time slider to frame %d (at frame %d)", frame, at);
    }

    HostApp& app_;
    std::string folder_;
    Report report_;
    ICurveCtl* control_ = nullptr; // the scene effect's control (not owned)
    CurveState initial_;           // the client's default curves
    CurveState before_, after_;    // the curves around the red drag
};

} // namespace
} // namespace session

int RunScriptedSession(HostApp& app, const std::string& folder) {
    return session::ScriptedSession(app, folder).Run();
}
