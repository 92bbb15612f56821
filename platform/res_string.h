// GetResString: the module's string-table texts.
#pragma once

#include "res/resource.h" // IDS_...: the names of the string ids

/// The text of string-table entry `id` (IDS_LIB_DESCRIPTION to IDS_CURVE_NAME, 1 to 36) in
/// one module-wide 256-character buffer, or null when the module instance is unset or there
/// is no such string. Every call overwrites the buffer: use the text at once or copy it.
const char* GetResString(int id);
