#include "fmm/ExpansionKernel.hpp"

#include <gtest/gtest.h>

#include <initializer_list>
#include <string>
#include <utility>

#include "fmm/ExpansionTools.hpp"
#include "fmm/RotationTable.hpp"
#include "math/InstructionSet.hpp"

namespace velmo::fmm::test {
namespace {

struct NamedKernel {
  std::string name;
  const ExpansionKernel* kernel;
};

/// The loops of all instruction sets that this machine runs.
std::vector<NamedKernel> kernels() {
  const math::InstructionSet widest = math::instructionSet();
  std::vector<NamedKernel> all{{"Baseline", &detail_::kExpansionBaseline}};
  if (widest >= math::InstructionSet::Avx2) all.push_back({"Avx2", &detail_::kExpansionAvx2});
  if (widest >= math::InstructionSet::Avx512) all.push_back({"Avx512", &detail_::kExpansionAvx512});
  return all;
}

constexpr u64 kCounts[] = {0, 1, 7, 8, 9, 33};
constexpr u64 kDegrees[] = {2, 8, 15};
const Vector kCentre{0.5, -1.0, 0.25};

/// Charges or targets, component by component, with no room behind the last.
struct Lanes {
  Lanes(const Charges& from, u64 count) : charges(from.values.data(), from.values.data() + count) {
    for (u64 i = 0; i < count; ++i) {
      x.push_back(from.points[i][0]);
      y.push_back(from.points[i][1]);
      z.push_back(from.points[i][2]);
    }
  }
  [[nodiscard]] ExpansionPoints points() const { return {x.data(), y.data(), z.data(), x.size()}; }
  std::vector<double> charges, x, y, z;
};

TEST(ExpansionKernel, SumsHarmonicsOfPoints) {
  std::mt19937_64 random(4);
  for (const auto& [name, kernel] : kernels()) {
    for (const u64 degree : {u64{2}, u64{8}, u64{15}, kMaxDegree}) {
      const RecursionTable table(degree);
      std::vector<double> scratch(translationScratch(degree));
      for (const u64 count : kCounts) {
        const Lanes lanes(randomCharges(random, count, 1.0, kCentre), count);
        Charges charges{{}, lanes.charges};
        for (u64 i = 0; i < count; ++i)
          charges.points.push_back({lanes.x[i], lanes.y[i], lanes.z[i]});
        for (const Kind kind : {Kind::Multipole, Kind::Local}) {
          // Nonzero before, so that it must add.
          const Coefficients start = expand(kind, {{{0.1, 0.2, 0.9}}, {0.7}}, kCentre, degree);
          Coefficients actual = start;
          const auto loop =
              kind == Kind::Multipole ? kernel->pointsToMultipole : kernel->pointsToLocal;

          loop(table, lanes.points(), lanes.charges.data(), kCentre.data(), actual.data(),
               scratch.data());

          Coefficients expected = expand(kind, charges, kCentre, degree);
          for (u64 i = 0; i < expected.size(); ++i) expected[i] += start[i];
          // Sums of few terms cancel at most by their number.
          EXPECT_LT(largestError(kind, actual, expected), 32 * static_cast<double>(degree) * kEps)
              << name << " count " << count << " degree " << degree;
        }
      }
    }
  }
}

/// Columns u, x, y, z of the sums at targets, by the plain harmonics.
std::array<double, 4> plainSums(Kind kind, const Coefficients& forPotential,
                                const Coefficients& forGradient, const Vector& target) {
  const Vector d = difference(target, kCentre);
  std::array<double, 4> sums = field(kind, forGradient, d);
  sums[0] = potential(kind, forPotential, d);
  return sums;
}

TEST(ExpansionKernel, EvaluatesExpansionsAndTheirGradients) {
  std::mt19937_64 random(5);
  constexpr double kScale = 0.75;
  for (const auto& [name, kernel] : kernels()) {
    for (const u64 degree : kDegrees) {
      for (const auto& [kind, isPair] :
           std::initializer_list<std::pair<Kind, bool>>{{Kind::Multipole, true},
                                                        {Kind::Multipole, false},
                                                        {Kind::Local, true},
                                                        {Kind::Local, false}}) {
        const bool isLocal = kind == Kind::Local;
        const Vector far{kCentre[0] + 2.5, kCentre[1] - 2.0, kCentre[2] + 3.0};
        const auto randomExpansion = [&] {
          return expand(kind, randomCharges(random, 5, 0.5, isLocal ? far : kCentre), kCentre,
                        degree);
        };
        const Coefficients u = randomExpansion();
        const Coefficients other = randomExpansion();
        const Coefficients& g = isPair ? other : u;
        const Charges targets = randomCharges(random, 33, 0.5, isLocal ? kCentre : far);
        DerivedExpansion derived(degree);
        if (isLocal)
          derived.setLocal(u, g);
        else
          derived.setMultipole(u, g);
        const RecursionTable table(isLocal ? degree : degree + 1);
        const auto loop = isLocal ? kernel->localToPoints : kernel->multipoleToPoints;
        std::vector<double> whole;
        for (const u64 count : {33, 9, 8, 7, 1, 0}) {
          const Lanes lanes(targets, count);
          std::vector<double> sums(4 * count, 0.125);
          double* const s = sums.data();

          loop(table, derived, kCentre.data(), kScale, lanes.points(),
               {s, s + count, s + 2 * count, s + 3 * count});

          if (whole.empty()) whole = sums;
          for (u64 i = 0; i < count; ++i) {
            const std::array<double, 4> plain = plainSums(kind, u, g, targets.points[i]);
            for (u64 k = 0; k < (isLocal && degree == 2 ? 1 : 4); ++k) {
              EXPECT_NEAR(s[k * count + i], 0.125 + kScale * plain[k], 256 * kEps) << name;
            }
            // The place of a target among the others has no say in its sums.
            for (u64 k = 0; k < 4; ++k) EXPECT_EQ(s[k * count + i], whole[k * 33 + i]) << name;
          }
        }
      }
    }
  }
}

/// One step with all that it points to.
struct OwnedStep {
  OwnedStep(u64 degree, RotationTable::Family forward, RotationTable::Family backward)
      : table(degree), factors(2 * degree + 1) {
    const double theta = std::atan2(std::sqrt(5.0), 3.0);
    const double phi = std::atan2(-2.0, 1.0);
    for (u64 k = 0; k < factors.size(); ++k) factors[k] = 1.0 / static_cast<double>(k * k + 1);
    const FoldedRotation& f = table.matrices(forward, theta);
    const FoldedRotation& b = table.matrices(backward, theta);
    step = {f.real.data(),
            f.imaginary.data(),
            b.real.data(),
            b.imaginary.data(),
            table.phases(phi).nonNegative(),
            factors.data()};
  }
  RotationTable table;
  std::vector<double> factors;
  TranslationStep step;
};

/// A batch of expansions translated; those behind `count` must stay as they are.
std::vector<Coefficients> translated(decltype(ExpansionKernel::multipoleToLocal) loop, u64 degree,
                                     const TranslationStep& step,
                                     const std::vector<Coefficients>& from, u64 count) {
  std::vector<Coefficients> to(from.size(), Coefficients(numCoefficients(degree), 0.25));
  ExpansionBatch batch;
  batch.count = count;
  for (u64 l = 0; l < count; ++l) {
    batch.from[l] = from[l].data();
    batch.to[l] = to[l].data();
  }
  std::vector<double> scratch(translationScratch(degree));
  loop(degree, step, batch, scratch.data());
  return to;
}

TEST(ExpansionKernel, TranslatesEveryLaneAsIfItWereAlone) {
  using Family = RotationTable::Family;
  std::mt19937_64 random(6);
  constexpr double kBad = std::numeric_limits<double>::quiet_NaN();
  const struct {
    decltype(&ExpansionKernel::multipoleToLocal) loop;
    Family forward;
    Family backward;
  } translations[] = {
      {&ExpansionKernel::multipoleToMultipole, Family::ForwardMultipole, Family::BackwardMultipole},
      {&ExpansionKernel::multipoleToLocal, Family::ForwardMultipole, Family::BackwardLocal},
      {&ExpansionKernel::localToLocal, Family::ForwardLocal, Family::BackwardLocal}};
  for (const u64 degree : kDegrees) {
    for (const auto& translation : translations) {
      const OwnedStep owned(degree, translation.forward, translation.backward);
      std::vector<Coefficients> from;
      for (u64 l = 0; l < math::kNumLanes; ++l)
        from.push_back(expand(Kind::Multipole, randomCharges(random, 2, 1.0, {}), {}, degree));
      std::vector<Coefficients> withBadNeighbours(from.size(), Coefficients(from[0].size(), kBad));
      std::vector<Coefficients> plain;
      for (const auto& [name, kernel] : kernels()) {
        const auto loop = kernel->*translation.loop;
        const auto all = translated(loop, degree, owned.step, from, math::kNumLanes);
        if (plain.empty()) plain = all;
        for (u64 count = 1; count <= math::kNumLanes; ++count) {
          const auto some = translated(loop, degree, owned.step, from, count);
          for (u64 l = 0; l < math::kNumLanes; ++l) {
            EXPECT_EQ(some[l], l < count ? all[l] : Coefficients(all[l].size(), 0.25)) << name;
          }
          withBadNeighbours[count - 1] = from[count - 1];
          EXPECT_EQ(translated(loop, degree, owned.step, withBadNeighbours, 8)[count - 1],
                    all[count - 1])
              << name;
          withBadNeighbours[count - 1].assign(from[0].size(), kBad);
        }
        for (u64 l = 0; l < math::kNumLanes; ++l) {
          EXPECT_LT(largestError(Kind::Local, all[l], plain[l]), 64 * kEps) << name;
        }
      }
    }
  }
}

}  // namespace
}  // namespace velmo::fmm::test
