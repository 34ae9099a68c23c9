#include <string_view>

#include "io/Exception.hpp"
#include "io/Format.hpp"
#include "samples/OptionTable.hpp"
#include "samples/SampleRequest.hpp"

namespace velmo::samples {

namespace {

const Option& findOption(std::string_view name) {
  for (const Option& option : optionTable())
    if (option.name == name) return option;
  throw utility::RuntimeError(io::format("Unknown option '--{}'", name));
}

}  // namespace

SampleRequest parseRequest(std::span<const char* const> arguments) {
  SampleRequest request;
  for (u64 i = 0; i < arguments.size(); ++i) {
    std::string_view word = arguments[i];
    if (!word.starts_with("--"))
      throw utility::RuntimeError(io::format("Expected an option, got '{}'", word));
    word.remove_prefix(2);
    const auto equals = word.find('=');
    const Option& option = findOption(word.substr(0, equals));
    const bool isFlag = option.values.empty();
    std::string_view value;
    if (equals != std::string_view::npos) {
      if (isFlag) throw utility::RuntimeError(io::format("'--{}' takes no value", option.name));
      value = word.substr(equals + 1);
    } else if (!isFlag) {
      if (i + 1 == arguments.size())
        throw utility::RuntimeError(io::format("'--{}' needs a value", option.name));
      value = arguments[++i];
    }
    if (!option.set(request, value))
      throw utility::RuntimeError(
          io::format("Bad value '{}' of '--{}', expected {}", value, option.name, option.values));
  }
  if (request.out.empty()) throw utility::RuntimeError("'--out' is required");
  request.pieces.seed = request.seed;
  return request;
}

std::string requestHelp() {
  std::string text =
      "make_sample --out=DIR/NAME [options]\n"
      "Writes a solution file, evaluation points and settings for orvanta.post.\n\n"
      "Options, with defaults in parentheses:\n";
  for (const Option& option : optionTable()) {
    const std::string name =
        "--" + option.name + (option.values.empty() ? "" : "=" + option.values);
    text += name.size() < 32 ? io::format("  {:<32} {}\n", name, option.help)
                             : io::format("  {}\n  {:<32} {}\n", name, "", option.help);
  }
  return text + io::format("  {:<32} {}\n", "--help", "this text");
}

}  // namespace velmo::samples
