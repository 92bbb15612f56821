// SceneDoc: the demo host's scene. It holds the scene's view effect as its one reference,
// hears every change the effect reports, and saves and opens scene files.
#pragma once

#include "host/animatable.h"
#include "host/scene.h"
#include "host/view_effect.h"

#include <functional>
#include <string>

class SceneDoc : public ReferenceMaker {
public:
    /// `changed` runs whenever the effect reports a change (REFMSG_CHANGE).
    explicit SceneDoc(std::function<void()> changed);
    ~SceneDoc() override;

    /// The scene's effect (null in an empty scene).
    ViewEffect* Effect() const { return effect_; }
    /// Makes `effect` the scene's effect; the previous one is deleted once nothing else
    /// holds it. Not undoable: a new scene starts a new undo history.
    void SetEffect(ViewEffect* effect);

    /// Saves the scene (the effect and everything it references) into `path`.
    IOResult SaveFile(const char* path, SceneReport* report);
    /// Reads the scene file `path` into `roots` and hands back the first view effect in
    /// it, held by `roots` until SetEffect takes it; null (and the reason in `report`) when
    /// the file cannot be read or holds no view effect.
    ViewEffect* ReadFile(const char* path, SceneRoots& roots, SceneReport* report);

    /// The file the scene was last saved to or opened from; empty for a new scene.
    const std::string& Path() const { return path_; }

    int NumRefs() override { return 1; }
    RefTargetHandle GetReference(int i) override { return i == 0 ? effect_ : nullptr; }
    RefResult NotifyRefChanged(const Interval& changeInt, RefTargetHandle hTarget, PartID& partID,
                               RefMessage message, BOOL propagate) override;

protected:
    void SetReference(int i, RefTargetHandle target) override;

private:
    std::function<void()> changed_; // the host's "repaint the viewport"
    ViewEffect* effect_ = nullptr;  // reference 0
    std::string path_;              // current scene file
};
