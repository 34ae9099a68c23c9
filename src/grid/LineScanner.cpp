#include "grid/LineScanner.hpp"

#include <charconv>
#include <concepts>
#include <istream>
#include <limits>
#include <locale>
#include <system_error>

namespace velmo::grid {
namespace {

bool isBlank(char c) noexcept {
  return c == ' ' || c == '\t' || c == '\r' || c == '\n' || c == '\v' || c == '\f';
}

bool isDigit(char c) noexcept { return c >= '0' && c <= '9'; }

/// Where a number of the usual form begins in the text: after a plus sign, which std::from_chars
/// does not know, and in front of a digit or of a minus sign or point that a digit follows. This
/// leaves out the "inf" and "nan" that only std::from_chars knows. `last` if there is none.
template <class T>
const char* usualStart(const char* first, const char* last) noexcept {
  if constexpr (std::integral<T>) return first != last && isDigit(*first) ? first : last;
  const char* const start = first != last && *first == '+' ? first + 1 : first;
  const char* digit = start;
  if (start == first && digit != last && *digit == '-') ++digit;
  if (digit != last && *digit == '.') ++digit;
  return digit != last && isDigit(*digit) ? start : last;
}

}  // namespace

std::istream& skipComments(std::istream& stream) {
  while (stream.good()) {
    const auto next = stream.peek();
    if (next != '#' && next != '\n' && next != '\r') break;
    stream.ignore(std::numeric_limits<std::streamsize>::max(), '\n');
  }
  return stream;
}

LineScanner::LineScanner(std::istream& stream) : stream_(stream) {
  unusual_.imbue(std::locale::classic());
}

void LineScanner::discardLine() {
  line_.clear();
  position_ = 0;
}

void LineScanner::skipBlanks_() {
  while (true) {
    while (position_ < line_.size() && isBlank(line_[position_])) ++position_;
    if (position_ < line_.size()) return;
    std::getline(stream_, line_);
    position_ = 0;
  }
}

template <class T>
T LineScanner::next_() {
  skipBlanks_();
  const char* const last = line_.data() + line_.size();
  const char* const start = usualStart<T>(line_.data() + position_, last);
  T value{};
  const auto [end, error] = std::from_chars(start, last, value);
  // A number that runs into other characters ("1e", "0x1p3", "2,5") is for the operator to judge.
  if (error != std::errc{} || (end != last && !isBlank(*end))) return extract_<T>();
  position_ = static_cast<std::size_t>(end - line_.data());
  return value;
}

template <class T>
T LineScanner::extract_() {
  unusual_.clear();
  unusual_.str(line_.substr(position_));
  T value{};
  if (!(unusual_ >> value)) stream_.setstate(std::ios_base::failbit);
  position_ =
      unusual_.eof() ? line_.size() : position_ + static_cast<std::size_t>(unusual_.tellg());
  return value;
}

template double LineScanner::next_<double>();
template u64 LineScanner::next_<u64>();

std::string LineScanner::nextWord() {
  skipBlanks_();
  const std::size_t first = position_;
  while (position_ < line_.size() && !isBlank(line_[position_])) ++position_;
  return line_.substr(first, position_ - first);
}

}  // namespace velmo::grid
