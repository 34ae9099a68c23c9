#include "cli/CommandlineInput.hpp"

#include <algorithm>
#include <array>
#include <fstream>
#include <iostream>
#include <stdexcept>
#include <string_view>
#include <utility>

namespace velmo::cli {
namespace {

constexpr const char* kErrorPrefix = "[CLI] (EE) ";
constexpr const char* kWarningPrefix = "[CLI] (WW) ";

bool isDigitAt(std::string_view text, std::size_t position) {
  return position < text.size() && text[position] >= '0' && text[position] <= '9';
}

// A token after a short option is its value unless it looks like an option; "-1" and "-.5" are
// numbers.
bool isOptionValue(std::string_view token) {
  if (token.empty()) return false;
  if (token[0] != '-') return true;
  return isDigitAt(token, 1) || (token.size() > 1 && token[1] == '.' && isDigitAt(token, 2));
}

bool isShortOption(std::string_view token) {
  return token.size() == 2 && token[0] == '-' && token[1] != '-';
}

bool isLongOption(std::string_view token) {
  return token.size() > 2 && token.starts_with("--") && token[2] != '-';
}

std::string labelOf(const RawArgument& argument) {
  std::string label;
  if (!argument.name.empty()) label += "--" + argument.name;
  if (!argument.name.empty() && argument.shortName != 0) label += " | ";
  if (argument.shortName != 0) label += {'-', argument.shortName};
  return label;
}

/// The text of a file of options; refuses texts without end, such as devices.
std::string readText(const std::string& path) {
  constexpr std::size_t kMaxSize = std::size_t{1} << 20U;
  std::ifstream file(path);
  if (!file) throw std::runtime_error("Expecting a file at: " + path);
  std::string text;
  std::array<char, 4096> block;
  while (file && text.size() <= kMaxSize) {
    file.read(block.data(), block.size());
    text.append(block.data(), static_cast<std::size_t>(file.gcount()));
  }
  if (file.bad()) throw std::runtime_error("Expecting a file at: " + path);
  if (text.size() > kMaxSize)
    throw std::runtime_error("The options in '" + path + "' are longer than 1 MiB");
  return text;
}

/// Removes the next word from a line; empty at its end.
std::string takeWord(std::string_view& line) {
  constexpr std::string_view kBlanks = " \t\v\f\r";
  line.remove_prefix(std::min(line.find_first_not_of(kBlanks), line.size()));
  const std::string_view word = line.substr(0, line.find_first_of(kBlanks));
  line.remove_prefix(word.size());
  return std::string(word);
}

/// The tokens of a text file with one "key value" per line. A key of one letter becomes the tokens
/// "-k" and "value", a longer one the token "--key=value", or "--key" when there is no value. Empty
/// lines and lines that begin with "#" are skipped, and a value that begins with "#" is a comment.
std::vector<std::string> readResponseFile(const std::string& path) {
  const std::string text = readText(path);
  std::vector<std::string> tokens;
  for (std::string_view rest = text; !rest.empty();) {
    std::string_view line = rest.substr(0, rest.find('\n'));
    rest.remove_prefix(std::min(line.size() + 1, rest.size()));
    if (line.starts_with('#')) continue;
    const std::string key = takeWord(line);
    std::string value = takeWord(line);
    if (value.starts_with('#')) value.clear();
    if (key.empty()) continue;
    const bool isShort = key.size() == 1;
    std::string& token = tokens.emplace_back(isShort ? "-" : "--");
    token += key;
    if (value.empty()) continue;
    if (isShort)
      tokens.push_back(value);
    else
      token.append("=").append(value);
  }
  return tokens;
}

}  // namespace

CommandlineInput::CommandlineInput(int argc, char** argv, std::string description)
    : pages_{argc > 0 ? argv[0] : "", std::move(description), {}} {
  helpRequested_ = argc <= 1;
  arguments_.push_back({pages_.programPath, 0, {}, true});

  const std::vector<std::string> tokens(argv + std::min(argc, 1), argv + argc);
  if (tokens.size() == 1 && tokens[0].starts_with('@'))
    parse_(readResponseFile(tokens[0].substr(1)));
  else
    parse_(tokens);
}

CommandlineInput::~CommandlineInput() {
  if (!finished_) std::cerr << kErrorPrefix << "You did not call 'CommandlineInput.finish()' ";
}

void CommandlineInput::parse_(const std::vector<std::string>& tokens) {
  for (std::size_t i = 0; i < tokens.size(); ++i) {
    const std::string& token = tokens[i];
    if (isShortOption(token)) {
      RawArgument argument{{}, token[1], {}, false};
      if (i + 1 < tokens.size() && isOptionValue(tokens[i + 1])) argument.value = tokens[++i];
      if (argument.shortName == 'h') helpRequested_ = true;
      if (argument.shortName == 'v') versionRequested_ = true;
      arguments_.push_back(std::move(argument));
    } else if (isLongOption(token)) {
      appendLongOption_(token);
    } else {
      leftovers_.push_back(token);
    }
  }
}

void CommandlineInput::appendLongOption_(const std::string& token) {
  const std::size_t equals = token.find('=');
  RawArgument argument;
  argument.name = token.substr(2, equals - 2);
  if (equals != std::string::npos) argument.value = token.substr(equals + 1);
  if (argument.name == "help") helpRequested_ = true;
  if (argument.name == "version") versionRequested_ = true;
  arguments_.push_back(std::move(argument));
}

void CommandlineInput::checkNamesAreFree_(const std::string& name, char shortName) const {
  if (shortName == 'h' || name == "help")
    throw std::runtime_error("Sorry '-h' is already occupied for '--help'");
  if (name == "version") throw std::runtime_error("Sorry '--version' is already occupied");
  for (const Parameter& other : pages_.parameters)
    if (shortName != 0 && other.shortName == shortName)
      throw std::runtime_error(std::string("CommandlineInput: short name already occupied: ") +
                               shortName);
  for (const Parameter& other : pages_.parameters)
    if (other.name == name)
      throw std::runtime_error("CommandlineInput: long name already occupied: " + name);
}

// The text of the parameter's value; null when there is none.
const std::string* CommandlineInput::declare_(Parameter parameter) {
  checkNamesAreFree_(parameter.name, parameter.shortName);
  pages_.parameters.push_back(std::move(parameter));
  const Parameter& declared = pages_.parameters.back();

  const auto found = std::ranges::find_if(arguments_, [&](const RawArgument& argument) {
    return argument.name == declared.name ||
           (declared.shortName != 0 && argument.shortName == declared.shortName);
  });
  if (found == arguments_.end()) {
    if (declared.required && !helpRequested_ && !versionRequested_ && !templateRequested_) {
      std::cerr << kErrorPrefix << "Failed to find --" << declared.name << " | -"
                << declared.shortName << std::endl;
      valid_ = false;
    }
    return nullptr;
  }
  if (found->used)
    std::cerr << kErrorPrefix << "Trying to get parameter twice: '--" << declared.name << "'"
              << std::endl;
  found->used = true;
  if (found->value.empty()) {
    std::cerr << kErrorPrefix << "Parameter '" << labelOf(*found) << "' has no value" << std::endl;
    failed_ = true;
    return nullptr;
  }
  return &found->value;
}

bool CommandlineInput::finish(bool quiet) {
  finished_ = true;
  if (helpRequested_) {
    if (!quiet) pages_.printUsage(std::cerr);
    return false;
  }
  if (versionRequested_) {
    if (!quiet) pages_.printVersion(std::cerr);
    return false;
  }
  if (templateRequested_) {
    if (!quiet) pages_.writeInputTemplate(std::cout);
    return false;
  }
  if (failed_) return false;
  if (!quiet) warnOfUnused_();
  if (!leftovers_.empty()) {
    std::cerr << kWarningPrefix << "Unparsed arguments: ";
    for (const std::string& leftover : leftovers_) std::cerr << leftover << " ";
    std::cerr << std::endl;
  }
  return valid_;
}

void CommandlineInput::warnOfUnused_() const {
  for (const RawArgument& argument : arguments_) {
    if (argument.used) continue;
    const bool isShort = argument.shortName != 0;
    std::cerr << kWarningPrefix << "Did not make use of: " << (isShort ? "-" : "--");
    if (isShort)
      std::cerr << argument.shortName;
    else
      std::cerr << argument.name;
    if (!argument.value.empty()) std::cerr << (isShort ? " " : "=") << argument.value;
    std::cerr << std::endl;
  }
}

}  // namespace velmo::cli
