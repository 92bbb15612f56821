// GetResString: the module's string table through its one shared buffer.
#include "test_support.h"

#include "platform/platform.h"
#include "platform/res_string.h"

#include <doctest/doctest.h>

#include <cstring>
#include <string>

using testsupport::CoreFixture;

namespace {
// The texts as the module's users quote them (typed here independently of the resource
// files, so a damaged table cannot agree with itself).
const char* const kTexts[36] = {
    "Custom Curve Control (Quandrel)",
    "Standard",
    "CurveControl",
    "Parameters",
    "Visibility On/Off Toggle",
    "Zoom Vertical Extents",
    "Zoom Horizontal Extents",
    "Zoom Extents",
    "Zoom Vertically",
    "Zoom Horizontally",
    "Zoom",
    "Pan",
    "Zoom Region",
    "Move",
    "Add Point",
    "Delete Point",
    "Scale Point",
    "Reset Curves",
    "Display Curve Toggle",
    "Drag vertically in Edit Window to scale display.",
    "Drag horizontally in Edit Window to scale display.",
    "Drag a region box to define zoom area.",
    "Drag in any direction to pan Edit Window.",
    "Drag to zoom. Ctrl-drag horizontally or vertically to constrain.",
    "Drag to move. Ctrl-click or drag region box to add to selection.",
    "Click on curve to insert control points.",
    "Drag to scale.  Ctrl-click or drag region box to add to selection.",
    "Point %d",
    "Move Points",
    "Adjust Tangents",
    "Scale Point",
    "Insert Points",
    "Type Change",
    "Reset Curve",
    "Select",
    "Curve %d",
};
} // namespace

TEST_CASE_FIXTURE(CoreFixture, "GetResString gives every text of ids 1 to 36") {
    for (int id = 1; id <= 36; ++id) {
        const char* text = GetResString(id);
        REQUIRE_MESSAGE(text != nullptr, "id " << id);
        CHECK_MESSAGE(std::string(text) == kTexts[id - 1], "id " << id);
    }
}

TEST_CASE_FIXTURE(CoreFixture, "GetResString(27) keeps its two blanks") {
    const char* text = GetResString(27);
    REQUIRE(text != nullptr);
    CHECK(std::strstr(text, "scale.  Ctrl") != nullptr);
    CHECK(std::strlen(text) == std::strlen(kTexts[26]));
}

TEST_CASE_FIXTURE(CoreFixture, "GetResString gives null for ids without a string") {
    CHECK(GetResString(37) == nullptr);
    CHECK(GetResString(0) == nullptr);
    CHECK(GetResString(-1) == nullptr);
    CHECK(GetResString(101) == nullptr); // the menu's id, not a string
}

TEST_CASE_FIXTURE(CoreFixture, "two calls return the same buffer holding the second text") {
    const char* first = GetResString(29);
    REQUIRE(first != nullptr);
    const char* second = GetResString(34);
    CHECK(second == first);
    CHECK(std::string(first) == "Reset Curve");

    // A shorter text after a longer one leaves no tail of the longer text.
    GetResString(24);
    CHECK(std::string(GetResString(12)) == "Pan");

    // A failed lookup reports null; the next good one still works.
    CHECK(GetResString(37) == nullptr);
    CHECK(std::string(GetResString(3)) == "CurveControl");
}

TEST_CASE_FIXTURE(CoreFixture, "GetResString gives null while the module instance is unset") {
    HINSTANCE saved = platform::ModuleInstance();
    REQUIRE(saved != nullptr);
    platform::SetModuleInstance(nullptr);
    CHECK(GetResString(1) == nullptr);
    CHECK(GetResString(36) == nullptr);
    platform::SetModuleInstance(saved);
    CHECK(GetResString(1) != nullptr);
}
