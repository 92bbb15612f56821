// Round trips of whole scenes of random curve controls: save, load in a fresh process (this
// test program started again), save again: the two files are byte for byte the same; and
// loaded here once more, every curve evaluates exactly as the original does.
//
// Property: save(load(save(x))) == save(x), and ValueAt of load(save(x)) == ValueAt of x,
// for controls with 1 to 40 curves of 0 to 200 points, animated points with keys, and
// random values of every flag word, range and view setting.
#include "scene_test_util.h"
#include "test_support.h"

#include <doctest/doctest.h>

#include <cmath>
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <random>
#include <string>

#if defined(_WIN32)
#include <windows.h>
#else
#include <spawn.h>
#include <sys/wait.h>
#include <unistd.h>
extern char** environ;
#endif

using namespace scenetest;
using iotest::Bytes;

namespace {

const char* const kChildVariable = "CURVECTL_SCENE_CHILD";
const char* const kChildCase = "Scene round trip: the second process loads and saves again";

/// Random values on a grid of 1/64: positions, handles and their sums stay exact in single
/// precision, so a handle saved as an absolute position and loaded back by subtraction is
/// the same float. (With arbitrary floats the subtraction can round; the file format does
/// that by design, and the curve tests check it within rounding.)
struct Random {
    explicit Random(uint32_t seed) : rng(seed) {}
    int Int(int lo, int hi) { return std::uniform_int_distribution<int>(lo, hi)(rng); }
    uint32_t Bits() { return uint32_t(rng()); }
    bool Chance(int percent) { return Int(0, 99) < percent; }
    float Grid(int lo, int hi) { return float(Int(lo * 64, hi * 64)) / 64.0f; }

    std::mt19937 rng;
};

void fillCurve(Curve& c, Random& r, float xlo, float xhi) {
    const int n = r.Int(0, 200);
    c.SetPointCount(n);
    for (int i = 0; i < n; ++i) {
        CurveKnot& k = c.Knots()[i];
        const float x = n == 1 ? xlo : xlo + (xhi - xlo) * float(i) / float(n - 1);
        k.pos = Point2(std::round(x * 64.0f) / 64.0f, r.Grid(-100, 100));
        k.inTan = Point2(r.Grid(-4, 0), r.Grid(-50, 50));
        k.outTan = Point2(r.Grid(0, 4), r.Grid(-50, 50));
        k.flags = r.Bits(); // every bit, meaningful or not, must survive
    }
    c.InvalidateCache();
    c.SetPen(r.Bits() & 0xFFFFFF, r.Int(0, 8), r.Int(0, 6));
    c.SetDisabledPen(r.Bits() & 0xFFFFFF, r.Int(0, 8), r.Int(0, 6));
    c.SetCurveFlags(r.Bits());
    if (r.Chance(10))
        c.SetLookupSize(r.Int(2, 3000)); // not saved: loads as 1000
    if (r.Chance(15)) {
        c.SetAnimatable(FALSE);
        return;
    }
    for (int i = 0; i < n; ++i) {
        if (!r.Chance(8))
            continue;
        Control* ctrl = NewDefaultPoint3Controller();
        c.ReplaceReference(i, ctrl);
        Point3 v(c.Knots()[i].pos.x, c.Knots()[i].pos.y, 0.0f);
        ctrl->SetValue(0, &v); // the constant value, outside animate mode
        const int keys = r.Int(0, 5);
        AnimateOn();
        for (int k = 0; k < keys; ++k) {
            Point3 kv(r.Grid(-10, 10), r.Grid(-100, 100), r.Grid(-1, 1));
            ctrl->SetValue(r.Int(-4800, 4800), &kv);
        }
        AnimateOff();
    }
}

CurveControl* randomControl(Random& r) {
    auto* c = static_cast<CurveControl*>(
        static_cast<Animatable*>(GetCurveControlClassDesc()->Create(FALSE)));
    const float xlo = r.Grid(-100, 100);
    const float xhi = xlo + r.Grid(1, 200);
    c->SetXRange(xlo, xhi, FALSE);
    const float ylo = r.Grid(-100, 100);
    c->SetYRange(ylo, ylo + r.Grid(0, 100));
    c->SetCurveCount(r.Int(1, 40), FALSE);
    for (int i = 0; i < c->GetCurveCount(); ++i)
        fillCurve(*c->GetCurveObject(i), r, xlo, xhi);
    BitArray shown(r.Int(0, 70));
    for (int i = 0; i < shown.GetSize(); ++i)
        shown.Set(i, r.Chance(50));
    c->SetShownCurves(shown);
    c->SetControlFlags(r.Bits());
    c->SetToolMode(r.Int(-2, 8));
    c->SetZoomFlyOff(r.Int(0, 3));
    if (r.Chance(70))
        c->SetZoomState(r.Grid(0, 1000), r.Grid(0, 1000));
    if (r.Chance(70))
        c->SetScrollState(r.Int(-5000, 5000), r.Int(-5000, 5000));
    if (r.Chance(50)) {
        WINDOWPLACEMENT wp{};
        wp.flags = r.Bits();
        wp.showCmd = r.Bits();
        wp.ptMinPosition = {r.Int(-9999, 9999), r.Int(-9999, 9999)};
        wp.ptMaxPosition = {r.Int(-9999, 9999), r.Int(-9999, 9999)};
        wp.rcNormalPosition = {r.Int(-9999, 0), r.Int(-9999, 0), r.Int(0, 9999), r.Int(0, 9999)};
        c->StorePlacement(wp);
    }
    std::string title;
    for (int i = r.Int(0, 40); i > 0; --i)
        title += char(r.Int(1, 255)); // any byte but the terminator
    c->SetTitle(title.c_str());
    return c;
}

bool sameFloat(float a, float b) {
    return std::memcmp(&a, &b, sizeof(a)) == 0 || (std::isnan(a) && std::isnan(b));
}

/// Every curve of `loaded` answers as the same curve of `original`, at times around every
/// key and at x across and beyond the range, with and without the lookup table.
void checkSameValues(CurveControl& loaded, CurveControl& original) {
    REQUIRE(loaded.GetCurveCount() == original.GetCurveCount());
    const Point2 xr = original.GetXRange();
    for (int i = 0; i < original.GetCurveCount(); ++i) {
        CAPTURE(i);
        Curve* a = loaded.GetCurveObject(i);
        Curve* b = original.GetCurveObject(i);
        REQUIRE(a);
        REQUIRE(b);
        CHECK(a->Owner() == &loaded);
        CHECK(a->GetLookupSize() == 1000);
        REQUIRE(a->PointCount() == b->PointCount());
        std::vector<TimeValue> times = {0, -4800, 4800, 1234};
        for (int p = 0; p < b->PointCount(); ++p) {
            CHECK(a->IsPointAnimated(p) == b->IsPointAnimated(p));
            if (auto* ctrl = dynamic_cast<Control*>(b->Controller(p)))
                for (int k = 0; k < ctrl->NumKeys(); ++k)
                    times.push_back(ctrl->GetKeyTime(k) + 1);
        }
        for (TimeValue t : times) {
            for (int s = -2; s <= 22; ++s) {
                const float x = xr.x + (xr.y - xr.x) * float(s) / 20.0f;
                Interval va = FOREVER, vb = FOREVER;
                CHECK(sameFloat(a->ValueAt(t, x, va, FALSE), b->ValueAt(t, x, vb, FALSE)));
                CHECK(va == vb);
                if (b->GetLookupSize() == 1000)
                    CHECK(sameFloat(a->ValueAt(t, x, va, TRUE), b->ValueAt(t, x, vb, TRUE)));
            }
        }
    }
}

std::string tempName(const char* what) {
#if defined(_WIN32)
    const unsigned long pid = GetCurrentProcessId();
#else
    const unsigned long pid = (unsigned long)getpid();
#endif
    return "scene_roundtrip_" + std::to_string(pid) + "_" + what + ".scene";
}

Bytes readFile(const std::string& path) {
    Bytes b;
    std::FILE* f = std::fopen(path.c_str(), "rb");
    REQUIRE(f);
    unsigned char block[4096];
    for (std::size_t n; (n = std::fread(block, 1, sizeof(block), f)) > 0;)
        b.insert(b.end(), block, block + n);
    std::fclose(f);
    return b;
}

/// Runs this test program again with only the child case, `kChildVariable` set to
/// `value`; answers its exit code.
int runChild(const std::string& value) {
#if defined(_WIN32)
    char path[MAX_PATH];
    GetModuleFileNameA(nullptr, path, MAX_PATH);
    SetEnvironmentVariableA(kChildVariable, value.c_str());
    std::string cmd =
        std::string("\"") + path + "\" --no-skip=true \"--test-case=" + kChildCase + "\"";
    STARTUPINFOA si{};
    si.cb = sizeof(si);
    PROCESS_INFORMATION pi{};
    const BOOL started =
        CreateProcessA(nullptr, cmd.data(), nullptr, nullptr, FALSE, 0, nullptr, nullptr, &si, &pi);
    SetEnvironmentVariableA(kChildVariable, nullptr);
    if (!started)
        return -1;
    WaitForSingleObject(pi.hProcess, INFINITE);
    DWORD code = 1;
    GetExitCodeProcess(pi.hProcess, &code);
    CloseHandle(pi.hThread);
    CloseHandle(pi.hProcess);
    return int(code);
#else
    char path[4096];
    const ssize_t len = readlink("/proc/self/exe", path, sizeof(path) - 1);
    if (len <= 0)
        return -1;
    path[len] = '\0';
    setenv(kChildVariable, value.c_str(), 1);
    const std::string filter = std::string("--test-case=") + kChildCase;
    char noSkip[] = "--no-skip=true";
    char* argv[] = {path, noSkip, const_cast<char*>(filter.c_str()), nullptr};
    pid_t pid = 0;
    const int spawned = posix_spawn(&pid, path, nullptr, nullptr, argv, environ);
    unsetenv(kChildVariable);
    if (spawned != 0)
        return -1;
    int status = 0;
    if (waitpid(pid, &status, 0) != pid)
        return -1;
    return WIFEXITED(status) ? WEXITSTATUS(status) : -1;
#endif
}

struct SceneFixture : testsupport::CoreFixture {
    SceneFixture() { RegisterModuleClasses(); }
};

} // namespace

TEST_CASE_FIXTURE(SceneFixture, "Scene round trip: random controls, a second process, same bytes") {
    for (uint32_t seed : {1u, 2u, 3u, 4u}) {
        CAPTURE(seed);
        Random r(seed);
        SceneRoots originals;
        const int controls = r.Int(1, 3);
        for (int i = 0; i < controls; ++i)
            originals.Add(randomControl(r));
        std::vector<ReferenceTarget*> roots;
        for (int i = 0; i < originals.Count(); ++i)
            roots.push_back(originals.Get(i));

        const std::string first = tempName("first"), second = tempName("second");
        REQUIRE(SaveSceneFile(first.c_str(), roots.data(), int(roots.size())) == IO_OK);
        REQUIRE(runChild(first + "|" + second) == 0);
        const Bytes a = readFile(first), b = readFile(second);
        CHECK(a.size() == b.size());
        CHECK(a == b);

        SceneRoots loaded;
        SceneReport report;
        REQUIRE(LoadSceneFile(first.c_str(), loaded, &report) == IO_OK);
        CHECK(report.Count() == 0);
        REQUIRE(loaded.Count() == originals.Count());
        for (int i = 0; i < loaded.Count(); ++i) {
            auto* l = dynamic_cast<CurveControl*>(loaded.Get(i));
            auto* o = dynamic_cast<CurveControl*>(originals.Get(i));
            REQUIRE(l);
            REQUIRE(o);
            checkSameValues(*l, *o);
        }
        std::remove(first.c_str());
        std::remove(second.c_str());
    }
}

TEST_CASE_FIXTURE(SceneFixture, "Scene round trip: the same bytes in this process too") {
    Random r(99);
    SceneRoots originals;
    originals.Add(randomControl(r));
    const Bytes first = SaveSceneBytes({originals.Get(0)});
    SceneRoots loaded;
    REQUIRE(LoadSceneBytes(first, loaded) == IO_OK);
    CHECK(SaveSceneBytes({loaded.Get(0)}) == first);
}

TEST_CASE_FIXTURE(SceneFixture, kChildCase* doctest::skip()) {
    const char* value = std::getenv(kChildVariable);
    REQUIRE(value);
    const std::string paths = value;
    const std::size_t bar = paths.find('|');
    REQUIRE(bar != std::string::npos);
    SceneRoots roots;
    SceneReport report;
    REQUIRE(LoadSceneFile(paths.substr(0, bar).c_str(), roots, &report) == IO_OK);
    CHECK(report.Count() == 0);
    std::vector<ReferenceTarget*> list;
    for (int i = 0; i < roots.Count(); ++i)
        list.push_back(roots.Get(i));
    REQUIRE(SaveSceneFile(paths.substr(bar + 1).c_str(), list.data(), int(list.size())) == IO_OK);
}
