#include "editor/sub_windows.h"
#include "host/colorman.h"
#include "host/offscreen.h"

OffScreenBuffer::~OffScreenBuffer() { Destroy(); }

void OffScreenBuffer::Create(HWND hwnd) {
    Destroy();
    buf_ = CreateIOffScreenBuf(hwnd);
    if (buf_)
        buf_->SetBkColor(ColorMan()->GetColor(kColorViewShade));
}

void OffScreenBuffer::Destroy() {
    DestroyIOffScreenBuf(buf_);
    buf_ = nullptr;
}
