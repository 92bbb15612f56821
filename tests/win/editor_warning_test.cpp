// The whole-curve commands as the editor runs them: the real Yes/No message box before a
// mirror or refit of animated curves (answered from a thread timer while it runs its
// modal loop), the graph's picture after the command, and the Delete key travelling from
// the host's message loop to the selected points.
#include "doctest/doctest.h"
#include "host/controller.h"
#include "host/hold.h"
#include "host/host_window.h"
#include "tests/win/mouse_test_support.h"

#include <cstring>
#include <string>
#include <vector>

using namespace graphtest;
using namespace mousetest;

namespace {

constexpr DWORD kFlags = CC_DEFAULT_FLAGS & ~DWORD(CC_ASPOPUP); // embedded, every part

/// Answers the message boxes of this thread with Yes or No while it lives, and keeps
/// what they showed.
class Answer {
public:
    explicit Answer(bool yes) {
        yes_ = yes;
        asked_ = 0;
        answered_ = nullptr;
        timer_ = SetTimer(nullptr, 0, 20, &Answer::tick);
    }
    ~Answer() { KillTimer(nullptr, timer_); }
    Answer(const Answer&) = delete;
    Answer& operator=(const Answer&) = delete;

    int Asked() const { return asked_; }
    const std::string& Caption() const { return caption_; }
    const std::string& Text() const { return text_; }
    HWND Owner() const { return owner_; }

private:
    static BOOL CALLBACK find(HWND w, LPARAM out) {
        char cls[16] = {};
        GetClassNameA(w, cls, sizeof cls);
        if (std::strcmp(cls, "#32770") != 0 || !IsWindowVisible(w) || w == answered_)
            return TRUE;
        *reinterpret_cast<HWND*>(out) = w;
        return FALSE;
    }
    static void CALLBACK tick(HWND, UINT, UINT_PTR, DWORD) {
        HWND dlg = nullptr;
        EnumThreadWindows(GetCurrentThreadId(), &Answer::find, reinterpret_cast<LPARAM>(&dlg));
        if (!dlg)
            return;
        answered_ = dlg;
        ++asked_;
        char buf[256] = {};
        GetWindowTextA(dlg, buf, sizeof buf);
        caption_ = buf;
        GetDlgItemTextA(dlg, 0xFFFF, buf, sizeof buf); // the message box's text
        text_ = buf;
        owner_ = GetWindow(dlg, GW_OWNER);
        // The box has exactly the two buttons.
        yesNo_ = GetDlgItem(dlg, IDYES) && GetDlgItem(dlg, IDNO) && !GetDlgItem(dlg, IDOK);
        PostMessageA(dlg, WM_COMMAND, yes_ ? IDYES : IDNO, 0);
    }

public:
    static inline bool yesNo_ = false; // the last box offered Yes and No, and no OK

private:
    UINT_PTR timer_ = 0;
    static inline bool yes_ = false;
    static inline int asked_ = 0;
    static inline HWND answered_ = nullptr;
    static inline std::string caption_, text_;
    static inline HWND owner_ = nullptr;
};

/// Gives point i of `c` a position controller (no undo record): the curve is animated.
void animate(Curve& c, int i) {
    Control* ctrl = NewDefaultPoint3Controller();
    c.ReplaceReference(i, ctrl);
    Point3 v(c.Knots()[i].pos.x, c.Knots()[i].pos.y, 0.0f);
    ctrl->SetValue(0, &v);
}

/// Three curves, each rising from (0, -100) through (40, 60) to (100, 100).
struct WarnEditor : OpenEditor {
    explicit WarnEditor(DWORD flags = kFlags) : OpenEditor(3, flags) {
        for (int c = 0; c < 3; ++c)
            LoadPoints(curve(c), {Knot(0, -100, 0x102), Knot(40, 60), Knot(100, 100, 0x102)});
        SetView(3.0f, 0.8f, -20, 0);
        Repaint();
        theHold.Reset();
    }
    void Command(int id) {
        SendMessageA(editor().Handle(), WM_COMMAND, WPARAM(id), 0);
        edtest::Pump();
    }
};

/// A coarse picture of the graph's buffer.
std::vector<COLORREF> picture(OpenEditor& ed) {
    std::vector<COLORREF> px;
    RECT r{};
    GetClientRect(ed.graph(), &r);
    for (int y = 0; y < r.bottom; y += 2)
        for (int x = 0; x < r.right; x += 2)
            px.push_back(ed.Pixel(x, y));
    return px;
}

/// The graph as it shows now, and as a full repaint draws it: they must be the same.
void checkUpToDate(OpenEditor& ed, const std::vector<COLORREF>& before) {
    const std::vector<COLORREF> shown = picture(ed);
    CHECK(shown != before);
    ed.Repaint();
    CHECK(shown == picture(ed));
}

/// A host message loop's turn for `msg` (HostPreTranslateMessage first).
void hostDispatch(HWND hwnd, UINT msg, WPARAM wParam) {
    PostMessageA(hwnd, msg, wParam, 0);
    MSG m;
    while (PeekMessageA(&m, nullptr, 0, 0, PM_REMOVE)) {
        if (HostPreTranslateMessage(&m))
            continue;
        TranslateMessage(&m);
        DispatchMessageA(&m);
    }
}

} // namespace

// ---------------------------------------------------------------------------------------
// Mirror and refit

TEST_CASE("Mirror of curves without animated points asks nothing and repaints the graph") {
    WarnEditor ed;
    const std::vector<Point2> hidden = Positions(ed.curve(1));
    BitArray shown(3);
    shown.Set(0);
    shown.Set(2);
    ed.control().SetShownCurves(shown);
    animate(ed.curve(1), 1); // animated, but not displayed: no question
    ed.Repaint();
    theHold.Reset();
    const std::vector<COLORREF> before = picture(ed);
    const std::vector<Point2> first = Positions(ed.curve(0));

    Answer no(false);
    ed.Command(403);
    CHECK(no.Asked() == 0);
    CHECK(Positions(ed.curve(0)) != first);
    CHECK(Positions(ed.curve(1)) == hidden);
    CHECK(UndoNames() == std::vector<std::string>{"IDS_TH_MIRROR"});
    checkUpToDate(ed, before);
}

TEST_CASE("Mirror of an animated curve: the editor's Yes/No box; No changes nothing") {
    WarnEditor ed;
    animate(ed.curve(2), 1);
    ed.Repaint();
    const std::vector<Point2> c0 = Positions(ed.curve(0)), c2 = Positions(ed.curve(2));
    theHold.Reset();

    for (int id : {403, 404}) {
        CAPTURE(id);
        Answer no(false);
        ed.Command(id);
        CHECK(no.Asked() == 1);
        CHECK(no.Caption() == "IDS_TH_FIT_CurveCtlWindow");
        CHECK(no.Text() == "40329");
        CHECK(Answer::yesNo_);
        // An embedded editor's box belongs to the top-level window around it.
        CHECK(no.Owner() == GetAncestor(ed.control().GetEditorWindow(), GA_ROOT));
        CHECK(Positions(ed.curve(0)) == c0);
        CHECK(Positions(ed.curve(2)) == c2);
        CHECK(ed.curve(2).IsAnimated());
        CHECK(UndoNames().empty());
    }
}

TEST_CASE("Mirror of an animated curve answered Yes: one step, the controllers gone") {
    WarnEditor ed;
    animate(ed.curve(0), 1);
    ed.Repaint();
    theHold.Reset();
    const std::vector<COLORREF> before = picture(ed);
    const std::vector<Point2> c1 = Positions(ed.curve(1));

    Answer yes(true);
    ed.Command(404);
    CHECK(yes.Asked() == 1);
    CHECK_FALSE(ed.curve(0).IsAnimated());
    CHECK(Positions(ed.curve(1)) != c1);
    CHECK(UndoNames() == std::vector<std::string>{"IDS_TH_MIRROR"});
    checkUpToDate(ed, before);

    theHold.Undo();
    CHECK(Positions(ed.curve(1)) == c1);
    CHECK(ed.curve(0).IsAnimated());
}

TEST_CASE("Refit of an animated curve: the box says 40318; Yes refits, No does not") {
    for (int id : {406, 407}) {
        CAPTURE(id);
        WarnEditor ed;
        animate(ed.curve(1), 2);
        ed.Repaint();
        theHold.Reset();
        const std::vector<Point2> c0 = Positions(ed.curve(0));
        {
            Answer no(false);
            ed.Command(id);
            CHECK(no.Asked() == 1);
            CHECK(no.Caption() == "IDS_TH_FIT_CurveCtlWindow");
            CHECK(no.Text() == "40318");
            CHECK(Positions(ed.curve(0)) == c0);
            CHECK(UndoNames().empty());
        }
        const std::vector<COLORREF> before = picture(ed);
        Answer yes(true);
        ed.Command(id);
        CHECK(yes.Asked() == 1);
        CHECK(Positions(ed.curve(0)) != c0);
        CHECK(UndoNames() == std::vector<std::string>{"IDS_TH_ROTATE"});
        checkUpToDate(ed, before);
    }
}

TEST_CASE("A floating editor owns the warning box itself") {
    WarnEditor ed(kFlags | CC_ASPOPUP);
    HWND frame = ed.control().GetEditorWindow();
    REQUIRE(GetAncestor(frame, GA_ROOT) == frame);
    animate(ed.curve(0), 1);
    Answer no(false);
    ed.Command(403);
    CHECK(no.Asked() == 1);
    CHECK(no.Owner() == frame);
}

// ---------------------------------------------------------------------------------------
// The Delete key

TEST_CASE("The Delete key deletes the selected points of the active editor") {
    WarnEditor ed(kFlags | CC_ASPOPUP);
    HWND frame = ed.control().GetEditorWindow();
    SendMessageA(frame, WM_ACTIVATE, WA_ACTIVE, 0);
    BitArray sel(3);
    sel.Set(1);
    ed.curve(0).SetSelectionEx(sel, 4, FALSE);
    ed.curve(2).SetSelectionEx(sel, 4, FALSE);
    theHold.Reset();
    const std::vector<COLORREF> before = picture(ed);

    SUBCASE("from the graph") {
        hostDispatch(ed.graph(), WM_KEYDOWN, VK_DELETE);
        CHECK(ed.curve(0).PointCount() == 2);
        CHECK(ed.curve(1).PointCount() == 3);
        CHECK(ed.curve(2).PointCount() == 2);
        CHECK(UndoNames() == std::vector<std::string>{"Delete Point"});
        checkUpToDate(ed, before);
        theHold.Undo();
        CHECK(ed.curve(0).PointCount() == 3);
        CHECK(ed.curve(2).PointCount() == 3);

        // Nothing selected now: the key leaves no undo step.
        ed.curve(0).SetSelectionEx(BitArray(3), 4, FALSE);
        ed.curve(2).SetSelectionEx(BitArray(3), 4, FALSE);
        hostDispatch(ed.graph(), WM_KEYDOWN, VK_DELETE);
        CHECK(theHold.NumUndo() == 0);
        CHECK(ed.curve(0).PointCount() == 3);
    }
    SUBCASE("typing in an entry field deletes text, not points") {
        HWND field = GetDlgItem(ed.editor().Toolbars().bottomWindow, 1070);
        REQUIRE(field);
        hostDispatch(field, WM_KEYDOWN, VK_DELETE);
        CHECK(ed.curve(0).PointCount() == 3);
        CHECK(UndoNames().empty());
    }
    SUBCASE("an inactive editor is not asked") {
        SendMessageA(frame, WM_ACTIVATE, WA_INACTIVE, 0);
        hostDispatch(ed.graph(), WM_KEYDOWN, VK_DELETE);
        CHECK(ed.curve(0).PointCount() == 3);
        CHECK(UndoNames().empty());
    }
}
