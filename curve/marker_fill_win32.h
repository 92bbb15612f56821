// Solid marker squares, written straight into the pixels when the drawing context allows.
//
// A graph of 16 curves with 1,000 selected points each takes 32,000 Rectangle calls and as
// many brush colour changes per repaint: under Wine each of those calls costs far more
// than the 36 pixels it fills. When the context is a memory DC holding a 32-bit DIB
// section, with the plain mapping (MM_TEXT, no world transform, left-to-right layout), the
// copy-pen mix and a clip region that is one rectangle, MarkerFill writes the squares into
// the bitmap itself: the pixels Rectangle would give, clipped the same way. Any other
// context (a printer, a device-dependent bitmap, a complex clip...) gets the GDI calls.
//
// Windows may batch GDI calls: direct writes must not overtake drawing still queued, so
// callers report GDI drawing they do in between with AfterGdi(), and the next square
// flushes first.
#pragma once

#include "host/win_types.h"

#include <cstddef>
#include <cstdint>

class MarkerFill {
public:
    /// Set up for `hdc`, whose current pen is the null pen and brush the DC brush (the
    /// state the GDI fallback draws with).
    explicit MarkerFill(HDC hdc);

    /// Fills what Rectangle(left, top, right, bottom) fills with the null pen and a solid
    /// brush of `colour` (an RGB value): columns left .. right - 2, rows top .. bottom - 2.
    void Square(int left, int top, int right, int bottom, COLORREF colour);

    /// The caller drew through GDI since the last square.
    void AfterGdi() { flushed_ = false; }

    /// Whether squares go straight to the pixels.
    bool Direct() const { return origin_ != nullptr; }

private:
    void gdiSquare(int left, int top, int right, int bottom, COLORREF colour);

    HDC hdc_;
    uint8_t* origin_ = nullptr; // pixel (0, 0) of the bitmap, or null for the GDI calls
    ptrdiff_t stride_ = 0;      // bytes from one row to the next (negative bottom-up)
    RECT clip_{};               // device pixels that may be written
    POINT offset_{};            // logical to device: device = logical + offset_
    bool flushed_ = false;      // no GDI drawing queued since the last flush
    bool brushKnown_ = false;   // brushColour_ is the DC brush colour (GDI fallback)
    COLORREF brushColour_ = 0;
};
