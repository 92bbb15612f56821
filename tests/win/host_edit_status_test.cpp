// Entry fields ("CustEdit") and status items ("CustStatus") inside a toolbar.

#include "host/custctrl.h"
#include "win/host_win_fixture.h"

#include <doctest/doctest.h>

#include <string>

using namespace hostwin_test;

namespace {

// The editor's view toolbar in small: a status item and the X and Y entry fields.
struct FieldsFixture {
    ParentWindow parent;
    HWND window = nullptr;
    ICustToolbar* toolbar = nullptr;
    ICustEdit* x = nullptr;
    ICustEdit* y = nullptr;
    ICustStatus* status = nullptr;

    FieldsFixture() {
        window = CreateWindowExA(0, CUSTTOOLBAR_CLASS, "", WS_CHILD | WS_VISIBLE, 0, 0, 500, 24,
                                 parent.hwnd(), nullptr, GetModuleHandleA(nullptr), nullptr);
        toolbar = GetICustToolbar(window);
        toolbar->AddTool(ToolStatusItem(300, 16, TRUE, 1000));
        toolbar->AddTool(ToolOtherItem(CUSTEDIT_CLASS, 50, 16, 1070));
        toolbar->AddTool(ToolOtherItem(CUSTEDIT_CLASS, 50, 16, 1080));
        x = GetICustEdit(toolbar->GetItemHwnd(1070));
        y = GetICustEdit(toolbar->GetItemHwnd(1080));
        status = toolbar->GetICustStatus(1000);
    }
    ~FieldsFixture() {
        ReleaseICustEdit(x);
        ReleaseICustEdit(y);
        ReleaseICustStatus(status);
        ReleaseICustToolbar(toolbar);
    }
};

// A key as the keyboard delivers it: to the focus window, through the message queue.
void PressKey(WPARAM vk) {
    HWND focus = GetFocus();
    PostMessageA(focus, WM_KEYDOWN, vk, 1);
    PostMessageA(focus, WM_KEYUP, vk, LPARAM(0xC0000001u));
    Pump(30);
}

std::string TextOf(ICustEdit* e) {
    char buf[128];
    e->GetText(buf, sizeof buf);
    return buf;
}

} // namespace

TEST_CASE("Enter in an entry field that wants it sends 1709 with the field's id to the parent") {
    FieldsFixture f;
    REQUIRE(f.x != nullptr);
    REQUIRE(f.y != nullptr);
    CHECK(WM_CUSTEDIT_ENTER == 1709);
    f.x->WantReturn(TRUE);
    f.x->SetText("2.5");
    f.x->GiveFocus();
    REQUIRE(f.x->HasFocus());
    CHECK_FALSE(f.y->HasFocus());

    PressKey(VK_RETURN);
    REQUIRE(f.parent.Count(WM_CUSTEDIT_ENTER) == 1);
    const Received& r = f.parent.received()[0];
    CHECK(r.wParam == 1070);
    CHECK(reinterpret_cast<HWND>(r.lParam) == f.x->GetHwnd());
    CHECK(f.x->GotReturn());
    CHECK_FALSE(f.x->GotReturn()); // asked once, cleared
    CHECK(TextOf(f.x) == "2.5");   // Enter does not edit the text
}

TEST_CASE("a field that does not want Enter keeps quiet but still records it") {
    FieldsFixture f;
    f.y->GiveFocus();
    PressKey(VK_RETURN);
    CHECK(f.parent.Count(WM_CUSTEDIT_ENTER) == 0);
    CHECK(f.y->GotReturn());
}

TEST_CASE("Tab in a field asks the owner for the next control") {
    FieldsFixture f;
    f.x->GiveFocus();
    PressKey(VK_TAB);
    REQUIRE(f.parent.Count(WM_NEXTDLGCTL) == 1);
    CHECK(f.parent.received()[0].wParam == 0);
}

TEST_CASE("field text: strings, numbers, and the window text of the field") {
    FieldsFixture f;
    f.x->SetText("12.75");
    CHECK(TextOf(f.x) == "12.75");
    char win[32];
    GetWindowTextA(f.x->GetHwnd(), win, sizeof win);
    CHECK(std::string(win) == "12.75");
    BOOL valid = FALSE;
    CHECK(f.x->GetFloat(&valid) == doctest::Approx(12.75f));
    CHECK(valid);
    f.x->GetInt(&valid);
    CHECK_FALSE(valid); // not a whole number

    f.x->SetText(42);
    CHECK(TextOf(f.x) == "42");
    CHECK(f.x->GetInt(&valid) == 42);
    CHECK(valid);
    f.x->SetText(1.5f, 2);
    CHECK(TextOf(f.x) == "1.50");
    f.x->SetText(0.125f);
    CHECK(TextOf(f.x) == "0.125");

    f.x->SetText("abc");
    CHECK(f.x->GetFloat(&valid) == 0.0f);
    CHECK_FALSE(valid);
    f.x->SetText("");
    f.x->GetFloat(&valid);
    CHECK_FALSE(valid);
    f.x->SetText("3 ");
    CHECK(f.x->GetFloat(&valid) == 3.0f);
    CHECK(valid);
    f.x->SetText(nullptr);
    CHECK(TextOf(f.x).empty());

    SetWindowTextA(f.y->GetHwnd(), "-7"); // the window text is the field's text
    CHECK(TextOf(f.y) == "-7");
    char small[3];
    f.x->SetText("12345");
    f.x->GetText(small, sizeof small);
    CHECK(std::string(small) == "12");
}

TEST_CASE("a disabled field is greyed and takes no focus") {
    FieldsFixture f;
    CHECK(f.x->IsEnabled());
    f.x->Disable();
    CHECK_FALSE(f.x->IsEnabled());
    HWND inner = GetWindow(f.x->GetHwnd(), GW_CHILD);
    REQUIRE(inner != nullptr);
    CHECK_FALSE(IsWindowEnabled(inner));
    f.x->Enable();
    CHECK(f.x->IsEnabled());
    CHECK(IsWindowEnabled(inner));
}

TEST_CASE("GetICustEdit answers only for entry fields") {
    FieldsFixture f;
    CHECK(GetICustEdit(f.toolbar->GetItemHwnd(1000)) == nullptr);
    CHECK(GetICustEdit(nullptr) == nullptr);
    CHECK(GetICustStatus(f.x->GetHwnd()) == nullptr);
    ReleaseICustEdit(nullptr);
    ReleaseICustStatus(nullptr);
}

TEST_CASE("the status item shows its text, which is also its window text") {
    FieldsFixture f;
    REQUIRE(f.status != nullptr);
    char buf[128];
    f.status->GetText(buf, sizeof buf);
    CHECK(std::string(buf).empty());
    const char* prompt = "Drag to scale.  Ctrl-click or drag region box to add to selection.";
    f.status->SetText(prompt);
    f.status->GetText(buf, sizeof buf);
    CHECK(std::string(buf) == prompt); // the double blank is kept
    GetWindowTextA(f.status->GetHwnd(), buf, sizeof buf);
    CHECK(std::string(buf) == prompt);
    f.status->SetText(nullptr);
    f.status->GetText(buf, sizeof buf);
    CHECK(std::string(buf).empty());

    CHECK(f.status->GetTextFormat() == STATUSTEXT_LEFT);
    f.status->SetTextFormat(STATUSTEXT_RIGHT);
    CHECK(f.status->GetTextFormat() == STATUSTEXT_RIGHT);
    f.status->SetTextFormat(99);
    CHECK(f.status->GetTextFormat() == STATUSTEXT_RIGHT);
}

TEST_CASE("status text is drawn where its alignment puts it") {
    FieldsFixture f;
    f.status->SetText("Pan");
    auto darkColumns = [&](int from, int to) {
        Capture cap = CaptureClient(f.status->GetHwnd());
        int n = 0;
        for (int x = from; x < to; ++x)
            for (int yy = 2; yy < cap.height - 2; ++yy)
                if (cap.at(x, yy) == RGB(0, 0, 0)) {
                    ++n;
                    break;
                }
        return n;
    };
    CHECK(darkColumns(0, 60) > 0);
    CHECK(darkColumns(240, 300) == 0);
    f.status->SetTextFormat(STATUSTEXT_RIGHT);
    CHECK(darkColumns(0, 60) == 0);
    CHECK(darkColumns(240, 300) > 0);
}

TEST_CASE("entry fields and status items carry tooltips") {
    FieldsFixture f;
    // Tooltip windows are owned by the top-level window of the control they describe.
    auto tipsOwnedBy = [](HWND owner) {
        struct Search {
            HWND owner;
            int count;
        } search = {owner, 0};
        EnumThreadWindows(
            GetCurrentThreadId(),
            [](HWND hwnd, LPARAM p) -> BOOL {
                auto* s = reinterpret_cast<Search*>(p);
                char cls[64] = {};
                GetClassNameA(hwnd, cls, sizeof cls);
                if (lstrcmpiA(cls, TOOLTIPS_CLASSA) == 0 && GetWindow(hwnd, GW_OWNER) == s->owner)
                    ++s->count;
                return TRUE;
            },
            reinterpret_cast<LPARAM>(&search));
        return search.count;
    };
    const HWND root = GetAncestor(f.parent.hwnd(), GA_ROOT);
    CHECK(tipsOwnedBy(root) == 0);
    f.x->SetTooltip(TRUE, "X value");
    f.status->SetTooltip(TRUE, "Prompt");
    // One tooltip window serves every control under the same top-level window, each
    // control a tool of its own with its own text.
    CHECK(tipsOwnedBy(root) == 1);
    f.x->SetTooltip(FALSE, nullptr);
    CHECK(tipsOwnedBy(root) == 1); // still the status item's
    f.status->SetTooltip(FALSE, nullptr);
    CHECK(tipsOwnedBy(root) == 0); // the last tool gone: the window is gone
}
