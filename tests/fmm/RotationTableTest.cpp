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

constexpr u64 kDegree = 20;
/// Some rounding errors per entry of the matrices and of the harmonics.
constexpr double kTolerance = 20 * kDegree * kEps;

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

/// A rotated expansion of charges is the expansion of the turned charges, and comes back.
void expectRotates(const RotationTable& table, const Angles& direction, std::mt19937_64& random) {
  const auto [theta, phi] = direction;
  const Charges charges{{randomPoint(random, 1.0)}, {1.0}};
  const Charges turnedCharges{{turned(theta, phi, charges.points[0])}, {1.0}};
  for (const Family& family : kFamilies) {
    const Coefficients before = expand(family.kind, charges, {}, table.degree());
    const Coefficients expected = expand(family.kind, turnedCharges, {}, table.degree());
    Coefficients forward(before.size());
    Coefficients back(before.size());

    (table.*family.forward)(theta, phi, before, forward);
    (table.*family.backward)(theta, phi, forward, back);
    (table.*family.backward)(theta, phi, forward, forward);

    Coefficients again(before.size());
    (table.*family.forward)(theta, phi, before, again);
    EXPECT_LT(largestError(family.kind, again, expected), kTolerance) << theta << ' ' << phi;
    EXPECT_LT(largestError(family.kind, back, before), kTolerance) << theta << ' ' << phi;
    EXPECT_EQ(forward, back) << "in place";
    EXPECT_EQ(again[0], before[0]);
  }
}

TEST(RotationTable, TurnsExpansionsAsTheirSources) {
  std::mt19937_64 random(7);
  std::uniform_real_distribution<double> polar(0.0, kPi);
  std::uniform_real_distribution<double> azimuth(-kPi, kPi);
  std::vector<Angles> directions{{0.0, 0.0},        {kPi, 0.0},  {0.5 * kPi, kPi}, {1e-3, 1.0},
                                 {kPi - 1e-3, 2.0}, {-0.4, 0.5}, {4.0, -1.0},      {6.0, 2.5}};
  for (int i = 0; i < 40; ++i) directions.emplace_back(polar(random), azimuth(random));
  for (const Angles& direction : directions)
    expectRotates(RotationTable(kDegree, std::span(&direction, 1)), direction, random);
}

TEST(RotationTable, RotatesEveryOffsetOfTheInteractionStencil) {
  std::mt19937_64 random(8);
  const RotationTable table(kDegree);
  // Box centres carry rounding errors of the coordinates: the keys must not mind.
  const double edge = 0.1 / 3.0;
  for (int z = -3; z <= 3; ++z)
    for (int y = -3; y <= 3; ++y)
      for (int x = -3; x <= 3; ++x) {
        if (x == 0 && y == 0 && z == 0) continue;
        const Angles direction{std::atan2(std::sqrt(y * y + x * x), z), std::atan2(y, x)};
        ASSERT_TRUE(table.registered(direction.first, direction.second));
        ASSERT_TRUE(table.registered(std::atan2(std::hypot(y * edge, x * edge), z * edge),
                                     std::atan2(y * edge, x * edge)));
        expectRotates(table, direction, random);
      }
  EXPECT_FALSE(table.registered(std::atan2(4.0, 1.0), 0.0));
  EXPECT_FALSE(table.registered(0.0, std::atan2(4.0, 1.0)));
}

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
