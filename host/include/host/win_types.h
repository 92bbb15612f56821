// The platform types that the host's interfaces speak in (window and device handles,
// BOOL, COLORREF, WINDOWPLACEMENT). On Windows they are the real ones; elsewhere the
// portable core gets layout-identical stand-ins so it can be built and checked natively.
// This header is the only place outside the window layer that knows about Win32.
#pragma once

#if defined(_WIN32)
#ifndef WIN32_LEAN_AND_MEAN
#define WIN32_LEAN_AND_MEAN
#endif
#ifndef NOMINMAX
#define NOMINMAX
#endif
#include <windows.h>
// HIMAGELIST, for the client callback that supplies curve button images.
#include <commctrl.h>
#else
#include <cstdint>

typedef int BOOL;
typedef uint32_t DWORD;
typedef uint32_t UINT;
typedef uint32_t ULONG;
typedef uint16_t USHORT;
typedef DWORD COLORREF;
typedef uintptr_t WPARAM;
typedef intptr_t LPARAM;
typedef intptr_t LRESULT;
typedef struct HWND__* HWND;
typedef struct HDC__* HDC;
typedef struct HINSTANCE__* HINSTANCE;
typedef struct _IMAGELIST* HIMAGELIST;

#ifndef TRUE
#define TRUE 1
#endif
#ifndef FALSE
#define FALSE 0
#endif

#define RGB(r, g, b)                                                                               \
    ((COLORREF)(((uint8_t)(r) | ((uint16_t)((uint8_t)(g)) << 8)) | (((DWORD)(uint8_t)(b)) << 16)))

struct POINT {
    int32_t x;
    int32_t y;
};

struct RECT {
    int32_t left;
    int32_t top;
    int32_t right;
    int32_t bottom;
};

struct WINDOWPLACEMENT {
    UINT length;
    UINT flags;
    UINT showCmd;
    POINT ptMinPosition;
    POINT ptMaxPosition;
    RECT rcNormalPosition;
};
#endif

static_assert(sizeof(WINDOWPLACEMENT) == 44, "saved scenes store the placement as 44 bytes");
