// The editor's toolbars (items, ids, order, images, fly-offs, tooltips), the prompts of
// the edit and view modes, the curve display buttons and the numeric entry fields.
#include "doctest/doctest.h"
#include "host/colorman.h"
#include "host/core_interface.h"
#include "host/hold.h"
#include "tests/win/editor_test_support.h"

#include <string>
#include <vector>

using namespace edtest;

namespace {

struct Item {
    int id;
    int type;
    bool operator==(const Item& o) const { return id == o.id && type == o.type; }
};

doctest::String toString(const std::vector<Item>& items) {
    std::string s;
    for (const Item& i : items)
        s += "(" + std::to_string(i.id) + "," + std::to_string(i.type) + ")";
    return s.c_str();
}

std::vector<Item> itemsOf(ICustToolbar* tb) {
    std::vector<Item> items;
    for (int i = 0; i < tb->GetNumItems(); ++i)
        items.push_back({tb->GetItemID(i), tb->GetItemType(i)});
    return items;
}

std::string tooltipOf(CurveCtlWindow* editor, int id) {
    ICustButton* b = editor->Toolbars().Button(id);
    if (!b)
        return "<none>";
    char buf[128] = {};
    b->GetTooltip(buf, int(sizeof buf));
    return buf;
}

std::string statusText(CurveCtlWindow* editor) {
    char buf[256] = {};
    editor->Toolbars().status->GetText(buf, int(sizeof buf));
    return buf;
}

void command(CurveCtlWindow* editor, int id, int code = 0) {
    SendMessageA(editor->Handle(), WM_COMMAND, MAKEWPARAM(id, code), 0);
}

constexpr int S = CTB_SEPARATOR, P = CTB_PUSHBUTTON, C = CTB_CHECKBUTTON;

} // namespace

TEST_CASE_FIXTURE(EditorFixture, "the view toolbar's items in order") {
    ParentWindow parent(700, 400);
    auto control = MakeControl(2, kEmbedded, parent.get());
    REQUIRE(control->SetEditorOpen(TRUE));
    CurveCtlWindow* editor = EditorOf(*control);
    ICustToolbar* tb = editor->Toolbars().bottom.get();
    REQUIRE(tb);
    const std::vector<Item> want = {{0, S},    {1000, CTB_STATUS},
                                    {0, S},    {1070, CTB_OTHER},
                                    {0, S},    {1080, CTB_OTHER},
                                    {0, S},    {0, S},
                                    {1030, C}, {0, S},
                                    {1035, P}, {1050, P},
                                    {1040, P}, {0, S},
                                    {1015, C}, {1010, C},
                                    {1090, C}, {1020, C},
                                    {0, S}};
    CHECK(itemsOf(tb) == want);
    RECT r{};
    REQUIRE(tb->GetItemRect(1, &r));
    CHECK(r.right - r.left == 300);
    REQUIRE(tb->GetItemRect(3, &r));
    CHECK(r.right - r.left == 50);

    CHECK(tooltipOf(editor, 1030) == "Pan");
    CHECK(tooltipOf(editor, 1035) == "Zoom Extents");
    CHECK(tooltipOf(editor, 1050) == "Zoom Horizontal Extents");
    CHECK(tooltipOf(editor, 1040) == "Zoom Vertical Extents");
    CHECK(tooltipOf(editor, 1015) == "Zoom Horizontally");
    CHECK(tooltipOf(editor, 1010) == "Zoom Vertically");
    CHECK(tooltipOf(editor, 1090) == "Zoom");
    CHECK(tooltipOf(editor, 1020) == "Zoom Region");
    const COLORREF highlight = ColorMan()->GetColor(kColorActiveCommand);
    for (int id : {1030, 1015, 1010, 1090, 1020})
        CHECK(editor->Toolbars().Button(id)->GetHighlightColor() == highlight);
    REQUIRE(editor->Toolbars().xEntry);
    REQUIRE(editor->Toolbars().yEntry);
    CHECK(editor->Toolbars().status);
    control->SetEditorOpen(FALSE);
}

TEST_CASE_FIXTURE(EditorFixture, "the edit toolbar's items in order, with and without reset") {
    ParentWindow parent(700, 400);
    for (const bool reset : {true, false}) {
        CAPTURE(reset);
        const DWORD flags = reset ? kEmbedded : (kEmbedded & ~DWORD(CC_SHOWRESET));
        auto control = MakeControl(3, flags, parent.get());
        REQUIRE(control->SetEditorOpen(TRUE));
        CurveCtlWindow* editor = EditorOf(*control);
        ICustToolbar* tb = editor->Toolbars().top.get();
        REQUIRE(tb);
        std::vector<Item> want = {{0, S},   {0, S}, {0, S},   {400, C}, {401, C},
                                  {402, C}, {0, S}, {420, P}, {0, S}};
        if (reset)
            want.insert(want.end(), {{660, P}, {0, S}});
        want.insert(want.end(), {{500, C}, {501, C}, {502, C}});
        CHECK(itemsOf(tb) == want);
        CHECK(editor->Toolbars().topItemCount == int(want.size()));
        CHECK(tb->GetBottomBorder());

        CHECK(tooltipOf(editor, 400) == "Move");
        CHECK(tooltipOf(editor, 401) == "Scale Point");
        CHECK(tooltipOf(editor, 402) == "Add Point");
        CHECK(tooltipOf(editor, 420) == "Delete Point");
        CHECK(tooltipOf(editor, 660) == (reset ? "Reset Curves" : "<none>"));
        const COLORREF highlight = ColorMan()->GetColor(kColorActiveCommand);
        for (int id : {400, 401, 402})
            CHECK(editor->Toolbars().Button(id)->GetHighlightColor() == highlight);

        ICustButton* move = editor->Toolbars().Button(400);
        ICustButton* add = editor->Toolbars().Button(402);
        CHECK(move->GetNumFlyOffs() == 3);
        CHECK(move->GetCurFlyOff() == 0);
        CHECK(add->GetNumFlyOffs() == 2);
        CHECK(add->GetCurFlyOff() == 0);
        CHECK(editor->EditMode() == -1);
        CHECK(editor->ViewMode() == -1);

        // Curve buttons: in the table, named by the curve's text, checked while shown.
        REQUIRE(editor->Toolbars().curveButtons.size() == 3);
        for (int i = 0; i < 3; ++i) {
            ICustButton* b = editor->Toolbars().curveButtons[size_t(i)].get();
            REQUIRE(b);
            char buf[128] = {};
            b->GetTooltip(buf, int(sizeof buf));
            CHECK(std::string(buf) == "Visibility On/Off Toggle");
            CHECK(b->IsChecked());
            CHECK_FALSE(b->GetCheckHighlight());
        }
        control->SetEditorOpen(FALSE);
    }
}

TEST_CASE_FIXTURE(EditorFixture, "one curve, or flag 0x100000, gets no curve buttons") {
    ParentWindow parent(700, 400);
    auto single = MakeControl(1, kEmbedded, parent.get());
    REQUIRE(single->SetEditorOpen(TRUE));
    ICustToolbar* tb = EditorOf(*single)->Toolbars().top.get();
    REQUIRE(tb);
    CHECK(tb->IndexOfItem(500) == -1);
    CHECK(tb->GetNumItems() == 11);
    REQUIRE(EditorOf(*single)->Toolbars().curveButtons.size() == 1);
    CHECK(EditorOf(*single)->Toolbars().curveButtons[0] == nullptr);
    single->SetEditorOpen(FALSE);

    auto filtered = MakeControl(4, kEmbedded | CC_NOFILTERBUTTONS, parent.get());
    REQUIRE(filtered->SetEditorOpen(TRUE));
    CHECK(EditorOf(*filtered)->Toolbars().top->IndexOfItem(500) == -1);
    // Display commands are ignored as well.
    const BitArray before = filtered->GetShownCurves();
    command(EditorOf(*filtered), 501);
    CHECK(filtered->GetShownCurves() == before);
    CHECK(theHold.NumUndo() == 0);
    filtered->SetEditorOpen(FALSE);
}

TEST_CASE_FIXTURE(EditorFixture, "a curve button toggles the display as one undo step") {
    ParentWindow parent(700, 400);
    auto control = MakeControl(3, kEmbedded, parent.get());
    REQUIRE(control->SetEditorOpen(TRUE));
    CurveCtlWindow* editor = EditorOf(*control);
    command(editor, 501);
    CHECK_FALSE(control->GetShownCurves()[1]);
    CHECK_FALSE(editor->ShownCurves()[1]);
    CHECK_FALSE(editor->Toolbars().curveButtons[1]->IsChecked());
    CHECK(theHold.NumUndo() == 1);
    CHECK(theHold.UndoName(0) == "Display Curve Toggle");
    REQUIRE(theHold.Undo());
    CHECK(control->GetShownCurves()[1]);
    CHECK(editor->Toolbars().curveButtons[1]->IsChecked());
    REQUIRE(theHold.Redo());
    CHECK_FALSE(control->GetShownCurves()[1]);
    CHECK(theHold.NumUndo() == 1);
    control->SetEditorOpen(FALSE);
}

TEST_CASE_FIXTURE(EditorFixture, "growing and shrinking the curve set follows with buttons") {
    ParentWindow parent(700, 400);
    auto control = MakeControl(1, kEmbedded, parent.get());
    REQUIRE(control->SetEditorOpen(TRUE));
    CurveCtlWindow* editor = EditorOf(*control);
    control->SetCurveCount(3, FALSE);
    ICustToolbar* tb = editor->Toolbars().top.get();
    CHECK(tb->IndexOfItem(500) >= 0);
    CHECK(tb->IndexOfItem(502) >= 0);
    CHECK(editor->Toolbars().curveButtons.size() == 3);
    control->SetCurveCount(1, FALSE);
    CHECK(tb->IndexOfItem(500) == -1);
    CHECK(editor->ShownCurves()[0]);
    control->SetEditorOpen(FALSE);
}

TEST_CASE_FIXTURE(EditorFixture, "each mode shows its prompt") {
    ParentWindow parent(700, 400);
    auto control = MakeControl(2, kEmbedded, parent.get());
    REQUIRE(control->SetEditorOpen(TRUE));
    CurveCtlWindow* editor = EditorOf(*control);

    command(editor, 400);
    CHECK(editor->EditMode() == 400);
    CHECK(editor->Toolbars().Button(400)->IsChecked());
    CHECK(statusText(editor) == "Drag to move. Ctrl-click or drag region box to add to selection.");
    command(editor, 401);
    CHECK(statusText(editor) ==
          "Drag to scale.  Ctrl-click or drag region box to add to selection.");
    CHECK_FALSE(editor->Toolbars().Button(400)->IsChecked());
    CHECK(editor->Toolbars().Button(401)->IsChecked());
    command(editor, 402, BN_FLYOFF);
    CHECK(editor->EditMode() == 402);
    CHECK(statusText(editor) == "Click on curve to insert control points.");
    // Other notification codes do not switch modes.
    command(editor, 400, BN_BUTTONDOWN);
    CHECK(editor->EditMode() == 402);

    const struct {
        int id, mode;
        const char* prompt;
    } views[] = {
        {1030, 0, "Drag in any direction to pan Edit Window."},
        {1015, 1, "Drag horizontally in Edit Window to scale display."},
        {1010, 2, "Drag vertically in Edit Window to scale display."},
        {1020, 3, "Drag a region box to define zoom area."},
        {1090, 4, "Drag to zoom. Ctrl-drag horizontally or vertically to constrain."},
    };
    for (const auto& v : views) {
        CAPTURE(v.id);
        command(editor, v.id);
        CHECK(editor->ViewMode() == v.mode);
        CHECK(statusText(editor) == v.prompt);
        CHECK(editor->Toolbars().Button(v.id)->IsChecked());
        CHECK_FALSE(editor->Toolbars().Button(402)->IsChecked());
        for (const auto& o : views)
            if (o.id != v.id)
                CHECK_FALSE(editor->Toolbars().Button(o.id)->IsChecked());
    }
    CHECK(editor->Mice().GetMouseProc(LEFT_BUTTON) == &ModeSetOf(*editor).zoom);
    // The active view tool again: back to the edit mode.
    command(editor, 1090);
    CHECK(editor->ViewMode() == -1);
    CHECK(editor->EditMode() == 402);
    CHECK(editor->Toolbars().Button(402)->IsChecked());
    CHECK_FALSE(editor->Toolbars().Button(1090)->IsChecked());
    CHECK(statusText(editor) == "Click on curve to insert control points.");
    CHECK(editor->Mice().GetMouseProc(LEFT_BUTTON) == &ModeSetOf(*editor).insert);

    // An edit mode ends a view mode.
    command(editor, 1030);
    CHECK(editor->Mice().GetMouseProc(LEFT_BUTTON) == &ModeSetOf(*editor).pan);
    command(editor, 400);
    CHECK(editor->ViewMode() == -1);
    CHECK_FALSE(editor->Toolbars().Button(1030)->IsChecked());
    CHECK(editor->Mice().GetMouseProc(LEFT_BUTTON) == &ModeSetOf(*editor).base);
    CHECK(ModeSetOf(*editor).base.subMode == &ModeSetOf(*editor).move);
    command(editor, 401);
    CHECK(ModeSetOf(*editor).base.subMode == &ModeSetOf(*editor).scale);
    // The right button always has the context menu; the middle one pans with flag 32.
    CHECK(editor->Mice().GetMouseProc(RIGHT_BUTTON) == &ModeSetOf(*editor).right);
    CHECK(editor->Mice().GetNumPoints(RIGHT_BUTTON) == 1);
    CHECK(editor->Mice().GetMouseProc(MIDDLE_BUTTON) == &ModeSetOf(*editor).pan);
    control->SetEditorOpen(FALSE);
}

TEST_CASE_FIXTURE(EditorFixture, "tool modes select edit modes and fly-offs") {
    ParentWindow parent(700, 400);
    auto control = MakeControl(2, kEmbedded, parent.get());
    REQUIRE(control->SetEditorOpen(TRUE));
    CurveCtlWindow* editor = EditorOf(*control);
    for (int mode = 0; mode <= 5; ++mode) {
        CAPTURE(mode);
        control->SetToolMode(mode);
        CHECK(control->GetToolMode() == mode);
    }
    control->SetToolMode(2);
    CHECK(editor->EditMode() == 400);
    CHECK(editor->Toolbars().Button(400)->GetCurFlyOff() == 2);
    control->SetToolMode(9); // any other mode: move, fly-off as it was
    CHECK(editor->EditMode() == 400);
    CHECK(control->GetToolMode() == 2);
    control->SetEditorOpen(FALSE);
}

TEST_CASE_FIXTURE(EditorFixture,
                  "numeric entry moves the selected points; empty text does nothing") {
    ParentWindow parent(700, 400);
    auto control = MakeControl(2, kEmbedded, parent.get());
    Curve* curve = control->GetCurveObject(0);
    BitArray sel(curve->PointCount());
    sel.Set(0);
    curve->SetSelection(sel, 1);
    theHold.Reset();
    REQUIRE(control->SetEditorOpen(TRUE));
    CurveCtlWindow* editor = EditorOf(*control);
    ICustEdit* y = editor->Toolbars().yEntry.get();
    ICustEdit* x = editor->Toolbars().xEntry.get();
    editor->UpdateEntryFields(0);
    char buf[64] = {};
    y->GetText(buf, 64);
    CHECK(std::string(buf) == "0");
    CHECK(y->IsEnabled());

    y->SetText("");
    SendMessageA(editor->Handle(), WM_CUSTEDIT_ENTER, 1080, 0);
    CHECK(theHold.NumUndo() == 0);
    x->SetText("");
    SendMessageA(editor->Handle(), WM_CUSTEDIT_ENTER, 1070, 0);
    CHECK(theHold.NumUndo() == 0);

    y->SetText("0.25");
    SendMessageA(editor->Handle(), WM_CUSTEDIT_ENTER, 1080, 0);
    CHECK(theHold.NumUndo() == 1);
    CHECK(theHold.UndoName(0) == "Move Points");
    Interval valid = FOREVER;
    CHECK(curve->GetKnot(0, 0, valid).pos.y == doctest::Approx(0.25f));
    y->GetText(buf, 64);
    CHECK(std::string(buf) == "0.25");
    control->SetEditorOpen(FALSE);
}

TEST_CASE_FIXTURE(EditorFixture, "Tab from the X field goes to the Y field") {
    ParentWindow parent(700, 400);
    auto control = MakeControl(2, kEmbedded, parent.get());
    REQUIRE(control->SetEditorOpen(TRUE));
    CurveCtlWindow* editor = EditorOf(*control);
    SetForegroundWindow(parent.get());
    editor->Toolbars().xEntry->GiveFocus();
    REQUIRE(editor->Toolbars().xEntry->HasFocus());
    CHECK(SendMessageA(editor->Handle(), WM_NEXTDLGCTL, 0, 0) == 1);
    CHECK(editor->Toolbars().yEntry->HasFocus());
    control->SetEditorOpen(FALSE);
}
