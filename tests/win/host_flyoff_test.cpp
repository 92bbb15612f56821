// Fly-off buttons: hold, choose an entry, release; driven with real messages and the
// button's own timer.

#include "host/colorman.h"
#include "host/custctrl.h"
#include "win/host_win_fixture.h"

#include <doctest/doctest.h>

using namespace hostwin_test;

namespace {

const COLORREF kRed = RGB(255, 0, 0), kGreen = RGB(0, 255, 0), kBlue = RGB(0, 0, 255);

// The editor's Move button: a check button with three entries, delay 200 ms, opening
// downwards one entry across.
struct FlyOffFixture {
    ParentWindow parent;
    HWND window = nullptr;
    ICustToolbar* toolbar = nullptr;
    ICustButton* move = nullptr;
    HIMAGELIST images = nullptr;
    HWND button = nullptr;
    POINT pointer{}; // where the pointer was before

    FlyOffFixture() {
        window = CreateWindowExA(0, CUSTTOOLBAR_CLASS, "", WS_CHILD | WS_VISIBLE, 0, 0, 400, 29,
                                 parent.hwnd(), nullptr, GetModuleHandleA(nullptr), nullptr);
        toolbar = GetICustToolbar(window);
        images = MakeSolidImages({kRed, kGreen, kBlue});
        toolbar->SetImage(images);
        toolbar->AddTool(ToolSeparatorItem(6));
        toolbar->AddTool(ToolButtonItem(CTB_CHECKBUTTON, 0, 0, 0, 0, 16, 15, 23, 22, 400));
        move = toolbar->GetICustButton(400);
        button = move->GetHwnd();
        const FlyOffData entries[3] = {{0, 0, 0, 0}, {1, 1, 1, 1}, {2, 2, 2, 2}};
        move->SetFlyOff(3, entries, 200, 0, FLY_DOWN, 1);
        // The pointer rests on the button, as a user's does while holding it: the system's
        // own mouse moves (Wine sends one when the capture changes) then agree with the
        // ones the tests send. It goes back afterwards, and the move that causes is taken
        // here rather than by a later test.
        GetCursorPos(&pointer);
        POINT c = {11, 11};
        ClientToScreen(button, &c);
        SetCursorPos(c.x, c.y);
        Pump(20);
    }
    ~FlyOffFixture() {
        SetCursorPos(pointer.x, pointer.y);
        Pump(20);
        ReleaseICustButton(move);
        ReleaseICustToolbar(toolbar);
        ImageList_Destroy(images);
    }

    HWND Strip() const { return FindWindowA(CUSTFLYOFF_CLASS, nullptr); }

    // The centre of entry i of the open strip, in the button's client coordinates.
    POINT EntryPoint(int i) const {
        RECT sr, br;
        GetClientRect(Strip(), &sr);
        GetClientRect(button, &br);
        POINT p = {sr.right / 2, i * br.bottom + br.bottom / 2};
        MapWindowPoints(Strip(), button, &p, 1);
        return p;
    }

    COLORREF ButtonCentre() const {
        RECT r;
        GetClientRect(button, &r);
        POINT c = Center(r);
        return CaptureClient(button).at(c.x, c.y);
    }
};

LPARAM At(POINT p) { return MAKELPARAM(p.x, p.y); }

} // namespace

TEST_CASE("holding a fly-off button opens the strip; releasing on an entry chooses it") {
    FlyOffFixture f;
    REQUIRE(f.move->GetNumFlyOffs() == 3);
    CHECK(f.move->GetCurFlyOff() == 0);
    CHECK(f.ButtonCentre() == kRed);

    SendMessageA(f.button, WM_LBUTTONDOWN, MK_LBUTTON, MAKELPARAM(11, 11));
    CHECK_FALSE(f.move->IsFlyOffOpen());
    Pump(400); // past the 200 ms delay
    REQUIRE(f.move->IsFlyOffOpen());
    HWND strip = f.Strip();
    REQUIRE(strip != nullptr);
    RECT sr, br;
    GetWindowRect(strip, &sr);
    GetWindowRect(f.button, &br);
    CHECK(sr.bottom - sr.top >= 3 * (br.bottom - br.top)); // three entries downwards
    CHECK(sr.top <= br.top);

    POINT third = f.EntryPoint(2);
    SendMessageA(f.button, WM_MOUSEMOVE, MK_LBUTTON, At(third));
    SendMessageA(f.button, WM_LBUTTONUP, 0, At(third));
    CHECK_FALSE(f.move->IsFlyOffOpen());
    CHECK_FALSE(IsWindow(strip));
    CHECK(f.move->GetCurFlyOff() == 2);
    CHECK(f.move->IsChecked());
    REQUIRE(f.parent.received().size() == 1);
    CHECK(f.parent.Commands(400, BN_FLYOFF) == 1);
    CHECK(GetCapture() == nullptr);
    // The button now shows the chosen entry's image, pressed in.
    CHECK(f.ButtonCentre() == kBlue);
}

TEST_CASE("a release before the delay is an ordinary click") {
    FlyOffFixture f;
    Click(f.button, {11, 11});
    Pump(300);
    CHECK_FALSE(f.move->IsFlyOffOpen());
    CHECK(f.parent.Commands(400, BN_CLICKED) == 1);
    CHECK(f.parent.Commands(400, BN_FLYOFF) == 0);
    CHECK(f.move->GetCurFlyOff() == 0);
    CHECK(f.move->IsChecked());
}

TEST_CASE("releasing outside the strip closes it without a change") {
    FlyOffFixture f;
    SendMessageA(f.button, WM_LBUTTONDOWN, MK_LBUTTON, MAKELPARAM(11, 11));
    Pump(400);
    REQUIRE(f.move->IsFlyOffOpen());
    POINT away = {300, 11};
    SendMessageA(f.button, WM_MOUSEMOVE, MK_LBUTTON, At(away));
    SendMessageA(f.button, WM_LBUTTONUP, 0, At(away));
    CHECK_FALSE(f.move->IsFlyOffOpen());
    CHECK(f.parent.received().empty());
    CHECK(f.move->GetCurFlyOff() == 0);
    CHECK_FALSE(f.move->IsChecked());
}

TEST_CASE("losing the capture while the strip is open closes it") {
    FlyOffFixture f;
    SendMessageA(f.button, WM_LBUTTONDOWN, MK_LBUTTON, MAKELPARAM(11, 11));
    Pump(400);
    REQUIRE(f.move->IsFlyOffOpen());
    SetCapture(f.parent.hwnd());
    CHECK_FALSE(f.move->IsFlyOffOpen());
    ReleaseCapture();
    SendMessageA(f.button, WM_LBUTTONUP, 0, MAKELPARAM(11, 11));
    CHECK(f.parent.received().empty());
}

TEST_CASE("SetCurFlyOff changes the entry, notifying only when asked") {
    FlyOffFixture f;
    f.move->SetCurFlyOff(1);
    CHECK(f.move->GetCurFlyOff() == 1);
    CHECK(f.parent.received().empty());
    CHECK(f.ButtonCentre() == kGreen);
    f.move->SetCurFlyOff(2, TRUE);
    CHECK(f.move->GetCurFlyOff() == 2);
    CHECK(f.parent.Commands(400, BN_FLYOFF) == 1);
    f.move->SetCurFlyOff(3, TRUE); // out of range: ignored
    f.move->SetCurFlyOff(-1);
    CHECK(f.move->GetCurFlyOff() == 2);
    CHECK(f.parent.received().size() == 1);
}

TEST_CASE("the initial entry is clamped, and an empty fly-off is none") {
    FlyOffFixture f;
    const FlyOffData two[2] = {{2, 2, 2, 2}, {1, 1, 1, 1}};
    f.move->SetFlyOff(2, two, 200, 7, FLY_DOWN, 1);
    CHECK(f.move->GetNumFlyOffs() == 2);
    CHECK(f.move->GetCurFlyOff() == 1);
    f.move->SetFlyOff(2, two, 200, -3, FLY_DOWN, 1);
    CHECK(f.move->GetCurFlyOff() == 0);
    CHECK(f.ButtonCentre() == kBlue);

    f.move->SetFlyOff(0, nullptr, 200, 0);
    CHECK(f.move->GetNumFlyOffs() == 0);
    CHECK(f.move->GetCurFlyOff() == 0);
    SendMessageA(f.button, WM_LBUTTONDOWN, MK_LBUTTON, MAKELPARAM(11, 11));
    Pump(300);
    CHECK_FALSE(f.move->IsFlyOffOpen()); // nothing to open
    SendMessageA(f.button, WM_LBUTTONUP, 0, MAKELPARAM(11, 11));
    CHECK(f.parent.Commands(400, BN_CLICKED) == 1);
}

TEST_CASE("a strip that opens upwards ends at the button and lists entries top to bottom") {
    FlyOffFixture f;
    const FlyOffData entries[2] = {{0, 0, 0, 0}, {1, 1, 1, 1}};
    f.move->SetFlyOff(2, entries, 50, 0, FLY_UP, 1);
    SendMessageA(f.button, WM_LBUTTONDOWN, MK_LBUTTON, MAKELPARAM(11, 11));
    Pump(250);
    REQUIRE(f.move->IsFlyOffOpen());
    RECT sr, br;
    GetWindowRect(f.Strip(), &sr);
    GetWindowRect(f.button, &br);
    CHECK(sr.bottom >= br.bottom);
    CHECK(sr.top < br.top);
    POINT first = f.EntryPoint(0);
    SendMessageA(f.button, WM_LBUTTONUP, 0, At(first));
    CHECK(f.move->GetCurFlyOff() == 0);
    CHECK(f.parent.Commands(400, BN_FLYOFF) == 1);
}
