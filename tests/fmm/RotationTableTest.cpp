#include "fmm/RotationTable.hpp"

#include <gtest/gtest.h>

#include <stdexcept>
#include <utility>

#include "fmm/ExpansionTools.hpp"
#include "io/Exception.hpp"
#include "math/Constants.hpp"
#include "support/ExpectThrow.hpp"

namespace velmo::fmm::test {
namespace {

using math::kPi;
using utility::RuntimeError;
using velmo::test::expectThrow;

using Angles = std::pair<double, double>;
using Rotation = void (RotationTable::*)(double, double, std::span<const Complex>,
                                         std::span<Complex>) const;

struct Family {
  Kind kind;
  Rotation forward;
  Rotation backward;
};
const Family kFamilies[] = {
    {Kind::Multipole, &RotationTable::rotateMultipoleForward,
     &RotationTable::rotateMultipoleBackward},
    {Kind::Local, &RotationTable::rotateLocalForward, &RotationTable::rotateLocalBackward}};

TEST(RotationTable, RefusesWhatItDoesNotHold) {
  const Angles direction{1.0, 0.5};
  const RotationTable table(4, std::span(&direction, 1));
  Coefficients c(numCoefficients(4));
  Coefficients tooLong(numCoefficients(5));
  for (const Family& family : kFamilies) {
    for (const Rotation rotation : {family.forward, family.backward}) {
      expectThrow<std::out_of_range>([&] { (table.*rotation)(1.1, 0.5, c, c); },
                                     "invalid unordered_map<K, T> key");
      expectThrow<std::out_of_range>([&] { (table.*rotation)(1.0, 0.6, c, c); },
                                     "invalid unordered_map<K, T> key");
      expectThrow<RuntimeError>([&] { (table.*rotation)(1.0, 0.5, tooLong, tooLong); },
                                "Constructed with too low a degree");
    }
  }
  expectThrow<RuntimeError>([] { static_cast<void>(PhaseTable(5, 0.7)(-6)); },
                            "Index -6is outside of precomputed range +/-5");
  const Angles tooLarge{6.5, 0.0};
  expectThrow<utility::DomainError>([&] { RotationTable(4, std::span(&tooLarge, 1)); },
                                    "Angle theta out or range [0,2 pi) : 6.500000");
}

}  // namespace
}  // namespace velmo::fmm::test
