// DeformDeleteUser: the Delete key of the host reaches the active editor as its
// "Delete Point" command. One object per process, registered with the host's
// deleteRouter only while an editor frame is the active window.
#pragma once

#include "host/event_router.h"
#include "host/win_types.h"

class DeformDeleteUser : public EventUser {
public:
    static DeformDeleteUser& Instance();

    /// Sends WM_COMMAND 420 (lParam 0) to the editor window it points at.
    void Notify() override;

    void PointAt(HWND editorWindow) { target_ = editorWindow; }
    HWND Target() const { return target_; }
    void Register();
    void UnRegister();
    /// An editor window is going away: stop pointing at it (and listening for it).
    void Forget(HWND editorWindow);

private:
    HWND target_ = nullptr; // the editor window ("BaseWindow") of the active frame
};
