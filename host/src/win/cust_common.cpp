// Registration of the custom-control classes, the control object lookup, tooltips and the
// access functions of host/custctrl.h.

#include <cstring>
#include <vector>

#include "cust_classes.h"
#include "cust_internal.h"

extern "C" IMAGE_DOS_HEADER __ImageBase; // this module's own base, i.e. its HINSTANCE

namespace hostwin {

namespace {

struct ClassEntry {
    const char* name;
    WNDPROC proc;
    UINT style;
    LPCSTR cursor;
};

// Indexed by ControlClass.
const ClassEntry kClasses[] = {
    {CUSTTOOLBAR_CLASS, ControlWndProc<ToolbarControl>, 0, IDC_ARROW},
    {CUSTBUTTON_CLASS, ControlWndProc<ButtonControl>, CS_DBLCLKS, IDC_ARROW},
    {CUSTEDIT_CLASS, ControlWndProc<EditControl>, 0, IDC_IBEAM},
    {CUSTSTATUS_CLASS, ControlWndProc<StatusControl>, 0, IDC_ARROW},
    {CUSTFLYOFF_CLASS, ControlWndProc<FlyOffControl>, CS_SAVEBITS, IDC_ARROW},
};
static_assert(sizeof(kClasses) / sizeof(kClasses[0]) == size_t(ControlClass::Count),
              "one class entry per ControlClass");

ATOM classAtoms[size_t(ControlClass::Count)] = {}; // 0 until registered

} // namespace

HINSTANCE HostInstance() { return reinterpret_cast<HINSTANCE>(&__ImageBase); }

void RegisterControlClasses() {
    for (size_t i = 0; i < size_t(ControlClass::Count); ++i) {
        if (classAtoms[i])
            continue;
        const ClassEntry& entry = kClasses[i];
        WNDCLASSA wc = {};
        // Global classes: plug-ins create these windows with their own module instance.
        wc.style = CS_GLOBALCLASS | entry.style;
        wc.lpfnWndProc = entry.proc;
        wc.cbWndExtra = sizeof(void*); // slot 0: the ControlObject
        wc.hInstance = HostInstance();
        wc.hCursor = LoadCursorA(nullptr, entry.cursor);
        wc.lpszClassName = entry.name;
        classAtoms[i] = RegisterClassA(&wc);
        if (!classAtoms[i]) {
            // Registered before by this module (after an unload and reload): GetClassInfo
            // answers the class atom.
            WNDCLASSA existing;
            classAtoms[i] = ATOM(GetClassInfoA(HostInstance(), entry.name, &existing));
        }
    }
}

void UnregisterControlClasses() {
    for (size_t i = 0; i < size_t(ControlClass::Count); ++i) {
        if (classAtoms[i] && UnregisterClassA(kClasses[i].name, HostInstance()))
            classAtoms[i] = 0;
    }
}

bool IsControlClass(HWND hwnd, ControlClass cls) {
    ATOM atom = classAtoms[size_t(cls)];
    return atom && IsWindow(hwnd) && ATOM(GetClassLongPtrA(hwnd, GCW_ATOM)) == atom;
}

ControlObject* ObjectOf(HWND hwnd) {
    return reinterpret_cast<ControlObject*>(GetWindowLongPtrA(hwnd, 0));
}

void CopyText(char* buf, int size, const char* text) {
    if (!buf || size <= 0)
        return;
    if (!text)
        text = "";
    size_t n = strnlen(text, size_t(size - 1));
    memcpy(buf, text, n);
    buf[n] = '\0';
}

void NotifyParent(HWND control, int code) {
    HWND parent = GetParent(control);
    if (!parent)
        return;
    int id = GetDlgCtrlID(control);
    SendMessageA(parent, WM_COMMAND, MAKEWPARAM(id, code), reinterpret_cast<LPARAM>(control));
}

// -------------------------------------------------------------------------------------
// Tooltip
// -------------------------------------------------------------------------------------

TOOLINFOA Tooltip::Info(char* text) const {
    TOOLINFOA ti = {};
    // The version-5 layout: understood by every comctl32, with or without a manifest.
    ti.cbSize = TTTOOLINFOA_V2_SIZE;
    ti.uFlags = TTF_IDISHWND | TTF_SUBCLASS;
    HWND parent = GetParent(tool_);
    ti.hwnd = parent ? parent : tool_;
    ti.uId = reinterpret_cast<UINT_PTR>(tool_);
    ti.lpszText = text;
    return ti;
}

namespace {

/// A tooltip window shared by the tools under one top-level window. User-interface
/// thread only, like the controls.
struct SharedTip {
    HWND root; // the top-level window of its tools, which owns it
    HWND tip;  // the tooltip window
    int tools; // tools registered with it
};

std::vector<SharedTip>& sharedTips() {
    static std::vector<SharedTip> tips;
    return tips;
}

/// The live tooltip window of `root`, made when there is none. Entries whose window died
/// with its owner are dropped on the way.
SharedTip* tipFor(HWND root) {
    std::vector<SharedTip>& tips = sharedTips();
    for (size_t i = 0; i < tips.size();) {
        if (!IsWindow(tips[i].tip)) {
            tips.erase(tips.begin() + long(i));
            continue;
        }
        if (tips[i].root == root)
            return &tips[i];
        ++i;
    }
    INITCOMMONCONTROLSEX icc = {sizeof icc, ICC_WIN95_CLASSES};
    InitCommonControlsEx(&icc);
    HWND tip =
        CreateWindowExA(WS_EX_TOPMOST, TOOLTIPS_CLASSA, nullptr,
                        WS_POPUP | TTS_ALWAYSTIP | TTS_NOPREFIX, CW_USEDEFAULT, CW_USEDEFAULT,
                        CW_USEDEFAULT, CW_USEDEFAULT, root, nullptr, HostInstance(), nullptr);
    if (!tip)
        return nullptr;
    tips.push_back(SharedTip{root, tip, 0});
    return &tips.back();
}

} // namespace

void Tooltip::Set(HWND tool, BOOL on, const char* text) {
    if (!on || !tool) {
        Destroy();
        return;
    }
    char copy[1024];
    CopyText(copy, sizeof copy, text);
    if (!tip_ || !IsWindow(tip_) || tool != tool_) {
        Destroy();
        HWND root = GetAncestor(tool, GA_ROOT);
        SharedTip* shared = tipFor(root ? root : tool);
        if (!shared)
            return;
        tip_ = shared->tip;
        tool_ = tool;
        ++shared->tools;
        TOOLINFOA ti = Info(copy);
        SendMessageA(tip_, TTM_ADDTOOLA, 0, reinterpret_cast<LPARAM>(&ti));
    } else {
        TOOLINFOA ti = Info(copy);
        SendMessageA(tip_, TTM_UPDATETIPTEXTA, 0, reinterpret_cast<LPARAM>(&ti));
    }
}

BOOL Tooltip::Get(char* buf, int size) const {
    CopyText(buf, size, "");
    if (!tip_ || !IsWindow(tip_))
        return FALSE;
    // TTM_GETTEXTA of the version-5 controls takes no buffer size; they copy at most
    // INFOTIPSIZE characters.
    char text[INFOTIPSIZE + 1] = {};
    TOOLINFOA ti = Info(text);
    SendMessageA(tip_, TTM_GETTEXTA, WPARAM(INFOTIPSIZE), reinterpret_cast<LPARAM>(&ti));
    text[INFOTIPSIZE] = '\0';
    CopyText(buf, size, text);
    return TRUE;
}

void Tooltip::Destroy() {
    if (!tip_)
        return;
    std::vector<SharedTip>& tips = sharedTips();
    for (size_t i = 0; i < tips.size(); ++i) {
        if (tips[i].tip != tip_)
            continue;
        const bool alive = IsWindow(tip_) != FALSE;
        if (alive) {
            TOOLINFOA ti = Info(nullptr);
            SendMessageA(tip_, TTM_DELTOOLA, 0, reinterpret_cast<LPARAM>(&ti));
        }
        if (--tips[i].tools <= 0) {
            if (alive)
                DestroyWindow(tip_);
            tips.erase(tips.begin() + long(i));
        }
        break;
    }
    tip_ = nullptr;
    tool_ = nullptr;
}

} // namespace hostwin

// -------------------------------------------------------------------------------------
// Access functions
// -------------------------------------------------------------------------------------

using namespace hostwin;

void InitCustomControls() { RegisterControlClasses(); }

ICustToolbar* GetICustToolbar(HWND hwnd) {
    return AcquireControl<ToolbarControl>(hwnd, ControlClass::Toolbar);
}
ICustButton* GetICustButton(HWND hwnd) {
    return AcquireControl<ButtonControl>(hwnd, ControlClass::Button);
}
ICustEdit* GetICustEdit(HWND hwnd) { return AcquireControl<EditControl>(hwnd, ControlClass::Edit); }
ICustStatus* GetICustStatus(HWND hwnd) {
    return AcquireControl<StatusControl>(hwnd, ControlClass::Status);
}

void ReleaseICustToolbar(ICustToolbar* toolbar) {
    if (toolbar)
        static_cast<ToolbarControl*>(toolbar)->Release();
}
void ReleaseICustButton(ICustButton* button) {
    if (button)
        static_cast<ButtonControl*>(button)->Release();
}
void ReleaseICustEdit(ICustEdit* edit) {
    if (edit)
        static_cast<EditControl*>(edit)->Release();
}
void ReleaseICustStatus(ICustStatus* status) {
    if (status)
        static_cast<StatusControl*>(status)->Release();
}
