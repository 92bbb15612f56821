// What the loader fuzzers share: the one-time set-up of the host state a module expects,
// saving, and the round-trip check that stops a run.
//
// Each fuzzer loads its input, saves what it loaded and loads that again: the second load
// must equal the first. Every field is compared exactly, except a curve's handles: the file
// stores a handle as an absolute position (position + tangent) and a load subtracts the
// position again, which can round by one unit in the last place where the handle and its
// point lie in different binades (found by fuzz_curve_load: regression test
// "Curve load: a handle near a power of two reloads within rounding"). A difference, like any
// crash or sanitizer report, ends the run with the input kept.
#pragma once

#include "control/curve_control.h"
#include "host/class_desc.h"
#include "host/scene.h"
#include "platform/platform.h"
#include "plugin/class_descs.h"

#include <cmath>
#include <cstdio>
#include <cstdlib>
#include <vector>

namespace fuzzsupport {

using Bytes = std::vector<unsigned char>;

/// Module instance set (string resources load) and the module's classes registered.
inline void InitOnce() {
    static const bool done = [] {
        static int instanceToken;
        platform::SetModuleInstance(reinterpret_cast<HINSTANCE>(&instanceToken));
        for (int i = 0; i < LibNumberClasses(); ++i)
            ClassDirectory::Get().AddClass(LibClassDesc(i));
        return true;
    }();
    (void)done;
}

[[noreturn]] inline void Fail(const char* what) {
    std::fprintf(stderr, "fuzz check failed: %s\n", what);
    std::abort();
}

inline void Expect(bool condition, const char* what) {
    if (!condition)
        Fail(what);
}

/// An object's own chunks.
inline Bytes SaveOf(ReferenceMaker* object) {
    ChunkSave out;
    object->Save(&out);
    Expect(out.Status() == IO_OK, "a saver keeps the chunk rules");
    return Bytes(out.Data(), out.Data() + out.Size());
}

/// A scene of one root.
inline Bytes SaveSceneOf(ReferenceTarget* root) {
    ChunkSave out;
    Expect(SaveScene(&root, 1, out) == IO_OK, "a loaded object saves in a scene");
    return Bytes(out.Data(), out.Data() + out.Size());
}

inline bool sameBits(float a, float b) { return std::memcmp(&a, &b, sizeof(a)) == 0; }

/// Tangent `t2` is what a save and load made of tangent `t1` of a point at `p`: equal, or
/// off by the rounding of (p + t1) - p, which is at most an ulp of the larger magnitude.
inline bool sameTangent(float p, float t1, float t2) {
    const float handle = p + t1;
    if (!std::isfinite(p) || !std::isfinite(handle))
        return true; // infinities and NaN come back as NaN: nothing to compare
    if (sameBits(t1, t2))
        return true;
    const float m = std::fmax(std::fabs(p), std::fabs(handle));
    const float ulp = std::nextafter(m, INFINITY) - m;
    return std::fabs(t2 - t1) <= 2.0f * ulp;
}

inline void ExpectSameCurve(Curve& a, Curve& b) {
    Expect(a.PointCount() == b.PointCount(), "point count");
    for (int i = 0; i < a.PointCount() && a.Knots() && b.Knots(); ++i) {
        const CurveKnot& x = a.Knots()[i];
        const CurveKnot& y = b.Knots()[i];
        Expect(sameBits(x.pos.x, y.pos.x) && sameBits(x.pos.y, y.pos.y), "point position");
        Expect(x.flags == y.flags, "point flags");
        Expect(sameTangent(x.pos.x, x.inTan.x, y.inTan.x) &&
                   sameTangent(x.pos.y, x.inTan.y, y.inTan.y) &&
                   sameTangent(x.pos.x, x.outTan.x, y.outTan.x) &&
                   sameTangent(x.pos.y, x.outTan.y, y.outTan.y),
               "tangents within rounding");
        Expect((a.Controller(i) != nullptr) == (b.Controller(i) != nullptr), "animated points");
        if (a.Controller(i) && b.Controller(i))
            Expect(SaveOf(a.Controller(i)) == SaveOf(b.Controller(i)), "point controller");
    }
    Expect(a.CurveFlags() == b.CurveFlags(), "curve flags");
    COLORREF ca, cb;
    int wa, wb, sa, sb;
    a.GetPen(ca, wa, sa);
    b.GetPen(cb, wb, sb);
    Expect(ca == cb && wa == wb && sa == sb, "pen");
    a.GetDisabledPen(ca, wa, sa);
    b.GetDisabledPen(cb, wb, sb);
    Expect(ca == cb && wa == wb && sa == sb, "disabled pen");
    Expect(a.IsAnimatable() == b.IsAnimatable(), "animatable flag");
}

/// Two loads of one saved object: controls with their curves, curves, or anything else by
/// its own chunks.
inline void ExpectSameObject(ReferenceTarget* a, ReferenceTarget* b) {
    Expect((a == nullptr) == (b == nullptr), "the same objects");
    if (!a)
        return;
    if (auto* ca = dynamic_cast<CurveControl*>(a)) {
        auto* cb = dynamic_cast<CurveControl*>(b);
        Expect(cb != nullptr, "the same class");
        Expect(SaveOf(ca) == SaveOf(cb), "control settings");
        for (int i = 0; i < ca->GetCurveCount(); ++i) {
            Expect(ca->GetCurveObject(i) && cb->GetCurveObject(i), "a curve in every slot");
            ExpectSameCurve(*ca->GetCurveObject(i), *cb->GetCurveObject(i));
        }
    } else if (auto* cva = dynamic_cast<Curve*>(a)) {
        auto* cvb = dynamic_cast<Curve*>(b);
        Expect(cvb != nullptr, "the same class");
        ExpectSameCurve(*cva, *cvb);
    } else {
        Expect(SaveOf(a) == SaveOf(b), "the same chunks");
    }
}

} // namespace fuzzsupport
