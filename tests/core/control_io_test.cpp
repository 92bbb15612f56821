// Curve control persistence: the chunks a control saves, what its loader makes of them in
// any order, with chunks missing, and from damaged data; the view capture of an open
// editor; the client object patched by id; the post-load reconnection of the curves.
#include "control/curve_control.h"
#include "io_test_util.h"
#include "plugin/class_descs.h"
#include "support/failing_load.h"
#include "test_support.h"

#include <doctest/doctest.h>

#include <cstring>
#include <string>

using namespace iotest;
using testsupport::CoreFixture;

namespace {

/// An open editor as the control sees it: it has a window and a view to capture.
class FakeEditor : public IEditorView {
public:
    HWND Handle() override { return reinterpret_cast<HWND>(this); }
    void RedrawGraph() override {}
    void InvalidateGraph() override {}
    void CaptureView(float& hZoom, float& vZoom, int& hScroll, int& vScroll) override {
        hZoom = h;
        vZoom = v;
        hScroll = hs;
        vScroll = vs;
        ++captures;
    }
    void SetZoom(float, float) override {}
    void SetScroll(int, int) override {}
    void SetCaption(const char*) override {}
    void SelectEditMode(int, int) override {}
    void GetEditMode(int& mode, int& flyOff) override {
        mode = 400;
        flyOff = 0;
    }
    void SetDisplayMode(const BitArray&) override {}
    BitArray DisplayMode() override { return BitArray(); }
    void RebuildCurveButtons() override {}
    void SendCommand(int) override {}
    bool AspectRescale(int) override { return false; }
    void InvalidateRuler() override {}
    void RedrawRuler() override {}

    float h = 2.5f, v = 0.75f; // the view the user left
    int hs = -40, vs = 17;
    int captures = 0;
};

WINDOWPLACEMENT samplePlacement() {
    WINDOWPLACEMENT wp{};
    wp.length = 44;
    wp.flags = 2;
    wp.showCmd = 1;
    wp.ptMinPosition = {-1, -2};
    wp.ptMaxPosition = {3, 4};
    wp.rcNormalPosition = {10, 20, 610, 320};
    return wp;
}

/// A control whose every saved setting differs from a new control's.
void fillSample(CurveControl& c) {
    c.SetCurveCount(3, FALSE);
    BitArray shown(5);
    shown.Set(0);
    shown.Set(3);
    c.SetShownCurves(shown);
    c.SetZoomFlyOff(2);
    c.SetZoomState(1.5f, 0.25f);
    c.SetScrollState(-12, 34);
    c.StorePlacement(samplePlacement());
    c.SetXRange(-2.0f, 6.0f, FALSE);
    c.SetYRange(-1.0f, 3.5f);
    c.SetControlFlags(0x1C0F05);
    c.SetToolMode(4);
    c.SetTitle("Falloff \xE9t\xE9");
}

void checkSameSettings(CurveControl& a, CurveControl& b) {
    CHECK(a.GetCurveCount() == b.GetCurveCount());
    CHECK(a.GetShownCurves() == b.GetShownCurves());
    CHECK(a.ZoomFlyOff() == b.ZoomFlyOff());
    float ha = 0, va = 0, hb = 0, vb = 0;
    CHECK(a.GetZoomState(&ha, &va) == b.GetZoomState(&hb, &vb));
    CHECK(ha == hb);
    CHECK(va == vb);
    int sha = 0, sva = 0, shb = 0, svb = 0;
    CHECK(a.GetScrollState(&sha, &sva) == b.GetScrollState(&shb, &svb));
    CHECK(sha == shb);
    CHECK(sva == svb);
    WINDOWPLACEMENT pa{}, pb{};
    CHECK(a.SavedPlacement(pa) == b.SavedPlacement(pb));
    CHECK(std::memcmp(&pa, &pb, sizeof(pa)) == 0);
    CHECK(a.GetXRange() == b.GetXRange());
    CHECK(a.GetYRange() == b.GetYRange());
    CHECK(a.GetControlFlags() == b.GetControlFlags());
    CHECK(a.GetToolMode() == b.GetToolMode());
    CHECK(std::string(a.Title()) == b.Title());
}

/// A fresh control, made as the host makes one while loading.
CurveControl* newControl() {
    return static_cast<CurveControl*>(
        static_cast<Animatable*>(GetCurveControlClassDesc()->Create(TRUE)));
}

struct ControlDeleter {
    void operator()(CurveControl* c) const { c->MaybeAutoDelete(); }
};
using ControlPtr = std::unique_ptr<CurveControl, ControlDeleter>;

int refIDs(void* target, void* context) { return target == context ? 7 : -1; }

const std::vector<unsigned> kAllChunks = {0x03E8, 0x03F2, 0x0424, 0x0406, 0x0410, 0x041A,
                                          0x042E, 0x0438, 0x046A, 0x0474, 0x0456};

} // namespace

// ---------------------------------------------------------------------------------------
// Saving

TEST_CASE_FIXTURE(CoreFixture, "Control save: the chunks, their order and their payloads") {
    CurveControl c;
    fillSample(c);
    const std::vector<Chunk> chunks = ChunksOf(SaveOf(&c));
    REQUIRE(IdsOf(chunks) == kAllChunks);
    CHECK(chunks[0].payload == LE(1)); // legacyInt's default
    CHECK(chunks[1].payload == LE(5, uint32_t(0x9)));
    CHECK(chunks[2].payload == LE(2));
    CHECK(chunks[3].payload == LE(1.5f, 0.25f, 1));
    CHECK(chunks[4].payload == LE(-12, 34, 1));
    CHECK(chunks[5].payload == LE(44, 2, 1, -1, -2, 3, 4, 10, 20, 610, 320, 1));
    CHECK(chunks[6].payload == LE(3));
    CHECK(chunks[7].payload == LE(-2.0f, 6.0f, -1.0f, 3.5f));
    CHECK(chunks[8].payload == LE(uint32_t(0x1C0F05)));
    CHECK(chunks[9].payload == LE(4));
    const std::string title = "Falloff \xE9t\xE9";
    CHECK(chunks[10].payload == Bytes(title.c_str(), title.c_str() + title.size() + 1));
    for (const Chunk& ch : chunks)
        CHECK_FALSE(ch.holdsChunks);
}

TEST_CASE_FIXTURE(CoreFixture, "Control save: a new control saves its defaults") {
    CurveControl c;
    const std::vector<Chunk> chunks = ChunksOf(SaveOf(&c));
    REQUIRE(IdsOf(chunks) == kAllChunks);
    CHECK(chunks[1].payload == LE(32, 0)); // 32 bits, all clear
    CHECK(chunks[3].payload == LE(0.0f, 0.0f, 0));
    CHECK(chunks[5].payload.size() == 48);
    CHECK(chunks[6].payload == LE(0));
    CHECK(chunks[7].payload == LE(0.0f, 1.0f, 0.0f, 1.0f));
    CHECK(chunks[8].payload == LE(uint32_t(0x3FFFF)));
    CHECK(chunks[10].payload ==
          Bytes{'C', 'u', 'r', 'v', 'e', ' ', 'C', 'o', 'n', 't', 'r', 'o', 'l', 0});
}

TEST_CASE_FIXTURE(CoreFixture, "Control save: the client object's id only when it has one") {
    CurveControl c;
    testsupport::FakeClient client;
    SUBCASE("no client object: no chunk, no question") {
        int asked = 0;
        const Bytes b = SaveOf(
            &c, [](void*, void* n) { return ++*static_cast<int*>(n), 3; }, &asked);
        CHECK(asked == 0);
        CHECK(IdsOf(ChunksOf(b)) == kAllChunks);
    }
    SUBCASE("a client object that is not saved") {
        c.RegisterClientObject(&client);
        CHECK(IdsOf(ChunksOf(SaveOf(&c))) == kAllChunks);
    }
    SUBCASE("a client object saved under id 7: 0x044C just before the title") {
        c.RegisterClientObject(&client);
        const std::vector<Chunk> chunks = ChunksOf(SaveOf(&c, refIDs, &client));
        REQUIRE(chunks.size() == 12);
        CHECK(chunks[10].id == 0x044C);
        CHECK(chunks[10].payload == LE(7));
        CHECK(chunks[11].id == 0x0456);
    }
}

TEST_CASE_FIXTURE(CoreFixture, "Control save: an open editor's view is captured first") {
    CurveControl c;
    FakeEditor editor;
    c.AttachEditor(reinterpret_cast<HWND>(&editor), &editor);
    const std::vector<Chunk> chunks = ChunksOf(SaveOf(&c));
    c.DetachEditor();
    CHECK(editor.captures == 1);
    CHECK(chunks[3].payload == LE(2.5f, 0.75f, 1));
    CHECK(chunks[4].payload == LE(-40, 17, 1));

    // ... so that the saved editor view survives a reload.
    ControlPtr loaded(newControl());
    REQUIRE(LoadInto(loaded.get(), SaveOf(&c)) == IO_OK);
    float h = 0, v = 0;
    int hs = 0, vs = 0;
    CHECK(loaded->GetZoomState(&h, &v) == TRUE);
    CHECK(h == 2.5f);
    CHECK(v == 0.75f);
    CHECK(loaded->GetScrollState(&hs, &vs) == TRUE);
    CHECK(hs == -40);
    CHECK(vs == 17);
}

// ---------------------------------------------------------------------------------------
// Loading

TEST_CASE_FIXTURE(CoreFixture, "Control load: every setting comes back, and saves the same") {
    CurveControl original;
    fillSample(original);
    const Bytes bytes = SaveOf(&original);
    ControlPtr loaded(newControl());
    REQUIRE(LoadInto(loaded.get(), bytes) == IO_OK);
    checkSameSettings(*loaded, original);
    CHECK(SaveOf(loaded.get()) == bytes);
}

TEST_CASE_FIXTURE(CoreFixture, "Control load: the curve count gives null slots, then new curves") {
    CurveControl original;
    fillSample(original);
    const Bytes bytes = SaveOf(&original);
    ControlPtr loaded(newControl());
    ChunkLoad in(bytes.data(), bytes.size());
    REQUIRE(loaded->Load(&in) == IO_OK);
    // Before the post-load step: three slots for the host to fill, default button texts.
    REQUIRE(loaded->GetCurveCount() == 3);
    for (int i = 0; i < 3; ++i) {
        CHECK(loaded->GetCurve(i) == nullptr);
        CHECK(std::string(loaded->CurveButtonText(i)) == "Visibility On/Off Toggle");
    }
    // Nothing filled them (the curves were not part of this stream): each slot gets a new
    // curve, so that clients never meet a null curve below the count.
    in.RunPostLoadCallbacks();
    for (int i = 0; i < 3; ++i) {
        Curve* c = loaded->GetCurveObject(i);
        REQUIRE(c);
        CHECK(c->Owner() == loaded.get());
        REQUIRE(c->PointCount() == 2);
        CHECK(c->Knots()[0].pos == Point2(-2.0f, 0.0f));
        CHECK(c->Knots()[1].pos == Point2(6.0f, 0.0f));
        CHECK(c->Knots()[1].flags == 0x102u);
    }
}

TEST_CASE_FIXTURE(CoreFixture, "Control load: the post-load step reconnects the restored curves") {
    CurveControl original;
    original.SetCurveCount(2, FALSE);
    const Bytes bytes = SaveOf(&original);
    ControlPtr loaded(newControl());
    ChunkLoad in(bytes.data(), bytes.size());
    REQUIRE(loaded->Load(&in) == IO_OK);
    // The host restores the references; then the callback writes the owners.
    Curve* a = new Curve(nullptr, 0);
    Curve* b = new Curve(nullptr, 0);
    loaded->ReplaceReference(0, a);
    loaded->ReplaceReference(1, b);
    a->SetOwner(nullptr);
    b->SetOwner(nullptr);
    in.RunPostLoadCallbacks();
    CHECK(a->Owner() == loaded.get());
    CHECK(b->Owner() == loaded.get());
    CHECK(loaded->GetCurve(0) == a);
    CHECK(loaded->GetCurve(1) == b);
}

TEST_CASE_FIXTURE(CoreFixture, "Control load: no chunk 0x044C leaves the client object null") {
    CurveControl original;
    testsupport::FakeClient client;
    original.RegisterClientObject(&client); // not saved: GetRefID answers -1
    ControlPtr loaded(newControl());
    REQUIRE(LoadInto(loaded.get(), SaveOf(&original), &client) == IO_OK);
    CHECK(loaded->Client() == nullptr);
}

TEST_CASE_FIXTURE(CoreFixture, "Control load: chunk 0x044C patches the client object by id") {
    CurveControl original;
    testsupport::FakeClient client;
    original.RegisterClientObject(&client);
    const Bytes bytes = SaveOf(&original, refIDs, &client);
    ControlPtr loaded(newControl());
    ChunkLoad in(bytes.data(), bytes.size());
    REQUIRE(loaded->Load(&in) == IO_OK);
    CHECK(loaded->Client() == nullptr); // not before every object exists
    int askedFor = -1;
    struct Ctx {
        int* asked;
        void* client;
    } ctx{&askedFor, static_cast<ReferenceTarget*>(&client)};
    in.ResolveBackpatches(
        [](int id, void* p) {
            auto* c = static_cast<Ctx*>(p);
            *c->asked = id;
            return c->client;
        },
        &ctx);
    in.RunPostLoadCallbacks();
    CHECK(askedFor == 7);
    CHECK(loaded->Client() == static_cast<ICurveCtlClient*>(&client));
}

TEST_CASE_FIXTURE(CoreFixture, "Control load: chunks in another order load the same fields") {
    CurveControl original;
    fillSample(original);
    const Bytes bytes = SaveOf(&original);
    std::vector<Chunk> chunks = ChunksOf(bytes);
    std::vector<Chunk> reversed(chunks.rbegin(), chunks.rend());
    reversed.insert(reversed.begin() + 3, Chunk{0x0500, false, LE(1, 2, 3)}); // unknown
    ControlPtr loaded(newControl());
    REQUIRE(LoadInto(loaded.get(), Join(reversed)) == IO_OK);
    checkSameSettings(*loaded, original);
    CHECK(SaveOf(loaded.get()) == bytes);
}

TEST_CASE_FIXTURE(CoreFixture, "Control load: a file without a chunk keeps that chunk's defaults") {
    CurveControl original;
    fillSample(original);
    const std::vector<Chunk> chunks = ChunksOf(SaveOf(&original));
    const Bytes defaults = SaveOf(ControlPtr(newControl()).get());
    const std::vector<Chunk> defaultChunks = ChunksOf(defaults);
    for (std::size_t skip = 0; skip < chunks.size(); ++skip) {
        CAPTURE(chunks[skip].id);
        std::vector<Chunk> without = chunks;
        without.erase(without.begin() + skip);
        ControlPtr loaded(newControl());
        ChunkLoad in;
        const Bytes file = Join(without);
        in.SetBytes(file.data(), file.size());
        REQUIRE(loaded->Load(&in) == IO_OK);
        // Saved again before the post-load step, so the curve slots stay as loaded: the
        // chunk that was left out comes back as a new control's, every other as saved.
        std::vector<Chunk> again = ChunksOf(SaveOf(loaded.get()));
        REQUIRE(again.size() == chunks.size());
        for (std::size_t i = 0; i < chunks.size(); ++i)
            CHECK(again[i].payload == (i == skip ? defaultChunks[i].payload : chunks[i].payload));
        in.RunPostLoadCallbacks();
    }
    // For example, a file without 0x046A keeps the flags 0x3FFFF.
    std::vector<Chunk> noFlags = chunks;
    noFlags.erase(noFlags.begin() + 8);
    ControlPtr loaded(newControl());
    REQUIRE(LoadInto(loaded.get(), Join(noFlags)) == IO_OK);
    CHECK(loaded->GetControlFlags() == 0x3FFFFu);
}

TEST_CASE_FIXTURE(CoreFixture, "Control load: the placement comes back only when it was saved") {
    CurveControl never;
    ControlPtr a(newControl());
    REQUIRE(LoadInto(a.get(), SaveOf(&never)) == IO_OK);
    WINDOWPLACEMENT wp{};
    CHECK_FALSE(a->SavedPlacement(wp));

    CurveControl closedOnce;
    closedOnce.StorePlacement(samplePlacement());
    ControlPtr b(newControl());
    REQUIRE(LoadInto(b.get(), SaveOf(&closedOnce)) == IO_OK);
    REQUIRE(b->SavedPlacement(wp));
    const WINDOWPLACEMENT expected = samplePlacement();
    CHECK(std::memcmp(&wp, &expected, sizeof(wp)) == 0);
}

// ---------------------------------------------------------------------------------------
// Damaged data

TEST_CASE_FIXTURE(CoreFixture, "Control load: negative and huge curve counts are read errors") {
    for (int32_t n : {-1, int32_t(0x80000000), 0x7FFFFFFF, CURVECTL_MAX_COUNT + 1}) {
        CAPTURE(n);
        const Bytes file = Cat({MakeChunk(0x046A, LE(uint32_t(5))), MakeChunk(0x042E, LE(n)),
                                MakeChunk(0x0474, LE(3))});
        ControlPtr loaded(newControl());
        CHECK(LoadInto(loaded.get(), file) == IO_ERROR);
        CHECK(loaded->GetCurveCount() == 0);
        CHECK(loaded->GetControlFlags() == 5u); // read before the error
        CHECK(loaded->GetToolMode() == 0);      // never reached
    }
}

TEST_CASE_FIXTURE(CoreFixture, "Control load: chunks cut short end the load with the read error") {
    ControlPtr loaded(newControl());
    SUBCASE("zoom cut after the horizontal value") {
        CHECK(LoadInto(loaded.get(), MakeChunk(0x0406, LE(3.0f))) == IO_ERROR);
        // The field read before the error keeps its loaded value; the rest their defaults.
        CurveControl fresh;
        const std::vector<Chunk> chunks = ChunksOf(SaveOf(loaded.get()));
        CHECK(chunks[3].payload == LE(3.0f, 0.0f, 0));
    }
    SUBCASE("a placement of 40 bytes") {
        Bytes shortPlacement = LE(44, 2, 1, -1, -2, 3, 4, 10, 20, 610);
        CHECK(LoadInto(loaded.get(), MakeChunk(0x041A, shortPlacement)) == IO_ERROR);
        WINDOWPLACEMENT wp{};
        CHECK_FALSE(loaded->SavedPlacement(wp));
    }
    SUBCASE("a title without its terminator") {
        CHECK(LoadInto(loaded.get(), MakeChunk(0x0456, Bytes{'a', 'b'})) == IO_ERROR);
        CHECK(std::string(loaded->Title()) == "Curve Control");
    }
    SUBCASE("shown curves whose count its chunk cannot hold") {
        CHECK(LoadInto(loaded.get(), MakeChunk(0x03F2, LE(1 << 20, 0xFF))) == IO_ERROR);
        CHECK(loaded->GetShownCurves().GetSize() == 32);
    }
    SUBCASE("a client object id cut short") {
        CHECK(LoadInto(loaded.get(), MakeChunk(0x044C, Bytes{1, 0})) == IO_ERROR);
        CHECK(loaded->Client() == nullptr);
    }
    SUBCASE("a header whose size runs past the end") {
        Bytes file = MakeChunk(0x0474, LE(2));
        file[2] = 0xFF;
        CHECK(LoadInto(loaded.get(), file) == IO_ERROR);
        CHECK(loaded->GetToolMode() == 0);
    }
}

TEST_CASE_FIXTURE(CoreFixture, "Control load: a read failure at every read") {
    CurveControl original;
    fillSample(original);
    testsupport::FakeClient client;
    original.RegisterClientObject(&client);
    const Bytes bytes = SaveOf(&original, refIDs, &client);
    int failures = 0;
    for (int n = 1;; ++n) {
        CAPTURE(n);
        ChunkLoad inner(bytes.data(), bytes.size());
        testsupport::FailingLoad in(inner, n);
        ControlPtr loaded(newControl());
        const IOResult r = loaded->Load(&in);
        inner.ResolveBackpatches(nullptr, nullptr);
        inner.RunPostLoadCallbacks();
        if (!in.Failed()) {
            CHECK(r == IO_OK);
            checkSameSettings(*loaded, original);
            break;
        }
        ++failures;
        CHECK(r == IO_ERROR);
    }
    // Twelve chunks opened and the last open; then the values: legacy 1, shown curves 2
    // (count, one word), fly-off 1, zoom 3, scroll 3, placement 2, count 1, ranges 4,
    // flags 1, tool mode 1, client id 1, title 1.
    CHECK(failures == 13 + 1 + 2 + 1 + 3 + 3 + 2 + 1 + 4 + 1 + 1 + 1 + 1);
}

TEST_CASE_FIXTURE(CoreFixture, "Control load: every truncation and corruption of a saved control") {
    CurveControl original;
    fillSample(original);
    const Bytes bytes = SaveOf(&original);
    for (std::size_t len = 0; len < bytes.size(); ++len) {
        ControlPtr loaded(newControl());
        const IOResult r = LoadInto(loaded.get(), Bytes(bytes.begin(), bytes.begin() + len));
        CHECK((r == IO_OK || r == IO_ERROR));
    }
    for (std::size_t i = 0; i < bytes.size(); ++i) {
        for (unsigned char v : {0x00, 0xFF, 0x80, 0x7F}) {
            Bytes b = bytes;
            b[i] = v;
            ControlPtr loaded(newControl());
            const IOResult r = LoadInto(loaded.get(), b);
            CHECK((r == IO_OK || r == IO_ERROR));
            for (int c = 0; c < loaded->GetCurveCount(); ++c)
                CHECK(loaded->GetCurve(c) != nullptr);
        }
    }
}

// A control's own chunks never hold its curves: the host restores them from the reference
// ids that follow in a scene. A control saved alone, and loaded from a stream that holds
// only its own chunks, still loads its count; the post-load step gives every slot the host
// did not fill a new curve. (regression-count-without-refs.chunks in the corpus of
// fuzz_control_load is such a stream, cut short after its title.)
TEST_CASE_FIXTURE(CoreFixture, "Control load: a control saved alone loads its curves") {
    for (int n : {3, 32, 100}) {
        CAPTURE(n);
        CurveControl original;
        original.SetCurveCount(n, FALSE);
        const Bytes own = SaveOf(&original);
        ControlPtr alone(newControl());
        CHECK(LoadInto(alone.get(), own) == IO_OK);
        REQUIRE(alone->GetCurveCount() == n);
        for (int i = 0; i < n; ++i) {
            REQUIRE(alone->GetCurve(i) != nullptr);
            CHECK(alone->GetCurve(i)->PointCount() == 2);
        }

        // Followed by what a scene writes after it (a count and one id per curve), it loads
        // the same.
        Bytes withIds = own;
        const Bytes ids = MakeChunk(SCENE_CHUNK_OBJECT_REFS, Bytes(4 + 4 * std::size_t(n), 0xFF));
        withIds.insert(withIds.end(), ids.begin(), ids.end());
        ChunkLoad in(withIds.data(), withIds.size());
        ControlPtr followed(newControl());
        CHECK(followed->Load(&in) == IO_OK);
        CHECK(followed->GetCurveCount() == n);
        in.RunPostLoadCallbacks();
    }
}

TEST_CASE_FIXTURE(CoreFixture, "Control load: the count limit is CURVECTL_MAX_COUNT") {
    for (int32_t n : {CURVECTL_MAX_COUNT, CURVECTL_MAX_COUNT + 1}) {
        CAPTURE(n);
        ControlPtr loaded(newControl());
        const IOResult r = LoadInto(loaded.get(), MakeChunk(0x042E, LE(n)));
        if (n == CURVECTL_MAX_COUNT) {
            CHECK(r == IO_OK);
            REQUIRE(loaded->GetCurveCount() == n);
            CHECK(loaded->GetCurve(n - 1) != nullptr);
        } else {
            CHECK(r == IO_ERROR);
            CHECK(loaded->GetCurveCount() == 0);
        }
    }
}

namespace {
/// A stream that cannot tell how many bytes it has left, as a foreign host's may be.
class UnsizedLoad : public testsupport::FailingLoad {
public:
    explicit UnsizedLoad(ILoad& inner) : FailingLoad(inner, 0) {}
    ULONG ChunkBytesLeft() override { return ILOAD_SIZE_UNKNOWN; }
    ULONG StreamBytesLeft() override { return ILOAD_SIZE_UNKNOWN; }
};
} // namespace

TEST_CASE_FIXTURE(CoreFixture, "Control load: a stream without sizes still bounds the count") {
    for (int32_t n : {4, (1 << 16) + 1}) {
        CAPTURE(n);
        const Bytes file = MakeChunk(0x042E, LE(n));
        ChunkLoad inner(file.data(), file.size());
        UnsizedLoad in(inner);
        ControlPtr loaded(newControl());
        const IOResult r = loaded->Load(&in);
        inner.RunPostLoadCallbacks();
        CHECK(r == (n == 4 ? IO_OK : IO_ERROR));
        CHECK(loaded->GetCurveCount() == (n == 4 ? 4 : 0));
    }
}

TEST_CASE_FIXTURE(CoreFixture, "Control load: registers its post-load step before reading") {
    struct RecordingLoad : testsupport::FailingLoad {
        explicit RecordingLoad(ILoad& inner) : FailingLoad(inner, 0) {}
        void RegisterPostLoadCallback(PostLoadCallback* cb) override {
            registeredAfterReads.push_back(Calls());
            FailingLoad::RegisterPostLoadCallback(cb);
        }
        std::vector<int> registeredAfterReads;
    };
    CurveControl original;
    fillSample(original);
    const Bytes bytes = SaveOf(&original);
    ChunkLoad inner(bytes.data(), bytes.size());
    RecordingLoad in(inner);
    ControlPtr loaded(newControl());
    REQUIRE(loaded->Load(&in) == IO_OK);
    CHECK(in.registeredAfterReads == std::vector<int>{0});
    inner.RunPostLoadCallbacks(); // one-shot: it deletes itself
}
