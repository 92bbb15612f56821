// Layout of the editor for every combination of the flags that decide its parts (4 top
// toolbar, 16 bottom toolbar, 32 scroll bars, 128 ruler strip), read back from the real
// windows; the ruler strip's clamps; a screenshot of each combination.
#include "doctest/doctest.h"
#include "tests/win/editor_test_support.h"

#include <string>

using namespace edtest;

namespace {

/// Expected rectangles in the editor window's client coordinates (left, top, right, bottom).
struct Layout {
    RECT top, bottom, vbar, hbar, strip, graph;
};

Layout expected(int w, int h, DWORD flags, int stripTop) {
    const bool top = flags & CC_SHOWTOOLBAR, bottom = flags & CC_SHOWZOOMTOOLBAR;
    const bool bars = flags & CC_SHOWSCROLLBARS;
    const int cx = GetSystemMetrics(SM_CXVSCROLL), cy = GetSystemMetrics(SM_CYHSCROLL);
    Layout l{};
    l.top = RECT{0, 0, w, 29};
    l.bottom = RECT{0, h - 24, w, h};
    const int hb = bottom ? h - 25 : h;
    const int vy = top ? 28 : 1, vh = top ? hb - 26 - cy : hb + 3 - cy;
    l.vbar = RECT{w + 1 - cx, vy, w + 1, vy + vh};
    l.hbar = RECT{-1, hb + 1 - cy, -1 + w + 3 - cx, hb + 1};
    l.strip = RECT{0, stripTop, w - (bars ? cx : 0), stripTop + 16};
    const int gy = top ? 29 : 0;
    l.graph = RECT{0, gy, w + 1 - (bars ? cx : 0), gy + (top ? hb - 28 : hb + 1) - (bars ? cy : 0)};
    return l;
}

/// Where the strip settles from `want`: clamped below, then above.
int clampedStrip(int want, int h, DWORD flags) {
    const int cy = GetSystemMetrics(SM_CYHSCROLL);
    const int lower =
        h - ((flags & CC_SHOWZOOMTOOLBAR) ? 24 : 0) - ((flags & CC_SHOWSCROLLBARS) ? cy : 0) - 15;
    const int upper = (flags & CC_SHOWTOOLBAR) ? 28 : 0;
    if (want > lower)
        want = lower;
    if (want < upper)
        want = upper;
    return want;
}

void checkRect(HWND child, HWND editor, const RECT& want, const char* what) {
    CAPTURE(what);
    const RECT r = RectIn(child, editor);
    CHECK(r.left == want.left);
    CHECK(r.top == want.top);
    CHECK(r.right == want.right);
    CHECK(r.bottom == want.bottom);
}

} // namespace

TEST_CASE_FIXTURE(EditorFixture, "layout of every combination of flags 4, 16, 32 and 128") {
    CreateDirectoryA("screenshots", nullptr);
    ParentWindow parent(640, 420);
    const DWORD parts[] = {CC_SHOWTOOLBAR, CC_SHOWZOOMTOOLBAR, CC_SHOWSCROLLBARS, CC_SHOWPOSWINDOW};
    for (int combo = 0; combo < 16; ++combo) {
        DWORD flags = kEmbedded;
        for (int b = 0; b < 4; ++b)
            if (!(combo & (1 << b)))
                flags &= ~parts[b];
        CAPTURE(flags);
        auto control = MakeControl(3, flags, parent.get());
        REQUIRE(control->SetEditorOpen(TRUE));
        CurveCtlWindow* editor = EditorOf(*control);
        HWND own = editor->Handle();
        RECT client{};
        GetClientRect(own, &client);
        const int w = client.right, h = client.bottom;
        // The frame's border takes one pixel on each side of the parent's client area.
        CHECK(w == 638);
        CHECK(h == 418);

        const int stripTop = clampedStrip((flags & CC_SHOWTOOLBAR) ? 28 : 0, h, flags);
        const Layout l = expected(w, h, flags, stripTop);
        CHECK(editor->HasTopToolbar() == bool(flags & CC_SHOWTOOLBAR));
        CHECK(editor->HasBottomToolbar() == bool(flags & CC_SHOWZOOMTOOLBAR));
        if (flags & CC_SHOWTOOLBAR) {
            checkRect(editor->Toolbars().topWindow, own, l.top, "top toolbar");
            CHECK(HasVisibleStyle(editor->Toolbars().topWindow));
        }
        if (flags & CC_SHOWZOOMTOOLBAR) {
            checkRect(editor->Toolbars().bottomWindow, own, l.bottom, "bottom toolbar");
            CHECK(HasVisibleStyle(editor->Toolbars().bottomWindow));
        }
        checkRect(editor->VerticalBar(), own, l.vbar, "vertical scroll bar");
        checkRect(editor->HorizontalBar(), own, l.hbar, "horizontal scroll bar");
        const bool bars = flags & CC_SHOWSCROLLBARS;
        CHECK(HasVisibleStyle(editor->VerticalBar()) == bars);
        CHECK(HasVisibleStyle(editor->HorizontalBar()) == bars);
        CHECK((GetWindowLongA(editor->VerticalBar(), GWL_STYLE) & SBS_VERT) == SBS_VERT);
        checkRect(editor->Strip()->Handle(), own, l.strip, "ruler strip");
        CHECK(HasVisibleStyle(editor->Strip()->Handle()) == bool(flags & CC_SHOWPOSWINDOW));
        checkRect(editor->Graph().Handle(), own, l.graph, "graph");
        CHECK(HasVisibleStyle(editor->Graph().Handle()));
        // The strip lies on top of the graph.
        CHECK(GetWindow(editor->Strip()->Handle(), GW_HWNDFIRST) == editor->Strip()->Handle());

        RedrawWindow(control->GetEditorWindow(), nullptr, nullptr,
                     RDW_INVALIDATE | RDW_ERASE | RDW_ALLCHILDREN | RDW_UPDATENOW);
        Pump();
        char name[64];
        std::snprintf(name, sizeof name, "screenshots/editor_flags_%02lx.png",
                      static_cast<unsigned long>(flags & 0xB4));
        CHECK(SaveScreenshot(control->GetEditorWindow(), name));
        control->SetEditorOpen(FALSE);
    }
}

TEST_CASE_FIXTURE(EditorFixture, "the ruler strip is dragged between its clamps") {
    ParentWindow parent(500, 400);
    const DWORD flags = kEmbedded; // both toolbars, scroll bars and the strip
    auto control = MakeControl(2, flags, parent.get());
    REQUIRE(control->SetEditorOpen(TRUE));
    CurveCtlWindow* editor = EditorOf(*control);
    HWND own = editor->Handle();
    HWND strip = editor->Strip()->Handle();
    RECT client{};
    GetClientRect(own, &client);
    const int h = client.bottom;
    const int cy = GetSystemMetrics(SM_CYHSCROLL);
    const int lower = h - 24 - cy - 15;
    CHECK(editor->Strip()->Top() == 28);

    // Press 5 pixels into the strip: the offset keeps the strip under the cursor.
    SendMessageA(strip, WM_LBUTTONDOWN, MK_LBUTTON, MAKELPARAM(10, 5));
    CHECK(editor->Strip()->Dragging());
    CHECK(GetCapture() == strip);
    // Move 100 pixels down (client coordinates of the strip at its old place).
    SendMessageA(strip, WM_MOUSEMOVE, MK_LBUTTON, MAKELPARAM(10, 105));
    CHECK(editor->Strip()->Top() == 128);
    CHECK(RectIn(strip, own).top == 128);
    // A second press while dragging is ignored.
    SendMessageA(strip, WM_LBUTTONDOWN, MK_LBUTTON, MAKELPARAM(10, 0));
    SendMessageA(strip, WM_MOUSEMOVE, MK_LBUTTON, MAKELPARAM(10, 10));
    CHECK(editor->Strip()->Top() == 133);
    // Far below the lower bound, then far above the upper one.
    SendMessageA(strip, WM_MOUSEMOVE, MK_LBUTTON, MAKELPARAM(10, 2000));
    CHECK(editor->Strip()->Top() == lower);
    SendMessageA(strip, WM_MOUSEMOVE, MK_LBUTTON, MAKELPARAM(10, short(-2000)));
    CHECK(editor->Strip()->Top() == 28);
    SendMessageA(strip, WM_LBUTTONUP, 0, MAKELPARAM(10, 5));
    CHECK_FALSE(editor->Strip()->Dragging());
    CHECK(GetCapture() != strip);
    // Moves without a drag do nothing.
    SendMessageA(strip, WM_MOUSEMOVE, 0, MAKELPARAM(10, 200));
    CHECK(editor->Strip()->Top() == 28);
    control->SetEditorOpen(FALSE);
}

TEST_CASE_FIXTURE(EditorFixture, "on a window too short for both clamps the strip sits high") {
    ParentWindow parent(400, 70);
    auto control = MakeControl(2, kEmbedded, parent.get());
    REQUIRE(control->SetEditorOpen(TRUE));
    CurveCtlWindow* editor = EditorOf(*control);
    CHECK(editor->Strip()->Top() == 28);
    CHECK(RectIn(editor->Strip()->Handle(), editor->Handle()).top == 28);
    control->SetEditorOpen(FALSE);

    // Without a top toolbar the upper bound is 0.
    auto bare = MakeControl(2, kEmbedded & ~DWORD(CC_SHOWTOOLBAR), parent.get());
    REQUIRE(bare->SetEditorOpen(TRUE));
    CHECK(EditorOf(*bare)->Strip()->Top() == 0);
    CHECK(RectIn(EditorOf(*bare)->Graph().Handle(), EditorOf(*bare)->Handle()).top == 0);
    bare->SetEditorOpen(FALSE);
}

TEST_CASE_FIXTURE(EditorFixture, "the corner box between the scroll bars is light grey") {
    ParentWindow parent(500, 400);
    auto control = MakeControl(2, kEmbedded, parent.get());
    REQUIRE(control->SetEditorOpen(TRUE));
    CurveCtlWindow* editor = EditorOf(*control);
    HWND own = editor->Handle();
    RECT client{};
    GetClientRect(own, &client);
    const int cx = GetSystemMetrics(SM_CXVSCROLL), cy = GetSystemMetrics(SM_CYHSCROLL);
    RedrawWindow(own, nullptr, nullptr, RDW_INVALIDATE | RDW_UPDATENOW);
    // Draw the editor window's own client area into a bitmap through its Paint.
    HDC dc = GetDC(own);
    const COLORREF inside = GetPixel(dc, client.right - cx / 2, client.bottom - 25 - cy / 2);
    ReleaseDC(own, dc);
    CHECK(inside == RGB(192, 192, 192));
    control->SetEditorOpen(FALSE);
}
