/// @file
/// Messages that a curve control sends, with SendMessage, to the window a client names
/// with ICurveCtl::SetNotifyWindow. For the five curve messages lParam is the ICurve that
/// changed and the point index stands in the low 16 bits of wParam.
///
/// They arrive on the user-interface thread, synchronously, from inside the operation
/// that causes them, after the change is made and recorded: a handler that reads the
/// curve sees its new state. The handler's result is ignored. A handler must not delete
/// the curve or the control. The ICurve in lParam is valid while the handler runs.
#pragma once

/// wParam: number of points selected after the change.
#define CURVE_MSG_SELECTION 0x2F70
/// wParam: index of the point whose position was set (sent even when it did not move).
#define CURVE_MSG_POINT_CHANGED 0x2F71
/// wParam: point index; high word bit 0 (0x10000) in-tangent changed, bit 1 (0x20000)
/// out-tangent changed. A high word of 0 means either tangent of that point.
#define CURVE_MSG_TANGENT_CHANGED 0x2F72
/// wParam: the index the deleted point had. Sent in descending index order.
#define CURVE_MSG_POINT_DELETED 0x2F73
/// wParam: index of the new point; followed by CURVE_MSG_SELECTION with 1.
#define CURVE_MSG_POINT_INSERTED 0x2F74
/// @name The editor's mouse buttons
/// wParam and lParam of the original mouse message (key state; the pointer in client
/// coordinates of the editor window that received it), sent after the editor handled it.
/// @{
#define CURVE_MSG_LBUTTONDOWN 0x2F75 ///< The left button went down.
#define CURVE_MSG_RBUTTONDOWN 0x2F76 ///< The right button went down.
#define CURVE_MSG_LBUTTONUP 0x2F77   ///< The left button went up.
/// @}
