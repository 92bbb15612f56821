// SceneDoc: the scene's effect, change notices, and scene files.
#include "scene_doc.h"

#include "host/hold.h"

SceneDoc::SceneDoc(std::function<void()> changed) : changed_(std::move(changed)) {}

SceneDoc::~SceneDoc() { DeleteAllRefsFromMe(); }

void SceneDoc::SetEffect(ViewEffect* effect) {
    theHold.Suspend();
    ReplaceReference(0, effect);
    theHold.Resume();
    if (changed_)
        changed_();
}

void SceneDoc::SetReference(int i, RefTargetHandle target) {
    if (i == 0)
        effect_ = target && target->SuperClassID() == VIEW_EFFECT_SUPER_CLASS_ID
                      ? static_cast<ViewEffect*>(target)
                      : nullptr;
}

RefResult SceneDoc::NotifyRefChanged(const Interval&, RefTargetHandle, PartID&, RefMessage message,
                                     BOOL) {
    if (message == REFMSG_CHANGE && changed_)
        changed_();
    return REF_SUCCEED;
}

IOResult SceneDoc::SaveFile(const char* path, SceneReport* report) {
    ReferenceTarget* roots[] = {effect_};
    const IOResult r = SaveSceneFile(path, roots, effect_ ? 1 : 0, report);
    if (r == IO_OK)
        path_ = path;
    return r;
}

ViewEffect* SceneDoc::ReadFile(const char* path, SceneRoots& roots, SceneReport* report) {
    roots.Clear();
    if (LoadSceneFile(path, roots, report) != IO_OK)
        return nullptr;
    for (int i = 0; i < roots.Count(); ++i)
        if (ReferenceTarget* root = roots.Get(i);
            root && root->SuperClassID() == VIEW_EFFECT_SUPER_CLASS_ID) {
            path_ = path;
            return static_cast<ViewEffect*>(root);
        }
    if (report)
        report->Add("%s holds no view effect", path);
    return nullptr;
}
