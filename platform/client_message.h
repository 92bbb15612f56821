// The wParam of the curve messages a client's notify window hears (curvectl/messages.h):
// a point index, or for CURVE_MSG_SELECTION a count of points, in the low 16 bits, and in
// the high word only what the message defines (CURVE_MSG_TANGENT_CHANGED: which tangents
// changed). Every sender packs through here, so the low word is masked alike everywhere.
#pragma once

#include "host/win_types.h"

namespace client_message {

/// @name High-word bits of CURVE_MSG_TANGENT_CHANGED
/// @{
constexpr unsigned kInTangentChanged = 0x1;  // wParam bit 0x10000
constexpr unsigned kOutTangentChanged = 0x2; // wParam bit 0x20000
/// @}

/// `low` & 0xFFFF in the low word, `high` in the high word.
constexpr WPARAM PackWParam(int low, unsigned high = 0) {
    return (WPARAM(high) << 16) | WPARAM(unsigned(low) & 0xFFFFu);
}

} // namespace client_message
