// HostApp: the demo host application. Its main window (the host library's, with the
// viewport panel and the command panel) gets a menu bar, the viewport shows the scene's
// view effect, and the effect puts its parameters into the command panel.
//
// Every command of the menu bar is also an operation here, so that a scripted session can
// call what a user would choose.
#pragma once

#include "scene_doc.h"
#include "viewport.h"

#include <memory>
#include <string>

class HostApp {
public:
    HostApp();
    ~HostApp();
    HostApp(const HostApp&) = delete;
    HostApp& operator=(const HostApp&) = delete;

    /// Makes the main window (shown when `show`) at x, y with the given outer size and a
    /// new scene. FALSE when the window could not be made.
    bool Create(bool show, int x, int y, int width, int height);
    /// The host's message loop (menu shortcuts, the Delete key); returns when the main
    /// window has closed.
    int Run();

    /// @name Commands of the menu bar
    /// @{
    /// Runs menu command `id` (host_menu.h) as if it was chosen.
    void Command(int id);
    /// A new scene with the first view effect of the class directory. FALSE when there is
    /// none.
    bool NewScene();
    /// Saves the scene into `path`; FALSE on failure, with the reason in `error` (when
    /// given).
    bool SaveScene(const char* path, std::string* error = nullptr);
    /// Replaces the scene with the one in `path`; FALSE (the scene unchanged, the reason
    /// in `error`) when the file cannot be read or holds no view effect.
    bool OpenScene(const char* path, std::string* error = nullptr);
    void SetAnimate(bool on);
    /// @}

    HWND MainWindow() const { return main_; }
    HWND CommandPanel() const;
    HMENU Menu() const { return menu_; }
    Viewport& View() { return *view_; }
    SceneDoc& Scene() { return *scene_; }

    /// The class name of the scene's effect, for messages ("" without one).
    std::string EffectName();

private:
    static LRESULT CALLBACK MainProc(HWND hwnd, UINT msg, WPARAM wParam, LPARAM lParam);
    LRESULT OnMessage(UINT msg, WPARAM wParam, LPARAM lParam);
    /// Ends the effect's editing, makes `effect` the scene's effect, starts its editing.
    void SwapEffect(ViewEffect* effect);
    void UpdateTitle();
    /// Tells the user `error` in a message box unless `ok`.
    void Complain(bool ok, const std::string& error);
    /// The file dialogs of Open and Save As; empty when cancelled.
    std::string AskPath(bool save);

    HWND main_ = nullptr;             // the host's main window
    WNDPROC hostProc_ = nullptr;      // its own window procedure, called for the rest
    HMENU menu_ = nullptr;            // the menu bar (destroyed with the window)
    HACCEL accelerators_ = nullptr;   // owned: the menu shortcuts
    std::unique_ptr<SceneDoc> scene_; // the scene (a host object: host heap)
    std::unique_ptr<Viewport> view_;  // the view panel's picture and time strip
};
