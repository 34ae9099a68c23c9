#pragma once

#include <string>

namespace velmo::conf {

struct SchemaWriter;

/// What all blocks of the settings tree share.
struct Base {
  std::string comment;  ///< free text of the user, optional in every block

  Base() = default;
  Base(const Base&) = default;
  Base(Base&&) = default;
  Base& operator=(const Base&) = default;
  Base& operator=(Base&&) = default;
  virtual ~Base() = default;

  /// Writes the schema items of the block's keys, with the present values as defaults.
  virtual void describe(SchemaWriter& writer) const = 0;
};

}  // namespace velmo::conf
