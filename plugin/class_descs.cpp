#include "plugin/class_descs.h"

#include "control/curve_control.h"
#include "curve/curve.h"
#include "platform/res_string.h"

#include <new>

namespace {
// Allocation failure comes back as null: nothing may be thrown across to the host. A
// nothrow new covers only the object's own block; the constructors allocate as well
// (reference bookkeeping, bit arrays, strings, the evaluation cache) and report failure
// by throwing, so the whole construction is guarded.
template <class T, class... Args> void* createOrNull(Args... args) noexcept {
    try {
        return new T(args...);
    } catch (...) {
        return nullptr;
    }
}
} // namespace

void* DefCurveClassDesc::Create(BOOL) { return createOrNull<Curve>(nullptr, 0); }
void* CurveControlClassDesc::Create(BOOL) { return createOrNull<CurveControl>(); }
const char* CurveControlClassDesc::ClassName() { return GetResString(IDS_CLASS_NAME); }

namespace {
// Static objects: constructed when the module loads, destroyed when it unloads.
DefCurveClassDesc curveDesc;
CurveControlClassDesc curveControlDesc;
} // namespace

ClassDesc* GetCurveControlClassDesc() { return &curveControlDesc; }
ClassDesc* GetDefCurveClassDesc() { return &curveDesc; }

extern "C" {

const char* LibDescription() { return GetResString(IDS_LIB_DESCRIPTION); }

int LibNumberClasses() { return 2; }

// Index 0 is the control although Curve is declared first: hosts and saved scenes
// expect this order.
ClassDesc* LibClassDesc(int i) {
    switch (i) {
    case 0:
        return &curveControlDesc;
    case 1:
        return &curveDesc;
    default:
        return nullptr;
    }
}

unsigned long LibVersion() { return CURVECTL_LIB_VERSION; }

int CanAutoDefer() { return 1; }
}
