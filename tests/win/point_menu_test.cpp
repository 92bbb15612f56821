// The point menu on a real editor: a real right click on the graph tracks menu 101, which
// a thread hook reads (GetMenuItemCount, GetMenuState, GetMenuItemID) while the menu is
// up, then closes or answers with the keyboard like a user. The graph carries out the
// chosen command.
#include "doctest/doctest.h"
#include "editor/editor_resources.h"
#include "host/hold.h"
#include "tests/win/mouse_test_support.h"

#include <string>
#include <vector>

using namespace graphtest;
using namespace mousetest;

namespace {

constexpr DWORD kFlags = CC_DEFAULT_FLAGS & ~DWORD(CC_ASPOPUP); // embedded, every part
constexpr DWORD kMenuFlags = 0x3F800;                           // every entry allowed

// ---------------------------------------------------------------------------------------
// Reading a tracked menu

/// One entry as the menu holds it.
struct Entry {
    std::string text; // "-" for a separator
    UINT state = 0;   // GetMenuState
    int id = -1;      // GetMenuItemID (-1 for a sub-menu)
    std::vector<Entry> sub;
};

std::vector<Entry> readMenu(HMENU menu) {
    std::vector<Entry> out;
    const int n = GetMenuItemCount(menu);
    for (int i = 0; i < n; ++i) {
        Entry e;
        e.state = GetMenuState(menu, UINT(i), MF_BYPOSITION);
        e.id = int(GetMenuItemID(menu, i));
        char text[64] = {};
        GetMenuStringA(menu, UINT(i), text, sizeof text, MF_BYPOSITION);
        e.text = (e.state & MF_SEPARATOR) ? "-" : text;
        if (HMENU sub = GetSubMenu(menu, i))
            e.sub = readMenu(sub);
        out.push_back(e);
    }
    return out;
}

/// "Corner* | Bezier-Smooth~ | Move(XY*, X, Y)": * checked, ~ greyed.
std::string describe(const std::vector<Entry>& entries, const char* glue = " | ") {
    std::string s;
    for (const Entry& e : entries) {
        if (!s.empty())
            s += glue;
        s += e.text;
        if (e.text == "-")
            continue; // separators report themselves greyed
        if (e.state & MF_CHECKED)
            s += "*";
        if (e.state & MF_GRAYED)
            s += "~";
        if (!e.sub.empty())
            s += "(" + describe(e.sub, ", ") + ")";
    }
    return s;
}

/// Watches the thread for tracked menus while it lives. Each menu is read when it opens;
/// then, when the menu loop idles, the entry `choose` is picked with the keyboard (arrow
/// keys and Enter, as a user would), or the menu is closed when `choose` is 0 or the keys
/// did not close it.
class MenuWatch {
public:
    explicit MenuWatch(int choose = 0) : choose_(choose) {
        current_ = this;
        hook_ = SetWindowsHookExA(WH_CALLWNDPROC, &MenuWatch::hook, nullptr, GetCurrentThreadId());
        // Should the loop never idle, nothing waits forever.
        timer_ = SetTimer(nullptr, 0, 3000, [](HWND, UINT, UINT_PTR, DWORD) { EndMenu(); });
    }
    ~MenuWatch() {
        KillTimer(nullptr, timer_);
        UnhookWindowsHookEx(hook_);
        current_ = nullptr;
    }
    MenuWatch(const MenuWatch&) = delete;
    MenuWatch& operator=(const MenuWatch&) = delete;

    int shown = 0;              // menus tracked
    HWND owner = nullptr;       // the window the last menu reported to
    std::vector<Entry> entries; // of the last menu, as it opened
    std::string Text() const { return describe(entries); }

private:
    static LRESULT CALLBACK hook(int code, WPARAM w, LPARAM l) {
        if (code == HC_ACTION && current_)
            current_->see(*reinterpret_cast<const CWPSTRUCT*>(l));
        return CallNextHookEx(nullptr, code, w, l);
    }

    void see(const CWPSTRUCT& m) {
        switch (m.message) {
        case WM_ENTERMENULOOP:
            opening_ = true;
            keysSent_ = false;
            break;
        case WM_INITMENUPOPUP:
            if (opening_) { // the popup itself, not a sub-menu opened later
                opening_ = false;
                ++shown;
                owner = m.hwnd;
                entries = readMenu(reinterpret_cast<HMENU>(m.wParam));
            }
            break;
        case WM_ENTERIDLE:
            if (m.wParam != MSGF_MENU)
                break;
            if (choose_ && !keysSent_) {
                keysSent_ = true;
                for (int vk : keysFor(choose_))
                    PostMessageA(m.hwnd, WM_KEYDOWN, WPARAM(vk), 0);
            } else {
                EndMenu();
            }
            break;
        default:
            break;
        }
    }

    /// Down arrows to the entry (the first selects the first entry; separators are
    /// skipped), Right to open a sub-menu, Enter.
    std::vector<int> keysFor(int id) const {
        auto downsTo = [](const std::vector<Entry>& list, size_t index) {
            int downs = 0;
            for (size_t i = 0; i < index; ++i)
                downs += list[i].text != "-";
            return downs;
        };
        std::vector<int> keys;
        for (size_t i = 0; i < entries.size(); ++i) {
            const Entry& e = entries[i];
            if (e.id == id) {
                keys.assign(size_t(downsTo(entries, i) + 1), VK_DOWN);
            } else {
                for (size_t j = 0; j < e.sub.size(); ++j) {
                    if (e.sub[j].id != id)
                        continue;
                    keys.assign(size_t(downsTo(entries, i) + 1), VK_DOWN);
                    keys.push_back(VK_RIGHT); // opens it on its first entry
                    keys.insert(keys.end(), size_t(downsTo(e.sub, j)), VK_DOWN);
                }
            }
        }
        if (!keys.empty())
            keys.push_back(VK_RETURN);
        return keys;
    }

    static inline MenuWatch* current_ = nullptr;
    HHOOK hook_ = nullptr;
    UINT_PTR timer_ = 0;
    int choose_ = 0;        // command to pick, 0 none
    bool opening_ = false;  // a menu loop began; its popup has not opened yet
    bool keysSent_ = false; // the keys for this menu are posted
};

// ---------------------------------------------------------------------------------------
// Curves

/// An editor whose curve 0 has the points (0, 0) end, (30, 40) Corner, (60, -20)
/// Bezier-Corner, (100, 10) end, with x 0 at column 47 and y 0 mid-height.
struct MenuEditor : OpenEditor {
    explicit MenuEditor(int curves = 1, DWORD flags = kFlags) : OpenEditor(curves, flags) {
        for (int c = 0; c < curves; ++c)
            LoadPoints(curve(c), {Knot(0, 0, 0x102), Knot(30, 40),
                                  Knot(60, -20, 0x3, Point2(-5.0f, 0.0f), Point2(5.0f, 0.0f)),
                                  Knot(100, 10, 0x102)});
        SetView(3.0f, 1.0f, -20, 0);
        Repaint();
        theHold.Reset();
    }
    /// The control's flag word with only `menu` of the menu's bits.
    void MenuFlags(DWORD menu) { control().SetControlFlags((kFlags & ~kMenuFlags) | menu); }
    IPoint2 Empty() { return PixelOf(*this, Point2(45.0f, -60.0f)); }
};

void select(Curve& c, std::vector<int> points) {
    BitArray sel(c.PointCount());
    for (int i : points)
        sel.Set(i);
    c.SetSelectionEx(sel, 4, FALSE);
}

void graphCommand(OpenEditor& ed, int id) {
    SendMessageA(ed.graph(), WM_COMMAND, WPARAM(id), 0);
    edtest::Pump();
}

int type(Curve& c, int i) { return int(c.Knots()[i].flags & 3); }

} // namespace

// ---------------------------------------------------------------------------------------
// The menu

TEST_CASE("Point menu: a right click on an unselected point selects it alone and checks its type") {
    MenuEditor ed(2); // two equal curves: the click hits point 1 of both, curve 0 first
    select(ed.curve(0), {2});
    select(ed.curve(1), {3});
    MenuWatch menu;
    RightClick(ed.graph(), PointPixel(ed, 0, 1));

    REQUIRE(menu.shown == 1);
    CHECK(menu.owner == ed.graph());
    CHECK(menu.Text() == "Corner* | Bezier-Smooth | Bezier-Corner | - | Move(XY*, X, Y) | "
                         "Scale | Insert(Corner, Bezier) | - | Delete");
    // The ids, straight from the menu.
    REQUIRE(menu.entries.size() == 9);
    CHECK(menu.entries[0].id == 40001);
    CHECK(menu.entries[1].id == 40002);
    CHECK(menu.entries[2].id == 40003);
    CHECK(menu.entries[4].id == -1);
    CHECK(menu.entries[4].sub[2].id == 40006);
    CHECK(menu.entries[5].id == 40007);
    CHECK(menu.entries[6].sub[0].id == 40009);
    CHECK(menu.entries[6].sub[1].id == 40010);
    CHECK(menu.entries[8].id == 40012);

    CHECK(Selected(ed.curve(0)) == std::vector<int>{1});
    CHECK(Selected(ed.curve(1)).empty());
    CHECK(UndoNames() == std::vector<std::string>{"Select"});
    theHold.Undo();
    CHECK(Selected(ed.curve(0)) == std::vector<int>{2});
    CHECK(Selected(ed.curve(1)) == std::vector<int>{3});
}

TEST_CASE("Point menu: a right click on a selected point keeps the selection") {
    MenuEditor ed;
    select(ed.curve(0), {1, 2});
    MenuWatch menu;
    RightClick(ed.graph(), PointPixel(ed, 0, 2));
    REQUIRE(menu.shown == 1);
    CHECK(describe({menu.entries.begin(), menu.entries.begin() + 3}) ==
          "Corner | Bezier-Smooth | Bezier-Corner*");
    CHECK(Selected(ed.curve(0)) == std::vector<int>{1, 2});
    CHECK(UndoNames().empty());
}

TEST_CASE("Point menu: on an end point Bezier-Smooth is greyed") {
    MenuEditor ed;
    MenuWatch menu;
    RightClick(ed.graph(), PointPixel(ed, 0, 3));
    REQUIRE(menu.shown == 1);
    CHECK(describe({menu.entries.begin(), menu.entries.begin() + 3}) ==
          "Corner* | Bezier-Smooth~ | Bezier-Corner");
    CHECK(Selected(ed.curve(0)) == std::vector<int>{3});

    RightClick(ed.graph(), PointPixel(ed, 0, 1)); // an interior point: enabled again
    REQUIRE(menu.shown == 2);
    CHECK((menu.entries[1].state & MF_GRAYED) == 0);
}

TEST_CASE("Point menu: on empty space only the mode and delete entries, or no menu at all") {
    MenuEditor ed;
    select(ed.curve(0), {1});
    MenuWatch menu;
    RightClick(ed.graph(), ed.Empty());
    REQUIRE(menu.shown == 1);
    CHECK(menu.Text() == "Move(XY*, X, Y) | Scale | Insert(Corner, Bezier) | - | Delete");
    CHECK(Selected(ed.curve(0)) == std::vector<int>{1}); // nothing selected or cleared
    CHECK(UndoNames().empty());

    ed.MenuFlags(0);
    RightClick(ed.graph(), ed.Empty());
    CHECK(menu.shown == 1); // no menu at all

    // On a point the types are still offered.
    RightClick(ed.graph(), PointPixel(ed, 0, 2));
    REQUIRE(menu.shown == 2);
    CHECK(menu.Text() == "Corner | Bezier-Smooth | Bezier-Corner*");
}

TEST_CASE("Point menu: the control's flags decide which entries remain") {
    struct Case {
        DWORD flags;
        int toolMode;
        const char* onPoint;
        const char* onEmpty; // null: no menu
    } cases[] = {
        {0x800, 0, "Corner* | Bezier-Smooth | Bezier-Corner | - | Move(XY*)", "Move(XY*)"},
        {0x1000 | 0x2000, 2, "Corner* | Bezier-Smooth | Bezier-Corner | - | Move(X, Y*)",
         "Move(X, Y*)"},
        {0x4000, 3, "Corner* | Bezier-Smooth | Bezier-Corner | - | Scale*", "Scale*"},
        {0x800 | 0x4000, 0, "Corner* | Bezier-Smooth | Bezier-Corner | - | Move(XY*) | Scale",
         "Move(XY*) | Scale"},
        {0x8000, 4, "Corner* | Bezier-Smooth | Bezier-Corner | - | Insert(Corner*)",
         "Insert(Corner*)"},
        {0x10000, 5, "Corner* | Bezier-Smooth | Bezier-Corner | - | Insert(Bezier*)",
         "Insert(Bezier*)"},
        {0x8000 | 0x10000, 0,
         "Corner* | Bezier-Smooth | Bezier-Corner | - | Insert(Corner, Bezier)",
         "Insert(Corner, Bezier)"},
        {0x20000, 0, "Corner* | Bezier-Smooth | Bezier-Corner | - | Delete", "- | Delete"},
        {0x1000 | 0x20000, 1, "Corner* | Bezier-Smooth | Bezier-Corner | - | Move(X*) | - | Delete",
         "Move(X*) | - | Delete"},
        {0, 0, "Corner* | Bezier-Smooth | Bezier-Corner", nullptr},
    };
    MenuEditor ed;
    for (const Case& c : cases) {
        CAPTURE(c.flags);
        ed.MenuFlags(c.flags);
        ed.control().SetToolMode(c.toolMode);
        MenuWatch menu;
        RightClick(ed.graph(), PointPixel(ed, 0, 1));
        REQUIRE(menu.shown == 1);
        CHECK(menu.Text() == c.onPoint);
        RightClick(ed.graph(), ed.Empty());
        if (c.onEmpty) {
            REQUIRE(menu.shown == 2);
            CHECK(menu.Text() == c.onEmpty);
        } else {
            CHECK(menu.shown == 1);
        }
    }
}

TEST_CASE("Point menu: each right click starts from the whole menu") {
    MenuEditor ed;
    ed.MenuFlags(0x800);
    {
        MenuWatch menu;
        RightClick(ed.graph(), ed.Empty());
        CHECK(menu.Text() == "Move(XY*)");
    }
    ed.MenuFlags(kMenuFlags);
    MenuWatch menu;
    RightClick(ed.graph(), PointPixel(ed, 0, 1));
    CHECK(menu.Text() == "Corner* | Bezier-Smooth | Bezier-Corner | - | Move(XY*, X, Y) | "
                         "Scale | Insert(Corner, Bezier) | - | Delete");
    CHECK(SharedEditorResources().pointMenu != nullptr);
}

// ---------------------------------------------------------------------------------------
// Choosing

TEST_CASE("Point menu: choosing a type changes the point, as one step after the selection") {
    MenuEditor ed;
    MenuWatch menu(40002); // Bezier-Smooth
    RightClick(ed.graph(), PointPixel(ed, 0, 1));
    REQUIRE(menu.shown == 1);
    CHECK(type(ed.curve(0), 1) == KNOT_TYPE_BEZIER_SMOOTH);
    CHECK(UndoNames() == std::vector<std::string>{"Type Change", "Select"});
    theHold.Undo();
    CHECK(type(ed.curve(0), 1) == KNOT_TYPE_CORNER);
}

TEST_CASE("Point menu: choosing a mode sets the control's tool mode") {
    struct Case {
        int command;
        int toolMode;
        int editMode;
    } cases[] = {{40005, 1, 400}, {40006, 2, 400}, {40007, 3, 401},
                 {40010, 5, 402}, {40009, 4, 402}, {40004, 0, 400}};
    MenuEditor ed;
    for (const Case& c : cases) {
        CAPTURE(c.command);
        MenuWatch menu(c.command);
        RightClick(ed.graph(), ed.Empty());
        REQUIRE(menu.shown == 1);
        CHECK(ed.control().GetToolMode() == c.toolMode);
        CHECK(ed.editor().EditMode() == c.editMode);
    }
    CHECK(UndoNames().empty());
}

TEST_CASE("Point menu: Delete deletes the selected points") {
    MenuEditor ed;
    select(ed.curve(0), {2});
    MenuWatch menu(40012);
    RightClick(ed.graph(), PointPixel(ed, 0, 1)); // selects point 1 instead
    REQUIRE(menu.shown == 1);
    CHECK(ed.curve(0).PointCount() == 3);
    CHECK(ed.curve(0).Knots()[1].pos.x == 60.0f);
    CHECK(UndoNames() == std::vector<std::string>{"Delete Point", "Select"});
}

// ---------------------------------------------------------------------------------------
// The graph's commands

TEST_CASE("Type Change: the selected points of the displayed curves, in one step") {
    MenuEditor ed(3);
    BitArray shown(3);
    shown.Set(0);
    shown.Set(1);
    ed.control().SetShownCurves(shown);
    for (int c = 0; c < 3; ++c)
        select(ed.curve(c), {0, 1});
    theHold.Reset();

    graphCommand(ed, 40003); // Bezier-Corner
    CHECK(type(ed.curve(0), 1) == KNOT_TYPE_BEZIER_CORNER);
    CHECK(type(ed.curve(1), 1) == KNOT_TYPE_BEZIER_CORNER);
    CHECK(type(ed.curve(0), 0) == KNOT_TYPE_BEZIER_CORNER); // end points may be
    CHECK(type(ed.curve(2), 1) == KNOT_TYPE_CORNER);        // hidden: unchanged
    CHECK(type(ed.curve(0), 3) == KNOT_TYPE_CORNER);        // unselected: unchanged
    CHECK(UndoNames() == std::vector<std::string>{"Type Change"});

    graphCommand(ed, 40002); // Bezier-Smooth: not for the end point
    CHECK(type(ed.curve(0), 1) == KNOT_TYPE_BEZIER_SMOOTH);
    CHECK(type(ed.curve(0), 0) == KNOT_TYPE_BEZIER_CORNER);

    graphCommand(ed, 40001);
    CHECK(type(ed.curve(0), 1) == KNOT_TYPE_CORNER);
    CHECK(ed.curve(0).Knots()[1].inTan == Point2());
    CHECK(UndoNames().size() == 3);
    theHold.Undo();
    theHold.Undo();
    theHold.Undo();
    CHECK(type(ed.curve(0), 1) == KNOT_TYPE_CORNER);
    CHECK(type(ed.curve(1), 1) == KNOT_TYPE_CORNER);
    CHECK(type(ed.curve(0), 0) == KNOT_TYPE_CORNER);
}

TEST_CASE("Delete from the menu: nothing selected leaves no undo step") {
    MenuEditor ed;
    graphCommand(ed, 40012);
    CHECK(ed.curve(0).PointCount() == 4);
    CHECK(UndoNames().empty());

    select(ed.curve(0), {0, 1, 2, 3}); // end points stay
    graphCommand(ed, 40012);
    CHECK(ed.curve(0).PointCount() == 2);
    CHECK(UndoNames() == std::vector<std::string>{"Delete Point"});
}

TEST_CASE("The graph ignores commands that are not the point menu's") {
    MenuEditor ed;
    ed.control().SetToolMode(CC_TOOL_SCALE);
    select(ed.curve(0), {1});
    for (int id : {40000, 40008, 40011, 40013, 400, 402, 420, 1030, 1090}) {
        CAPTURE(id);
        graphCommand(ed, id);
        CHECK(ed.control().GetToolMode() == CC_TOOL_SCALE);
        CHECK(ed.editor().ViewMode() == kViewNone);
        CHECK(ed.curve(0).PointCount() == 4);
        CHECK(type(ed.curve(0), 1) == KNOT_TYPE_CORNER);
    }
    CHECK(UndoNames().empty());
}
