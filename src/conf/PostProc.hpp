#pragma once

#include <string>
#include <vector>

#include "conf/Base.hpp"
#include "io/Types.hpp"

/// What the main solver writes, and how often. This program writes one table; of these keys it uses
/// only `outBasename`, which is set from its command line.
namespace velmo::conf {

/// Output of the system's matrices: the block "matOut". Carried.
struct MatOut : Base {
  bool active = false;         ///< "active", required
  std::vector<u64> timeSteps;  ///< "timeSteps", optional: numbers of the steps
  bool onException = false;    ///< "onException", optional

  void describe(SchemaWriter& writer) const override;
};

/// Output of the solution file: the block "vtkhdf". Carried; the reader detects from the file
/// itself how it is packed.
struct VTKHDF : Base {
  bool active = false;        ///< "active", required
  bool isSinglePrec = false;  ///< "isSinglePrec", optional
  bool isGZip = false;        ///< "isGZip", optional
  bool isSZip = false;        ///< "isSZip", optional
  bool isChecksum = false;    ///< "isChecksum", optional

  void describe(SchemaWriter& writer) const override;
};

/// A named surface inside a body: an entry of "interiorSurfaces". Carried.
struct InteriorSurface : Base {
  u64 id = 0;        ///< "id", required
  std::string name;  ///< "name", required

  void describe(SchemaWriter& writer) const override;
};

/// The block "postProc"; all its keys are optional.
struct PostProc : Base {
  /// "outBasename", path of the results without their extension. The value in a file is overwritten
  /// by the base name from the command line, under which the result table is written.
  std::string outBasename;
  u64 outputFrequency = 1;  ///< "outputFrequency", in time steps; carried, like all that follow
  bool vtk = true;          ///< "vtk"
  MatOut matOut;            ///< "matOut"
  VTKHDF vtkhdf;            ///< "vtkhdf"
  bool csv = false;         ///< "csv"; the table of this program is written in any case
  bool dumpSol = false;     ///< "dumpSol"
  std::vector<InteriorSurface> interiorSurfaces;  ///< "interiorSurfaces"

  void describe(SchemaWriter& writer) const override;
};

}  // namespace velmo::conf
