// ShowEditor: opens and closes the editor of a CurveControl (SetEditorOpen).
#include "control/curve_control.h"
#include "editor/base_window.h"
#include "editor/curve_ctl_window.h"
#include "editor/editor_resources.h"
#include "host/core_interface.h"

#include <mbstring.h>

namespace {

constexpr DWORD kFloatingStyle = WS_POPUP | WS_OVERLAPPEDWINDOW; // 0x80CF0000
constexpr DWORD kEmbeddedStyle = WS_CHILD | WS_BORDER;           // 0x40800000
constexpr int kCascadeStep = 20;
constexpr int kFloatingWidth = 600;
constexpr int kFloatingHeight = 300;

struct PanelSearch {
    HWND found = nullptr;
};

BOOL CALLBACK findViewPanel(HWND child, LPARAM lParam) {
    char name[50] = {};
    GetClassNameA(child, name, int(sizeof name));
    if (_mbscmp(reinterpret_cast<const unsigned char*>(name),
                reinterpret_cast<const unsigned char*>("ViewPanel")) != 0)
        return TRUE;
    reinterpret_cast<PanelSearch*>(lParam)->found = child;
    return FALSE;
}

/// Where floating editors cascade from: just left of the host's viewport panel.
POINT cascadeOrigin() {
    POINT origin{0, 0};
    HWND main = GetCOREInterface()->GetMAXHWnd();
    if (!main)
        return origin;
    PanelSearch search;
    EnumChildWindows(main, findViewPanel, reinterpret_cast<LPARAM>(&search));
    if (!search.found)
        return origin;
    RECT r;
    GetWindowRect(search.found, &r);
    origin.x = r.left - 1;
    origin.y = r.top;
    return origin;
}

BOOL closeEditor(CurveControl* control) {
    HWND frame = control->GetEditorWindow();
    if (!frame)
        return FALSE;
    WINDOWPLACEMENT wp{};
    wp.length = sizeof(WINDOWPLACEMENT);
    GetWindowPlacement(frame, &wp);
    control->StorePlacement(wp);
    // The frame's WM_DESTROY deletes the editor object, which detaches it from the
    // control; the frame handle is cleared here as well for a frame created elsewhere.
    DestroyWindow(frame);
    control->DetachEditor();
    return FALSE;
}

} // namespace

BOOL ShowEditor(CurveControl* control, BOOL show) {
    if (!control)
        return FALSE;
    if (!show)
        return closeEditor(control);
    if (control->GetEditorWindow())
        return TRUE;

    RegisterEditorClasses();
    const CStr title(control->Title());
    const POINT origin = cascadeOrigin();
    const bool floating = (control->GetControlFlags() & CC_ASPOPUP) != 0;
    const int cascade = control->InstanceIndex();

    HWND frame = nullptr;
    if (floating) {
        HWND owner = control->ParentWindow();
        if (!owner)
            owner = GetCOREInterface()->GetMAXHWnd();
        frame = CreateWindowExA(0, kFrameClassName, title.data(), kFloatingStyle,
                                origin.x + kCascadeStep * cascade,
                                origin.y + kCascadeStep * cascade, kFloatingWidth, kFloatingHeight,
                                owner, nullptr, EditorInstance(), nullptr);
    } else {
        HWND parent = control->ParentWindow();
        if (!parent)
            return FALSE;
        RECT client;
        GetClientRect(parent, &client);
        frame = CreateWindowExA(0, kFrameClassName, "", kEmbeddedStyle, 0, 0, client.right,
                                client.bottom, parent, nullptr, EditorInstance(), nullptr);
    }

    // The control learns of the frame first: initialising the editor reads it back.
    control->AttachEditor(frame, nullptr);
    auto* editor = new CurveCtlWindow;
    editor->Init(frame, control, cascade);
    control->AttachEditor(frame, editor);
    SetWindowLongPtrA(frame, GWLP_USERDATA, reinterpret_cast<LONG_PTR>(editor));

    if (floating) {
        SetWindowPos(frame, HWND_TOP, 0, 0, 0, 0, SWP_NOSIZE | SWP_NOMOVE);
        WINDOWPLACEMENT wp;
        if (control->SavedPlacement(wp))
            SetWindowPlacement(frame, &wp);
    }
    ShowWindow(frame, SW_SHOW);
    return TRUE;
}
