// HostApp: main window, menu commands, scene files and the message loop.
#include "host_app.h"

#include "host/class_desc.h"
#include "host/controller.h"
#include "host/core_interface.h"
#include "host/hold.h"
#include "host/host_window.h"
#include "host_menu.h"

#include <commdlg.h>

#include <cstdio>

namespace {

#define HOST_APP_PROP "DemoHostApp"
#define HOST_TITLE "Curve Control Demo"

/// A new object of the first public view-effect class in the class directory.
ViewEffect* NewViewEffect() {
    ClassDirectory& dir = ClassDirectory::Get();
    for (int i = 0; i < dir.Count(); ++i) {
        ClassDesc* cd = dir.ClassAt(i);
        if (cd->SuperClassID() != VIEW_EFFECT_SUPER_CLASS_ID || !cd->IsPublic())
            continue;
        auto* made = static_cast<ReferenceTarget*>(cd->Create(FALSE));
        if (made)
            return static_cast<ViewEffect*>(made);
    }
    return nullptr;
}

/// "Could not open PATH", then what the scene reader or writer reported, one per line.
std::string Describe(const char* what, const char* path, const SceneReport& report) {
    std::string text = std::string(what) + " " + path;
    for (int i = 0; i < report.Count(); ++i)
        text += std::string("\n") + report.Message(i);
    return text;
}

} // namespace

HostApp::HostApp() = default;

HostApp::~HostApp() {
    if (ViewEffect* effect = scene_ ? scene_->Effect() : nullptr)
        effect->EndEditParams();
    view_.reset();
    // Undo records pin the objects they restore: drop them before the scene goes.
    theHold.Reset();
    scene_.reset();
    if (IsWindow(main_))
        DestroyHostMainWindow(main_);
    if (accelerators_)
        DestroyAcceleratorTable(accelerators_);
}

bool HostApp::Create(bool show, int x, int y, int width, int height) {
    INITCOMMONCONTROLSEX controls = {sizeof controls, ICC_BAR_CLASSES};
    InitCommonControlsEx(&controls);

    main_ = CreateHostMainWindow(HOST_TITLE, x, y, width, height, FALSE);
    if (!main_)
        return false;
    SetPropA(main_, HOST_APP_PROP, this);
    hostProc_ = reinterpret_cast<WNDPROC>(
        SetWindowLongPtrA(main_, GWLP_WNDPROC, reinterpret_cast<LONG_PTR>(MainProc)));
    menu_ = BuildHostMenu();
    SetMenu(main_, menu_);
    accelerators_ = BuildHostAccelerators();

    scene_ = std::make_unique<SceneDoc>([this] {
        if (view_)
            view_->Invalidate();
    });
    view_ = std::make_unique<Viewport>(GetHostViewPanel(main_), *scene_,
                                       [this](int id) { Command(id); });
    view_->ShowAnimate(Animating() != FALSE);
    NewScene();
    if (show) {
        ShowWindow(main_, SW_SHOW);
        UpdateWindow(main_);
    }
    return true;
}

HWND HostApp::CommandPanel() const { return GetHostCommandPanel(main_); }

int HostApp::Run() {
    MSG msg = {};
    while (GetMessageA(&msg, nullptr, 0, 0) > 0) {
        if (IsWindow(main_) && TranslateAcceleratorA(main_, accelerators_, &msg))
            continue;
        if (HostPreTranslateMessage(&msg))
            continue;
        TranslateMessage(&msg);
        DispatchMessageA(&msg);
    }
    return msg.message == WM_QUIT ? int(msg.wParam) : 0;
}

std::string HostApp::EffectName() {
    CStr name;
    if (ViewEffect* effect = scene_ ? scene_->Effect() : nullptr)
        effect->GetClassName(name);
    return name.data();
}

// ---------------------------------------------------------------------------------------
// Commands

void HostApp::Command(int id) {
    std::string error;
    switch (id) {
    case kCmdNew:
        NewScene();
        break;
    case kCmdOpen:
        if (std::string path = AskPath(false); !path.empty())
            Complain(OpenScene(path.c_str(), &error), error);
        break;
    case kCmdSave:
        if (!scene_->Path().empty()) {
            Complain(SaveScene(scene_->Path().c_str(), &error), error);
            break;
        }
        [[fallthrough]];
    case kCmdSaveAs:
        if (std::string path = AskPath(true); !path.empty())
            Complain(SaveScene(path.c_str(), &error), error);
        break;
    case kCmdExit:
        PostMessageA(main_, WM_CLOSE, 0, 0);
        break;
    case kCmdUndo:
        // Undo restores the curves, which tell their dependents: the viewport repaints.
        theHold.Undo();
        break;
    case kCmdRedo:
        theHold.Redo();
        break;
    case kCmdAnimate:
        SetAnimate(!Animating());
        break;
    default:
        break;
    }
    RefreshHostMenu(menu_);
}

bool HostApp::NewScene() {
    ViewEffect* effect = NewViewEffect();
    if (!effect) {
        std::fprintf(stderr, "demo_host: no plug-in offers a view effect\n");
        return false;
    }
    SwapEffect(effect);
    return true;
}

bool HostApp::SaveScene(const char* path, std::string* error) {
    SceneReport report;
    if (scene_->SaveFile(path, &report) != IO_OK) {
        if (error)
            *error = Describe("Could not save", path, report);
        return false;
    }
    UpdateTitle();
    return true;
}

bool HostApp::OpenScene(const char* path, std::string* error) {
    SceneRoots roots; // holds what the file made until the scene takes the effect
    SceneReport report;
    ViewEffect* effect = scene_->ReadFile(path, roots, &report);
    if (!effect) {
        if (error)
            *error = Describe("Could not open", path, report);
        return false;
    }
    SwapEffect(effect);
    return true;
}

void HostApp::SetAnimate(bool on) {
    if (on)
        AnimateOn();
    else
        AnimateOff();
    view_->ShowAnimate(on);
    RefreshHostMenu(menu_);
}

void HostApp::SwapEffect(ViewEffect* effect) {
    if (ViewEffect* old = scene_->Effect())
        old->EndEditParams();
    // A new scene starts a new history: the old steps restore objects that are going.
    theHold.Reset();
    scene_->SetEffect(effect);
    effect->BeginEditParams(CommandPanel());
    GetCOREInterface()->SetTime(0);
    view_->Invalidate();
    UpdateTitle();
    RefreshHostMenu(menu_);
}

void HostApp::Complain(bool ok, const std::string& error) {
    if (!ok)
        MessageBoxA(main_, error.c_str(), HOST_TITLE, MB_OK | MB_ICONWARNING);
}

void HostApp::UpdateTitle() {
    std::string title = HOST_TITLE " - ";
    const std::string& path = scene_->Path();
    const std::size_t slash = path.find_last_of("\\/");
    title += path.empty() ? std::string("untitled")
                          : (slash == std::string::npos ? path : path.substr(slash + 1));
    SetWindowTextA(main_, title.c_str());
}

std::string HostApp::AskPath(bool save) {
    char path[MAX_PATH] = {};
    OPENFILENAMEA ofn = {};
    ofn.lStructSize = sizeof ofn;
    ofn.hwndOwner = main_;
    ofn.lpstrFilter = "Scenes (*.scene)\0*.scene\0All files\0*.*\0";
    ofn.lpstrFile = path;
    ofn.nMaxFile = MAX_PATH;
    ofn.lpstrDefExt = "scene";
    if (save) {
        ofn.Flags = OFN_OVERWRITEPROMPT | OFN_PATHMUSTEXIST;
        return GetSaveFileNameA(&ofn) ? std::string(path) : std::string();
    }
    ofn.Flags = OFN_FILEMUSTEXIST | OFN_PATHMUSTEXIST;
    return GetOpenFileNameA(&ofn) ? std::string(path) : std::string();
}

// ---------------------------------------------------------------------------------------
// The main window's messages that the host library leaves to the application

LRESULT CALLBACK HostApp::MainProc(HWND hwnd, UINT msg, WPARAM wParam, LPARAM lParam) {
    auto* self = static_cast<HostApp*>(GetPropA(hwnd, HOST_APP_PROP));
    if (!self)
        return DefWindowProcA(hwnd, msg, wParam, lParam);
    return self->OnMessage(msg, wParam, lParam);
}

LRESULT HostApp::OnMessage(UINT msg, WPARAM wParam, LPARAM lParam) {
    switch (msg) {
    case WM_COMMAND:
        if (lParam == 0) { // menus and shortcuts
            Command(LOWORD(wParam));
            return 0;
        }
        break;
    case WM_INITMENUPOPUP:
        RefreshHostMenu(menu_);
        return 0;
    case WM_CLOSE:
        // The effect leaves the command panel (closing its editor) while the windows are
        // still there; the host library then destroys the window and ends the loop.
        if (ViewEffect* effect = scene_->Effect())
            effect->EndEditParams();
        break;
    case WM_NCDESTROY: {
        HWND hwnd = main_;
        RemovePropA(hwnd, HOST_APP_PROP);
        main_ = nullptr;
        return CallWindowProcA(hostProc_, hwnd, msg, wParam, lParam);
    }
    default:
        break;
    }
    return CallWindowProcA(hostProc_, main_, msg, wParam, lParam);
}
