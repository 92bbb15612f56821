// The editor as a host meets it: opened through a control that the module's descriptor
// made, with the window classes and resources of the module itself.
#include "doctest/doctest.h"
#include "host/gdi_tracking.h"
#include "host/hold.h"
#include "module/module_support.h"

#include <map>
#include <string>

using namespace moduletest;

namespace {

BOOL CALLBACK countClass(HWND hwnd, LPARAM lParam) {
    char name[64] = {};
    GetClassNameA(hwnd, name, int(sizeof name));
    // Class names compare without case ("SCROLLBAR" is registered as "ScrollBar").
    CharLowerA(name);
    ++(*reinterpret_cast<std::map<std::string, int>*>(lParam))[name];
    return TRUE;
}

} // namespace

TEST_CASE("an editor opened through the module's control") {
    theHold.Reset();
    void* made = Plugin().LibClassDesc(0)->Create(FALSE);
    REQUIRE(made != nullptr);
    ICurveCtl* control = As<ICurveCtl>(made);
    control->SetCurveCount(3);
    control->SetTitle("Module editor");
    control->SetControlFlags(CC_DEFAULT_FLAGS); // floating, every part
    const int windows = CountThreadWindows();

    REQUIRE(control->SetEditorOpen(TRUE));
    CHECK(control->IsEditorOpen());
    HWND frame = control->GetEditorWindow();
    REQUIRE(frame);
    WNDCLASSA wc{};
    // The classes belong to the module, not to the program that loaded it.
    CHECK(GetClassInfoA(Plugin().handle, "DefPopUp", &wc));
    CHECK(GetClassInfoA(Plugin().handle, "DefCurveWindow", &wc));
    CHECK_FALSE(GetClassInfoA(GetModuleHandleA(nullptr), "DefCurveWindow", &wc));
    char title[64] = {};
    GetWindowTextA(frame, title, int(sizeof title));
    CHECK(std::string(title) == "Module editor");

    std::map<std::string, int> classes;
    EnumChildWindows(frame, countClass, reinterpret_cast<LPARAM>(&classes));
    CHECK(classes["basewindow"] == 1);
    CHECK(classes["defcurvewindow"] == 1);
    CHECK(classes["defposwindow"] == 1);
    CHECK(classes["scrollbar"] == 2);
    CHECK(classes["custtoolbar"] == 2);
    CHECK(classes["custbutton"] == 8 + 5 + 3); // view tools, edit tools, curve buttons

    control->SetEditorOpen(FALSE);
    CHECK_FALSE(IsWindow(frame));
    CHECK(CountThreadWindows() == windows);
    control->DeleteThis();
}
