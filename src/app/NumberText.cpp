#include "app/NumberText.hpp"

#include <array>
#include <bit>
#include <charconv>
#include <cmath>
#include <cstdint>

namespace orvanta {

using velmo::u64;

namespace {

__extension__ using u128 = unsigned __int128;

constexpr int kMantissaBits = 52;
constexpr int kExponentBias = 1023;
constexpr u64 kTenTo17 = 100'000'000'000'000'000;

/// The exponents E of 2^E <= v for which the fast way works: above them m 5^k has no bits to cut
/// off, below them 5^k has more than 128 bits.
constexpr int kLeastExponent = -126;
constexpr int kGreatestExponent = 48;

/// 5^k for k up to 55.
constexpr auto kPowersOfFive = [] {
  std::array<u128, 56> powers{1};
  for (u64 k = 1; k < powers.size(); ++k) powers[k] = 5 * powers[k - 1];
  return powers;
}();

/// "00", "01", .. "99".
constexpr auto kPairs = [] {
  std::array<char, 200> pairs{};
  for (u64 i = 0; i < 100; ++i) {
    pairs[2 * i] = static_cast<char>('0' + i / 10);
    pairs[2 * i + 1] = static_cast<char>('0' + i % 10);
  }
  return pairs;
}();

char* appendPair(char* out, u64 number) {
  *out++ = kPairs[2 * number];
  *out++ = kPairs[2 * number + 1];
  return out;
}

char* appendEightDigits(char* out, u64 number) {
  const u64 high = number / 10000;
  const u64 low = number % 10000;
  out = appendPair(out, high / 100);
  out = appendPair(out, high % 100);
  out = appendPair(out, low / 100);
  return appendPair(out, low % 100);
}

/// How the part that is cut off compares with half a unit in the last place.
enum class Rest { None, Below, Half, Above };

struct Shifted {
  u64 whole;
  Rest rest;
};

/// (high 2^64 + low) 2^-shift for 0 < shift < 128, where the whole part is below 2^64.
Shifted shiftRight(u128 high, u64 low, int shift) {
  u128 cut = 0;
  u128 half = 0;
  u64 whole = 0;
  bool hasMore = false;  // below `cut`
  if (shift > 64) {
    whole = static_cast<u64>(high >> (shift - 64));
    half = u128{1} << (shift - 65);
    cut = high & (2 * half - 1);
    hasMore = low != 0;
  } else {
    const u128 lower = (high << 64) | low;  // the lower 128 bits
    whole = static_cast<u64>(shift < 64 ? (high << (64 - shift)) | (low >> shift) : high);
    half = u128{1} << (shift - 1);
    cut = lower & (2 * half - 1);
  }
  if (cut == half && !hasMore) return {whole, Rest::Half};
  if (cut >= half) return {whole, Rest::Above};
  return {whole, cut == 0 && !hasMore ? Rest::None : Rest::Below};
}

u64 rounded(u64 whole, Rest rest) {
  return whole + (rest == Rest::Above || (rest == Rest::Half && whole % 2 == 1) ? 1 : 0);
}

/// The quotient by ten with the remainders of both divisions.
Shifted overTen(const Shifted& number) {
  const u64 digit = number.whole % 10;
  Rest rest = number.rest;
  if (digit > 5 || (digit == 5 && rest != Rest::None))
    rest = Rest::Above;
  else if (digit == 5)
    rest = Rest::Half;
  else if (digit > 0 || rest != Rest::None)
    rest = Rest::Below;
  return {number.whole / 10, rest};
}

char* appendByLibrary(char* out, double value) {
  char* const end =
      std::to_chars(out, out + kNumberWidth, value, std::chars_format::scientific, 17).ptr;
  for (char* c = out; c != end; ++c)
    if (*c >= 'a' && *c <= 'z') *c = static_cast<char>(*c - 'a' + 'A');
  return end;
}

}  // namespace

char* appendNumber(char* out, double value) {
  if (!std::signbit(value)) *out++ = ' ';
  const u64 bits = std::bit_cast<u64>(value);
  const int exponent = static_cast<int>((bits >> kMantissaBits) & 0x7FF) - kExponentBias;
  if (exponent < kLeastExponent || exponent > kGreatestExponent) return appendByLibrary(out, value);
  if (std::signbit(value)) *out++ = '-';

  // The factor is log10(2) 2^18. The decimal exponent of 2^E is that of v or one less.
  int decimal = (exponent * 78913) >> 18;
  const int k = 17 - decimal;
  const u64 mantissa = (bits & ((u64{1} << kMantissaBits) - 1)) | (u64{1} << kMantissaBits);
  const u128 power = kPowersOfFive[static_cast<u64>(k)];
  const u128 lower = u128{mantissa} * static_cast<u64>(power);
  const u128 high = u128{mantissa} * static_cast<u64>(power >> 64) + (lower >> 64);
  Shifted number = shiftRight(high, static_cast<u64>(lower), kMantissaBits - exponent - k);
  if (number.whole >= 10 * kTenTo17) {
    number = overTen(number);
    ++decimal;
  }
  // This makes no number of 19 digits: no double of the range lies within half a unit of the last
  // place below a power of ten. The nearest, below 1e-14, is 1.2 units away.
  u64 digits = rounded(number.whole, number.rest);

  *out++ = static_cast<char>('0' + digits / kTenTo17);
  *out++ = '.';
  digits %= kTenTo17;
  *out++ = static_cast<char>('0' + digits / (kTenTo17 / 10));
  digits %= kTenTo17 / 10;
  out = appendEightDigits(out, digits / 100'000'000);
  out = appendEightDigits(out, digits % 100'000'000);
  *out++ = 'E';
  *out++ = decimal < 0 ? '-' : '+';
  return appendPair(out, static_cast<u64>(decimal < 0 ? -decimal : decimal));
}

}  // namespace orvanta
