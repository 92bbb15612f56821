// SceneRoots and SceneReport: what a loaded scene hands to its caller.
#include "host/hold.h"
#include "host/scene.h"

#include <cstdarg>
#include <cstdio>
#include <cstring>
#include <string>
#include <vector>

// ---------------------------------------------------------------------------------------
// SceneRoots

// The base destructor detaches from every root and deletes the ones nothing else holds;
// it records nothing on theHold, so releasing a scene is never an undo step.
SceneRoots::~SceneRoots() = default;

ReferenceTarget* SceneRoots::Get(int i) const {
    return (i >= 0 && i < roots_.Count()) ? roots_[i] : nullptr;
}

void SceneRoots::Add(ReferenceTarget* target) {
    if (!target)
        return;
    ReferenceTarget* none = nullptr;
    const int i = roots_.Append(1, &none);
    if (i < 0)
        return;        // the table cannot grow
    theHold.Suspend(); // holding a scene's objects is not an edit
    ReplaceReference(i, target, FALSE);
    theHold.Resume();
}

void SceneRoots::Clear() {
    // Released without undo records: the caller gives the objects up for good.
    theHold.Suspend();
    DeleteAllRefsFromMe();
    theHold.Resume();
    roots_.Resize(0);
}

void SceneRoots::SetReference(int i, RefTargetHandle target) {
    if (i >= 0 && i < roots_.Count())
        roots_[i] = target;
}

// ---------------------------------------------------------------------------------------
// SceneReport

struct SceneReport::Impl {
    std::vector<std::string> messages; // oldest first
};

SceneReport::SceneReport() : impl_(new Impl), obsolete_(false) {}
SceneReport::~SceneReport() { delete impl_; }

int SceneReport::Count() const { return int(impl_->messages.size()); }

const char* SceneReport::Message(int i) const {
    if (i < 0 || i >= Count())
        return "";
    return impl_->messages[i].c_str();
}

void SceneReport::Add(const char* format, ...) {
    char text[512];
    va_list args;
    va_start(args, format);
    std::vsnprintf(text, sizeof(text), format ? format : "", args);
    va_end(args);
    impl_->messages.emplace_back(text);
}

bool SceneReport::Contains(const char* text) const {
    for (const std::string& m : impl_->messages)
        if (m.find(text ? text : "") != std::string::npos)
            return true;
    return false;
}

void SceneReport::Clear() {
    impl_->messages.clear();
    obsolete_ = false;
}
