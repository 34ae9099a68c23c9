#include "sparse/ParVec.hpp"

#include <gtest/gtest.h>

#include <stdexcept>
#include <thread>
#include <utility>
#include <vector>

#include "io/Exception.hpp"
#include "sparse/IndexLayout.hpp"
#include "support/ExpectThrow.hpp"

namespace velmo::sparse {
namespace {

using View = linalg::MatrixView<double, -1, 1>;

/// The layout that rank 0 of several sees: this process owns the first range only.
IndexLayout layoutOf(std::vector<u64> offsets) {
  IndexLayout layout;
  layout.offsets = std::move(offsets);
  return layout;
}

TEST(IndexLayout, FindsOwnersAcrossEmptyRanks) {
  const IndexLayout single(0, 7);
  EXPECT_EQ(single.offsets, (std::vector<u64>{0, 7}));
  EXPECT_EQ(single.ownerOf(6), 0U);

  const IndexLayout several = layoutOf({0, 0, 3, 3, 5});
  EXPECT_EQ(several.ownerOf(0), 1U);
  EXPECT_EQ(several.ownerOf(2), 1U);
  EXPECT_EQ(several.ownerOf(3), 3U);
}

TEST(ParVec, ReadsAndAddsOwnedAndRemoteValues) {
  std::vector<double> owned{1.0, 2.0};
  ParVec vector(layoutOf({0, 2, 6}), View(owned));
  vector.remote.setIds(std::vector<u64>{3, 5});

  vector.add(1, 0.5);
  vector.add(5, 4.0);
  vector.add(5, 0.25);

  EXPECT_EQ(owned, (std::vector<double>{1.0, 2.5}));
  EXPECT_EQ(vector.get(1), 2.5);
  EXPECT_EQ(vector.get(3), 0.0);
  EXPECT_EQ(vector.get(5), 4.25);
  vector.remote.zero();
  EXPECT_EQ(vector.get(5), 0.0);
}

TEST(DistributedVectors, RefuseWhatTheyDoNotHold) {
  std::vector<double> owned(2);
  ParVec vector(layoutOf({0, 2, 6}), View(owned));
  vector.remote.setIds(std::vector<u64>{1, 1, 3});  // only a descent is refused
  Vector pattern;
  const auto plus = [](double& entry, double value) { entry += value; };
  using test::expectThrow;
  using utility::RuntimeError;

  expectThrow<RuntimeError>(
      [&] {
        pattern.setIds(std::vector<u64>{2, 1});
      },
      "IDs have to be sorted");
  expectThrow<std::domain_error>([&] { static_cast<void>(vector.remote.get(2)); },
                                 "Vector index cannot be found: 2");
  expectThrow<RuntimeError>(
      [&] { pattern.add(std::vector<u64>{0}, std::vector<double>{1.0}, plus); },
      "Attempting to add too many new values to sparse vector - capacity exceeded: 0");
  expectThrow<RuntimeError>(
      [&] { vector.add(4, 1.0); },
      "Failed to find Index 4 in sparse::Vector, did you call reserve() correctly? ");
  expectThrow<std::out_of_range>([&] { vector.add(6, 1.0); },
                                 "Index 6 is out of global range [0,6) ");
  expectThrow<std::out_of_range>([&] { static_cast<void>(vector.get(6)); },
                                 "ParVec index 6 is out of global range [0,6) ");
  expectThrow<std::domain_error>(
      [&] { static_cast<void>(vector.get(5)); },
      "ParVec remote index out of range: Vector index cannot be found: 5 Scatter the ParVec?");
  expectThrow<RuntimeError>([&] { static_cast<void>(vector.layout.ownerOf(7)); },
                            "Partition: index 7 outside partition: [0, 2, 6]");
  expectThrow<RuntimeError>(
      [&] {
        ExchangePlan(vector.layout, std::vector<u64>{3, 1});
      },
      "Expected only non-local IDs here");
  expectThrow<std::runtime_error>(
      [&] {
        ExchangePlan(vector.layout, std::vector<u64>{3, 2});
      },
      "To-be-sent list does not have the right size");
}

}  // namespace
}  // namespace velmo::sparse
