// [SECTION] index
//   Items      adding, removing and reading back items
//   Layout     left to right, centred vertically, stretching status items
//   Window     painting, passing the items' messages on to the toolbar's parent

#include <algorithm>

#include "cust_classes.h"
#include "host/colorman.h"

namespace hostwin {

// -------------------------------------------------------------------------------------
// [SECTION] Items
// -------------------------------------------------------------------------------------

HWND ToolbarControl::CreateItemWindow(const ToolItem& item) {
    HMENU id = reinterpret_cast<HMENU>(INT_PTR(item.id));
    switch (item.type) {
    case CTB_PUSHBUTTON:
    case CTB_CHECKBUTTON: {
        const auto& b = static_cast<const ToolButtonItem&>(item);
        HWND w = CreateWindowExA(0, CUSTBUTTON_CLASS, b.label ? b.label : "", WS_CHILD | WS_VISIBLE,
                                 0, 0, b.width, b.height, hwnd_, id, HostInstance(), nullptr);
        if (auto* button = static_cast<ButtonControl*>(w ? ObjectOf(w) : nullptr)) {
            button->SetType(item.type == CTB_CHECKBUTTON ? CBT_CHECK : CBT_PUSH);
            button->SetImage(images_, b.iOutEn, b.iInEn, b.iOutDis, b.iInDis, b.imageWidth,
                             b.imageHeight);
        }
        return w;
    }
    case CTB_STATUS:
        return CreateWindowExA(0, CUSTSTATUS_CLASS, "", WS_CHILD | WS_VISIBLE, 0, 0, item.width,
                               item.height, hwnd_, id, HostInstance(), nullptr);
    case CTB_OTHER: {
        const auto& o = static_cast<const ToolOtherItem&>(item);
        if (!o.className)
            return nullptr;
        // Always a child: a pop-up would not move with the toolbar.
        DWORD style = (o.style & ~DWORD(WS_POPUP)) | WS_CHILD;
        return CreateWindowExA(0, o.className, o.windowText ? o.windowText : "", style, 0, 0,
                               o.width, o.height, hwnd_, id, HostInstance(), nullptr);
    }
    default:
        return nullptr; // separators have no window
    }
}

void ToolbarControl::AddTool(const ToolItem& item, int pos) {
    if (!hwnd_)
        return;
    Item it = {};
    it.type = item.type;
    it.id = item.type == CTB_SEPARATOR ? 0 : item.id;
    it.width = std::max(0, item.width);
    it.height = std::max(0, item.height);
    it.top = item.type == CTB_OTHER ? static_cast<const ToolOtherItem&>(item).y : -1;
    it.stretch = item.type == CTB_STATUS && !static_cast<const ToolStatusItem&>(item).fixed;
    it.hwnd = CreateItemWindow(item);
    if (pos < 0 || pos > int(items_.size()))
        pos = int(items_.size());
    items_.insert(items_.begin() + pos, it);
    Layout();
}

void ToolbarControl::DeleteTools(int start, int num) {
    int n = int(items_.size());
    if (start < 0 || start >= n)
        return;
    int end = num < 0 ? n : std::min(n, start + num);
    for (int i = start; i < end; ++i)
        if (items_[size_t(i)].hwnd)
            DestroyWindow(items_[size_t(i)].hwnd);
    items_.erase(items_.begin() + start, items_.begin() + end);
    Layout();
    if (hwnd_)
        InvalidateRect(hwnd_, nullptr, TRUE);
}

void ToolbarControl::SetBottomBorder(BOOL on) {
    bottomBorder_ = on ? TRUE : FALSE;
    if (hwnd_)
        InvalidateRect(hwnd_, nullptr, TRUE);
}

int ToolbarControl::GetItemID(int index) {
    return index >= 0 && index < int(items_.size()) ? items_[size_t(index)].id : -1;
}

int ToolbarControl::GetItemType(int index) {
    return index >= 0 && index < int(items_.size()) ? items_[size_t(index)].type : -1;
}

int ToolbarControl::IndexOfItem(int id) {
    for (size_t i = 0; i < items_.size(); ++i)
        if (items_[i].id == id && items_[i].type != CTB_SEPARATOR)
            return int(i);
    return -1;
}

BOOL ToolbarControl::GetItemRect(int index, RECT* rect) {
    if (!rect || index < 0 || index >= int(items_.size()))
        return FALSE;
    *rect = items_[size_t(index)].rect;
    return TRUE;
}

HWND ToolbarControl::GetItemHwnd(int id) {
    int i = IndexOfItem(id);
    return i < 0 ? nullptr : items_[size_t(i)].hwnd;
}

ICustButton* ToolbarControl::GetICustButton(int id) {
    for (const Item& it : items_)
        if (it.id == id && (it.type == CTB_PUSHBUTTON || it.type == CTB_CHECKBUTTON))
            return ::GetICustButton(it.hwnd);
    return nullptr;
}

ICustStatus* ToolbarControl::GetICustStatus(int id) {
    for (const Item& it : items_)
        if (it.id == id && it.type == CTB_STATUS)
            return ::GetICustStatus(it.hwnd);
    return nullptr;
}

bool ToolbarControl::IsItemWindow(HWND hwnd) const {
    return hwnd && std::any_of(items_.begin(), items_.end(),
                               [hwnd](const Item& it) { return it.hwnd == hwnd; });
}

// -------------------------------------------------------------------------------------
// [SECTION] Layout
// -------------------------------------------------------------------------------------

void ToolbarControl::Layout() {
    if (!hwnd_)
        return;
    RECT client;
    GetClientRect(hwnd_, &client);
    int total = 0;
    for (const Item& it : items_)
        total += it.width;
    int spare = std::max(0, int(client.right) - total); // goes to the first stretching item

    int x = 0;
    for (Item& it : items_) {
        int w = it.width;
        if (it.stretch && spare > 0) {
            w += spare;
            spare = 0;
        }
        int top = it.top >= 0 ? it.top : (int(client.bottom) - it.height) / 2;
        it.rect = {x, top, x + w, top + it.height};
        if (it.hwnd)
            MoveWindow(it.hwnd, x, top, w, it.height, TRUE);
        x += w;
    }
}

// -------------------------------------------------------------------------------------
// [SECTION] Window
// -------------------------------------------------------------------------------------

void ToolbarControl::Paint(HDC hdc) {
    RECT rc;
    GetClientRect(hwnd_, &rc);
    FillRect(hdc, &rc, ColorMan()->GetBrush(kColorBackground));
    if (bottomBorder_ && rc.bottom >= 2) {
        // Etched: a shadow line above a highlight line.
        RECT shadow = {rc.left, rc.bottom - 2, rc.right, rc.bottom - 1};
        RECT light = {rc.left, rc.bottom - 1, rc.right, rc.bottom};
        FillRect(hdc, &shadow, ColorMan()->GetBrush(kColorShadow));
        FillRect(hdc, &light, ColorMan()->GetBrush(kColorHilight3D));
    }
}

LRESULT ToolbarControl::WndProc(UINT msg, WPARAM wParam, LPARAM lParam) {
    if (LRESULT result; PaintMessage(msg, wParam, result))
        return result;
    switch (msg) {
    case WM_SIZE:
        Layout();
        InvalidateRect(hwnd_, nullptr, FALSE);
        return 0;
    case WM_COMMAND:
    case WM_CUSTEDIT_ENTER:
    case WM_NEXTDLGCTL:
        // The items belong to whoever owns the toolbar: pass their messages on.
        if (HWND parent = GetParent(hwnd_))
            return SendMessageA(parent, msg, wParam, lParam);
        return 0;
    case WM_NOTIFY: {
        // Only the items' own notifications; the tooltips talk to the toolbar.
        auto* hdr = reinterpret_cast<const NMHDR*>(lParam);
        HWND parent = GetParent(hwnd_);
        if (hdr && parent && IsItemWindow(hdr->hwndFrom))
            return SendMessageA(parent, msg, wParam, lParam);
        return 0;
    }
    case WM_DESTROY:
        items_.clear(); // the item windows die with the toolbar
        return 0;
    default:
        return Default(msg, wParam, lParam);
    }
}

} // namespace hostwin
