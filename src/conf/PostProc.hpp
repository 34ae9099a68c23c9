#pragma once

#include <string>
#include <vector>

#include "conf/Base.hpp"
#include "io/Types.hpp"

namespace velmo::conf {

/// Output of the system's matrices.
struct MatOut : Base {
  bool active = false;
  std::vector<u64> timeSteps;
  bool onException = false;

  void describe(SchemaWriter& writer) const override;
};

/// Output of the solution file.
struct VTKHDF : Base {
  bool active = false;
  bool isSinglePrec = false;
  bool isGZip = false;
  bool isSZip = false;
  bool isChecksum = false;

  void describe(SchemaWriter& writer) const override;
};

/// A named surface inside a body.
struct InteriorSurface : Base {
  u64 id = 0;
  std::string name;

  void describe(SchemaWriter& writer) const override;
};

/// What is written, and how often.
struct PostProc : Base {
  std::string outBasename;  ///< path of the results without their extension
  u64 outputFrequency = 1;
  bool vtk = true;
  MatOut matOut;
  VTKHDF vtkhdf;
  bool csv = false;
  bool dumpSol = false;
  std::vector<InteriorSurface> interiorSurfaces;

  void describe(SchemaWriter& writer) const override;
};

}  // namespace velmo::conf
