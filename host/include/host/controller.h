// Controllers: animatable values. A point of a curve may own a Point3 controller that
// gives its position at each time.
#pragma once

#include "host/animatable.h"
#include "host/export.h"
#include "host/geom.h"
#include "host/interval.h"

enum GetSetMethod { CTRL_ABSOLUTE, CTRL_RELATIVE };

class HOST_API Control : public ReferenceTarget {
public:
    /// The value at t (for a Point3 controller `val` is a Point3*). `valid` is narrowed to
    /// the times at which the value stays the same.
    virtual void GetValue(TimeValue t, void* val, Interval& valid,
                          GetSetMethod method = CTRL_ABSOLUTE) = 0;
    /// Sets the value at t. In animate mode this creates or sets a key at t. Outside it, a
    /// controller without keys takes the value as its constant, a set at a key's time
    /// edits that key, and a set at any other time shifts every key by the change.
    virtual void SetValue(TimeValue t, void* val, int commit = 1,
                          GetSetMethod method = CTRL_ABSOLUTE) = 0;
    virtual int NumKeys() { return 0; }
    virtual TimeValue GetKeyTime(int) { return 0; }
};

/// A new keyframed Point3 controller (linear between keys, constant outside them).
HOST_API Control* NewDefaultPoint3Controller();
/// Its class, built in: the class directory knows it from the start.
#define POINT3_KEY_CONTROL_CLASS_ID Class_ID(0x118f7e02, 0xffee238a)
class ClassDesc;
HOST_API ClassDesc* GetPoint3ControllerClassDesc();

/// Animate mode.
HOST_API BOOL Animating();
HOST_API void AnimateOn();
HOST_API void AnimateOff();
/// Suspends animate mode until the matching ResumeAnimate (nestable).
HOST_API void SuspendAnimate();
HOST_API void ResumeAnimate();
