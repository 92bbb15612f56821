// What a saved control brings back to a real editor: the view the user left (zoom and
// scroll captured from the open editor when saving), and the placement of a floating editor
// that was closed before saving. The control goes through a whole scene, as in a file.
#include "editor_test_support.h"
#include "host/scene.h"
#include "plugin/class_descs.h"

#include <doctest/doctest.h>

#include <vector>

using namespace edtest;

namespace {

/// Saves `control` as the only root of a scene and loads that scene back.
CurveControl* reload(CurveControl& control, SceneRoots& roots) {
    for (int i = 0; i < LibNumberClasses(); ++i)
        ClassDirectory::Get().AddClass(LibClassDesc(i));
    ReferenceTarget* root = &control;
    ChunkSave out;
    REQUIRE(SaveScene(&root, 1, out) == IO_OK);
    ChunkLoad in(out.Data(), out.Size());
    REQUIRE(LoadScene(in, roots) == IO_OK);
    REQUIRE(roots.Count() == 1);
    auto* loaded = dynamic_cast<CurveControl*>(roots.Get(0));
    REQUIRE(loaded);
    return loaded;
}

RECT frameRect(CurveControl& c) {
    RECT r{};
    GetWindowRect(c.GetEditorWindow(), &r);
    return r;
}

} // namespace

TEST_CASE_FIXTURE(EditorFixture, "Saved scene: the view of the open editor survives") {
    ParentWindow parent(640, 420);
    auto control = MakeControl(2, kEmbedded, parent.get());
    REQUIRE(control->SetEditorOpen(TRUE));
    control->SetZoomState(2.5f, 0.5f);
    control->SetScrollState(30, -20);
    Pump();
    float h = 0, v = 0;
    int hs = 0, vs = 0;
    REQUIRE(control->GetZoomState(&h, &v)); // what the editor shows now
    REQUIRE(control->GetScrollState(&hs, &vs));

    SceneRoots roots;
    CurveControl* loaded = reload(*control, roots); // saved with the editor open
    control->SetEditorOpen(FALSE);
    float lh = 0, lv = 0;
    int lhs = 0, lvs = 0;
    CHECK(loaded->GetZoomState(&lh, &lv) == TRUE);
    CHECK(loaded->GetScrollState(&lhs, &lvs) == TRUE);
    CHECK(lh == h);
    CHECK(lv == v);
    CHECK(lhs == hs);
    CHECK(lvs == vs);
}

TEST_CASE_FIXTURE(EditorFixture, "Saved scene: a floating editor reopens where it was closed") {
    auto control = MakeControl(2, CC_DEFAULT_FLAGS, nullptr); // floating
    REQUIRE(control->SetEditorOpen(TRUE));
    MoveWindow(control->GetEditorWindow(), 210, 140, 520, 280, TRUE);
    control->SetEditorOpen(FALSE);

    SceneRoots roots;
    CurveControl* loaded = reload(*control, roots);
    REQUIRE(loaded->SetEditorOpen(TRUE));
    const RECT r = frameRect(*loaded);
    CHECK(r.left == 210);
    CHECK(r.top == 140);
    CHECK(r.right == 730);
    CHECK(r.bottom == 420);
    loaded->SetEditorOpen(FALSE);
}

TEST_CASE_FIXTURE(EditorFixture, "Saved scene: an embedded editor ignores a saved placement") {
    auto control = MakeControl(2, CC_DEFAULT_FLAGS, nullptr);
    REQUIRE(control->SetEditorOpen(TRUE));
    MoveWindow(control->GetEditorWindow(), 210, 140, 520, 280, TRUE);
    control->SetEditorOpen(FALSE); // a placement is saved...

    SceneRoots roots;
    CurveControl* loaded = reload(*control, roots);
    ParentWindow parent(400, 300);
    loaded->SetControlFlags(kEmbedded); // ...but this editor is a child of its parent
    loaded->SetParentWindow(parent.get());
    REQUIRE(loaded->SetEditorOpen(TRUE));
    const RECT r = RectIn(loaded->GetEditorWindow(), parent.get());
    CHECK(r.left == 0);
    CHECK(r.top == 0);
    CHECK(r.right == 400);
    CHECK(r.bottom == 300);
    loaded->SetEditorOpen(FALSE);
}

TEST_CASE_FIXTURE(EditorFixture, "Saved scene: without a closed editor no placement comes back") {
    auto control = MakeControl(2, CC_DEFAULT_FLAGS, nullptr); // never opened
    SceneRoots roots;
    CurveControl* loaded = reload(*control, roots);
    WINDOWPLACEMENT wp{};
    CHECK_FALSE(loaded->SavedPlacement(wp));
    REQUIRE(loaded->SetEditorOpen(TRUE));
    const RECT r = frameRect(*loaded);
    CHECK(r.left == 0); // the cascade origin without a viewport panel
    CHECK(r.top == 0);
    CHECK(r.right - r.left == 600);
    CHECK(r.bottom - r.top == 300);
    loaded->SetEditorOpen(FALSE);
}
