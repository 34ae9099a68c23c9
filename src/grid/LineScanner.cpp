#include "grid/LineScanner.hpp"

#include <algorithm>
#include <charconv>
#include <concepts>
#include <istream>
#include <limits>
#include <locale>
#include <system_error>

#include "io/Exception.hpp"

namespace velmo::grid {
namespace {

constexpr std::size_t kUsualLine = 4096;
constexpr std::size_t kMaxLine = std::size_t{1} << 20U;

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

template <class T>
const char* takeUsualNumber(const char* first, const char* last, T& value) {
  const auto [end, error] = std::from_chars(usualStart<T>(first, last), last, value);
  return error == std::errc{} && (end == last || isBlank(*end)) ? end : nullptr;
}

template const char* takeUsualNumber(const char*, const char*, double&);
template const char* takeUsualNumber(const char*, const char*, u64&);

std::istream& skipComments(std::istream& stream) {
  while (stream.good()) {
    const auto next = stream.peek();
    if (next == std::istream::traits_type::eof() || !beginsComment(static_cast<char>(next))) break;
    stream.ignore(std::numeric_limits<std::streamsize>::max(), '\n');
  }
  return stream;
}

LineScanner::LineScanner(std::istream& stream) : stream_(stream), buffer_(kUsualLine) {
  unusual_.imbue(std::locale::classic());
}

void LineScanner::discardLine() {
  line_ = {};
  position_ = 0;
}

void LineScanner::skipBlanks_() {
  while (true) {
    while (position_ < line_.size() && isBlank(line_[position_])) ++position_;
    if (position_ < line_.size()) return;
    readLine_();
  }
}

void LineScanner::readLine_() {
  // A full buffer raises the failbit as the end of the file does; here they are distinguished.
  const std::ios_base::iostate mask = stream_.exceptions();
  stream_.exceptions(std::ios_base::goodbit);
  std::size_t count = 0;
  while (true) {
    stream_.getline(buffer_.data() + count, static_cast<std::streamsize>(buffer_.size() - count));
    count += static_cast<std::size_t>(stream_.gcount());
    if (!stream_.fail() || count + 1 < buffer_.size()) break;
    if (count == kMaxLine)
      throw utility::RuntimeError(
          "A line is longer than 1 MiB; this is no list of points and no mesh");
    stream_.clear();
    buffer_.resize(std::min(2 * buffer_.size(), kMaxLine + 1));
  }
  // What came before a failing read may be half a number; nobody looks at the badbit.
  if (stream_.bad()) stream_.setstate(std::ios_base::failbit);
  stream_.exceptions(mask);
  // The count includes the line end, which the end of the file may stand for.
  line_ = {buffer_.data(), stream_.eof() ? count : count - 1};
  position_ = 0;
}

std::string LineScanner::nextLine() {
  readLine_();
  const std::string_view line = line_;
  discardLine();
  return std::string(line.substr(0, line.size() - (line.ends_with('\r') ? 1 : 0)));
}

template <class T>
T LineScanner::next_() {
  skipBlanks_();
  T value{};
  const char* const end =
      takeUsualNumber(line_.data() + position_, line_.data() + line_.size(), value);
  // A number that runs into other characters ("1e", "0x1p3", "2,5") is for the operator to judge.
  if (end == nullptr) return extract_<T>();
  position_ = static_cast<std::size_t>(end - line_.data());
  return value;
}

template <class T>
T LineScanner::extract_() {
  unusual_.clear();
  unusual_.str(std::string(line_.substr(position_)));
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
  return std::string(line_.substr(first, position_ - first));
}

}  // namespace velmo::grid
