// The module as the host sees it when it loads it: exactly five exported functions by
// their plain names, and what each of them answers.
#include "module/module_support.h"

#include <doctest/doctest.h>

#include <algorithm>
#include <cstring>

using moduletest::Plugin;

namespace {
const void* procAddress(HMODULE m, const char* name) {
    return reinterpret_cast<const void*>(GetProcAddress(m, name));
}
} // namespace

TEST_CASE("curvectl.dll exports the five entry points by their plain names") {
    const auto& m = Plugin();
    CHECK(static_cast<bool>(m.LibDescription));
    CHECK(static_cast<bool>(m.LibNumberClasses));
    CHECK(static_cast<bool>(m.LibClassDesc));
    CHECK(static_cast<bool>(m.LibVersion));
    CHECK(static_cast<bool>(m.CanAutoDefer));
    // No decorated names: a host looks them up exactly as written.
    CHECK(procAddress(m.handle, "_Z12LibClassDesci") == nullptr);
    CHECK(procAddress(m.handle, "_LibDescription") == nullptr);
    CHECK(procAddress(m.handle, "LibDescription@0") == nullptr);
}

TEST_CASE("the export directory holds those five names and nothing else") {
    const auto& m = Plugin();
    std::string dllName;
    DWORD functionCount = 0;
    std::vector<moduletest::ExportEntry> entries =
        moduletest::ReadExportDirectory(m.handle, &dllName, &functionCount);

    std::vector<std::string> names;
    for (const auto& e : entries)
        names.push_back(e.name);
    std::vector<std::string> expected = {"CanAutoDefer", "LibClassDesc", "LibDescription",
                                         "LibNumberClasses", "LibVersion"};
    std::sort(names.begin(), names.end());
    CHECK(names == expected);
    CHECK(functionCount == 5); // no exports by ordinal only either
    CHECK(_stricmp(dllName.c_str(), "curvectl.dll") == 0);

    // Each name resolves to the function GetProcAddress finds.
    for (const auto& e : entries)
        CHECK_MESSAGE(e.address == procAddress(m.handle, e.name.c_str()), e.name);
}

TEST_CASE("LibDescription names the module from the string table") {
    const auto& m = Plugin();
    const char* text = m.LibDescription();
    REQUIRE(text != nullptr);
    CHECK(std::strcmp(text, "Custom Curve Control (Quandrel)") == 0);
    // The text lives in the module's one string buffer: the same place every call.
    CHECK(m.LibDescription() == text);
}

TEST_CASE("LibNumberClasses, LibVersion and CanAutoDefer") {
    const auto& m = Plugin();
    CHECK(m.LibNumberClasses() == 2);
    CHECK(m.LibVersion() == 0x2AF81900UL);
    CHECK(m.CanAutoDefer() == 1);
}

TEST_CASE("LibClassDesc: index 0 the control, 1 the curve, anything else null") {
    const auto& m = Plugin();
    ClassDesc* control = m.LibClassDesc(0);
    ClassDesc* curve = m.LibClassDesc(1);
    REQUIRE(control != nullptr);
    REQUIRE(curve != nullptr);
    CHECK(control != curve);
    CHECK(control->ClassID() == Class_ID(0x14585773, 0x483A7DCF));
    CHECK(curve->ClassID() == Class_ID(0x5F2D3A0A, 0x4BE75269));
    // Static descriptors: the same objects on every call.
    CHECK(m.LibClassDesc(0) == control);
    CHECK(m.LibClassDesc(1) == curve);

    CHECK(m.LibClassDesc(2) == nullptr);
    CHECK(m.LibClassDesc(-1) == nullptr);
    CHECK(m.LibClassDesc(1000) == nullptr);
    CHECK(m.LibClassDesc(int(0x80000000)) == nullptr);
}

TEST_CASE("the host's class directory loads the module and finds both classes") {
    ClassDirectory& dir = ClassDirectory::Get();
    const int plugins = dir.NumPlugins();
    CHECK(dir.LoadPlugin("curvectl.dll") == 2);
    REQUIRE(dir.NumPlugins() == plugins + 1);
    CHECK(std::strcmp(dir.PluginDescription(plugins), "Custom Curve Control (Quandrel)") == 0);

    const auto& m = Plugin(); // the same module: LoadLibrary counts, it does not reload
    CHECK(dir.FindClass(0x100, CURVE_CONTROL_CLASS_ID) == m.LibClassDesc(0));
    CHECK(dir.FindClass(0x100, CURVE_CLASS_ID) == m.LibClassDesc(1));
    CHECK(dir.FindClass(0x900, CURVE_CLASS_ID) == nullptr);
    dir.RemoveClass(m.LibClassDesc(0));
    dir.RemoveClass(m.LibClassDesc(1));
}
