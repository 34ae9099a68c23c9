#pragma once

#include <cstdlib>
#include <random>
#include <string>
#include <string_view>

#include "io/Types.hpp"

namespace velmo::test {

/// Number of altered inputs that a test tries: VELMO_MUTATIONS for long runs, else `everyday`.
inline u64 numMutations(u64 everyday) {
  const char* const wanted = std::getenv("VELMO_MUTATIONS");
  return wanted != nullptr ? std::strtoull(wanted, nullptr, 10) : everyday;
}

/// `text` with one to three characters or passages cut, altered, doubled or put in. Equal seeds
/// give equal texts.
inline std::string mutatedText(std::string text, u64 seed) {
  constexpr std::string_view kAlphabet = "0123456789  \n\n\r\t#+-.eExXinfa,:[]{}&*'~\0\xff";
  constexpr std::string_view kPhrases[] = {
      "99999999999999999999", "-1", "2147483647", " 1e999 ", "Tria6", "1 2 3\n"};
  std::mt19937_64 random(seed);
  const auto below = [&random](std::size_t n) { return n == 0 ? 0 : random() % n; };

  const std::size_t count = 1 + below(3);
  for (std::size_t i = 0; i < count; ++i) {
    const std::size_t place = below(text.size() + 1);
    const std::size_t kind = below(5);
    if (kind == 0) text.resize(place);
    if (kind == 1) text.erase(place, 1 + below(8));
    if (kind == 2 && place < text.size()) text[place] = kAlphabet[below(kAlphabet.size())];
    if (kind == 3) text.insert(place, text.substr(below(text.size() + 1), below(12)));
    if (kind == 4) text.insert(place, kPhrases[below(std::size(kPhrases))]);
  }
  return text;
}

}  // namespace velmo::test
