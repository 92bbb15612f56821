// The demo host's menu bar and keyboard shortcuts.
#pragma once

#include "host/win_types.h"

/// Command ids of the menu bar (WM_COMMAND to the main window).
enum HostCommand : int {
    kCmdNew = 40001,
    kCmdOpen = 40002,
    kCmdSave = 40003,
    kCmdSaveAs = 40004,
    kCmdExit = 40005,
    kCmdUndo = 40010,
    kCmdRedo = 40011,
    kCmdAnimate = 40020,
};

/// File (New, Open, Save, Save As, Exit), Edit (Undo, Redo) and Animation (Animate Mode).
HMENU BuildHostMenu();
/// Ctrl+N, Ctrl+O, Ctrl+S, Ctrl+Z, Ctrl+Y. The caller destroys the table.
HACCEL BuildHostAccelerators();
/// Brings the Edit and Animation entries up to date: Undo and Redo name the step they
/// would undo or redo (greyed when there is none), Animate Mode is checked while on.
void RefreshHostMenu(HMENU menu);
