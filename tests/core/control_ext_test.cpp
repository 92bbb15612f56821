// The control's extension switch (ICurveCtlEx): the interface query, the flag word and its
// settings, their chunk (written only for a word that is not 0, so files of clients that
// leave it off stay byte for byte), damaged chunks, clones and copies, and undo.
#include "control/curve_control.h"
#include "curvectl/icurvectl_ex.h"
#include "host/hold.h"
#include "io_test_util.h"
#include "plugin/class_descs.h"
#include "ref_keeper.h"
#include "scene_test_util.h"
#include "support/failing_load.h"
#include "test_support.h"

#include <doctest/doctest.h>

#include <memory>

using namespace iotest;
using testsupport::CoreFixture;
using testsupport::RefKeeper;

namespace {

struct ControlDeleter {
    void operator()(CurveControl* c) const { c->MaybeAutoDelete(); }
};
using ControlPtr = std::unique_ptr<CurveControl, ControlDeleter>;

/// A fresh control, made as the host makes one while loading.
ControlPtr newControl() {
    return ControlPtr(static_cast<CurveControl*>(
        static_cast<Animatable*>(GetCurveControlClassDesc()->Create(TRUE))));
}

ICurveCtlEx& ex(CurveControl& c) {
    ICurveCtlEx* e = curvectl::GetCurveCtlEx(&c);
    REQUIRE(e != nullptr);
    return *e;
}

int onionFrames(CurveControl& c) {
    int frames = -1;
    ex(c).GetOnionSkin(&frames, nullptr);
    return frames;
}

int onionStep(CurveControl& c) {
    int step = -1;
    ex(c).GetOnionSkin(nullptr, &step);
    return step;
}

/// Settings unlike a new control's, as a client configures them.
void configure(CurveControl& c) {
    c.SetCurveCount(2, FALSE);
    c.SetXRange(-1.0f, 3.0f, FALSE);
    c.SetTitle("Extended");
    c.SetControlFlags(0x1FF);
}

/// A new control's own chunks as a module without extensions wrote them
/// (fuzz/corpus/fuzz_control_load/new.chunks, written by tools/make_scene_samples before
/// the extensions existed).
const Bytes kNewControlBefore = {
    0xe8, 0x03, 0x0a, 0x00, 0x00, 0x00, 0x01, 0x00, 0x00, 0x00, 0xf2, 0x03, 0x0e, 0x00, 0x00, 0x00,
    0x20, 0x00, 0x00, 0x00, 0x00, 0x00, 0x00, 0x00, 0x24, 0x04, 0x0a, 0x00, 0x00, 0x00, 0x00, 0x00,
    0x00, 0x00, 0x06, 0x04, 0x12, 0x00, 0x00, 0x00, 0x00, 0x00, 0x00, 0x00, 0x00, 0x00, 0x00, 0x00,
    0x00, 0x00, 0x00, 0x00, 0x10, 0x04, 0x12, 0x00, 0x00, 0x00, 0x00, 0x00, 0x00, 0x00, 0x00, 0x00,
    0x00, 0x00, 0x00, 0x00, 0x00, 0x00, 0x1a, 0x04, 0x36, 0x00, 0x00, 0x00, 0x00, 0x00, 0x00, 0x00,
    0x00, 0x00, 0x00, 0x00, 0x00, 0x00, 0x00, 0x00, 0x00, 0x00, 0x00, 0x00, 0x00, 0x00, 0x00, 0x00,
    0x00, 0x00, 0x00, 0x00, 0x00, 0x00, 0x00, 0x00, 0x00, 0x00, 0x00, 0x00, 0x00, 0x00, 0x00, 0x00,
    0x00, 0x00, 0x00, 0x00, 0x00, 0x00, 0x00, 0x00, 0x00, 0x00, 0x00, 0x00, 0x2e, 0x04, 0x0a, 0x00,
    0x00, 0x00, 0x00, 0x00, 0x00, 0x00, 0x38, 0x04, 0x16, 0x00, 0x00, 0x00, 0x00, 0x00, 0x00, 0x00,
    0x00, 0x00, 0x80, 0x3f, 0x00, 0x00, 0x00, 0x00, 0x00, 0x00, 0x80, 0x3f, 0x6a, 0x04, 0x0a, 0x00,
    0x00, 0x00, 0xff, 0xff, 0x03, 0x00, 0x74, 0x04, 0x0a, 0x00, 0x00, 0x00, 0x00, 0x00, 0x00, 0x00,
    0x56, 0x04, 0x14, 0x00, 0x00, 0x00, 0x43, 0x75, 0x72, 0x76, 0x65, 0x20, 0x43, 0x6f, 0x6e, 0x74,
    0x72, 0x6f, 0x6c, 0x00};

constexpr unsigned kExtChunk = 0x0480;

/// The extension chunk holding `subChunks`, after a control's own chunks.
Bytes withExtension(const Bytes& control, std::initializer_list<Bytes> subChunks) {
    return Cat({control, MakeContainer(kExtChunk, subChunks)});
}

} // namespace

// ---------------------------------------------------------------------------------------
// The interface and its defaults

TEST_CASE_FIXTURE(CoreFixture, "extensions: the control answers the id with one interface") {
    CurveControl c;
    void* asked = c.GetInterface(CURVE_CTL_EX_INTERFACE_ID);
    REQUIRE(asked != nullptr);
    CHECK(asked == c.GetInterface(CURVE_CTL_EX_INTERFACE_ID));
    CHECK(curvectl::GetCurveCtlEx(&c) == static_cast<ICurveCtlEx*>(asked));
    CHECK(static_cast<ICurveCtlEx*>(asked) == static_cast<ICurveCtlEx*>(&c.Extensions()));
    // Every other id answers as it did before the extensions existed.
    CHECK(c.GetInterface(CURVE_CLIENT_INTERFACE_ID) == nullptr);
    CHECK(c.GetInterface(I_CURVE_INTERFACE) == nullptr);
    CHECK(c.GetInterface(0) == nullptr);
    CHECK(c.GetInterface(CURVE_CTL_EX_INTERFACE_ID + 1) == nullptr);
    CHECK(curvectl::GetCurveCtlEx(nullptr) == nullptr);
    // A curve is not a control: it has no extensions.
    c.SetCurveCount(1, FALSE);
    CHECK(c.GetCurve(0)->GetInterface(CURVE_CTL_EX_INTERFACE_ID) == nullptr);
}

TEST_CASE_FIXTURE(CoreFixture, "extensions: a new control has every extension off") {
    CurveControl c;
    CHECK(ex(c).GetExtendedFlags() == 0);
    CHECK(ex(c).GetSnapEnabled() == FALSE);
    CHECK(onionFrames(c) == CCX_ONION_DEFAULT_FRAMES);
    CHECK(onionStep(c) == CCX_ONION_DEFAULT_STEP);
    CHECK_FALSE(c.Extensions().Snapping());
    ex(c).GetOnionSkin(nullptr, nullptr); // both outputs may be null
}

TEST_CASE_FIXTURE(CoreFixture, "extensions: the flag word is kept as given, unnamed bits too") {
    CurveControl c;
    CHECK(CCX_ALL == 0xFF);
    ex(c).SetExtendedFlags(CCX_KEYBOARD | CCX_ONION_SKIN);
    CHECK(ex(c).GetExtendedFlags() == (CCX_KEYBOARD | CCX_ONION_SKIN));
    CHECK(c.Extensions().Has(CCX_KEYBOARD));
    CHECK_FALSE(c.Extensions().Has(CCX_SNAP));
    CHECK_FALSE(c.Extensions().Has(CCX_KEYBOARD | CCX_SNAP));
    CHECK_FALSE(c.Extensions().Has(0));
    ex(c).SetExtendedFlags(0xFFFFFFFFu);
    CHECK(ex(c).GetExtendedFlags() == 0xFFFFFFFFu);
    ex(c).SetExtendedFlags(0x80000100u); // bits a later version may name
    CHECK(ex(c).GetExtendedFlags() == 0x80000100u);
    ex(c).SetExtendedFlags(0);
    CHECK(ex(c).GetExtendedFlags() == 0);
}

TEST_CASE_FIXTURE(CoreFixture, "extensions: snapping applies only with its bit and the toggle") {
    CurveControl c;
    ex(c).SetSnapEnabled(7);
    CHECK(ex(c).GetSnapEnabled() == TRUE);
    CHECK_FALSE(c.Extensions().Snapping()); // CCX_SNAP is off
    ex(c).SetExtendedFlags(CCX_SNAP);
    CHECK(c.Extensions().Snapping());
    ex(c).SetSnapEnabled(FALSE);
    CHECK(ex(c).GetSnapEnabled() == FALSE);
    CHECK_FALSE(c.Extensions().Snapping());
}

TEST_CASE_FIXTURE(CoreFixture, "extensions: onion skin settings, and the values refused") {
    CurveControl c;
    ex(c).SetOnionSkin(4, 80);
    CHECK(onionFrames(c) == 4);
    CHECK(onionStep(c) == 80);
    ex(c).SetOnionSkin(0, 1); // no skins: allowed
    CHECK(onionFrames(c) == 0);
    CHECK(onionStep(c) == 1);
    ex(c).SetOnionSkin(CCX_ONION_MAX_FRAMES, 0x7FFFFFFF);
    CHECK(onionFrames(c) == CCX_ONION_MAX_FRAMES);
    CHECK(onionStep(c) == 0x7FFFFFFF);
    for (auto [frames, step] :
         {std::pair{-1, 160}, std::pair{CCX_ONION_MAX_FRAMES + 1, 160}, std::pair{3, 0},
          std::pair{3, -160}, std::pair{int(0x80000000u), 160}}) {
        CAPTURE(frames);
        CAPTURE(step);
        ex(c).SetOnionSkin(frames, step);
        CHECK(onionFrames(c) == CCX_ONION_MAX_FRAMES);
        CHECK(onionStep(c) == 0x7FFFFFFF);
    }
}

// ---------------------------------------------------------------------------------------
// Saving and loading

TEST_CASE_FIXTURE(CoreFixture, "extensions: a word of 0 saves exactly what was saved before") {
    SUBCASE("a new control, against its file written before the extensions existed") {
        CurveControl fresh;
        CHECK(SaveOf(&fresh) == kNewControlBefore);
        CurveControl touched;
        ex(touched).SetExtendedFlags(CCX_ALL);
        ex(touched).SetSnapEnabled(TRUE);
        ex(touched).SetOnionSkin(5, 40);
        ex(touched).SetExtendedFlags(0); // off again: the settings are not saved
        CHECK(SaveOf(&touched) == kNewControlBefore);
    }
    SUBCASE("a configured control, against one that never asked for the interface") {
        CurveControl plain, touched;
        configure(plain);
        configure(touched);
        ex(touched).SetSnapEnabled(TRUE);
        ex(touched).SetOnionSkin(1, 2);
        const Bytes a = SaveOf(&plain), b = SaveOf(&touched);
        CHECK(a == b);
        for (const Chunk& chunk : ChunksOf(b))
            CHECK(chunk.id != kExtChunk);
    }
}

TEST_CASE_FIXTURE(CoreFixture, "extensions: a word that is not 0 adds chunk 0x0480 last") {
    CurveControl c;
    configure(c);
    const Bytes before = SaveOf(&c);
    ex(c).SetExtendedFlags(CCX_KEYBOARD | 0x100000u);
    ex(c).SetSnapEnabled(TRUE);
    ex(c).SetOnionSkin(4, 80);
    const Bytes after = SaveOf(&c);
    // The chunks before it are unchanged, byte for byte.
    REQUIRE(after.size() > before.size());
    CHECK(Bytes(after.begin(), after.begin() + long(before.size())) == before);
    const std::vector<Chunk> chunks = ChunksOf(after);
    REQUIRE(chunks.back().id == kExtChunk);
    CHECK(chunks.back().holdsChunks);
    const std::vector<Chunk> sub = ChunksOf(chunks.back().payload);
    REQUIRE(IdsOf(sub) == std::vector<unsigned>{0x0001, 0x0002, 0x0003});
    CHECK(sub[0].payload == LE(uint32_t(CCX_KEYBOARD | 0x100000u)));
    CHECK(sub[1].payload == LE(1));
    CHECK(sub[2].payload == LE(4, 80));
}

TEST_CASE_FIXTURE(CoreFixture, "extensions: saved and loaded, own chunks and a whole scene") {
    CurveControl c;
    configure(c);
    ex(c).SetExtendedFlags(CCX_ALL | 0x4000u);
    ex(c).SetSnapEnabled(TRUE);
    ex(c).SetOnionSkin(CCX_ONION_MAX_FRAMES, 33);

    ControlPtr loaded = newControl();
    REQUIRE(LoadInto(loaded.get(), SaveOf(&c)) == IO_OK);
    CHECK(ex(*loaded).GetExtendedFlags() == (CCX_ALL | 0x4000u));
    CHECK(ex(*loaded).GetSnapEnabled() == TRUE);
    CHECK(onionFrames(*loaded) == CCX_ONION_MAX_FRAMES);
    CHECK(onionStep(*loaded) == 33);
    CHECK(SaveOf(loaded.get()) == SaveOf(&c)); // save, load, save: the same bytes

    scenetest::RegisterModuleClasses();
    SceneRoots originals;
    originals.Add(new CurveControl);
    auto& held = *static_cast<CurveControl*>(originals.Get(0));
    held.CopyFrom(c);
    const Bytes scene = scenetest::SaveSceneBytes({&held});
    SceneRoots roots;
    REQUIRE(scenetest::LoadSceneBytes(scene, roots) == IO_OK);
    REQUIRE(roots.Count() == 1);
    auto* again = dynamic_cast<CurveControl*>(roots.Get(0));
    REQUIRE(again != nullptr);
    CHECK(ex(*again).GetExtendedFlags() == (CCX_ALL | 0x4000u));
    CHECK(onionStep(*again) == 33);
    CHECK(scenetest::SaveSceneBytes({again}) == scene);
}

TEST_CASE_FIXTURE(CoreFixture, "extensions: a file without the chunk loads with the word 0") {
    CurveControl c;
    configure(c);
    ControlPtr loaded = newControl();
    REQUIRE(LoadInto(loaded.get(), SaveOf(&c)) == IO_OK);
    CHECK(ex(*loaded).GetExtendedFlags() == 0);
    CHECK(ex(*loaded).GetSnapEnabled() == FALSE);
    CHECK(onionFrames(*loaded) == CCX_ONION_DEFAULT_FRAMES);
    CHECK(onionStep(*loaded) == CCX_ONION_DEFAULT_STEP);
    ControlPtr old = newControl();
    REQUIRE(LoadInto(old.get(), kNewControlBefore) == IO_OK);
    CHECK(ex(*old).GetExtendedFlags() == 0);
    CHECK(SaveOf(old.get()) == kNewControlBefore);
}

TEST_CASE_FIXTURE(CoreFixture, "extensions: the chunk's layout grows without breaking loaders") {
    CurveControl c;
    const Bytes own = SaveOf(&c);
    SUBCASE("a sub-chunk this version does not know is skipped") {
        ControlPtr loaded = newControl();
        REQUIRE(LoadInto(loaded.get(),
                         withExtension(own, {MakeChunk(0x0001, LE(uint32_t(CCX_SNAP))),
                                             MakeChunk(0x0077, LE(1, 2, 3)),
                                             MakeContainer(0x0078, {MakeChunk(1, LE(9))})})) ==
                IO_OK);
        CHECK(ex(*loaded).GetExtendedFlags() == CCX_SNAP);
    }
    SUBCASE("fields a later version appends to a sub-chunk are skipped") {
        ControlPtr loaded = newControl();
        REQUIRE(LoadInto(loaded.get(),
                         withExtension(own, {MakeChunk(0x0001, LE(uint32_t(CCX_KEYBOARD), 77)),
                                             MakeChunk(0x0003, LE(3, 20, 5, 6))})) == IO_OK);
        CHECK(ex(*loaded).GetExtendedFlags() == CCX_KEYBOARD);
        CHECK(onionFrames(*loaded) == 3);
        CHECK(onionStep(*loaded) == 20);
    }
    SUBCASE("sub-chunks in any order; an empty extension chunk changes nothing") {
        ControlPtr loaded = newControl();
        REQUIRE(LoadInto(loaded.get(), withExtension(own, {MakeChunk(0x0002, LE(1)),
                                                           MakeChunk(0x0001, LE(0x20u))})) ==
                IO_OK);
        CHECK(ex(*loaded).GetSnapEnabled() == TRUE);
        CHECK(ex(*loaded).GetExtendedFlags() == 0x20u);
        ControlPtr empty = newControl();
        REQUIRE(LoadInto(empty.get(), Cat({own, MakeChunk(kExtChunk, {})})) == IO_OK);
        CHECK(ex(*empty).GetExtendedFlags() == 0);
    }
}

TEST_CASE_FIXTURE(CoreFixture, "extensions: a damaged chunk ends the load with a read error") {
    CurveControl c;
    const Bytes own = SaveOf(&c);
    const std::pair<const char*, Bytes> damaged[] = {
        {"bytes instead of sub-chunks", Cat({own, MakeChunk(kExtChunk, LE(1))})},
        {"a flag word cut short",
         withExtension(own, {MakeChunk(0x0001, Bytes{0x01, 0x00})})},
        {"a snap toggle that is neither 0 nor 1", withExtension(own, {MakeChunk(0x0002, LE(7))})},
        {"an onion skin without its step", withExtension(own, {MakeChunk(0x0003, LE(2))})},
        {"too many onion frames",
         withExtension(own, {MakeChunk(0x0003, LE(CCX_ONION_MAX_FRAMES + 1, 160))})},
        {"negative onion frames", withExtension(own, {MakeChunk(0x0003, LE(-1, 160))})},
        {"an onion step of 0", withExtension(own, {MakeChunk(0x0003, LE(2, 0))})},
        {"a sub-chunk header that overruns", [&] {
             Bytes b = withExtension(own, {MakeChunk(0x0001, LE(1u))});
             b[b.size() - 8] = 0x40; // the sub-chunk's size word: far beyond the file
             return b;
         }()},
    };
    for (const auto& [what, bytes] : damaged) {
        CAPTURE(what);
        ControlPtr loaded = newControl();
        CHECK(LoadInto(loaded.get(), bytes) == IO_ERROR);
        // The control's own settings before the chunk were read; the word may be partly
        // read, but the control stays whole and usable.
        CHECK(loaded->GetCurveCount() == 0);
        loaded->SetCurveCount(1, FALSE);
    }
}

TEST_CASE_FIXTURE(CoreFixture, "extensions: a read that fails anywhere in the chunk is an error") {
    CurveControl c;
    configure(c);
    ex(c).SetExtendedFlags(CCX_ALL);
    ex(c).SetOnionSkin(3, 7);
    const Bytes bytes = SaveOf(&c);
    int calls = 0;
    {
        ChunkLoad in(bytes.data(), bytes.size());
        testsupport::FailingLoad counting(in, 0);
        ControlPtr loaded = newControl();
        REQUIRE(loaded->Load(&counting) == IO_OK);
        calls = counting.Calls();
    }
    REQUIRE(calls > 10);
    for (int n = 1; n <= calls; ++n) {
        CAPTURE(n);
        ChunkLoad in(bytes.data(), bytes.size());
        testsupport::FailingLoad failing(in, n);
        ControlPtr loaded = newControl();
        CHECK(loaded->Load(&failing) == IO_ERROR);
        in.RunPostLoadCallbacks();
    }
}

// ---------------------------------------------------------------------------------------
// Copies and undo

TEST_CASE_FIXTURE(CoreFixture, "extensions: CopyFrom and Clone carry the word and settings") {
    RefKeeper keep(new CurveControl);
    CurveControl& src = *keep.get<CurveControl>();
    configure(src);
    ex(src).SetExtendedFlags(CCX_SNAP | CCX_ONION_SKIN);
    ex(src).SetSnapEnabled(TRUE);
    ex(src).SetOnionSkin(6, 12);

    RefKeeper keepCopy(new CurveControl);
    CurveControl& copy = *keepCopy.get<CurveControl>();
    copy.CopyFrom(src);
    CHECK(ex(copy).GetExtendedFlags() == (CCX_SNAP | CCX_ONION_SKIN));
    CHECK(ex(copy).GetSnapEnabled() == TRUE);
    CHECK(onionFrames(copy) == 6);
    CHECK(onionStep(copy) == 12);
    CHECK(&ex(copy) != &ex(src)); // a part of each control, not shared

    RemapDir& remap = NewRemapDir();
    auto* clone = static_cast<CurveControl*>(remap.CloneRef(&src));
    remap.DeleteThis();
    REQUIRE(clone != nullptr);
    RefKeeper keepClone(clone);
    CHECK(ex(*clone).GetExtendedFlags() == (CCX_SNAP | CCX_ONION_SKIN));
    CHECK(onionStep(*clone) == 12);
    ex(*clone).SetExtendedFlags(0);
    CHECK(ex(src).GetExtendedFlags() == (CCX_SNAP | CCX_ONION_SKIN));
}

// A client's configuration call is not a user's edit: like SetControlFlags, no undo step.
TEST_CASE_FIXTURE(CoreFixture, "extensions: configuring them records nothing for undo") {
    RefKeeper keep(new CurveControl);
    CurveControl& c = *keep.get<CurveControl>();
    c.SetCurveCount(1, FALSE);
    theHold.Begin();
    c.SetCurveCount(3, TRUE);
    theHold.Accept("Curves");
    REQUIRE(theHold.NumUndo() == 1);

    theHold.Begin();
    ex(c).SetExtendedFlags(CCX_ALL);
    ex(c).SetSnapEnabled(TRUE);
    ex(c).SetOnionSkin(1, 1);
    theHold.Accept("Configure");
    CHECK(theHold.NumUndo() == 1); // the hold had no record: no step

    // Undoing and redoing the curve set leaves the configuration as it is.
    REQUIRE(theHold.Undo());
    CHECK(c.GetCurveCount() == 1);
    CHECK(ex(c).GetExtendedFlags() == CCX_ALL);
    CHECK(ex(c).GetSnapEnabled() == TRUE);
    REQUIRE(theHold.Redo());
    CHECK(c.GetCurveCount() == 3);
    CHECK(onionStep(c) == 1);
}
