// The host's custom controls: toolbars, buttons, entry fields and status items.
//
// Each control is a real child window of a class the host registers (below); a plug-in
// talks to it through a small interface fetched from the window handle:
//
//     HWND tb = CreateWindowExA(0, CUSTTOOLBAR_CLASS, "", WS_CHILD | WS_VISIBLE, ...);
//     ICustToolbar* toolbar = GetICustToolbar(tb);
//     toolbar->SetImage(images);
//     toolbar->AddTool(ToolButtonItem(CTB_CHECKBUTTON, 0, 0, 0, 0, 16, 15, 23, 22, 400));
//     ICustButton* move = toolbar->GetICustButton(400);
//     ...
//     ReleaseICustButton(move);
//     ReleaseICustToolbar(toolbar);
//
// Ownership. Every Get... function hands out one reference; the matching Release...
// drops it (Release of null does nothing). An interface stays valid until it is released,
// even after its window has been destroyed: from then on its operations do nothing and
// its queries answer null, 0 or FALSE. The window itself belongs to its parent and dies
// with it, whatever references are still held.
//
// Classes. "CustToolbar", "CustButton", "CustEdit", "CustStatus" (and the fly-off pop-up
// "CustFlyOff") are registered as global classes when hostcore.dll is loaded, so
// CreateWindowExA with any module instance finds them. InitCustomControls() registers them
// again if needed (it does nothing when they exist).
//
// Messages a parent receives (toolbars pass their items' messages on to their own parent,
// so a window that owns a toolbar sees them as if the items were its own children):
//   WM_COMMAND, LOWORD(wParam) = item id, HIWORD(wParam) = BN_CLICKED (0) when a button is
//       clicked (exactly one per completed click; a check button has already toggled),
//       BN_FLYOFF when a fly-off entry was chosen, BN_BUTTONDOWN / BN_BUTTONUP /
//       BN_RIGHTCLICK only when asked for (SetButtonDownNotify, SetRightClickNotify);
//       lParam = the button's window.
//   WM_CUSTEDIT_ENTER (1709): Enter was pressed in an entry field that wants it
//       (ICustEdit::WantReturn); wParam = the field's control id, lParam = its window.
//   WM_NEXTDLGCTL: Tab was pressed in an entry field (wParam 1 with Shift, else 0;
//       lParam FALSE), so that the owner can move the focus to its next field.
//
// Windows only.
#pragma once

#include "host/export.h"
#include "host/win_types.h"

#if defined(_WIN32)
#include <commctrl.h>
#endif

// -------------------------------------------------------------------------------------
// Class names, messages and notification codes
// -------------------------------------------------------------------------------------

#define CUSTTOOLBAR_CLASS "CustToolbar"
#define CUSTBUTTON_CLASS "CustButton"
#define CUSTEDIT_CLASS "CustEdit"
#define CUSTSTATUS_CLASS "CustStatus"
#define CUSTFLYOFF_CLASS "CustFlyOff"

/// Sent by an entry field to its parent when Enter is pressed (after WantReturn(TRUE)).
#define WM_CUSTEDIT_ENTER (0x0400 + 685) // 1709, 0x6AD

/// WM_COMMAND notification codes of custom buttons (HIWORD of wParam). A plain click is
/// BN_CLICKED (0).
#define BN_BUTTONDOWN 8173
#define BN_BUTTONUP 8174
#define BN_RIGHTCLICK 8183
#define BN_FLYOFF 8187

/// Button kinds (ICustButton::SetType).
enum CustButType { CBT_PUSH = 0, CBT_CHECK = 1 };

/// Toolbar item types (ToolItem::type, ICustToolbar::GetItemType). 2 is not used.
#define CTB_PUSHBUTTON 0
#define CTB_CHECKBUTTON 1
#define CTB_SEPARATOR 3
#define CTB_STATUS 4
#define CTB_OTHER 5

/// Where a fly-off opens (SetFlyOff `dir`). FLY_VARIABLE opens downwards when there is
/// room on the screen below the button, else upwards; FLY_HVARIABLE the same to the right
/// or left.
#define FLY_VARIABLE 1
#define FLY_UP 2
#define FLY_DOWN 3
#define FLY_HVARIABLE 4
#define FLY_LEFT 5
#define FLY_RIGHT 6

/// Text alignment of a status item (ICustStatus::SetTextFormat).
#define STATUSTEXT_LEFT 1
#define STATUSTEXT_CENTERED 2
#define STATUSTEXT_RIGHT 3

// -------------------------------------------------------------------------------------
// Toolbar item descriptions (plain values: the toolbar copies what it needs)
// -------------------------------------------------------------------------------------

/// Base of the item descriptions that ICustToolbar::AddTool accepts. Sizes are pixels.
class HOST_API ToolItem {
public:
    virtual ~ToolItem() = default;

    int type = CTB_SEPARATOR; // CTB_... of the item
    int id = 0;               // control id of the item's window (0 for separators)
    int width = 0;            // width the item takes in the toolbar
    int height = 0;           // height of the item's window; it is centred vertically

protected:
    ToolItem(int t, int w, int h, int i) : type(t), id(i), width(w), height(h) {}
};

/// Empty space of `w` pixels between items.
class HOST_API ToolSeparatorItem : public ToolItem {
public:
    explicit ToolSeparatorItem(int w, int h = 16) : ToolItem(CTB_SEPARATOR, w, h, 0) {}
};

/// A status text item (a "CustStatus" window); fetch it with ICustToolbar::GetICustStatus.
/// With `fixed` FALSE the item also takes whatever width is left at the toolbar's right
/// end (at least `w`).
class HOST_API ToolStatusItem : public ToolItem {
public:
    ToolStatusItem(int w, int h, BOOL isFixed, int i)
        : ToolItem(CTB_STATUS, w, h, i), fixed(isFixed) {}
    BOOL fixed; // TRUE: exactly w pixels wide
};

/// A child window of any registered class, e.g. an entry field of class "CustEdit".
/// The toolbar creates it with the given style and control id; `y` is its top edge in the
/// toolbar, or -1 to centre it vertically.
class HOST_API ToolOtherItem : public ToolItem {
public:
    ToolOtherItem(const char* cls, int w, int h, int i, DWORD windowStyle = WS_CHILD | WS_VISIBLE,
                  int top = -1, const char* text = nullptr)
        : ToolItem(CTB_OTHER, w, h, i), className(cls), style(windowStyle), y(top),
          windowText(text) {}
    const char* className;  // window class; copied by AddTool
    DWORD style;            // window style
    int y;                  // top edge in the toolbar, -1 = centred
    const char* windowText; // initial window text or null; copied by AddTool
};

/// A push (CTB_PUSHBUTTON) or check (CTB_CHECKBUTTON) button of class "CustButton".
/// The four image indices name images of the toolbar's current image list (SetImage) at
/// the time of AddTool: out = not pressed, in = pressed or checked, en/dis = enabled or
/// disabled. `iw` x `ih` is the image size, `w` x `h` the button size.
class HOST_API ToolButtonItem : public ToolItem {
public:
    ToolButtonItem(int buttonType, int outEnabled, int inEnabled, int outDisabled, int inDisabled,
                   int iw, int ih, int w, int h, int i, const char* text = nullptr)
        : ToolItem(buttonType, w, h, i), iOutEn(outEnabled), iInEn(inEnabled), iOutDis(outDisabled),
          iInDis(inDisabled), imageWidth(iw), imageHeight(ih), label(text) {}
    int iOutEn, iInEn, iOutDis, iInDis; // image indices per state
    int imageWidth, imageHeight;        // image size in pixels
    const char* label;                  // text shown when the image list is null; copied
};

/// One entry of a fly-off: its four state images, as for ToolButtonItem.
struct FlyOffData {
    int iOutEn, iInEn, iOutDis, iInDis;
};

// -------------------------------------------------------------------------------------
// Interfaces
// -------------------------------------------------------------------------------------

class ICustButton;
class ICustStatus;

/// A toolbar: a row of items laid out left to right in the order they were added, each
/// centred vertically, on the host's panel colour.
class HOST_API ICustToolbar {
public:
    virtual HWND GetHwnd() = 0;

    /// The image list from which buttons added from now on take their images (not owned;
    /// it must outlive the buttons). Null: buttons show their label text.
    virtual void SetImage(HIMAGELIST images) = 0;
    virtual HIMAGELIST GetImage() = 0;

    /// Adds an item before position `pos` (0 = first; -1 or any position past the end
    /// appends) and creates its window. Items keep the order they were given.
    virtual void AddTool(const ToolItem& item, int pos = -1) = 0;
    /// Removes `num` items from index `start` (-1: all from `start` on) and destroys
    /// their windows. Out-of-range parts are ignored.
    virtual void DeleteTools(int start, int num = -1) = 0;

    /// The toolbar setting applied with 1 to the editor's top toolbar: an etched line
    /// along the bottom edge that separates the toolbar from the window below it.
    virtual void SetBottomBorder(BOOL on) = 0;
    virtual BOOL GetBottomBorder() = 0;

    /// Items in order: how many, and per index its id and type (CTB_...); -1 for an
    /// index out of range. Separators have id 0.
    virtual int GetNumItems() = 0;
    virtual int GetItemID(int index) = 0;
    virtual int GetItemType(int index) = 0;
    /// Index of the first item with this id, or -1.
    virtual int IndexOfItem(int id) = 0;
    /// The item's rectangle in toolbar client coordinates (separators too); FALSE and
    /// an untouched `rect` for an index out of range.
    virtual BOOL GetItemRect(int index, RECT* rect) = 0;
    /// The window of the item with this id (button, status or other window); null for
    /// an unknown id.
    virtual HWND GetItemHwnd(int id) = 0;

    /// The button with this id, with one reference (ReleaseICustButton); null when no
    /// button item has that id.
    virtual ICustButton* GetICustButton(int id) = 0;
    /// The status item with this id, with one reference (ReleaseICustStatus); or null.
    virtual ICustStatus* GetICustStatus(int id) = 0;

protected:
    ~ICustToolbar() = default;
};

/// A push or check button showing an image (or a text label). Push buttons appear pressed
/// while the mouse is held on them; check buttons stay "in" while checked and may be filled
/// with the highlight colour. A button with a fly-off opens, after its delay, a strip of
/// its entries; the entry chosen becomes the button's current image set.
class HOST_API ICustButton {
public:
    virtual HWND GetHwnd() = 0;

    /// The label drawn when the button has no image list.
    virtual void SetText(const char* text) = 0;
    /// Copies the label into `buf` (at most size - 1 characters and a terminating 0).
    virtual void GetText(char* buf, int size) = 0;

    /// Images of the four states from `images` (not owned; null shows the label), each
    /// `w` x `h`, centred in the button.
    virtual void SetImage(HIMAGELIST images, int iOutEn, int iInEn, int iOutDis, int iInDis, int w,
                          int h) = 0;

    /// CBT_PUSH or CBT_CHECK. Changing to push clears the check.
    virtual void SetType(int type) = 0;
    virtual int GetType() = 0;

    /// Checked state of a check button (FALSE for push buttons). SetCheck sends nothing.
    virtual BOOL IsChecked() = 0;
    virtual void SetCheck(BOOL checked) = 0;

    /// Whether a checked button is filled with the highlight colour (default TRUE). The
    /// editor turns it off (0) on its curve display buttons, whose images carry the curve
    /// colour: checked, they then only appear pressed in.
    virtual void SetCheckHighlight(BOOL on) = 0;
    virtual BOOL GetCheckHighlight() = 0;
    /// The fill of a checked button (default: colour kColorActiveCommand of the colour
    /// manager).
    virtual void SetHighlightColor(COLORREF color) = 0;
    virtual COLORREF GetHighlightColor() = 0;

    /// Also send BN_BUTTONDOWN at the press and BN_BUTTONUP at the release (default off).
    virtual void SetButtonDownNotify(BOOL on) = 0;
    /// Send BN_RIGHTCLICK on a right click (default off).
    virtual void SetRightClickNotify(BOOL on) = 0;

    /// Gives the button `count` fly-off entries (copied; count <= 0 removes the fly-off).
    /// Holding the button `timeOut` milliseconds opens the strip of entries in direction
    /// `dir` (FLY_...), `columns` entries across; releasing the mouse on an entry makes it
    /// current, checks a check button and sends WM_COMMAND with BN_FLYOFF; releasing
    /// elsewhere closes the strip without a change. A release before the delay is an
    /// ordinary click. `init` is the first current entry (clamped to the entries).
    virtual void SetFlyOff(int count, const FlyOffData* data, int timeOut, int init,
                           int dir = FLY_VARIABLE, int columns = 1) = 0;
    /// Makes entry `f` current (ignored when out of range); with `notify` TRUE the parent
    /// gets WM_COMMAND with BN_FLYOFF as if the user had chosen it.
    virtual void SetCurFlyOff(int f, BOOL notify = FALSE) = 0;
    /// The current entry; 0 when the button has no fly-off.
    virtual int GetCurFlyOff() = 0;
    virtual int GetNumFlyOffs() = 0;
    /// TRUE while the fly-off strip is open.
    virtual BOOL IsFlyOffOpen() = 0;

    /// Turns the tooltip on with this text (copied; null = empty) or off.
    virtual void SetTooltip(BOOL on, const char* text) = 0;
    /// Reads the text back from the tooltip control; FALSE (and "" in `buf`) when the
    /// button has no tooltip.
    virtual BOOL GetTooltip(char* buf, int size) = 0;

    /// A disabled button shows its disabled images and ignores the mouse.
    virtual void Enable(BOOL on = TRUE) = 0;
    virtual void Disable() { Enable(FALSE); }
    virtual BOOL IsEnabled() = 0;

protected:
    ~ICustButton() = default;
};

/// A single-line entry field. Its window ("CustEdit") holds a standard edit control that
/// takes the keyboard focus.
class HOST_API ICustEdit {
public:
    virtual HWND GetHwnd() = 0;

    /// Copies the text into `buf` (at most size - 1 characters and a 0).
    virtual void GetText(char* buf, int size) = 0;
    virtual void SetText(const char* text) = 0;
    virtual void SetText(int value) = 0;
    /// "%.*f" of the value with `precision` decimals.
    virtual void SetText(float value, int precision = 3) = 0;
    /// The text as a number; `valid` (may be null) tells whether the whole text was one.
    virtual float GetFloat(BOOL* valid = nullptr) = 0;
    virtual int GetInt(BOOL* valid = nullptr) = 0;

    /// With TRUE, Enter sends WM_CUSTEDIT_ENTER (1709) to the field's parent (default
    /// FALSE: Enter is ignored).
    virtual void WantReturn(BOOL on) = 0;
    /// TRUE when Enter was pressed since the last call (whether or not it was reported).
    virtual BOOL GotReturn() = 0;

    /// Keyboard focus of the inner edit control.
    virtual BOOL HasFocus() = 0;
    virtual void GiveFocus() = 0;

    /// A disabled field is greyed and takes no input.
    virtual void Enable(BOOL on = TRUE) = 0;
    virtual void Disable() { Enable(FALSE); }
    virtual BOOL IsEnabled() = 0;

    virtual void SetTooltip(BOOL on, const char* text) = 0;

protected:
    ~ICustEdit() = default;
};

/// A sunken text strip for prompts. The text is the window's own text, so
/// GetWindowTextA on the window reads it as well.
class HOST_API ICustStatus {
public:
    virtual HWND GetHwnd() = 0;
    virtual void SetText(const char* text) = 0; // null: empty
    virtual void GetText(char* buf, int size) = 0;
    virtual void SetTextFormat(int format) = 0; // STATUSTEXT_...
    virtual int GetTextFormat() = 0;
    virtual void SetTooltip(BOOL on, const char* text) = 0;

protected:
    ~ICustStatus() = default;
};

// -------------------------------------------------------------------------------------
// Access
// -------------------------------------------------------------------------------------

/// Registers the control classes (idempotent; done already when hostcore.dll loads).
HOST_API void InitCustomControls();

/// The interface of a window of the matching class, with one reference; null for any
/// other window (or null).
HOST_API ICustToolbar* GetICustToolbar(HWND hwnd);
HOST_API ICustButton* GetICustButton(HWND hwnd);
HOST_API ICustEdit* GetICustEdit(HWND hwnd);
HOST_API ICustStatus* GetICustStatus(HWND hwnd);

/// Drops one reference; null is ignored.
HOST_API void ReleaseICustToolbar(ICustToolbar* toolbar);
HOST_API void ReleaseICustButton(ICustButton* button);
HOST_API void ReleaseICustEdit(ICustEdit* edit);
HOST_API void ReleaseICustStatus(ICustStatus* status);
