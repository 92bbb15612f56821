// The limit of an unconstrained move, shared by the point operations, the evaluation
// cache's move limits and the editor's drags: a point or handle that nothing holds may
// move this far either way. Finite, so that every sum and product of it stays finite.
#pragma once

namespace move_limits {

constexpr float kUnbounded = 1e8f;

} // namespace move_limits
