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
  std::string defaultValue;  ///< as text; where empty, the usage page shows "no"
  std::string description;
  std::vector<std::string> choices;  ///< shown, not enforced
};

/// What a program tells of itself: usage, version and input template, made from the parameters that
/// it declared. Widths of columns follow the longest text in them.
struct CommandlinePages {
  std::string programPath;            ///< as it was called
  std::string description;            ///< what the program does; left out where empty
  std::vector<Parameter> parameters;  ///< in order of declaration

  /// The program's path from behind its last "/" or "\".
  [[nodiscard]] std::string programName() const;

  /// A synopsis, the description, and a table with a row per parameter and for the two pages.
  void printUsage(std::ostream& stream) const;

  /// Versions of the program and its source, host and process id.
  void printVersion(std::ostream& stream) const;

  /// Writes "<program>.inp", a response file with all parameters and their defaults, to the working
  /// directory, unless there is one; says so on `messages`.
  void writeInputTemplate(std::ostream& messages) const;
};

}  // namespace velmo::cli
