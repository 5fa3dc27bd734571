// SPDX-License-Identifier: Apache-2.0
// How the files of this folder say which types an operation or a member has.

#pragma once

#include <type_traits>

namespace declared {

/// Compiles when the argument's type is exactly `Expected`: a reference for what has a name.
template <typename Expected, typename Given>
void expect_type(Given&& /*given*/) {
    static_assert(std::is_same_v<Given, Expected>);
}

}  // namespace declared
