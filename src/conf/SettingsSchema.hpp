#pragma once

#include <iosfwd>

namespace velmo::conf {

/// Writes a JSON Schema (draft 7) of a whole settings file, for editors that complete and check
/// settings while they are typed, and for programs that check them before a run.
///
/// It is the text of `writeSchema` with additions: the root keys, the keys that files use for a
/// field, the ranges that a run accepts, the length of vectors, and the rule that `adaptive` needs
/// `leafSize` or `maxLevel`. The schema is stricter than the program, which ignores what it doesn't
/// need: unknown keys, unknown solvers and equal entries in a list of parts are errors.
void writeSettingsSchema(std::ostream& stream);

}  // namespace velmo::conf
