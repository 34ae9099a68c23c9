#pragma once

#include <iosfwd>

namespace velmo::conf {

/// Writes a JSON Schema (draft 7) of a whole settings file, for editors that complete and check
/// what is typed, and for programs that look at settings before a run.
///
/// It is the text of `writeSchema` with what that leaves out: the root keys, the keys under which
/// files hold a field, the ranges that a run accepts, the length of vectors, and that `leafSize` or
/// `maxLevel` must stand beside `adaptive`. Where the program ignores what it doesn't need, the
/// schema is stricter: unknown keys, unknown solvers and equal entries in a list of parts are
/// errors.
void writeSettingsSchema(std::ostream& stream);

}  // namespace velmo::conf
