// The objects behind the custom-control windows. Each implements its public interface
// (host/custctrl.h) on top of ControlObject; their window procedures are in the file of
// the same name (cust_toolbar.cpp, cust_button.cpp, cust_flyoff.cpp, cust_edit.cpp,
// cust_status.cpp).
#pragma once

#include <string>
#include <vector>

#include "cust_internal.h"

namespace hostwin {

// -------------------------------------------------------------------------------------
// Toolbar
// -------------------------------------------------------------------------------------

class ToolbarControl final : public ICustToolbar, public PaintedControl {
public:
    explicit ToolbarControl(HWND hwnd) : PaintedControl(hwnd) {}

    HWND GetHwnd() override { return hwnd_; }
    void SetImage(HIMAGELIST images) override { images_ = images; }
    HIMAGELIST GetImage() override { return images_; }
    void AddTool(const ToolItem& item, int pos) override;
    void DeleteTools(int start, int num) override;
    void SetBottomBorder(BOOL on) override;
    BOOL GetBottomBorder() override { return bottomBorder_; }
    int GetNumItems() override { return int(items_.size()); }
    int GetItemID(int index) override;
    int GetItemType(int index) override;
    int IndexOfItem(int id) override;
    BOOL GetItemRect(int index, RECT* rect) override;
    HWND GetItemHwnd(int id) override;
    ICustButton* GetICustButton(int id) override;
    ICustStatus* GetICustStatus(int id) override;

    LRESULT WndProc(UINT msg, WPARAM wParam, LPARAM lParam) override;

private:
    struct Item {
        int type;     // CTB_...
        int id;       // control id, 0 for separators
        int width;    // requested width
        int height;   // height of the item's window
        int top;      // fixed top edge, -1 = centred
        bool stretch; // a non-fixed status item: takes the width left over
        HWND hwnd;    // the item's window (child of the toolbar), null for separators
        RECT rect;    // placed rectangle, toolbar client coordinates
    };

    HWND CreateItemWindow(const ToolItem& item);
    void Layout();
    void Paint(HDC hdc) override;
    bool IsItemWindow(HWND hwnd) const;

    std::vector<Item> items_;     // in toolbar order
    HIMAGELIST images_ = nullptr; // image list for buttons added next (not owned)
    BOOL bottomBorder_ = FALSE;   // etched line along the bottom edge
};

// -------------------------------------------------------------------------------------
// Button and its fly-off strip
// -------------------------------------------------------------------------------------

class FlyOffControl;

class ButtonControl final : public ICustButton, public PaintedControl {
public:
    explicit ButtonControl(HWND hwnd);

    HWND GetHwnd() override { return hwnd_; }
    void SetText(const char* text) override;
    void GetText(char* buf, int size) override;
    void SetImage(HIMAGELIST images, int iOutEn, int iInEn, int iOutDis, int iInDis, int w,
                  int h) override;
    void SetType(int type) override;
    int GetType() override { return type_; }
    BOOL IsChecked() override { return checked_; }
    void SetCheck(BOOL checked) override;
    void SetCheckHighlight(BOOL on) override;
    BOOL GetCheckHighlight() override { return checkHighlight_; }
    void SetHighlightColor(COLORREF color) override;
    COLORREF GetHighlightColor() override { return highlight_; }
    void SetButtonDownNotify(BOOL on) override { downNotify_ = on; }
    void SetRightClickNotify(BOOL on) override { rightNotify_ = on; }
    void SetFlyOff(int count, const FlyOffData* data, int timeOut, int init, int dir,
                   int columns) override;
    void SetCurFlyOff(int f, BOOL notify) override;
    int GetCurFlyOff() override { return curFlyOff_; }
    int GetNumFlyOffs() override { return int(flyOffs_.size()); }
    BOOL IsFlyOffOpen() override { return flyOffWindow_ != nullptr; }
    void SetTooltip(BOOL on, const char* text) override { tooltip_.Set(hwnd_, on, text); }
    BOOL GetTooltip(char* buf, int size) override { return tooltip_.Get(buf, size); }
    void Enable(BOOL on) override;
    BOOL IsEnabled() override;

    LRESULT WndProc(UINT msg, WPARAM wParam, LPARAM lParam) override;

    /// For the fly-off strip: the images, entries and cell size it shows.
    HIMAGELIST Images() const { return images_; }
    const std::vector<FlyOffData>& FlyOffs() const { return flyOffs_; }
    int ImageWidth() const { return imageW_; }
    int ImageHeight() const { return imageH_; }

private:
    void OnLButtonDown(POINT p);
    void OnMouseMove(POINT p);
    void OnLButtonUp(POINT p);
    void OnTimer();
    void CancelPress();
    void OpenFlyOff();
    void CloseFlyOff();
    bool IsIn() const;
    void Paint(HDC hdc) override;
    void Invalidate();

    int type_ = CBT_PUSH;             // CBT_PUSH or CBT_CHECK
    BOOL checked_ = FALSE;            // check buttons only
    BOOL checkHighlight_ = TRUE;      // fill a checked button with highlight_
    COLORREF highlight_;              // fill colour of a checked button
    BOOL downNotify_ = FALSE;         // BN_BUTTONDOWN / BN_BUTTONUP wanted
    BOOL rightNotify_ = FALSE;        // BN_RIGHTCLICK wanted
    HIMAGELIST images_ = nullptr;     // not owned
    int image_[4] = {0, 0, 0, 0};     // out-enabled, in-enabled, out-disabled, in-disabled
    int imageW_ = 16, imageH_ = 15;   // image size
    bool pressed_ = false;            // left button went down on us and is still down
    bool inside_ = false;             // ... and the mouse is over the button
    std::vector<FlyOffData> flyOffs_; // fly-off entries (empty: none)
    int curFlyOff_ = 0;               // current entry
    int flyOffDelay_ = 0;             // milliseconds before the strip opens
    int flyOffDir_ = FLY_VARIABLE;    // FLY_...
    int flyOffColumns_ = 1;           // entries across
    HWND flyOffWindow_ = nullptr;     // the open strip, owned
    Tooltip tooltip_;
};

/// The pop-up strip of a button's fly-off entries. It never takes the mouse capture or
/// the focus: the button keeps tracking the mouse and asks the strip which entry is under
/// it.
class FlyOffControl final : public PaintedControl {
public:
    explicit FlyOffControl(HWND hwnd) : PaintedControl(hwnd) {}

    /// Creates the strip for `button` next to the button's screen rectangle.
    static HWND Open(ButtonControl* button, HWND buttonWindow, int dir, int columns);
    /// The entry under the screen point, or -1; highlights it.
    int Track(POINT screen);

    LRESULT WndProc(UINT msg, WPARAM wParam, LPARAM lParam) override;

private:
    void Paint(HDC hdc) override;

    ButtonControl* button_ = nullptr; // the button that opened the strip (it owns us)
    int columns_ = 1;                 // entries across
    int cellW_ = 0, cellH_ = 0;       // size of one entry
    int hot_ = -1;                    // entry under the mouse
};

// -------------------------------------------------------------------------------------
// Entry field
// -------------------------------------------------------------------------------------

class EditControl final : public ICustEdit, public ControlObject {
public:
    explicit EditControl(HWND hwnd) : ControlObject(hwnd) {}

    HWND GetHwnd() override { return hwnd_; }
    void GetText(char* buf, int size) override;
    void SetText(const char* text) override;
    void SetText(int value) override;
    void SetText(float value, int precision) override;
    float GetFloat(BOOL* valid) override;
    int GetInt(BOOL* valid) override;
    void WantReturn(BOOL on) override { wantReturn_ = on; }
    BOOL GotReturn() override;
    BOOL HasFocus() override;
    void GiveFocus() override;
    void Enable(BOOL on) override;
    BOOL IsEnabled() override;
    void SetTooltip(BOOL on, const char* text) override { tooltip_.Set(edit_, on, text); }

    LRESULT WndProc(UINT msg, WPARAM wParam, LPARAM lParam) override;

private:
    static LRESULT CALLBACK InnerProc(HWND hwnd, UINT msg, WPARAM wParam, LPARAM lParam);
    LRESULT Inner(UINT msg, WPARAM wParam, LPARAM lParam);
    std::string Text() const;

    HWND edit_ = nullptr;        // the inner standard edit control
    WNDPROC editProc_ = nullptr; // its own procedure, called after ours
    BOOL wantReturn_ = FALSE;    // report Enter to the parent
    BOOL gotReturn_ = FALSE;     // Enter pressed since GotReturn last asked
    Tooltip tooltip_;
};

// -------------------------------------------------------------------------------------
// Status item
// -------------------------------------------------------------------------------------

class StatusControl final : public ICustStatus, public PaintedControl {
public:
    explicit StatusControl(HWND hwnd) : PaintedControl(hwnd) {}

    HWND GetHwnd() override { return hwnd_; }
    void SetText(const char* text) override;
    void GetText(char* buf, int size) override;
    void SetTextFormat(int format) override;
    int GetTextFormat() override { return format_; }
    void SetTooltip(BOOL on, const char* text) override { tooltip_.Set(hwnd_, on, text); }

    LRESULT WndProc(UINT msg, WPARAM wParam, LPARAM lParam) override;

private:
    void Paint(HDC hdc) override;

    int format_ = STATUSTEXT_LEFT; // STATUSTEXT_...
    Tooltip tooltip_;
};

} // namespace hostwin
