#pragma once

#include "io/Types.hpp"

namespace orvanta {

/// Room for one number: sign, 18 digits, point, exponent of three digits, and some spare bytes.
inline constexpr velmo::u64 kNumberWidth = 32;

/// Writes `value` as the format {:> .17E} prints it, a blank in the sign place of a number that is
/// not negative: 18 digits, correctly rounded, a tie to the even digit.
///
/// Numbers from about 1e-38 to 1e15 are converted in a fast way: with v = m 2^e and 17 - k the
/// decimal exponent, the digits are m 5^k 2^(e + k), rounded, of which m 5^k is a whole number
/// below 2^192 and the power of two a shift. All steps are exact. Zero and other numbers use
/// std::to_chars.
///
/// @param out room for `kNumberWidth` characters
/// @return the end of the text
char* appendNumber(char* out, double value);

}  // namespace orvanta
