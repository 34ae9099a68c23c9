#include <gtest/gtest.h>

#include <algorithm>
#include <filesystem>
#include <string>
#include <vector>

#include "h5/SolutionReader.hpp"
#include "io/Exception.hpp"
#include "samples/Bodies.hpp"
#include "samples/Density.hpp"
#include "samples/RawSolution.hpp"
#include "samples/SolutionWriter.hpp"

namespace velmo::samples {

namespace {

/// A folder of its own for each test.
class SolutionRoundTrip : public ::testing::Test {
 protected:
  SolutionRoundTrip()
      : folder_(std::filesystem::path(::testing::TempDir()) /
                (std::string("velmo_") +
                 ::testing::UnitTest::GetInstance()->current_test_info()->name())) {
    std::filesystem::create_directories(folder_);
  }
  ~SolutionRoundTrip() override { std::filesystem::remove_all(folder_); }

  [[nodiscard]] std::filesystem::path file(const char* name) const { return folder_ / name; }

 private:
  std::filesystem::path folder_;
};

void expectSameBits(const h5::VtkHdfSolution& read, const SurfaceMesh& mesh,
                    const Density& density) {
  const grid::GridData grid = gridData(mesh);
  EXPECT_EQ(read.feOrder, static_cast<std::int64_t>(density.order));
  EXPECT_EQ(read.charges, density.charges);
  EXPECT_EQ(read.grid.coordinates, grid.coordinates);
  EXPECT_EQ(read.grid.nodeIds, grid.nodeIds);
  EXPECT_EQ(read.grid.elementTypes, grid.elementTypes);
  EXPECT_EQ(read.grid.offsets, grid.offsets);
  EXPECT_EQ(read.grid.connectivity, grid.connectivity);
  EXPECT_EQ(read.grid.elementTags, grid.elementTags);
}

TEST_F(SolutionRoundTrip, GivesTheSameBitsForEveryCutOrderAndStorage) {
  struct Variant {
    PieceOptions pieces;
    StorageOptions storage;
  };
  const std::vector<Variant> variants{
      {{1, false, 1}, {}},
      {{1, true, 2}, {.gzip = true}},
      {{2, false, 3}, {.integers = IntegerWidth::Bits32}},
      {{5, true, 4},
       {.gzip = true, .integers = IntegerWidth::Mixed, .strings = TextForm::Variable}},
      {{24, true, 5}, {.strings = TextForm::Variable}},
  };
  const std::vector<SurfaceMesh> meshes{
      sphere({Elements::Mixed, 2, 3, false}, 1.5, {0.1, 0.2, 0.3}),
      renumbered(box({Elements::Triangles, 2, 2, false}), 9),
      plate({Elements::Quadrilaterals, 5, 2, true}),
  };
  u64 order = 0;
  for (const SurfaceMesh& mesh : meshes) {
    const Density density =
        projected(mesh, order++, [](const double* x) { return 1.0 + x[0] * x[1] - x[2]; });
    for (const Variant& variant : variants) {
      SCOPED_TRACE(testing::Message() << variant.pieces.numPieces << " pieces of mesh " << order);

      writeSolution(file("s.vtkhdf"), pieces(mesh, density, variant.pieces), variant.storage);

      expectSameBits(h5::readSolution(0, file("s.vtkhdf")), mesh, density);
    }
  }
}

TEST_F(SolutionRoundTrip, StoresWhatTheOptionsAskFor) {
  const SurfaceMesh mesh = sphere({Elements::Triangles, 12, 1, false});
  const RawSolution raw = pieces(mesh, uniform(mesh, 0, 1.0));
  const auto sizeOf = [&](const StorageOptions& options) {
    writeSolution(file("s.vtkhdf"), raw, options);
    return std::filesystem::file_size(file("s.vtkhdf"));
  };

  const auto wide = sizeOf({});
  const auto mixed = sizeOf({.integers = IntegerWidth::Mixed});
  const auto narrow = sizeOf({.integers = IntegerWidth::Bits32});
  const auto compressed = sizeOf({.gzip = true});

  EXPECT_LT(narrow, mixed);
  EXPECT_LT(mixed, wide);
  EXPECT_LT(compressed, wide / 2);
}

TEST_F(SolutionRoundTrip, ReportsAFileThatCannotBeWritten) {
  const SurfaceMesh mesh = plate({});
  const RawSolution raw = pieces(mesh, uniform(mesh, 0, 1.0));

  EXPECT_THROW(writeSolution(file("missing/s.vtkhdf"), raw), utility::RuntimeError);
}

TEST(Pieces, OwnEachEntityOnceAndCarryALayerOfGhosts) {
  const SurfaceMesh mesh = sphere({Elements::Mixed, 4, 2, false});
  const Density density = uniform(mesh, 1, 1.0);

  const RawSolution raw = pieces(mesh, density, {.numPieces = 3, .shuffle = true, .seed = 7});

  const auto owned = [](const std::vector<std::uint8_t>& ghosts) {
    return static_cast<u64>(std::count(ghosts.begin(), ghosts.end(), 0));
  };
  EXPECT_EQ(owned(raw.pointGhosts), mesh.numNodes());
  EXPECT_EQ(owned(raw.cellGhosts), mesh.numElements());
  EXPECT_EQ(owned(raw.dofGhosts), density.charges.size());
  u64 firstCell = 0;
  u64 firstDof = 0;
  for (u64 piece = 0; piece < 3; ++piece) {
    const auto numCells = static_cast<u64>(raw.numberOfCells[piece]);
    const auto numDofs = static_cast<u64>(raw.numberOfDofIds[piece]);
    const std::vector<std::uint8_t> cells(raw.cellGhosts.data() + firstCell,
                                          raw.cellGhosts.data() + firstCell + numCells);
    EXPECT_GT(owned(cells), 0U);
    EXPECT_LT(owned(cells), numCells);
    const std::vector<std::uint8_t> dofs(raw.dofGhosts.data() + firstDof,
                                         raw.dofGhosts.data() + firstDof + numDofs);
    EXPECT_LT(owned(dofs), numDofs);
    firstCell += numCells;
    firstDof += numDofs;
  }
  EXPECT_FALSE(
      std::is_sorted(raw.cellIds.begin(), raw.cellIds.begin() + raw.numberOfCells.front()));
}

TEST(Pieces, RefuseCutsThatDoNotFitTheMesh) {
  const SurfaceMesh mesh = plate({Elements::Quadrilaterals, 2, 1, false});
  const Density density = uniform(mesh, 0, 1.0);

  EXPECT_THROW((void)pieces(mesh, density, {.numPieces = 0}), utility::RuntimeError);
  EXPECT_THROW((void)pieces(mesh, density, {.numPieces = 5}), utility::RuntimeError);
  EXPECT_THROW((void)pieces(sphere({}), density), utility::RuntimeError);
}

}  // namespace

}  // namespace velmo::samples
