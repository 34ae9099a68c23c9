#pragma once

#include <functional>
#include <optional>
#include <span>
#include <string>
#include <string_view>
#include <utility>
#include <vector>

#include "io/Types.hpp"
#include "samples/Vec3.hpp"

/// The command line of the tools: a table of options, each with a reader that stores its value.
namespace velmo::samples {

/// The words of a command line without the name of the program.
using Words = std::span<const char* const>;

/// Stores the value of an option, which is "" for a flag. Returns false for a value that it
/// refuses.
using Reader = std::function<bool(std::string_view)>;

/// One option of a tool.
struct Option {
  std::string name;    ///< as it is typed, such as "--size"; empty: takes all words without dashes
  std::string values;  ///< what it expects, empty for a flag
  std::string help;    ///< meaning and default
  Reader read;
};

/// The number that the whole text spells; infinities and NaN are numbers here.
[[nodiscard]] std::optional<double> numberIn(std::string_view text) noexcept;

/// Readers. Each stores into the variable that it is made with, which must outlive it.
/// @{
[[nodiscard]] Reader number(double& value);                               ///< any finite number
[[nodiscard]] Reader number(std::optional<double>& value);                ///< any finite number
[[nodiscard]] Reader positive(double& value);                             ///< finite and above 0
[[nodiscard]] Reader positive(std::optional<double>& value);              ///< finite and above 0
[[nodiscard]] Reader inRange(u64& value, u64 low, u64 high = kNone - 1);  ///< low to high
[[nodiscard]] Reader vector(Vec3& value);                                 ///< X,Y,Z, all finite
[[nodiscard]] Reader flag(bool& value);                                   ///< sets it to true

/// One of several words, each with the value that it stands for.
template <class T>
[[nodiscard]] Reader choice(T& value, std::vector<std::pair<std::string_view, T>> words) {
  return [&value, words = std::move(words)](std::string_view text) {
    for (const auto& [word, meaning] : words) {
      if (word != text) continue;
      value = meaning;
      return true;
    }
    return false;
  };
}
/// @}

/// Reads all words in turn. The value of an option follows a "="; after a name that begins with
/// dashes it may also be the next word.
/// @throws utility::RuntimeError with the option and what it expects, and what readers throw
void readOptions(const std::vector<Option>& table, Words words);

/// Runs a tool on its words. Prints the message of an exception to standard error, after the name
/// of the tool.
/// @return the status of the program: that of the tool, 1 after a failure
[[nodiscard]] int runTool(std::string_view name, int argc, const char* const* argv,
                          const std::function<int(Words)>& tool);

}  // namespace velmo::samples
