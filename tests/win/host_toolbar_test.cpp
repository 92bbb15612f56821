// The custom toolbar and its buttons, driven with real window messages.

#include "host/colorman.h"
#include "host/custctrl.h"
#include "win/host_win_fixture.h"

#include <doctest/doctest.h>

#include <cstring>
#include <string>

using namespace hostwin_test;

namespace {

// A toolbar across the top of a recording parent, like the editor's view toolbar.
struct ToolbarFixture {
    ParentWindow parent;
    HWND window = nullptr;
    ICustToolbar* toolbar = nullptr;

    ToolbarFixture() {
        window = CreateWindowExA(0, CUSTTOOLBAR_CLASS, "", WS_CHILD | WS_VISIBLE, 0, 0, 600, 29,
                                 parent.hwnd(), nullptr, GetModuleHandleA(nullptr), nullptr);
        toolbar = GetICustToolbar(window);
    }
    ~ToolbarFixture() { ReleaseICustToolbar(toolbar); }

    RECT ItemRect(int id) {
        RECT r = {};
        toolbar->GetItemRect(toolbar->IndexOfItem(id), &r);
        return r;
    }
    // Client point of the item's window at its centre.
    POINT ItemCenter(int id) {
        RECT r;
        GetClientRect(toolbar->GetItemHwnd(id), &r);
        return Center(r);
    }
};

std::string ClassOf(HWND hwnd) {
    char cls[64] = {};
    GetClassNameA(hwnd, cls, sizeof cls);
    return cls;
}

} // namespace

TEST_CASE("a toolbar keeps its items in the order given and finds them by id") {
    ToolbarFixture f;
    REQUIRE(f.toolbar != nullptr);
    ICustToolbar* tb = f.toolbar;
    tb->AddTool(ToolSeparatorItem(6));
    tb->AddTool(ToolStatusItem(300, 16, TRUE, 1000));
    tb->AddTool(ToolSeparatorItem(4));
    tb->AddTool(ToolOtherItem(CUSTEDIT_CLASS, 50, 16, 1070));
    tb->AddTool(ToolButtonItem(CTB_CHECKBUTTON, 4, 4, 4, 4, 16, 15, 22, 20, 1030));
    tb->AddTool(ToolButtonItem(CTB_PUSHBUTTON, 12, 12, 12, 12, 16, 15, 22, 20, 1035));

    REQUIRE(tb->GetNumItems() == 6);
    const int ids[] = {0, 1000, 0, 1070, 1030, 1035};
    const int types[] = {CTB_SEPARATOR, CTB_STATUS,      CTB_SEPARATOR,
                         CTB_OTHER,     CTB_CHECKBUTTON, CTB_PUSHBUTTON};
    for (int i = 0; i < 6; ++i) {
        CHECK(tb->GetItemID(i) == ids[i]);
        CHECK(tb->GetItemType(i) == types[i]);
    }
    CHECK(tb->GetItemID(6) == -1);
    CHECK(tb->GetItemType(-1) == -1);
    CHECK(tb->IndexOfItem(1070) == 3);
    CHECK(tb->IndexOfItem(4242) == -1);

    // Laid out left to right with the given widths, centred in the 29-pixel height.
    int x = 0;
    const int widths[] = {6, 300, 4, 50, 22, 22};
    const int heights[] = {16, 16, 16, 16, 20, 20};
    for (int i = 0; i < 6; ++i) {
        RECT r;
        REQUIRE(tb->GetItemRect(i, &r));
        CHECK(r.left == x);
        CHECK(r.right - r.left == widths[i]);
        CHECK(r.top == (29 - heights[i]) / 2);
        CHECK(r.bottom - r.top == heights[i]);
        x = r.right;
    }
    RECT untouched = {1, 2, 3, 4};
    CHECK_FALSE(tb->GetItemRect(9, &untouched));
    CHECK(untouched.left == 1);

    // Every item with a window has the class its type promises, at its rectangle.
    CHECK(ClassOf(tb->GetItemHwnd(1000)) == CUSTSTATUS_CLASS);
    CHECK(ClassOf(tb->GetItemHwnd(1070)) == CUSTEDIT_CLASS);
    CHECK(ClassOf(tb->GetItemHwnd(1030)) == CUSTBUTTON_CLASS);
    CHECK(GetDlgCtrlID(tb->GetItemHwnd(1030)) == 1030);
    CHECK(GetParent(tb->GetItemHwnd(1030)) == f.window);
    RECT wr;
    GetWindowRect(tb->GetItemHwnd(1035), &wr);
    MapWindowPoints(nullptr, f.window, reinterpret_cast<POINT*>(&wr), 2);
    RECT ir = f.ItemRect(1035);
    CHECK(wr.left == ir.left);
    CHECK(wr.top == ir.top);
    CHECK(tb->GetItemHwnd(4242) == nullptr);

    // Buttons and status items are found by id, other kinds are not.
    ICustButton* pan = tb->GetICustButton(1030);
    REQUIRE(pan != nullptr);
    CHECK(pan->GetHwnd() == tb->GetItemHwnd(1030));
    CHECK(pan->GetType() == CBT_CHECK);
    ICustButton* zoom = tb->GetICustButton(1035);
    REQUIRE(zoom != nullptr);
    CHECK(zoom->GetType() == CBT_PUSH);
    CHECK(tb->GetICustButton(1000) == nullptr);
    CHECK(tb->GetICustStatus(1030) == nullptr);
    ICustStatus* status = tb->GetICustStatus(1000);
    CHECK(status != nullptr);
    ReleaseICustStatus(status);
    ReleaseICustButton(zoom);
    ReleaseICustButton(pan);
}

TEST_CASE("items inserted at a position shift the ones after it; DeleteTools removes windows") {
    ToolbarFixture f;
    ICustToolbar* tb = f.toolbar;
    tb->AddTool(ToolButtonItem(CTB_PUSHBUTTON, 0, 0, 0, 0, 16, 15, 23, 22, 1));
    tb->AddTool(ToolButtonItem(CTB_PUSHBUTTON, 0, 0, 0, 0, 16, 15, 23, 22, 2));
    tb->AddTool(ToolButtonItem(CTB_PUSHBUTTON, 0, 0, 0, 0, 16, 15, 23, 22, 3), 0);
    tb->AddTool(ToolButtonItem(CTB_PUSHBUTTON, 0, 0, 0, 0, 16, 15, 23, 22, 4), 99);
    REQUIRE(tb->GetNumItems() == 4);
    CHECK(tb->GetItemID(0) == 3);
    CHECK(tb->GetItemID(1) == 1);
    CHECK(tb->GetItemID(2) == 2);
    CHECK(tb->GetItemID(3) == 4);
    CHECK(f.ItemRect(3).left == 0);
    CHECK(f.ItemRect(1).left == 23);

    HWND gone = tb->GetItemHwnd(1);
    tb->DeleteTools(1, 2);
    CHECK_FALSE(IsWindow(gone));
    REQUIRE(tb->GetNumItems() == 2);
    CHECK(tb->GetItemID(0) == 3);
    CHECK(tb->GetItemID(1) == 4);
    CHECK(f.ItemRect(4).left == 23); // closed up
    tb->DeleteTools(5);              // out of range: nothing
    CHECK(tb->GetNumItems() == 2);
    tb->DeleteTools(0);
    CHECK(tb->GetNumItems() == 0);
}

TEST_CASE("a non-fixed status item takes the width the other items leave") {
    ToolbarFixture f;
    f.toolbar->AddTool(ToolSeparatorItem(10));
    f.toolbar->AddTool(ToolStatusItem(100, 16, FALSE, 1000));
    f.toolbar->AddTool(ToolButtonItem(CTB_PUSHBUTTON, 0, 0, 0, 0, 16, 15, 23, 22, 7));
    RECT status = f.ItemRect(1000);
    CHECK(status.left == 10);
    CHECK(status.right - status.left == 600 - 10 - 23);
    CHECK(f.ItemRect(7).right == 600);
}

TEST_CASE("clicking a push button sends one WM_COMMAND with BN_CLICKED to the toolbar's parent") {
    ToolbarFixture f;
    f.toolbar->AddTool(ToolButtonItem(CTB_PUSHBUTTON, 0, 0, 0, 0, 16, 15, 23, 22, 420));
    HWND button = f.toolbar->GetItemHwnd(420);
    Click(button, f.ItemCenter(420));
    REQUIRE(f.parent.received().size() == 1);
    const Received& r = f.parent.received()[0];
    CHECK(r.msg == WM_COMMAND);
    CHECK(LOWORD(r.wParam) == 420);
    CHECK(HIWORD(r.wParam) == BN_CLICKED);
    CHECK(reinterpret_cast<HWND>(r.lParam) == button);
    CHECK(GetCapture() == nullptr);

    ICustButton* b = f.toolbar->GetICustButton(420);
    CHECK_FALSE(b->IsChecked()); // push buttons never stay in
    ReleaseICustButton(b);
}

TEST_CASE("a press released outside the button, or on a disabled button, sends nothing") {
    ToolbarFixture f;
    f.toolbar->AddTool(ToolButtonItem(CTB_PUSHBUTTON, 0, 0, 0, 0, 16, 15, 23, 22, 420));
    HWND button = f.toolbar->GetItemHwnd(420);
    SendMessageA(button, WM_LBUTTONDOWN, MK_LBUTTON, MAKELPARAM(10, 10));
    CHECK(GetCapture() == button);
    SendMessageA(button, WM_MOUSEMOVE, MK_LBUTTON, MAKELPARAM(200, 10));
    SendMessageA(button, WM_LBUTTONUP, 0, MAKELPARAM(200, 10));
    CHECK(f.parent.received().empty());
    CHECK(GetCapture() == nullptr);

    ICustButton* b = f.toolbar->GetICustButton(420);
    b->Disable();
    CHECK_FALSE(b->IsEnabled());
    Click(button, f.ItemCenter(420));
    CHECK(f.parent.received().empty());
    b->Enable();
    CHECK(b->IsEnabled());
    Click(button, f.ItemCenter(420));
    CHECK(f.parent.Commands(420, BN_CLICKED) == 1);
    ReleaseICustButton(b);
}

TEST_CASE("a check button toggles on each click before its parent hears of it") {
    ToolbarFixture f;
    f.toolbar->AddTool(ToolButtonItem(CTB_CHECKBUTTON, 0, 0, 0, 0, 16, 15, 23, 22, 401));
    ICustButton* b = f.toolbar->GetICustButton(401);
    HWND button = b->GetHwnd();
    CHECK_FALSE(b->IsChecked());
    Click(button, f.ItemCenter(401));
    CHECK(b->IsChecked());
    CHECK(f.parent.Commands(401, BN_CLICKED) == 1);
    Click(button, f.ItemCenter(401));
    CHECK_FALSE(b->IsChecked());
    CHECK(f.parent.Commands(401, BN_CLICKED) == 2);

    b->SetCheck(TRUE); // programmatic: no message
    CHECK(b->IsChecked());
    CHECK(f.parent.received().size() == 2);
    b->SetType(CBT_PUSH);
    CHECK_FALSE(b->IsChecked());
    b->SetCheck(TRUE);
    CHECK_FALSE(b->IsChecked());
    ReleaseICustButton(b);
}

TEST_CASE("button-down and right-click notifications come only when asked for") {
    ToolbarFixture f;
    f.toolbar->AddTool(ToolButtonItem(CTB_PUSHBUTTON, 0, 0, 0, 0, 16, 15, 23, 22, 660));
    ICustButton* b = f.toolbar->GetICustButton(660);
    HWND button = b->GetHwnd();
    SendMessageA(button, WM_RBUTTONUP, 0, MAKELPARAM(5, 5));
    CHECK(f.parent.received().empty());

    b->SetButtonDownNotify(TRUE);
    b->SetRightClickNotify(TRUE);
    Click(button, f.ItemCenter(660));
    REQUIRE(f.parent.received().size() == 3);
    CHECK(HIWORD(f.parent.received()[0].wParam) == BN_BUTTONDOWN);
    CHECK(HIWORD(f.parent.received()[1].wParam) == BN_BUTTONUP);
    CHECK(HIWORD(f.parent.received()[2].wParam) == BN_CLICKED);
    SendMessageA(button, WM_RBUTTONUP, 0, MAKELPARAM(5, 5));
    CHECK(f.parent.Commands(660, BN_RIGHTCLICK) == 1);
    ReleaseICustButton(b);
}

TEST_CASE("tooltip text is read back from the tooltip control") {
    ToolbarFixture f;
    f.toolbar->AddTool(ToolButtonItem(CTB_CHECKBUTTON, 0, 0, 0, 0, 16, 15, 23, 22, 400));
    ICustButton* b = f.toolbar->GetICustButton(400);
    char text[64] = "stale";
    CHECK_FALSE(b->GetTooltip(text, sizeof text));
    CHECK(std::string(text).empty());

    b->SetTooltip(TRUE, "Move");
    REQUIRE(b->GetTooltip(text, sizeof text));
    CHECK(std::string(text) == "Move");
    b->SetTooltip(TRUE, "Scale Point");
    REQUIRE(b->GetTooltip(text, sizeof text));
    CHECK(std::string(text) == "Scale Point");
    char small[4];
    b->GetTooltip(small, sizeof small);
    CHECK(std::string(small) == "Sca");
    b->SetTooltip(TRUE, nullptr);
    REQUIRE(b->GetTooltip(text, sizeof text));
    CHECK(std::string(text).empty());
    b->SetTooltip(FALSE, nullptr);
    CHECK_FALSE(b->GetTooltip(text, sizeof text));
    ReleaseICustButton(b);
}

TEST_CASE("buttons under one window share one tooltip window, each with its own text") {
    ToolbarFixture f;
    f.toolbar->AddTool(ToolButtonItem(CTB_CHECKBUTTON, 0, 0, 0, 0, 16, 15, 23, 22, 400));
    f.toolbar->AddTool(ToolButtonItem(CTB_CHECKBUTTON, 1, 1, 1, 1, 16, 15, 23, 22, 401));
    ICustButton* move = f.toolbar->GetICustButton(400);
    ICustButton* scale = f.toolbar->GetICustButton(401);
    const auto tipWindows = [] {
        int n = 0;
        EnumThreadWindows(
            GetCurrentThreadId(),
            [](HWND hwnd, LPARAM p) -> BOOL {
                char cls[64] = {};
                GetClassNameA(hwnd, cls, sizeof cls);
                if (lstrcmpiA(cls, TOOLTIPS_CLASSA) == 0)
                    ++*reinterpret_cast<int*>(p);
                return TRUE;
            },
            reinterpret_cast<LPARAM>(&n));
        return n;
    };
    const int before = tipWindows();
    move->SetTooltip(TRUE, "Move");
    scale->SetTooltip(TRUE, "Scale Point");
    CHECK(tipWindows() == before + 1);
    char text[64] = {};
    REQUIRE(move->GetTooltip(text, sizeof text));
    CHECK(std::string(text) == "Move");
    REQUIRE(scale->GetTooltip(text, sizeof text));
    CHECK(std::string(text) == "Scale Point");

    move->SetTooltip(FALSE, nullptr);
    CHECK_FALSE(move->GetTooltip(text, sizeof text));
    REQUIRE(scale->GetTooltip(text, sizeof text));
    CHECK(std::string(text) == "Scale Point");
    CHECK(tipWindows() == before + 1);
    scale->SetTooltip(FALSE, nullptr);
    CHECK(tipWindows() == before);
    ReleaseICustButton(move);
    ReleaseICustButton(scale);
}

TEST_CASE("a checked button is filled with its highlight colour unless told not to be") {
    ToolbarFixture f;
    f.toolbar->AddTool(ToolButtonItem(CTB_CHECKBUTTON, 0, 0, 0, 0, 16, 15, 23, 22, 400));
    ICustButton* b = f.toolbar->GetICustButton(400);
    HWND button = b->GetHwnd();
    CHECK(b->GetHighlightColor() == ColorMan()->GetColor(kColorActiveCommand));
    CHECK(b->GetCheckHighlight());
    const COLORREF face = ColorMan()->GetColor(kColorBackground);

    // (2, 2) lies inside the frame and outside the centred 16 x 15 image.
    CHECK(CaptureClient(button).at(2, 2) == face);
    b->SetCheck(TRUE);
    CHECK(CaptureClient(button).at(2, 2) == b->GetHighlightColor());
    b->SetHighlightColor(RGB(10, 200, 30));
    CHECK(CaptureClient(button).at(2, 2) == RGB(10, 200, 30));
    b->SetCheckHighlight(FALSE);
    Capture plain = CaptureClient(button);
    CHECK(plain.at(2, 2) == face);
    // Still drawn pressed in: sunken frame, shadow on top.
    CHECK(plain.at(5, 0) == ColorMan()->GetColor(kColorShadow));
    ReleaseICustButton(b);
}

TEST_CASE("buttons show the image of their state from the toolbar's image list") {
    ToolbarFixture f;
    HIMAGELIST images = MakeSolidImages({RGB(255, 0, 0), RGB(0, 0, 255), RGB(0, 255, 0)});
    f.toolbar->SetImage(images);
    CHECK(f.toolbar->GetImage() == images);
    // out-enabled 0 (red), in-enabled 1 (blue), disabled 2 (green)
    f.toolbar->AddTool(ToolButtonItem(CTB_CHECKBUTTON, 0, 1, 2, 2, 16, 15, 23, 22, 500));
    ICustButton* b = f.toolbar->GetICustButton(500);
    HWND button = b->GetHwnd();
    POINT c = f.ItemCenter(500);
    CHECK(CaptureClient(button).at(c.x, c.y) == RGB(255, 0, 0));
    b->SetCheck(TRUE);
    CHECK(CaptureClient(button).at(c.x, c.y) == RGB(0, 0, 255));
    b->Disable();
    CHECK(CaptureClient(button).at(c.x, c.y) == RGB(0, 255, 0));
    ReleaseICustButton(b);
    ImageList_Destroy(images);
}

TEST_CASE("the bottom border is an etched line along the toolbar's bottom edge") {
    ToolbarFixture f;
    CHECK_FALSE(f.toolbar->GetBottomBorder());
    Capture plain = CaptureClient(f.window);
    CHECK(plain.at(100, 28) == ColorMan()->GetColor(kColorBackground));
    f.toolbar->SetBottomBorder(TRUE);
    CHECK(f.toolbar->GetBottomBorder());
    Capture etched = CaptureClient(f.window);
    CHECK(etched.at(100, 27) == ColorMan()->GetColor(kColorShadow));
    CHECK(etched.at(100, 28) == ColorMan()->GetColor(kColorHilight3D));
    CHECK(etched.at(100, 26) == ColorMan()->GetColor(kColorBackground));
}

TEST_CASE("interfaces outlive their windows and go quiet") {
    ToolbarFixture f;
    f.toolbar->AddTool(ToolButtonItem(CTB_CHECKBUTTON, 0, 0, 0, 0, 16, 15, 23, 22, 400));
    ICustButton* b = f.toolbar->GetICustButton(400);
    DestroyWindow(f.window);
    CHECK(f.toolbar->GetHwnd() == nullptr);
    CHECK(b->GetHwnd() == nullptr);
    CHECK_FALSE(b->IsEnabled());
    b->SetCheck(TRUE); // no window, no crash
    b->SetTooltip(TRUE, "gone");
    char text[8] = "x";
    b->GetText(text, sizeof text);
    CHECK(std::string(text).empty());
    f.toolbar->AddTool(ToolSeparatorItem(4)); // ignored
    CHECK(f.toolbar->GetNumItems() == 0);
    ReleaseICustButton(b);

    CHECK(GetICustToolbar(nullptr) == nullptr);
    CHECK(GetICustButton(f.parent.hwnd()) == nullptr); // not a button
    ReleaseICustButton(nullptr);
    ReleaseICustToolbar(nullptr);
}

TEST_CASE("a text button shows its label, and its text reads back") {
    ToolbarFixture f;
    f.toolbar->AddTool(ToolButtonItem(CTB_PUSHBUTTON, 0, 0, 0, 0, 16, 15, 60, 22, 77, "Reset"));
    ICustButton* b = f.toolbar->GetICustButton(77);
    char text[16];
    b->GetText(text, sizeof text);
    CHECK(std::string(text) == "Reset");
    b->SetText("Go");
    b->GetText(text, sizeof text);
    CHECK(std::string(text) == "Go");
    // Black label pixels somewhere in the middle row band.
    Capture cap = CaptureClient(b->GetHwnd());
    int dark = 0;
    for (int y = 5; y < 17; ++y)
        for (int x = 20; x < 40; ++x)
            if (cap.at(x, y) == RGB(0, 0, 0))
                ++dark;
    CHECK(dark > 0);
    ReleaseICustButton(b);
}

TEST_CASE("screenshot of a toolbar with buttons, a status item and an entry field") {
    ToolbarFixture f;
    HIMAGELIST images =
        MakeSolidImages({RGB(200, 40, 40), RGB(40, 160, 40), RGB(40, 80, 220), RGB(240, 200, 0)});
    ICustToolbar* tb = f.toolbar;
    tb->SetImage(images);
    tb->SetBottomBorder(TRUE);
    tb->AddTool(ToolSeparatorItem(6));
    tb->AddTool(ToolStatusItem(200, 16, TRUE, 1000));
    tb->AddTool(ToolSeparatorItem(4));
    tb->AddTool(ToolOtherItem(CUSTEDIT_CLASS, 50, 16, 1070));
    tb->AddTool(ToolSeparatorItem(12));
    for (int i = 0; i < 4; ++i)
        tb->AddTool(ToolButtonItem(CTB_CHECKBUTTON, i, i, i, i, 16, 15, 23, 22, 400 + i));
    ICustStatus* status = tb->GetICustStatus(1000);
    status->SetText("Drag to move.");
    ICustButton* b = tb->GetICustButton(401);
    b->SetCheck(TRUE);
    Capture cap = CaptureClient(f.window);
    REQUIRE(cap.width == 600);
    CreateDirectoryA("screenshots", nullptr);
    CHECK(WritePng(cap, "screenshots/host_toolbar.png"));
    ReleaseICustButton(b);
    ReleaseICustStatus(status);
    ImageList_Destroy(images);
}
