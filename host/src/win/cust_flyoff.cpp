// The fly-off strip: a borderless pop-up of a button's entries, each as large as the
// button, opened next to it. The button keeps the mouse capture throughout and asks the
// strip which entry lies under the mouse.

#include <algorithm>

#include "cust_classes.h"
#include "host/colorman.h"

namespace hostwin {

HWND FlyOffControl::Open(ButtonControl* button, HWND buttonWindow, int dir, int columns) {
    const int n = int(button->FlyOffs().size());
    if (n <= 0)
        return nullptr;
    RECT br;
    GetWindowRect(buttonWindow, &br);
    const int cellW = std::max(1, int(br.right - br.left));
    const int cellH = std::max(1, int(br.bottom - br.top));

    const bool horizontal = dir == FLY_HVARIABLE || dir == FLY_LEFT || dir == FLY_RIGHT;
    // `columns` counts entries across a vertical strip, or entries down a horizontal one.
    const int lines = std::clamp(columns, 1, n);
    const int along = (n + lines - 1) / lines;
    const int cols = horizontal ? along : lines;
    const int rows = horizontal ? lines : along;
    const int w = cols * cellW + 2; // WS_BORDER takes one pixel on each side
    const int h = rows * cellH + 2;

    MONITORINFO mi = {};
    mi.cbSize = sizeof mi;
    GetMonitorInfoA(MonitorFromWindow(buttonWindow, MONITOR_DEFAULTTONEAREST), &mi);
    const RECT& work = mi.rcWork;

    // The strip starts on the button itself (its first entry covers the button) and grows
    // away from it.
    int x = br.left - 1, y = br.top - 1;
    switch (dir) {
    case FLY_UP:
        y = br.bottom + 1 - h;
        break;
    case FLY_LEFT:
        x = br.right + 1 - w;
        break;
    case FLY_VARIABLE:
        if (y + h > work.bottom)
            y = br.bottom + 1 - h;
        break;
    case FLY_HVARIABLE:
        if (x + w > work.right)
            x = br.right + 1 - w;
        break;
    default: // FLY_DOWN, FLY_RIGHT and anything unknown
        break;
    }

    HWND strip =
        CreateWindowExA(WS_EX_TOOLWINDOW | WS_EX_TOPMOST | WS_EX_NOACTIVATE, CUSTFLYOFF_CLASS, "",
                        WS_POPUP | WS_BORDER, x, y, w, h, GetAncestor(buttonWindow, GA_ROOT),
                        nullptr, HostInstance(), nullptr);
    auto* self = strip ? static_cast<FlyOffControl*>(ObjectOf(strip)) : nullptr;
    if (!self)
        return strip;
    self->button_ = button;
    self->columns_ = cols;
    self->cellW_ = cellW;
    self->cellH_ = cellH;
    ShowWindow(strip, SW_SHOWNOACTIVATE);
    UpdateWindow(strip);
    return strip;
}

int FlyOffControl::Track(POINT screen) {
    if (!hwnd_ || !button_)
        return -1;
    POINT p = screen;
    ScreenToClient(hwnd_, &p);
    RECT rc;
    GetClientRect(hwnd_, &rc);
    int entry = -1;
    if (PtInRect(&rc, p) && cellW_ > 0 && cellH_ > 0) {
        int i = (p.y / cellH_) * columns_ + p.x / cellW_;
        if (i < int(button_->FlyOffs().size()))
            entry = i;
    }
    if (entry != hot_) {
        hot_ = entry;
        InvalidateRect(hwnd_, nullptr, FALSE);
    }
    return entry;
}

void FlyOffControl::Paint(HDC hdc) {
    RECT rc;
    GetClientRect(hwnd_, &rc);
    FillRect(hdc, &rc, ColorMan()->GetBrush(kColorBackground));
    if (button_) {
        const auto& entries = button_->FlyOffs();
        for (int i = 0; i < int(entries.size()); ++i) {
            RECT cell = {(i % columns_) * cellW_, (i / columns_) * cellH_, 0, 0};
            cell.right = cell.left + cellW_;
            cell.bottom = cell.top + cellH_;
            const bool hot = i == hot_;
            if (hot) {
                RECT fill = {cell.left + 1, cell.top + 1, cell.right - 1, cell.bottom - 1};
                FillRect(hdc, &fill, ColorMan()->GetBrush(kColorActiveCommand));
            }
            Rect3D(hdc, cell, hot);
            if (HIMAGELIST images = button_->Images()) {
                int image = hot ? entries[size_t(i)].iInEn : entries[size_t(i)].iOutEn;
                ImageList_Draw(images, image, hdc, cell.left + (cellW_ - button_->ImageWidth()) / 2,
                               cell.top + (cellH_ - button_->ImageHeight()) / 2, ILD_TRANSPARENT);
            }
        }
    }
}

LRESULT FlyOffControl::WndProc(UINT msg, WPARAM wParam, LPARAM lParam) {
    if (LRESULT result; PaintMessage(msg, wParam, result))
        return result;
    switch (msg) {
    case WM_MOUSEACTIVATE:
        return MA_NOACTIVATE; // the button's window keeps the activation
    default:
        return Default(msg, wParam, lParam);
    }
}

} // namespace hostwin
