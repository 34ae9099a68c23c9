#include "cli/CommandlinePages.hpp"

#include <unistd.h>

#include <algorithm>
#include <array>
#include <filesystem>
#include <fstream>
#include <ostream>
#include <string_view>

#include "io/Format.hpp"

namespace velmo::cli {
namespace {

constexpr std::string_view kVersion = VELMO_PROJECT_VERSION;  // from the build system
constexpr std::string_view kBranch = "HEAD";
constexpr std::string_view kRevision = "de3dfb899";

constexpr const char* kBugAddress = "the maintainers of this installation";
constexpr const char* kHomePage = "see the documentation of this installation";
constexpr const char* kLegalNotice =
    "All rights reserved by the respective owners. Provided without any warranty.";

constexpr std::string_view kFlagType = "Flag";

std::size_t longest(const std::vector<Parameter>& parameters, std::string Parameter::*text,
                    std::size_t atLeast = 0) {
  for (const Parameter& parameter : parameters)
    atLeast = std::max(atLeast, (parameter.*text).size());
  return atLeast;
}

std::string hostName() {
  std::array<char, 256> name{};  // longer names than the 255 bytes of POSIX don't exist
  return gethostname(name.data(), name.size() - 1) == 0 ? name.data() : "UNKNOWN_HOST";
}

void printSynopsis(std::ostream& stream, const std::vector<Parameter>& parameters) {
  for (const Parameter& parameter : parameters) {
    if (!parameter.required) stream << "[";
    if (parameter.shortName != 0)
      stream << "-" << parameter.shortName;
    else
      stream << "--" << parameter.name;
    if (parameter.typeName != kFlagType) stream << " " << parameter.typeName;
    if (!parameter.required) stream << "]";
    stream << "  ";
  }
}

void printTable(std::ostream& stream, const std::vector<Parameter>& rows) {
  const std::size_t longWidth = longest(rows, &Parameter::name, 4);
  const std::size_t typeWidth = longest(rows, &Parameter::typeName, 4);
  const std::size_t defaultWidth = longest(rows, &Parameter::defaultValue, 7);
  const std::size_t descriptionWidth = longest(rows, &Parameter::description, 11);
  const std::size_t total = longWidth + typeWidth + defaultWidth + 25 + descriptionWidth;
  const std::string rule(total, '-');

  stream << "\nProgram parameters: \n" << rule << "\n";
  stream << io::format("{:<{}}   Short Req/Opt  {:<{}}  {:<{}}  Description\n", "Long",
                       longWidth + 2, "Type", typeWidth, "Default", defaultWidth);
  stream << rule << "\n";
  for (const Parameter& row : rows) {
    const std::string letter = row.shortName != 0 ? std::string{'-', row.shortName} : "  ";
    stream << io::format("--{:<{}}    {}   {:<7}  {:<{}}  {:<{}}  {}\n", row.name, longWidth,
                         letter, row.required ? "R" : "O", row.typeName, typeWidth,
                         row.defaultValue.empty() ? "no" : row.defaultValue, defaultWidth,
                         row.description);
    if (row.choices.empty()) continue;
    stream << std::string(total - descriptionWidth - 1, ' ') << "Choices: ";
    for (const std::string& choice : row.choices) stream << choice << " ";
    stream << "\n";
  }
}

}  // namespace

std::string CommandlinePages::programName() const {
  return programPath.substr(programPath.find_last_of("/\\") + 1);
}

void CommandlinePages::printUsage(std::ostream& stream) const {
  stream << "Usage:  " << programPath << " ";
  printSynopsis(stream, parameters);
  stream << "\n\n";
  if (!description.empty()) stream << description << "\n\n";

  std::vector<Parameter> rows = parameters;
  const std::string flag(kFlagType);
  rows.push_back({"help", 'h', false, flag, {}, "Prints this help message and exit", {}});
  rows.push_back({"version", 'v', false, flag, {}, "Prints version info and exit", {}});
  printTable(stream, rows);

  stream << "\n"
         << "Report bugs to:    " << kBugAddress << "\n"
         << "KELDORN home page: " << kHomePage << " \n";
  stream.flush();
}

void CommandlinePages::printVersion(std::ostream& stream) const {
  const std::string program = programName();
  stream << "KELDORN " << program << kVersion << "\n"
         << kLegalNotice << "\n\n"
         << "Velmo " << program << "\n"
         << "GIT branch:   " << kBranch << "\n"
         << "GIT revision: " << kRevision << "\n"
         << "Hostname:     " << hostName() << "\n"
         << "Pid:          " << getpid() << "\n";
  stream.flush();
}

void CommandlinePages::writeInputTemplate(std::ostream& messages) const {
  const std::string program = programName();
  const std::string fileName = program + ".inp";
  if (std::filesystem::exists(fileName)) {
    messages << "(EE) Trying to generate input file '" << fileName << "', but it already exists!\n"
             << "(EE) First remove that existing file, before I can generate a new one\n";
    return;
  }
  const std::size_t nameWidth = longest(parameters, &Parameter::name);
  const std::size_t defaultWidth = longest(parameters, &Parameter::defaultValue);
  const std::size_t typeWidth = longest(parameters, &Parameter::typeName);
  std::ofstream file(fileName);
  for (const Parameter& parameter : parameters) {
    file << io::format("{:<{}}", parameter.name, nameWidth)
         << io::format(" {:<{}}", parameter.defaultValue, defaultWidth)
         << io::format("  # {:<{}} {:<}\n", parameter.typeName, typeWidth, parameter.description);
  }
  messages << "Created an input template file '" << fileName << "'\n"
           << "Call: ./" << program << " @" << fileName << std::endl;
}

}  // namespace velmo::cli
