// Activation-context-aware wrappers of the window-class and common-controls calls that
// plug-ins make. A host that ships a manifest for the common controls activates its
// context around each call so that a plug-in gets the same control versions as the host.
// This host has no activation context of its own, so the wrappers call the plain API;
// plug-ins use them anyway, so that they keep working in a host that has one.
//
// Windows only.
#pragma once

#include "host/export.h"
#include "host/win_types.h"

#if defined(_WIN32)
#include <commctrl.h>
#endif

/// RegisterClassA: the class atom, or 0 when registration failed (for instance because
/// the class exists already).
HOST_API ATOM ActCtxRegisterClassA(const WNDCLASSA* wc);

/// ImageList_Create: an image list of cx x cy images (ILC_... flags), room for `initial`
/// images and growing by `grow`. The caller owns it (ActCtxImageList_Destroy).
HOST_API HIMAGELIST ActCtxImageList_Create(int cx, int cy, UINT flags, int initial, int grow);
/// ImageList_Add: appends the images of `image` (and its `mask`, may be null), which the
/// list copies; the caller still owns and deletes both bitmaps. The index of the first
/// new image, or -1.
HOST_API int ActCtxImageList_Add(HIMAGELIST list, HBITMAP image, HBITMAP mask);
/// ImageList_GetImageCount (0 for null).
HOST_API int ActCtxImageList_GetImageCount(HIMAGELIST list);
/// ImageList_Destroy; null is ignored.
HOST_API BOOL ActCtxImageList_Destroy(HIMAGELIST list);
