// Activation-context wrappers. This host runs without an activation context of its own
// (it ships no common-controls manifest), so each wrapper is the plain call.

#include "host/actctx.h"

ATOM ActCtxRegisterClassA(const WNDCLASSA* wc) { return wc ? RegisterClassA(wc) : 0; }

HIMAGELIST ActCtxImageList_Create(int cx, int cy, UINT flags, int initial, int grow) {
    return ImageList_Create(cx, cy, flags, initial, grow);
}

int ActCtxImageList_Add(HIMAGELIST list, HBITMAP image, HBITMAP mask) {
    return list && image ? ImageList_Add(list, image, mask) : -1;
}

int ActCtxImageList_GetImageCount(HIMAGELIST list) {
    return list ? ImageList_GetImageCount(list) : 0;
}

BOOL ActCtxImageList_Destroy(HIMAGELIST list) { return list ? ImageList_Destroy(list) : FALSE; }
