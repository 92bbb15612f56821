// A small host: loads the curve control module as the host application does (LoadLibrary
// and its exported Lib* functions, through the class directory), lists its classes,
// creates a curve control, shapes its curves and prints a few values.
#include "curvectl/icurvectl.h"
#include "host/class_desc.h"
#include "host/core_interface.h"
#include "host/hold.h"

#include <cstdio>

namespace {

const char* orEmpty(const char* s) { return s ? s : ""; }

void printCurve(ICurve* curve, const char* name) {
    std::printf("  %s:", name);
    for (float x = 0.0f; x <= 1.0001f; x += 0.25f) {
        Interval valid = FOREVER;
        std::printf("  f(%.2f) = %.4f", x, curve->ValueAt(0, x, valid, FALSE));
    }
    std::printf("\n");
}

}  // namespace

int main(int argc, char** argv) {
    const char* module = argc > 1 ? argv[1] : "curvectl.dll";
    ClassDirectory& dir = ClassDirectory::Get();
    const int added = dir.LoadPlugin(module);
    if (added < 0) {
        std::fprintf(stderr, "demo_host: could not load %s as a plug-in module\n", module);
        return 1;
    }
    std::printf("Loaded %s: \"%s\", %d classes\n", module, orEmpty(dir.PluginDescription(0)),
                added);
    for (int i = 0; i < dir.Count(); ++i) {
        ClassDesc* cd = dir.ClassAt(i);
        std::printf("  class %d: name \"%s\", super class 0x%X, class id (0x%08X, 0x%08X), %s\n",
                    i, orEmpty(cd->ClassName()), unsigned(cd->SuperClassID()),
                    unsigned(cd->ClassID().PartA()), unsigned(cd->ClassID().PartB()),
                    cd->IsPublic() ? "public" : "not public");
    }

    ClassDesc* desc = dir.FindClass(CURVE_CONTROL_SUPER_CLASS_ID, CURVE_CONTROL_CLASS_ID);
    auto* control = desc ? static_cast<ICurveCtl*>(desc->Create(FALSE)) : nullptr;
    if (!control) {
        std::fprintf(stderr, "demo_host: the module has no curve control class\n");
        return 1;
    }

    control->SetCurveCount(2);
    control->SetXRange(0.0f, 1.0f, FALSE);
    control->SetYRange(0.0f, 1.0f);
    control->SetTitle("Demo curves");

    // Curve 0: a straight ramp. Curve 1: an ease-in-out S with Bezier tangents.
    ICurve* ramp = control->GetCurve(0);
    ramp->SetPointCount(2);
    ramp->SetKnot(0, 0, CurveKnot(Point2(0.0f, 0.0f), Point2(), Point2(), KNOT_CORNER | KNOT_ENDPOINT));
    ramp->SetKnot(0, 1, CurveKnot(Point2(1.0f, 1.0f), Point2(), Point2(), KNOT_CORNER | KNOT_ENDPOINT));

    ICurve* ease = control->GetCurve(1);
    ease->SetPointCount(2);
    ease->SetKnot(0, 0,
                  CurveKnot(Point2(0.0f, 0.0f), Point2(), Point2(0.4f, 0.0f),
                            KNOT_BEZIER | KNOT_CORNER | KNOT_ENDPOINT),
                  FALSE);
    ease->SetKnot(0, 1,
                  CurveKnot(Point2(1.0f, 1.0f), Point2(-0.4f, 0.0f), Point2(),
                            KNOT_BEZIER | KNOT_CORNER | KNOT_ENDPOINT),
                  FALSE);

    std::printf("Curve control \"%s\" with %d curves, x range %.1f .. %.1f\n", "Demo curves",
                control->GetCurveCount(), control->GetXRange().x, control->GetXRange().y);
    printCurve(ramp, "ramp");
    printCurve(ease, "ease");

    theHold.Reset();
    control->DeleteThis();
    return 0;
}
