#pragma once

#include "quad/RuleFamily.hpp"

namespace velmo::quad::detail_ {

/// `triangleFamily` on top of any table of triangle rules.
/// @throws utility::RuntimeError "Cannot find min order? ", "Cannot find max order? " when the
/// table
///         ends below an order under 20; "Need to have tensor product rule" when it holds a rule of
///         order 20 or more
[[nodiscard]] RuleFamily<2> triangleFamily(const RuleFamily<2>& table, u64 minOrder, u64 maxOrder);

}  // namespace velmo::quad::detail_
