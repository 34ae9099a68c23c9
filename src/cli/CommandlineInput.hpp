#pragma once

#include <deque>
#include <filesystem>
#include <sstream>
#include <string>
#include <type_traits>
#include <vector>

#include "cli/CommandlinePages.hpp"

namespace velmo::cli {

/// One option as written on the command line.
struct RawArgument {
  std::string name;    ///< long name without dashes; empty for a short option
  char shortName = 0;  ///< letter of a short option; 0 for a long one
  std::string value;   ///< empty if there is none
  bool used = false;   ///< whether a declared parameter has used the value
};

/// Command-line parser in three steps: construct it from main()'s arguments, declare each parameter
/// and receive its value, call finish().
///
/// `--name=value` and `-n value` are the same; a long option never takes the next token. A token
/// after a short option is its value unless it begins like an option; "-1" and "-.5" are numbers.
/// `--help`, `-h`, `--version` and `-v` ask for pages; a call without arguments also prints the
/// usage page. An `@file` that is the only argument is replaced by the options of that file, one
/// "key value" per line; lines that begin with "#" are comments.
///
/// Messages and pages go to standard error, because the parser may run before any log has a stream.
/// Messages begin with "[CLI] (EE) " or, for arguments that are ignored, with "[CLI] (WW) ". Not to
/// be shared by threads.
class CommandlineInput {
 public:
  /// @param description text for the usage page
  /// @throws std::runtime_error "Expecting a file at: <path>" for a response file that can't be
  ///         read, "The options in '<path>' are longer than 1 MiB"
  CommandlineInput(int argc, char** argv, std::string description);
  CommandlineInput(const CommandlineInput&) = delete;
  CommandlineInput& operator=(const CommandlineInput&) = delete;

  /// Prints a message if finish() was not called.
  ~CommandlineInput();

  /// Declares a required parameter and returns its value, or an empty one if it is missing;
  /// finish() then reports that.
  ///
  /// Text is converted by the stream's `>>`: a string ends at its first white space, a path may be
  /// quoted.
  /// @throws std::runtime_error "Sorry '-h' is already occupied for '--help'",
  ///   "Sorry '--version' is already occupied",
  ///   "CommandlineInput: short name already occupied: <letter>",
  ///   "CommandlineInput: long name already occupied: <name>"
  template <class T>
  [[nodiscard]] T requiredParameter(const std::string& name, char shortName,
                                    const std::string& description,
                                    const std::vector<std::string>& choices = {}) {
    const std::string* const text =
        declare_({name, shortName, true, typeNameOf_<T>(), {}, description, choices});
    return text ? fromText_<T>(*text) : T{};
  }

  /// Declares an optional parameter and returns its value or the default.
  /// @throws std::runtime_error as requiredParameter()
  template <class T>
  [[nodiscard]] T optionalParameter(const std::string& name, char shortName,
                                    const std::type_identity_t<T>& defaultValue,
                                    const std::string& description,
                                    const std::vector<std::string>& choices = {}) {
    const std::string* const text = declare_(
        {name, shortName, false, typeNameOf_<T>(), toText_(defaultValue), description, choices});
    return text ? fromText_<T>(*text) : defaultValue;
  }

  /// Makes finish() write an input template instead of letting the program run.
  void requestTemplate() noexcept { templateRequested_ = true; }

  /// Prints the requested page, or warns about arguments that no parameter used.
  /// @param quiet print no page and no warning of unused options
  /// @return whether the program may go on
  [[nodiscard]] bool finish(bool quiet = false);

  /// The pages, with the parameters declared so far.
  [[nodiscard]] const CommandlinePages& pages() const noexcept { return pages_; }

 private:
  template <class T>
  [[nodiscard]] static std::string typeNameOf_() {
    return std::is_same_v<T, std::string> ? "String" : "unknown";
  }

  template <class T>
  [[nodiscard]] static T fromText_(const std::string& text) {
    T value{};
    std::istringstream stream(text);
    stream.exceptions(std::ios_base::badbit);  // a value truncated for lack of memory is none
    stream >> value;
    return value;
  }

  [[nodiscard]] static std::string toText_(const std::filesystem::path& path) {
    return path.string();
  }
  template <class T>
  [[nodiscard]] static std::string toText_(const T& value) {
    std::ostringstream text;
    text.exceptions(std::ios_base::badbit);
    text << value;
    return text.str();
  }

  void parse_(const std::vector<std::string>& tokens);
  void appendLongOption_(const std::string& token);
  void checkNamesAreFree_(const std::string& name, char shortName) const;
  [[nodiscard]] const std::string* declare_(Parameter parameter);
  void warnOfUnused_() const;

  std::vector<RawArgument> arguments_;  ///< the first is the program itself
  std::deque<std::string> leftovers_;   ///< tokens that are neither option nor option value
  CommandlinePages pages_;
  bool helpRequested_ = false;
  bool versionRequested_ = false;
  bool templateRequested_ = false;
  bool valid_ = true;    ///< false once a required parameter was missing
  bool failed_ = false;  ///< true once a parameter had no value
  bool finished_ = false;
};

}  // namespace velmo::cli
