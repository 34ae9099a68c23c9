#pragma once

#include <string>

/// The settings of an electrostatic problem, as the main solver and this program share them.
///
/// Blocks are plain structures whose members have the names of the keys. Defaults are those of the
/// constructors. A key is "required" if every block of its kind in a file must have it, otherwise
/// "optional". Unsigned keys refuse a minus sign; apart from that, only the stated ranges are
/// checked. A key marked "carried" is not used by this program: it is read from a file, kept and
/// written back, and only the main solver gives it a meaning. The tree is built, read and copied on
/// the main thread before any other thread starts, and constant from then on.
namespace velmo::conf {

struct SchemaWriter;

/// What all blocks of the settings tree share.
struct Base {
  std::string comment;  ///< "comment", optional in every block: free text by the user, carried

  Base() = default;
  Base(const Base&) = default;
  Base(Base&&) = default;
  Base& operator=(const Base&) = default;
  Base& operator=(Base&&) = default;
  virtual ~Base() = default;

  /// Writes the schema items of the block's keys, in their order, with the current values as
  /// defaults.
  virtual void describe(SchemaWriter& writer) const = 0;
};

}  // namespace velmo::conf
