// The editor's two toolbars: the edit toolbar at the top (flag 4) with the mode buttons,
// delete, reset and one display button per curve, and the view toolbar at the bottom
// (flag 16) with the status prompt, the X and Y entry fields and the view tools.
//
// [SECTION] Item tables
// [SECTION] View toolbar
// [SECTION] Edit toolbar and curve buttons
// [SECTION] Release
#include "control/curve_control.h"
#include "editor/curve_ctl_window.h"
#include "editor/editor_resources.h"
#include "host/colorman.h"
#include "platform/res_string.h"

// ---------------------------------------------------------------------------------------
// [SECTION] Item tables

namespace {

constexpr int kImageW = 16;
constexpr int kImageH = 15;
constexpr int kFlyOffDelay = 200; // ms the button is held before its fly-off opens

/// One button of a toolbar table.
struct ButtonSpec {
    int id;
    int type;      // CTB_PUSHBUTTON or CTB_CHECKBUTTON
    int images[4]; // out enabled, in enabled, out disabled, in disabled
    int tooltip;   // string id (IDS_...) of the tooltip
};

/// One item of a toolbar table: a separator of `width`, or a button.
struct ItemSpec {
    int width;                // separator width; 0 for a button
    const ButtonSpec* button; // null for a separator
};

// View toolbar buttons: 22 x 20.
constexpr ButtonSpec kPan{editor_id::kPan, CTB_CHECKBUTTON, {4, 4, 4, 4}, IDS_PAN};
constexpr ButtonSpec kZoomExt{
    editor_id::kZoomExtents, CTB_PUSHBUTTON, {12, 12, 12, 12}, IDS_ZOOM_EXTENTS};
constexpr ButtonSpec kZoomHExt{
    editor_id::kZoomHorizontalExtents, CTB_PUSHBUTTON, {0, 0, 0, 0}, IDS_ZOOM_HORIZONTAL_EXTENTS};
constexpr ButtonSpec kZoomVExt{
    editor_id::kZoomVerticalExtents, CTB_PUSHBUTTON, {5, 5, 5, 5}, IDS_ZOOM_VERTICAL_EXTENTS};
constexpr ButtonSpec kZoomH{
    editor_id::kZoomHorizontally, CTB_CHECKBUTTON, {6, 6, 11, 11}, IDS_ZOOM_HORIZONTALLY};
constexpr ButtonSpec kZoomV{
    editor_id::kZoomVertically, CTB_CHECKBUTTON, {2, 2, 10, 10}, IDS_ZOOM_VERTICALLY};
constexpr ButtonSpec kZoom{editor_id::kZoom, CTB_CHECKBUTTON, {7, 7, 7, 7}, IDS_ZOOM};
constexpr ButtonSpec kZoomRegion{
    editor_id::kZoomRegion, CTB_CHECKBUTTON, {3, 3, 3, 3}, IDS_ZOOM_REGION};

/// The view-mode buttons, which get the highlight colour.
constexpr int kViewModeButtons[] = {editor_id::kPan, editor_id::kZoomHorizontally,
                                    editor_id::kZoomVertically, editor_id::kZoom,
                                    editor_id::kZoomRegion};

// Edit toolbar buttons: 23 x 22.
constexpr ButtonSpec kMoveBtn{editor_id::kMove, CTB_CHECKBUTTON, {0, 0, 0, 0}, IDS_MOVE};
constexpr ButtonSpec kScaleBtn{
    editor_id::kScale, CTB_CHECKBUTTON, {20, 20, 20, 20}, IDS_SCALE_POINT_TIP};
constexpr ButtonSpec kAddBtn{editor_id::kAddPoint, CTB_CHECKBUTTON, {3, 3, 3, 3}, IDS_ADD_POINT};
constexpr ButtonSpec kDeleteBtn{
    editor_id::kDeletePoint, CTB_PUSHBUTTON, {4, 4, 4, 4}, IDS_DELETE_POINT};
constexpr ButtonSpec kResetBtn{
    editor_id::kResetCurves, CTB_PUSHBUTTON, {19, 19, 19, 19}, IDS_RESET_CURVES};

/// Edit toolbar items before the curve buttons; the last two only with flag 8.
constexpr ItemSpec kEditItems[] = {
    {6, nullptr},  {12, nullptr}, {12, nullptr},    {0, &kMoveBtn}, {0, &kScaleBtn},
    {0, &kAddBtn}, {12, nullptr}, {0, &kDeleteBtn}, {12, nullptr},
};
constexpr ItemSpec kResetItems[] = {{0, &kResetBtn}, {12, nullptr}};

/// Fly-off entries: the move directions (xy, x, y) and the insert types (corner, Bezier).
constexpr FlyOffData kMoveFlyOff[] = {{0, 0, 0, 0}, {1, 1, 1, 1}, {2, 2, 2, 2}};
constexpr FlyOffData kInsertFlyOff[] = {{25, 25, 25, 25}, {3, 3, 3, 3}};

void addButton(ICustToolbar* tb, const ButtonSpec& b, int w, int h) {
    tb->AddTool(ToolButtonItem(b.type, b.images[0], b.images[1], b.images[2], b.images[3], kImageW,
                               kImageH, w, h, b.id));
}

/// Fetches a button of the table into the editor's list and gives it its tooltip.
void fetchButton(EditorToolbars& bars, ICustToolbar* tb, const ButtonSpec& b) {
    ButtonRef button(tb->GetICustButton(b.id));
    if (button)
        button->SetTooltip(TRUE, GetResString(b.tooltip));
    bars.buttons.push_back(EditorToolbars::Entry{b.id, std::move(button)});
}

HWND createToolbarWindow(HWND parent) {
    return CreateWindowExA(0, CUSTTOOLBAR_CLASS, "", WS_CHILD | WS_VISIBLE, 0, 0, 0, 0, parent,
                           nullptr, EditorInstance(), nullptr);
}

} // namespace

ICustButton* EditorToolbars::Button(int id) const {
    for (const Entry& e : buttons)
        if (e.id == id)
            return e.button.get();
    return nullptr;
}

void CurveCtlWindow::createToolbars() {
    const DWORD flags = Flags();
    if (flags & CC_SHOWZOOMTOOLBAR)
        buildViewToolbar();
    if (flags & CC_SHOWTOOLBAR)
        buildEditToolbar();
}

// ---------------------------------------------------------------------------------------
// [SECTION] View toolbar

void CurveCtlWindow::buildViewToolbar() {
    toolbars_.bottomWindow = createToolbarWindow(hWnd_);
    toolbars_.bottom.reset(GetICustToolbar(toolbars_.bottomWindow));
    ICustToolbar* tb = toolbars_.bottom.get();
    if (!tb)
        return;
    tb->SetImage(LoadEditorResources().viewImages);

    tb->AddTool(ToolSeparatorItem(6, 16));
    tb->AddTool(ToolStatusItem(300, 16, TRUE, editor_id::kStatus));
    tb->AddTool(ToolSeparatorItem(4));
    tb->AddTool(ToolOtherItem(CUSTEDIT_CLASS, 50, 16, editor_id::kXEntry));
    tb->AddTool(ToolSeparatorItem(4));
    tb->AddTool(ToolOtherItem(CUSTEDIT_CLASS, 50, 16, editor_id::kYEntry));
    tb->AddTool(ToolSeparatorItem(12));
    tb->AddTool(ToolSeparatorItem(4));
    addButton(tb, kPan, 22, 20);
    tb->AddTool(ToolSeparatorItem(4));
    addButton(tb, kZoomExt, 22, 20);
    addButton(tb, kZoomHExt, 22, 20);
    addButton(tb, kZoomVExt, 22, 20);
    tb->AddTool(ToolSeparatorItem(4));
    addButton(tb, kZoomH, 22, 20);
    addButton(tb, kZoomV, 22, 20);
    addButton(tb, kZoom, 22, 20);
    addButton(tb, kZoomRegion, 22, 20);
    tb->AddTool(ToolSeparatorItem(12));

    toolbars_.status.reset(tb->GetICustStatus(editor_id::kStatus));
    toolbars_.xEntry.reset(GetICustEdit(tb->GetItemHwnd(editor_id::kXEntry)));
    toolbars_.yEntry.reset(GetICustEdit(tb->GetItemHwnd(editor_id::kYEntry)));
    for (const ButtonSpec* b :
         {&kPan, &kZoomExt, &kZoomHExt, &kZoomVExt, &kZoomH, &kZoomV, &kZoom, &kZoomRegion})
        fetchButton(toolbars_, tb, *b);
    if (toolbars_.xEntry)
        toolbars_.xEntry->WantReturn(TRUE);
    if (toolbars_.yEntry)
        toolbars_.yEntry->WantReturn(TRUE);
    const COLORREF highlight = ColorMan()->GetColor(kColorActiveCommand);
    for (int id : kViewModeButtons)
        if (ICustButton* b = toolbars_.Button(id))
            b->SetHighlightColor(highlight);
}

// ---------------------------------------------------------------------------------------
// [SECTION] Edit toolbar and curve buttons

void CurveCtlWindow::buildEditToolbar() {
    toolbars_.topWindow = createToolbarWindow(hWnd_);
    toolbars_.top.reset(GetICustToolbar(toolbars_.topWindow));
    ICustToolbar* tb = toolbars_.top.get();
    if (!tb)
        return;
    tb->SetBottomBorder(TRUE);
    control_->RefreshCurveButtonTexts();

    tb->SetImage(LoadEditorResources().editImages);
    toolbars_.topItemCount = 0;
    auto addItems = [&](const ItemSpec* items, size_t n) {
        for (size_t i = 0; i < n; ++i) {
            if (items[i].button)
                addButton(tb, *items[i].button, 23, 22);
            else
                tb->AddTool(ToolSeparatorItem(items[i].width, 16));
            ++toolbars_.topItemCount;
        }
    };
    addItems(kEditItems, std::size(kEditItems));
    if (Flags() & CC_SHOWRESET)
        addItems(kResetItems, std::size(kResetItems));
    addCurveButtons();

    for (const ButtonSpec* b : {&kMoveBtn, &kScaleBtn, &kAddBtn, &kDeleteBtn})
        fetchButton(toolbars_, tb, *b);
    if (Flags() & CC_SHOWRESET)
        fetchButton(toolbars_, tb, kResetBtn);
    const COLORREF highlight = ColorMan()->GetColor(kColorActiveCommand);
    for (int id : {editor_id::kMove, editor_id::kScale, editor_id::kAddPoint})
        if (ICustButton* b = toolbars_.Button(id))
            b->SetHighlightColor(highlight);

    editMode_ = -1;
    viewMode_ = kViewNone;
    shown_.ClearAll();
    flyOffSetup();
}

void CurveCtlWindow::flyOffSetup() {
    if (ICustButton* move = toolbars_.Button(editor_id::kMove))
        move->SetFlyOff(3, kMoveFlyOff, kFlyOffDelay, 0, FLY_DOWN, 1);
    if (ICustButton* add = toolbars_.Button(editor_id::kAddPoint)) {
        // The control's insert type: Bezier for tool mode 5, else corner.
        const int insertType = (control_->GetToolMode() == CC_TOOL_INSERT_BEZIER) ? 1 : 0;
        add->SetFlyOff(2, kInsertFlyOff, kFlyOffDelay, insertType, FLY_DOWN, 1);
    }
}

/// Appends one display button per curve (none for a single curve or with flag
/// 0x100000) and fetches them into the curve-button table.
void CurveCtlWindow::addCurveButtons() {
    ICustToolbar* tb = toolbars_.top.get();
    const int count = control_->GetCurveCount();
    toolbars_.curveButtons.clear();
    toolbars_.curveButtons.resize(size_t(std::max(0, count)));
    if (!tb || count < 2 || (Flags() & CC_NOFILTERBUTTONS))
        return;

    HIMAGELIST clientImages = control_->ButtonImages();
    tb->SetImage(clientImages ? clientImages : LoadEditorResources().curveImages);
    for (int i = 0; i < count; ++i) {
        tb->AddTool(ToolButtonItem(CTB_CHECKBUTTON, i, i, i, i, kImageW, kImageH, 23, 22,
                                   editor_id::kCurveButton + i));
        ++toolbars_.topItemCount;
    }
    tb->SetImage(LoadEditorResources().editImages);

    for (int i = 0; i < count; ++i) {
        ButtonRef button(tb->GetICustButton(editor_id::kCurveButton + i));
        if (button) {
            // Curve images carry the curve's colour: checked, they only appear pressed.
            button->SetCheckHighlight(0);
            button->SetTooltip(TRUE, control_->CurveButtonText(i));
            button->SetCheck(shown_[i]);
        }
        toolbars_.curveButtons[size_t(i)] = std::move(button);
    }
}

void CurveCtlWindow::RebuildCurveButtons() {
    ICustToolbar* tb = toolbars_.top.get();
    if (tb) {
        // Drop the old curve buttons (they follow the fixed items) before adding anew.
        toolbars_.curveButtons.clear();
        const int first = tb->IndexOfItem(editor_id::kCurveButton);
        if (first >= 0) {
            const int removed = tb->GetNumItems() - first;
            tb->DeleteTools(first, -1);
            toolbars_.topItemCount -= removed;
        }
        control_->RefreshCurveButtonTexts();
    }
    addCurveButtons();
    InvalidateRect(hWnd_, nullptr, FALSE);
}

// ---------------------------------------------------------------------------------------
// [SECTION] Release

void CurveCtlWindow::releaseControls() {
    toolbars_.curveButtons.clear();
    toolbars_.buttons.clear();
    toolbars_.status.reset();
    toolbars_.xEntry.reset();
    toolbars_.yEntry.reset();
    toolbars_.top.reset();
    toolbars_.bottom.reset();
}
