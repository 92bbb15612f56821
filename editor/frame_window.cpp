// The editor's frame ("DefPopUp"): embedded in a client's panel or floating. Its
// GWLP_USERDATA holds the CurveCtlWindow, which the frame owns: destroying the frame is
// the one way an editor goes away.
#include "control/curve_control.h"
#include "editor/base_window.h"
#include "editor/curve_ctl_window.h"
#include "editor/delete_user.h"

namespace {

CurveCtlWindow* editorOf(HWND frame) {
    return reinterpret_cast<CurveCtlWindow*>(GetWindowLongPtrA(frame, GWLP_USERDATA));
}

LRESULT onDestroy(HWND frame, CurveCtlWindow* editor) {
    WINDOWPLACEMENT wp{};
    wp.length = sizeof(WINDOWPLACEMENT);
    GetWindowPlacement(frame, &wp);
    if (CurveControl* control = editor->Control())
        control->StorePlacement(wp);
    // The delete key must not reach an editor that is gone.
    DeformDeleteUser::Instance().Forget(editor->Handle());
    delete editor;
    SetWindowLongPtrA(frame, GWLP_USERDATA, 0);
    return 0;
}

LRESULT onActivate(CurveCtlWindow* editor, WPARAM wParam) {
    DeformDeleteUser& user = DeformDeleteUser::Instance();
    if (LOWORD(wParam) != WA_INACTIVE) {
        user.PointAt(editor->Handle());
        user.Register();
    } else {
        user.UnRegister();
    }
    return 0;
}

LRESULT onMouseWheel(CurveCtlWindow* editor, WPARAM wParam) {
    CurveControl* control = editor->Control();
    if (!control || !(control->GetControlFlags() & CC_SHOWSCROLLBARS))
        return 0;
    editor->Graph().MouseWheel(short(HIWORD(wParam)));
    return 1;
}

} // namespace

LRESULT CALLBACK FrameWindowProc(HWND hwnd, UINT msg, WPARAM wParam, LPARAM lParam) {
    CurveCtlWindow* editor = editorOf(hwnd);
    if (!editor)
        return DefWindowProcA(hwnd, msg, wParam, lParam);

    switch (msg) {
    case WM_DESTROY:
        return onDestroy(hwnd, editor);
    case WM_SIZE:
        // A minimised frame keeps the layout it had.
        if (wParam != SIZE_MINIMIZED)
            editor->Move(0, 0, LOWORD(lParam), HIWORD(lParam));
        return 0;
    case WM_ACTIVATE:
        return onActivate(editor, wParam);
    case WM_COMMAND:
        return 0;
    case WM_MOUSEWHEEL:
        return onMouseWheel(editor, wParam);
    case WM_EDITOR_REPAINT:
        editor->RepaintRequest();
        return 0;
    default:
        return DefWindowProcA(hwnd, msg, wParam, lParam);
    }
}
