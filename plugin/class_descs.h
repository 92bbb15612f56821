// The module's two class descriptors and its exported entry points.
#pragma once

#include "curvectl/icurvectl.h"
#include "host/class_desc.h"

/// Descriptor of Curve: not public, created by the host only while it loads a scene.
class DefCurveClassDesc : public ClassDesc {
public:
    int IsPublic() override { return 0; }
    void* Create(BOOL loading = FALSE) override;
    const char* ClassName() override { return ""; }
    SClass_ID SuperClassID() override { return CURVE_CONTROL_SUPER_CLASS_ID; }
    Class_ID ClassID() override { return CURVE_CLASS_ID; }
    const char* Category() override { return ""; }
};

/// Descriptor of CurveControl: public, created by clients.
class CurveControlClassDesc : public ClassDesc {
public:
    int IsPublic() override { return 1; }
    void* Create(BOOL loading = FALSE) override;
    const char* ClassName() override;
    SClass_ID SuperClassID() override { return CURVE_CONTROL_SUPER_CLASS_ID; }
    Class_ID ClassID() override { return CURVE_CONTROL_CLASS_ID; }
    const char* Category() override { return ""; }
};

ClassDesc* GetCurveControlClassDesc();
ClassDesc* GetDefCurveClassDesc();

/// The host's plug-in version constant for the release this module is built for.
#define CURVECTL_LIB_VERSION 0x2AF81900UL

extern "C" {
const char* LibDescription();
int LibNumberClasses();
ClassDesc* LibClassDesc(int i);
unsigned long LibVersion();
int CanAutoDefer();
}
