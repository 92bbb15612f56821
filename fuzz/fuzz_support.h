// What the loader fuzzers share: the one-time set-up of the host state a module expects,
// the save that every round trip starts from, and the check that stops a run.
//
// Each fuzzer loads its input, then saves what it loaded, loads that and saves again:
// the two saves must be the same bytes (the saved form of anything loaded is stable).
// Objects with references (a control and its curves) make that trip in a scene.
// A difference, like any crash or sanitizer report, ends the run with the input kept.
#pragma once

#include "host/class_desc.h"
#include "host/scene.h"
#include "plugin/class_descs.h"
#include "plugin/platform.h"

#include <cstdio>
#include <cstdlib>
#include <cstring>
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

inline Bytes SaveOf(ReferenceMaker* object) {
    ChunkSave out;
    object->Save(&out);
    if (out.Status() != IO_OK)
        Fail("a saver broke the chunk rules");
    return Bytes(out.Data(), out.Data() + out.Size());
}

/// A scene of one root.
inline Bytes SaveSceneOf(ReferenceTarget* root) {
    ChunkSave out;
    Expect(SaveScene(&root, 1, out) == IO_OK, "a loaded object saves in a scene");
    return Bytes(out.Data(), out.Data() + out.Size());
}

} // namespace fuzzsupport
