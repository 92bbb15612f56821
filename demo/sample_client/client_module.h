// The sample client's module-wide facts: its instance handle and its class.
#pragma once

#include "host/animatable.h"
#include "host/win_types.h"

/// The class id of ColourCurves, the sample client's one class. Saved scenes name the
/// class by it, so it never changes.
#define COLOUR_CURVES_CLASS_ID Class_ID(0x6C0F3A21, 0x2B8E4D17)

/// The client DLL's instance handle (its window classes are registered with it).
HINSTANCE ClientInstance();
