// The editor's per-process resources: its window classes and the shared image lists,
// point menu and cursors. Each is made once, on first use, and kept until the module
// unloads (ReleaseEditorResources).
#pragma once

#include "host/win_types.h"

constexpr const char* kPosWindowClass = "DefPosWindow";
constexpr const char* kCurveWindowClass = "DefCurveWindow";
constexpr const char* kEditorWindowClass = "BaseWindow";
constexpr const char* kFrameClassName = "DefPopUp";

/// The module instance that the classes and resources belong to.
HINSTANCE EditorInstance();

/// Registers the four window classes, once per process; later calls return at once.
void RegisterEditorClasses();
/// How many times the classes were actually registered in this process (0 or 1).
int EditorClassRegistrations();

/// The shared images, menu and cursors, loaded on first use.
struct EditorResources {
    HIMAGELIST editImages = nullptr;    // edit toolbar: bitmap 123, mask 112, 29 images
    HIMAGELIST curveImages = nullptr;   // curve buttons: bitmap 128, mask 122, 29 images
    HIMAGELIST viewImages = nullptr;    // view toolbar: bitmap 114, mask 113, 13 images
    HMENU pointMenu = nullptr;          // menu 101 (the point context menu)
    HCURSOR pointCursor = nullptr;      // 101
    HCURSOR moveCursor = nullptr;       // 102
    HCURSOR panCursor = nullptr;        // 105
    HCURSOR zoomCursor = nullptr;       // 191
    HCURSOR zoomRegionCursor = nullptr; // 193
};

/// Loads the shared resources once per process and returns them.
const EditorResources& LoadEditorResources();
/// The shared resources as they are (nothing is loaded).
EditorResources& SharedEditorResources();
/// Module teardown: destroys the three image lists and the point menu, each when it
/// exists. Safe to call more than once.
void ReleaseEditorResources();
