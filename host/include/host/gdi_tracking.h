// Owning wrappers for GDI objects, device contexts and windows that count what is alive.
//
// Wine's GetGuiResources always answers 0, so leak tests cannot ask the system how many
// GDI objects a process holds. Instead, code creates every pen, brush, font, bitmap and
// region into one of these wrappers, and tests compare LiveGdiCount(kind) before and after
// (the off-screen buffers of host/offscreen.h count their DC and bitmap the same way):
//
//     GdiPen pen(CreatePen(PS_SOLID, 1, color));     // counted while alive
//     SelectedObject keep(hdc, pen.get());            // selected, put back at scope end
//     ...                                             // the pen is deleted last
//
// Destruction order is the reverse of declaration, so a SelectedObject declared after the
// object it selects is undone before the object is deleted, as GDI requires.
//
// Objects the host owns for the life of the process (the colour manager's brushes, the
// user-interface font) are not counted: they are not anyone's leak.
//
// Counts are per process, for the user-interface thread. Windows only.
#pragma once

#include <utility>

#include "host/export.h"
#include "host/win_types.h"

enum class GdiKind { Pen, Brush, Font, Bitmap, Region, DC, Window, Count };

/// How many objects of `kind` created through these wrappers are alive now.
HOST_API int LiveGdiCount(GdiKind kind);
/// The sum over all kinds.
HOST_API int LiveGdiTotal();
/// How many windows (top-level and children, visible or not) the calling thread owns,
/// counted with EnumThreadWindows and EnumChildWindows.
HOST_API int CountThreadWindows();

namespace gdi_detail {
/// Counts a handle in (non-null only) and deletes it with the call its kind needs
/// (DeleteObject, DeleteDC, DestroyWindow), counting it out. Null is ignored.
HOST_API void Adopt(GdiKind kind, void* handle);
HOST_API void Dispose(GdiKind kind, void* handle);
/// Counts out without deleting (ownership handed elsewhere).
HOST_API void Forget(GdiKind kind, void* handle);

template <class H> struct KindOf;
template <> struct KindOf<HPEN> { static constexpr GdiKind value = GdiKind::Pen; };
template <> struct KindOf<HBRUSH> { static constexpr GdiKind value = GdiKind::Brush; };
template <> struct KindOf<HFONT> { static constexpr GdiKind value = GdiKind::Font; };
template <> struct KindOf<HBITMAP> { static constexpr GdiKind value = GdiKind::Bitmap; };
template <> struct KindOf<HRGN> { static constexpr GdiKind value = GdiKind::Region; };
template <> struct KindOf<HDC> {
    static constexpr GdiKind value = GdiKind::DC; // memory DCs (DeleteDC)
};
template <> struct KindOf<HWND> { static constexpr GdiKind value = GdiKind::Window; };
} // namespace gdi_detail

/// Sole owner of one handle of type H (HPEN, HBRUSH, HFONT, HBITMAP, HRGN, a memory HDC
/// from CreateCompatibleDC, or an HWND). Move-only. Null is a valid empty state.
template <class H> class GdiObject {
public:
    GdiObject() = default;
    /// Takes ownership of `h` (may be null, e.g. when creation failed).
    explicit GdiObject(H h) : h_(h) { gdi_detail::Adopt(Kind, h_); }
    ~GdiObject() { gdi_detail::Dispose(Kind, h_); }
    GdiObject(GdiObject&& o) noexcept : h_(std::exchange(o.h_, nullptr)) {}
    GdiObject& operator=(GdiObject&& o) noexcept {
        if (this != &o)
            reset(std::exchange(o.h_, nullptr), false);
        return *this;
    }
    GdiObject(const GdiObject&) = delete;
    GdiObject& operator=(const GdiObject&) = delete;

    H get() const { return h_; }
    explicit operator bool() const { return h_ != nullptr; }
    /// Deletes the current handle and takes `h`.
    void reset(H h = nullptr) { reset(h, true); }
    /// Gives the handle up without deleting it; the caller owns it from now on.
    H release() {
        gdi_detail::Forget(Kind, h_);
        return std::exchange(h_, nullptr);
    }

private:
    static constexpr GdiKind Kind = gdi_detail::KindOf<H>::value;
    void reset(H h, bool adopt) {
        if (h == h_)
            return;
        gdi_detail::Dispose(Kind, h_);
        h_ = h;
        if (adopt)
            gdi_detail::Adopt(Kind, h_);
    }
    H h_ = nullptr; // owned
};

using GdiPen = GdiObject<HPEN>;
using GdiBrush = GdiObject<HBRUSH>;
using GdiFont = GdiObject<HFONT>;
using GdiBitmap = GdiObject<HBITMAP>;
using GdiRegion = GdiObject<HRGN>;
using MemoryDC = GdiObject<HDC>;
/// A window destroyed (DestroyWindow) when the owner goes. Only for windows nobody else
/// destroys: child windows die with their parent and must not be held here.
using UniqueWindow = GdiObject<HWND>;

/// Selects `object` into `hdc` and selects the previous object back at scope end.
class HOST_API SelectedObject {
public:
    SelectedObject(HDC hdc, HGDIOBJ object);
    ~SelectedObject();
    SelectedObject(const SelectedObject&) = delete;
    SelectedObject& operator=(const SelectedObject&) = delete;

private:
    HDC hdc_;
    HGDIOBJ previous_; // put back by the destructor
};

/// GetDC / ReleaseDC of a window, counted as GdiKind::DC.
class HOST_API WindowDC {
public:
    explicit WindowDC(HWND hwnd);
    ~WindowDC();
    WindowDC(const WindowDC&) = delete;
    WindowDC& operator=(const WindowDC&) = delete;
    HDC get() const { return hdc_; }

private:
    HWND hwnd_;
    HDC hdc_; // released by the destructor
};

/// BeginPaint / EndPaint of one WM_PAINT, counted as GdiKind::DC.
class HOST_API PaintDC {
public:
    explicit PaintDC(HWND hwnd);
    ~PaintDC();
    PaintDC(const PaintDC&) = delete;
    PaintDC& operator=(const PaintDC&) = delete;
    HDC get() const { return hdc_; }
    /// The rectangle to paint (PAINTSTRUCT::rcPaint).
    const RECT& PaintRect() const { return ps_.rcPaint; }

private:
    HWND hwnd_;
    PAINTSTRUCT ps_;
    HDC hdc_; // ended by the destructor
};

/// Saves the DC's state (SaveDC) and restores it at scope end (clip region, mapping,
/// colours, selected objects).
class HOST_API SavedDC {
public:
    explicit SavedDC(HDC hdc);
    ~SavedDC();
    SavedDC(const SavedDC&) = delete;
    SavedDC& operator=(const SavedDC&) = delete;

private:
    HDC hdc_;
    int saved_; // SaveDC's level
};
