// The editor's window classes and shared resources: registered and loaded once per
// process, released when the module unloads.
#include "editor/base_window.h"
#include "editor/editor_resources.h"
#include "host/actctx.h"
#include "host/gdi_tracking.h"
#include "platform/platform.h"
#include "res/resource.h"

namespace {

bool classesRegistered = false; // per process; the classes stay until the module unloads
int registrations = 0;          // how often registration actually ran
bool resourcesLoaded = false;   // per process
EditorResources shared;         // images, menu and cursors

void registerClass(const char* name, UINT style, HCURSOR cursor, HBRUSH background, int windowExtra,
                   WNDPROC proc) {
    WNDCLASSA wc{};
    wc.style = style;
    wc.lpfnWndProc = proc;
    wc.cbClsExtra = 0;
    wc.cbWndExtra = windowExtra;
    wc.hInstance = EditorInstance();
    wc.hIcon = nullptr;
    wc.hCursor = cursor;
    wc.hbrBackground = background;
    wc.lpszMenuName = nullptr;
    wc.lpszClassName = name;
    ActCtxRegisterClassA(&wc);
}

/// An image list of 16 x 15 masked images from a colour strip and its mask strip.
HIMAGELIST loadStrip(int bitmapId, int maskId, int initial) {
    HIMAGELIST list = ActCtxImageList_Create(16, 15, ILC_COLOR24 | ILC_MASK, initial, 0);
    // The list copies the pictures; the bitmaps themselves are ours to delete.
    GdiBitmap image(LoadBitmapA(EditorInstance(), MAKEINTRESOURCEA(bitmapId)));
    GdiBitmap mask(LoadBitmapA(EditorInstance(), MAKEINTRESOURCEA(maskId)));
    if (list && image)
        ActCtxImageList_Add(list, image.get(), mask.get());
    return list;
}

HCURSOR loadCursor(int id) { return LoadCursorA(EditorInstance(), MAKEINTRESOURCEA(id)); }

} // namespace

HINSTANCE EditorInstance() { return platform::ModuleInstance(); }

void RegisterEditorClasses() {
    if (classesRegistered)
        return;
    classesRegistered = true;
    ++registrations;
    registerClass(kPosWindowClass, CS_HREDRAW | CS_VREDRAW, LoadCursorA(nullptr, IDC_SIZENS),
                  nullptr, 0, EditorWindowProc);
    registerClass(kCurveWindowClass, CS_DBLCLKS, nullptr,
                  static_cast<HBRUSH>(GetStockObject(LTGRAY_BRUSH)), 0, EditorWindowProc);
    registerClass(kEditorWindowClass, CS_DBLCLKS, LoadCursorA(nullptr, IDC_ARROW), nullptr, 0,
                  EditorWindowProc);
    registerClass(kFrameClassName, CS_DBLCLKS, LoadCursorA(nullptr, IDC_ARROW), nullptr, 8,
                  FrameWindowProc);
}

int EditorClassRegistrations() { return registrations; }

const EditorResources& LoadEditorResources() {
    if (resourcesLoaded)
        return shared;
    resourcesLoaded = true;
    shared.editImages = loadStrip(IDB_EDIT_IMAGES, IDB_EDIT_MASK, 29);
    shared.curveImages = loadStrip(IDB_CURVE_IMAGES, IDB_CURVE_MASK, 29);
    shared.viewImages = loadStrip(IDB_VIEW_IMAGES, IDB_VIEW_MASK, 13);
    shared.pointMenu = LoadMenuA(EditorInstance(), MAKEINTRESOURCEA(IDR_POINT_MENU));
    // Cursors loaded from resources are shared by the system: never destroyed.
    shared.pointCursor = loadCursor(IDC_POINT_CURSOR);
    shared.moveCursor = loadCursor(IDC_MOVE_CURSOR);
    shared.panCursor = loadCursor(IDC_PAN_CURSOR);
    shared.zoomCursor = loadCursor(IDC_ZOOM_CURSOR);
    shared.zoomRegionCursor = loadCursor(IDC_ZOOM_REGION_CURSOR);
    return shared;
}

EditorResources& SharedEditorResources() { return shared; }

void ReleaseEditorResources() {
    if (shared.editImages)
        ActCtxImageList_Destroy(shared.editImages);
    if (shared.curveImages)
        ActCtxImageList_Destroy(shared.curveImages);
    if (shared.viewImages)
        ActCtxImageList_Destroy(shared.viewImages);
    if (shared.pointMenu)
        DestroyMenu(shared.pointMenu);
    shared = EditorResources{};
    resourcesLoaded = false;
}

namespace {
/// Module teardown: the static object's destructor runs when the module unloads (and at
/// the end of a test program that links the editor in).
struct ResourceReleaser {
    ~ResourceReleaser() { ReleaseEditorResources(); }
} releaseAtUnload;
} // namespace
