// Off-screen buffers: a bitmap the size of a window's client area in a memory device
// context, so a window can draw a picture once and copy it to the screen whenever it is
// exposed.
//
//     IOffScreenBuf* buf = CreateIOffScreenBuf(hwnd);   // once, after the window exists
//     buf->SetBkColor(ColorMan()->GetColor(kColorViewShade));
//     // WM_SIZE:  buf->Resize();
//     // WM_PAINT: buf->Erase(&rc); draw into buf->GetDC(); buf->Blit(&rc);
//     DestroyIOffScreenBuf(buf);                           // before or after the window
//
// Windows only.
#pragma once

#include "host/export.h"
#include "host/win_types.h"

class HOST_API IOffScreenBuf {
public:
    /// The memory device context to draw into. It stays the same for the buffer's life;
    /// the bitmap selected into it changes with Resize. Never release or delete it.
    virtual HDC GetDC() = 0;
    /// Fills `rect` (buffer coordinates, the window's client coordinates; null = the
    /// whole buffer) with the background colour.
    virtual void Erase(const RECT* rect = nullptr) = 0;
    /// Copies `rect` (null = the whole buffer) to the same place in the window.
    virtual void Blit(const RECT* rect = nullptr) = 0;
    /// Follows the window's current client size. A buffer that changes size is erased
    /// to the background colour; one whose size is unchanged keeps its picture.
    virtual void Resize() = 0;
    /// Background colour of Erase and Resize (default: white).
    virtual void SetBkColor(COLORREF color) = 0;
    virtual COLORREF GetBkColor() = 0;
    /// The buffer's size in pixels (the client size at the last Resize or at creation).
    virtual int Width() = 0;
    virtual int Height() = 0;

protected:
    ~IOffScreenBuf() = default;
};

/// A buffer for `hwnd`'s client area, erased to white. Null for a null or dead window.
HOST_API IOffScreenBuf* CreateIOffScreenBuf(HWND hwnd);
/// Frees the buffer and its GDI objects; null is ignored.
HOST_API void DestroyIOffScreenBuf(IOffScreenBuf* buf);
