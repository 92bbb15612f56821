// The native build has no window system: the editor never opens there, and every
// operation of the control takes its closed-editor path.
#include "control/editor_link.h"

BOOL ShowEditor(CurveControl*, BOOL) { return FALSE; }
