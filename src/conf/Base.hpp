#pragma once

#include <string>

/// The settings of an electrostatic problem, as the main solver and this program share them.
///
/// Blocks are plain structures whose members bear the names of the keys. Defaults are those of the
/// constructors. A key is "required" when a block that stands in a file must hold it, else
/// "optional". Unsigned keys refuse a minus sign; no other range is checked than those stated. A
/// key that this program doesn't read is carried along: it is read from a file, kept and written
/// back, and its meaning belongs to the main solver. The tree is built, read and copied on the main
/// thread before any other thread starts, and constant from then on.
namespace velmo::conf {

struct SchemaWriter;

/// What all blocks of the settings tree share.
struct Base {
  std::string comment;  ///< "comment", optional in every block: free text of the user, carried

  Base() = default;
  Base(const Base&) = default;
  Base(Base&&) = default;
  Base& operator=(const Base&) = default;
  Base& operator=(Base&&) = default;
  virtual ~Base() = default;

  /// Writes the schema items of the block's keys, in their order, with the present values as
  /// defaults.
  virtual void describe(SchemaWriter& writer) const = 0;
};

}  // namespace velmo::conf
