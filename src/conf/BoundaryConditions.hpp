#pragma once

#include <cstdint>
#include <vector>

#include "conf/Base.hpp"
#include "io/Types.hpp"

namespace velmo::conf {

/// A dielectric body.
struct Dielectric : Base {
  u64 partId = 0;
  std::vector<std::int64_t> orientations;  ///< of the part's surfaces: -1, 0 or 1
  double epsR = 0.0;                       ///< relative permittivity

  void describe(SchemaWriter& writer) const override;
};

/// A conductor held at a voltage.
struct Electrode : Base {
  u64 partId = 0;
  double voltage = 0.0;

  void describe(SchemaWriter& writer) const override;
};

/// A conductor of unknown potential that carries a given charge.
struct Floating : Base {
  u64 partId = 0;
  double charge = 0.0;

  void describe(SchemaWriter& writer) const override;
};

}  // namespace velmo::conf
