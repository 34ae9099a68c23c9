#pragma once

#include <iosfwd>
#include <string>
#include <vector>

namespace velmo::cli {

/// One declared parameter, as the pages show it.
struct Parameter {
  std::string name;    ///< long name without dashes
  char shortName = 0;  ///< letter of the short form; 0 if there is none
  bool required = false;
  std::string typeName;      ///< "String", "Flag" for an option without value, else "unknown"
  std::string defaultValue;  ///< as text; if empty, the usage page shows "no"
  std::string description;
  std::vector<std::string> choices;  ///< shown, not enforced
};

/// The pages about a program: usage, version and input template, made from the parameters that it
/// declared. Columns are as wide as their longest text.
struct CommandlinePages {
  std::string programPath;            ///< as it was called
  std::string description;            ///< what the program does; omitted if empty
  std::vector<Parameter> parameters;  ///< in order of declaration

  /// The part of the program's path after its last "/" or "\".
  [[nodiscard]] std::string programName() const;

  /// A synopsis, the description, and a table with a row per parameter and for the two pages.
  void printUsage(std::ostream& stream) const;

  /// Versions of the program and its source, host and process id.
  void printVersion(std::ostream& stream) const;

  /// Writes "<program>.inp", a response file with all parameters and their defaults, to the working
  /// directory, unless it exists; reports that on `messages`.
  void writeInputTemplate(std::ostream& messages) const;
};

}  // namespace velmo::cli
