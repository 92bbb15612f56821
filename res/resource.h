/* Resource ids of the module. Strings 1 to 36 are in string_table.inc.
   Strings of the extensions (ICurveCtlEx) follow them, each feature group in its own
   range so that groups can grow apart: 37 to 59 keyboard, snapping and view; 60 to 89
   copy, paste and presets. */
#pragma once

#define IDS_LIB_DESCRIPTION 1
#define IDS_CATEGORY 2
#define IDS_CLASS_NAME 3
#define IDS_PARAMETERS 4
#define IDS_VISIBILITY_TOGGLE 5
#define IDS_ZOOM_VERTICAL_EXTENTS 6
#define IDS_ZOOM_HORIZONTAL_EXTENTS 7
#define IDS_ZOOM_EXTENTS 8
#define IDS_ZOOM_VERTICALLY 9
#define IDS_ZOOM_HORIZONTALLY 10
#define IDS_ZOOM 11
#define IDS_PAN 12
#define IDS_ZOOM_REGION 13
#define IDS_MOVE 14
#define IDS_ADD_POINT 15
#define IDS_DELETE_POINT 16
#define IDS_SCALE_POINT_TIP 17
#define IDS_RESET_CURVES 18
#define IDS_DISPLAY_CURVE_TOGGLE 19
#define IDS_PROMPT_ZOOM_VERTICAL 20
#define IDS_PROMPT_ZOOM_HORIZONTAL 21
#define IDS_PROMPT_ZOOM_REGION 22
#define IDS_PROMPT_PAN 23
#define IDS_PROMPT_ZOOM 24
#define IDS_PROMPT_MOVE 25
#define IDS_PROMPT_INSERT 26
#define IDS_PROMPT_SCALE 27
#define IDS_POINT_NAME 28
#define IDS_MOVE_POINTS 29
#define IDS_ADJUST_TANGENTS 30
#define IDS_SCALE_POINT 31
#define IDS_INSERT_POINTS 32
#define IDS_TYPE_CHANGE 33
#define IDS_RESET_CURVE 34
#define IDS_SELECT 35
#define IDS_CURVE_NAME 36

/* The point context menu. */
#define IDR_POINT_MENU 101

/* Commands of the point menu (IDR_POINT_MENU). */
#define IDM_TYPE_CORNER 40001
#define IDM_TYPE_BEZIER_SMOOTH 40002
#define IDM_TYPE_BEZIER_CORNER 40003
#define IDM_MOVE_XY 40004
#define IDM_MOVE_X 40005
#define IDM_MOVE_Y 40006
#define IDM_SCALE 40007
#define IDM_INSERT_CORNER 40009
#define IDM_INSERT_BEZIER 40010
#define IDM_DELETE 40012

/* Editor toolbar image strips (colour bitmap, mask bitmap), drawn by
   tools/make_editor_art.py. */
#define IDB_EDIT_MASK 112
#define IDB_VIEW_MASK 113
#define IDB_VIEW_IMAGES 114
#define IDB_CURVE_MASK 122
#define IDB_EDIT_IMAGES 123
#define IDB_CURVE_IMAGES 128

/* Cursors of the mouse modes. */
#define IDC_POINT_CURSOR 101
#define IDC_MOVE_CURSOR 102
#define IDC_PAN_CURSOR 105
#define IDC_ZOOM_CURSOR 191
#define IDC_ZOOM_REGION_CURSOR 193
