#pragma once

#include <iosfwd>
#include <sstream>
#include <string>
#include <string_view>
#include <vector>

#include "io/Types.hpp"

namespace velmo::grid {

/// White space of the classic locale.
[[nodiscard]] inline bool isBlank(char c) noexcept { return c == ' ' || (c >= '\t' && c <= '\r'); }

/// Whether a line that begins with `c` is a comment or empty.
[[nodiscard]] inline bool beginsComment(char c) noexcept {
  return c == '#' || c == '\n' || c == '\r';
}

/// Converts a number of the usual form at the start of the text: digits with an optional sign,
/// point and exponent, in range, up to white space or the end. Defined for double and u64.
/// @return behind the number; null for any other text
template <class T>
[[nodiscard]] const char* takeUsualNumber(const char* first, const char* last, T& value);

/// Skips whole lines while the next one is empty or begins with "#" (or a carriage return). A line
/// with blanks before the "#" or a line of blanks is not skipped.
///
/// @return the stream, at the first character of another line or at the end of the file
std::istream& skipComments(std::istream& stream);

/// Reads words and numbers from a text stream exactly like its extraction operators in the classic
/// locale, but line by line from a buffer, which is several times faster: white space between two
/// values may contain line ends, and text that isn't a number raises the failbit of the stream. The
/// stream must throw on failbit.
///
/// Numbers of the usual form are converted in the buffer; every other text goes through the
/// extraction operator itself, so that both accept the same texts with the same values. The scanner
/// reads ahead to the end of a line: others may read from the stream only after `discardLine`. A
/// line may have 1 MiB at most, so that a wrong path, for example to a device, doesn't use up the
/// machine's memory.
class LineScanner {
 public:
  /// Refers to `stream`, which must outlive this object. For one thread only.
  explicit LineScanner(std::istream& stream);

  // The next value. All throw std::ios_base::failure at the end of the file; numbers also for a
  // text that isn't a number or is out of range. And all throw utility::RuntimeError "A line is
  // longer than 1 MiB; this is no list of points and no mesh".
  [[nodiscard]] double nextDouble() { return next_<double>(); }
  [[nodiscard]] u64 nextUnsigned() { return next_<u64>(); }
  [[nodiscard]] std::string nextWord();

  /// The next line, without a carriage return at its end.
  [[nodiscard]] std::string nextLine();

  /// The text after the last value on its line.
  [[nodiscard]] std::string rest() const { return std::string(line_.substr(position_)); }

  /// Skips the rest of the line of the last value; the stream is then at the next line.
  void discardLine();

 private:
  template <class T>
  T next_();
  template <class T>
  T extract_();
  void skipBlanks_();
  void readLine_();

  std::istream& stream_;
  std::vector<char> buffer_;
  std::string_view line_;     ///< in the buffer
  std::size_t position_ = 0;  ///< of the first character of `line_` that is not yet taken
  std::istringstream unusual_;
};

}  // namespace velmo::grid
