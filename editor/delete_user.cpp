#include "editor/delete_user.h"

#include "control/editor_ids.h"

DeformDeleteUser& DeformDeleteUser::Instance() {
    static DeformDeleteUser user;
    return user;
}

void DeformDeleteUser::Notify() {
    if (target_)
        SendMessageA(target_, WM_COMMAND, editor_id::kDeletePoint, 0);
}

void DeformDeleteUser::Register() { deleteRouter.Register(this); }

void DeformDeleteUser::UnRegister() { deleteRouter.UnRegister(this); }

void DeformDeleteUser::Forget(HWND editorWindow) {
    if (target_ != editorWindow)
        return;
    UnRegister();
    target_ = nullptr;
}
