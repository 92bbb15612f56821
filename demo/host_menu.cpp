// The menu bar: its entries, shortcuts, and the Undo/Redo texts that name the steps.
#include "host_menu.h"

#include "host/controller.h"
#include "host/hold.h"

#include <string>

namespace {

void SetItem(HMENU menu, UINT id, const std::string& text, bool enabled) {
    MENUITEMINFOA info = {};
    info.cbSize = sizeof info;
    info.fMask = MIIM_STRING | MIIM_STATE;
    info.dwTypeData = const_cast<char*>(text.c_str());
    info.fState = enabled ? MFS_ENABLED : MFS_GRAYED;
    SetMenuItemInfoA(menu, id, FALSE, &info);
}

} // namespace

HMENU BuildHostMenu() {
    HMENU file = CreatePopupMenu();
    AppendMenuA(file, MF_STRING, kCmdNew, "&New\tCtrl+N");
    AppendMenuA(file, MF_STRING, kCmdOpen, "&Open...\tCtrl+O");
    AppendMenuA(file, MF_STRING, kCmdSave, "&Save\tCtrl+S");
    AppendMenuA(file, MF_STRING, kCmdSaveAs, "Save &As...");
    AppendMenuA(file, MF_SEPARATOR, 0, nullptr);
    AppendMenuA(file, MF_STRING, kCmdExit, "E&xit");

    HMENU edit = CreatePopupMenu();
    AppendMenuA(edit, MF_STRING, kCmdUndo, "&Undo\tCtrl+Z");
    AppendMenuA(edit, MF_STRING, kCmdRedo, "&Redo\tCtrl+Y");

    HMENU animation = CreatePopupMenu();
    AppendMenuA(animation, MF_STRING, kCmdAnimate, "&Animate Mode");

    HMENU bar = CreateMenu();
    AppendMenuA(bar, MF_POPUP, reinterpret_cast<UINT_PTR>(file), "&File");
    AppendMenuA(bar, MF_POPUP, reinterpret_cast<UINT_PTR>(edit), "&Edit");
    AppendMenuA(bar, MF_POPUP, reinterpret_cast<UINT_PTR>(animation), "&Animation");
    RefreshHostMenu(bar);
    return bar;
}

HACCEL BuildHostAccelerators() {
    ACCEL keys[] = {
        {FCONTROL | FVIRTKEY, 'N', kCmdNew},  {FCONTROL | FVIRTKEY, 'O', kCmdOpen},
        {FCONTROL | FVIRTKEY, 'S', kCmdSave}, {FCONTROL | FVIRTKEY, 'Z', kCmdUndo},
        {FCONTROL | FVIRTKEY, 'Y', kCmdRedo},
    };
    return CreateAcceleratorTableA(keys, int(sizeof keys / sizeof keys[0]));
}

void RefreshHostMenu(HMENU menu) {
    if (!menu)
        return;
    const bool canUndo = theHold.NumUndo() > 0;
    const bool canRedo = theHold.NumRedo() > 0;
    SetItem(menu, kCmdUndo,
            canUndo ? "&Undo " + std::string(theHold.UndoName(0).data()) + "\tCtrl+Z"
                    : std::string("Can't Undo\tCtrl+Z"),
            canUndo);
    SetItem(menu, kCmdRedo,
            canRedo ? "&Redo " + std::string(theHold.RedoName(0).data()) + "\tCtrl+Y"
                    : std::string("Can't Redo\tCtrl+Y"),
            canRedo);
    CheckMenuItem(menu, kCmdAnimate, MF_BYCOMMAND | (Animating() ? MF_CHECKED : MF_UNCHECKED));
}
