// The sample client as the host sees it: a plug-in module with one class, ColourCurves,
// found through the same five exported functions as every plug-in module.
#include "client_module.h"
#include "colour_curves.h"
#include "host/class_desc.h"

#include <new>

namespace {

HINSTANCE instance = nullptr; // set on process attach

class ColourCurvesClassDesc : public ClassDesc {
public:
    int IsPublic() override { return 1; }
    void* Create(BOOL loading) override {
        // A view effect is a ReferenceTarget first: the host reads the pointer as one.
        ReferenceTarget* made = new (std::nothrow) ColourCurves(loading);
        return made;
    }
    const char* ClassName() override { return "Colour Curves"; }
    SClass_ID SuperClassID() override { return VIEW_EFFECT_SUPER_CLASS_ID; }
    Class_ID ClassID() override { return COLOUR_CURVES_CLASS_ID; }
    const char* Category() override { return "Samples"; }
};

ColourCurvesClassDesc colourCurvesDesc;

} // namespace

HINSTANCE ClientInstance() { return instance; }

extern "C" BOOL WINAPI DllMain(HINSTANCE inst, DWORD reason, LPVOID) {
    if (reason == DLL_PROCESS_ATTACH) {
        instance = inst;
        DisableThreadLibraryCalls(inst);
    }
    return TRUE;
}

extern "C" {

const char* LibDescription() { return "Colour Curves (sample client of the curve control)"; }

int LibNumberClasses() { return 1; }

ClassDesc* LibClassDesc(int i) { return i == 0 ? &colourCurvesDesc : nullptr; }

/// The host's plug-in version constant for the release this module is built for.
unsigned long LibVersion() { return 0x2AF81900UL; }

/// The host may not defer loading: the class is needed at start-up.
int CanAutoDefer() { return 0; }
}
