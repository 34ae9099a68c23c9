#include "h5/SolutionReader.hpp"

#include <gtest/gtest.h>
#include <hdf5.h>

#include <chrono>
#include <functional>
#include <limits>
#include <random>
#include <stdexcept>
#include <string>
#include <vector>

#include "grid/GridOperations.hpp"
#include "io/Exception.hpp"
#include "samples/SolutionFile.hpp"
#include "support/ExpectThrow.hpp"
#include "support/SmallSolution.hpp"
#include "support/TemporaryFolder.hpp"
#include "support/TextMutation.hpp"

namespace velmo::h5 {
namespace {

using samples::Part;
using samples::SolutionFile;
using samples::Stored;
using test::expectThrow;
using test::TemporaryFolder;

using Alteration = std::function<void(SolutionFile&)>;

/// The library reports each failed call on the standard error stream, here thousands of them.
class SolutionReader : public ::testing::Test {
 protected:
  static void SetUpTestSuite() { H5Eset_auto2(H5E_DEFAULT, nullptr, nullptr); }

  VtkHdfSolution read(const SolutionFile& file) const {
    const std::filesystem::path path = folder_.path() / "solution.vtkhdf";
    file.write(path);
    return readSolution(0, path);
  }
  VtkHdfSolution read(const Alteration& alter) const {
    SolutionFile file = test::smallSolution();
    alter(file);
    return read(file);
  }

  TemporaryFolder folder_;
};

void expectDefaultSolution(const VtkHdfSolution& solution) {
  EXPECT_EQ(solution.feOrder, 0);
  EXPECT_EQ(solution.charges, (std::vector<double>{4, -2.5}));
  const grid::GridData& grid = solution.grid;
  EXPECT_EQ(grid.worldDim, 3);
  EXPECT_EQ(grid.numElements, 2);
  EXPECT_EQ(grid.numNodes, 5);
  EXPECT_EQ(grid.coordinates, (std::vector<double>{0, 0, 0, 1, 0, 0, 1, 1, 0, 2, 0, 0, 2, 1, 0.5}));
  EXPECT_EQ(grid.nodeIds, (std::vector<u64>{0, 1, 2, 3, 4}));
  EXPECT_EQ(grid.elementTypes, (std::vector<u64>{304, 203}));
  EXPECT_EQ(grid.offsets, (std::vector<u64>{0, 4, 7}));
  EXPECT_EQ(grid.connectivity, (std::vector<u64>{1, 3, 4, 2, 0, 1, 2}));
  EXPECT_EQ(grid.elementTags, (std::vector<u64>{0, 0}));
  EXPECT_NO_THROW(checkChargeCount(solution));
}

TEST_F(SolutionReader, GivesTheSameSolutionHoweverItIsStored) {
  const Alteration storages[] = {
      [](SolutionFile&) {},
      [](SolutionFile& file) {
        for (Part& part : file.parts)
          if (part.stored == Stored::Int64) part.stored = Stored::BigInt32;
      },
      [](SolutionFile& file) {
        for (Part& part : file.parts) part.isCompressed = true;
      },
      [](SolutionFile& file) { file["Points"].rank = 1; },
      [](SolutionFile& file) { file["Connectivity"].rank = 2; },
      [](SolutionFile& file) { file["charges"].rank = 2; },
      [](SolutionFile& file) {
        file["Points"].doubles()[3] = 77;
      },  // a copy that a later one covers
      [](SolutionFile& file) {
        file.ints("Version") = {2, 99};
      },
      [](SolutionFile& file) { file["FEOrder"].rank = 0; },
      [](SolutionFile& file) {
        file.ints("NumberOfDofIds") = {3};
        file["NumberOfDofIds"].rank = 0;
      },
      [](SolutionFile& file) { file["FEOrder"].stored = Stored::FixedText; },  // no number stays 0
      [](SolutionFile& file) {
        file["Type"].stored = file["BasisType"].stored = Stored::VariableText;
      },
      [](SolutionFile& file) {
        file["Type"].text() += '\0';
        file["BasisType"].text() += '\0';
      },
  };
  for (std::size_t i = 0; i < std::size(storages); ++i) {
    SCOPED_TRACE(i);
    expectDefaultSolution(read(storages[i]));
  }
}

Alteration withoutGroup(std::size_t i) {
  return [i](SolutionFile& file) {
    file.groups.erase(file.groups.begin() + static_cast<std::ptrdiff_t>(i));
  };
}
Alteration set(const std::string& name, std::size_t i, std::int64_t value) {
  return [=](SolutionFile& file) { file.ints(name).at(i) = value; };
}
Alteration list(const std::string& name, const std::vector<std::int64_t>& values) {
  return [=](SolutionFile& file) { file.ints(name) = values; };
}
Alteration rank(const std::string& name, int value) {
  return [=](SolutionFile& file) { file[name].rank = value; };
}
Alteration text(const std::string& name, const std::string& value) {
  return [=](SolutionFile& file) { file[name].text() = value; };
}
Alteration stored(const std::string& name, Stored form) {
  return [=](SolutionFile& file) { file[name].stored = form; };
}

constexpr std::int64_t kHuge = std::numeric_limits<std::int64_t>::max();

TEST_F(SolutionReader, RefusesEveryFaultInItsOwnWords) {
  const struct {
    Alteration alter;
    std::string refusal;
  } cases[] = {
      {withoutGroup(0), "Group could not be opened"},
      {withoutGroup(1), "Group could not be opened"},
      {withoutGroup(2), "Group could not be opened"},
      {withoutGroup(3), "Group could not be opened"},
      {withoutGroup(4), "Group could not be opened"},
      {stored("Type", Stored::Missing), "Attribute could not be opened"},
      {stored("BasisType", Stored::Missing), "Attribute could not be opened"},
      {stored("Version", Stored::Missing), "Attribute could not be opened"},
      {stored("FEOrder", Stored::Missing), "Attribute could not be opened"},
      {stored("Offsets", Stored::Missing), "dopen2 failed"},
      {stored("PointData/vtkGhostType", Stored::Missing), "dopen2 failed"},
      {stored("charges", Stored::Missing), "dopen2 failed"},
      {rank("Types", 3), "ndims cannot exceed 2"},
      {rank("charges", 3), "ndims cannot exceed 2"},
      {stored("Type", Stored::Int32), "Wrong attribute type"},
      {stored("BasisType", Stored::Int32), "Wrong attribute type"},
      {list("Version", {2, 0, 1}), "Dimension mismatch"},
      {rank("Version", 0), "Dimension mismatch"},
      {list("Version", {1, 0}), "Only versions 2.x are supported"},
      {stored("Version", Stored::FixedText), "Only versions 2.x are supported"},
      {text("Type", "MultiBlockDataSet"), "MultiBlockDataSet are currently not supported"},
      {text("Type", "PolyData"), "Unknown type(=PolyData) detected"},
      {text("Type", "UnstructuredGrid "), "Unknown type(=UnstructuredGrid ) detected"},
      {text("BasisType", "H1"), "Wrong basis type. Must be L2"},
      {text("BasisType", "L2 "), "Wrong basis type. Must be L2"},
      {list("NumberOfPoints", {8}), "MPI sizes are not consistent"},
      {list("NumberOfCells", {1, 2, 0}), "MPI sizes are not consistent"},
      {set("PointData/vtkGlobalIds", 6, 3), "Max. node id has to be nodes.size()-1"},
      {set("PointData/vtkGlobalIds", 6, 5), "Max. node id has to be nodes.size()-1"},
      {set("PointData/vtkGlobalIds", 6, -1), "Max. node id has to be nodes.size()-1"},
      {list("PointData/vtkGlobalIds", {4, 1, 2, 3, 1, 2, 4, 4}), "Min. node id has to be zero"},
      {set("Types", 0, 5), "Celltype not supported"},
      {list("Types", {70, 70, 70}), "Unknown number of nodes ('3)' for quad type"},
      {set("Types", 1, 69), "Unknown number of nodes ('4)' for tria type"},
      // Sizes that do not fit together.
      {set("NumberOfPoints", 0, -1), "'/VTKHDF/NumberOfPoints' holds the impossible count -1"},
      {set("NumberOfCells", 1, kHuge),
       "'/VTKHDF/NumberOfCells' holds the impossible count 9223372036854775807"},
      {set("NumberOfDofIds", 0, -1), "'/ABB/L2/NumberOfDofIds' holds the impossible count -1"},
      {set("NumberOfPoints", 0, 2), "'/VTKHDF/Points' has 24 entries instead of 21"},
      {list("Types", {69}), "'/VTKHDF/Types' has 1 entries instead of 3"},
      {list("Connectivity", {}), "'/VTKHDF/Connectivity' has 0 entries instead of 10"},
      {list("Offsets", {0, 3, 7, 10}), "'/VTKHDF/Offsets' has 4 entries instead of 5"},
      {list("CellData/vtkGhostType", {0, 0}),
       "'/VTKHDF/CellData/vtkGhostType' has 2 entries instead of 3"},
      {list("GhostDofs", {0, 0}), "'/ABB/L2/GhostDofs' has 2 entries instead of 3"},
      {list("FEOrder", {0, 0}), "Attribute 'FEOrder' has 2 entries instead of 1"},
      {stored("charges", Stored::FixedText), "'/ABB/L2/charges' could not be read as numbers"},
      {stored("Points", Stored::Compound), "'/VTKHDF/Points' could not be read as numbers"},
      // Ids and places out of range or without entity.
      {set("PointData/vtkGhostType", 4, 0), "Max. node id has to be nodes.size()-1"},
      {list("PointData/vtkGlobalIds", {0, 1, 1, 3, 1, 1, 4, 0}),
       "'/VTKHDF/PointData/vtkGlobalIds' lacks the id 2"},
      {list("CellData/vtkGhostType", {1, 1, 1}), "The grid has no cells"},
      {set("CellData/vtkGlobalIds", 1, 2),
       "'/VTKHDF/CellData/vtkGlobalIds' holds the id 2 among 2 elements"},
      {set("CellData/vtkGlobalIds", 1, -1),
       "'/VTKHDF/CellData/vtkGlobalIds' holds the id -1 among 2 elements"},
      {set("CellData/vtkGlobalIds", 1, 1),
       "'/VTKHDF/CellData/vtkGlobalIds' gives cells of different types the id 1"},
      {list("CellData/vtkGhostType", {0, 0, 0}), "'/VTKHDF/CellData/vtkGlobalIds' lacks the id 2"},
      {list("Offsets", {0, 3, 0, 5, 8}), "Unknown number of nodes ('5)' for quad type"},
      {list("Offsets", {0, 3, 1, 5, 8}),
       "'/VTKHDF/Offsets' puts cell 2 from 5 to 8 in a piece of 7 connectivity ids"},
      {list("Offsets", {-3, 0, 0, 4, 7}),
       "'/VTKHDF/Offsets' puts cell 0 from -3 to 0 in a piece of 3 connectivity ids"},
      {set("Connectivity", 2, 3),
       "'/VTKHDF/Connectivity' holds the point 3 in a piece of 3 points"},
      {set("Connectivity", 9, -1),
       "'/VTKHDF/Connectivity' holds the point -1 in a piece of 5 points"},
      {set("GlobalDofIds", 1, 2),
       "'/ABB/L2/GlobalDofIds' holds the id 2 among 2 degrees of freedom"},
      {set("GlobalDofIds", 1, 1), "'/ABB/L2/GlobalDofIds' lacks the id 0"},
      {[](SolutionFile& file) { file["charges"].doubles()[1] = std::nan(""); },
       "'/ABB/L2/charges' holds a value that is not finite"},
  };
  for (const auto& fault : cases)
    expectThrow<utility::RuntimeError>([&] { (void)read(fault.alter); }, fault.refusal);
  expectThrow<std::out_of_range>([&] { (void)read(set("Connectivity", 9, 5)); },
                                 "invalid vector subscript");
}

TEST_F(SolutionReader, RefusesAFileThatIsNone) {
  const std::string path = folder_.write("text.vtkhdf", "no HDF5 file");

  expectThrow<utility::RuntimeError>([&] { (void)readSolution(0, path); },
                                     "Cannot open file '" + path + "'");
  expectThrow<utility::RuntimeError>([] { (void)readSolution(0, "/no/such/file"); },
                                     "Cannot open file '/no/such/file'");
}

TEST_F(SolutionReader, RefusesDeclaredSizesWithoutFetchingMemoryForThem) {
  SolutionFile file = test::smallSolution();
  constexpr u64 kMany = u64{1} << 50U;
  for (const char* const name : {"Types", "CellData/vtkGhostType", "CellData/vtkGlobalIds"})
    file[name].unwritten = kMany - 3;
  file["Offsets"].unwritten = kMany + 2 - 5;
  file.ints("NumberOfCells")[1] = static_cast<std::int64_t>(kMany) - 1;

  expectThrow<utility::RuntimeError>(
      [&] { (void)read(file); },
      "'/VTKHDF/Types' has entries that were never written; write the file anew");
}

TEST_F(SolutionReader, RefusesChargesThatDoNotFitTheElements) {
  VtkHdfSolution solution = read(test::smallSolution());
  const auto check = [&](std::int64_t order, std::size_t numCharges) {
    solution.feOrder = order;
    solution.charges.resize(numCharges);
    checkChargeCount(solution);
  };

  EXPECT_NO_THROW(check(1, 3 + 4));
  EXPECT_NO_THROW(check(4, 15 + 25));
  expectThrow<utility::RuntimeError>([&] { check(2, 14); },
                                     "FEOrder 2 needs 15 charges for this grid, but there are 14");
  for (const std::int64_t order : {std::int64_t{-1}, std::int64_t{14}, kHuge})
    expectThrow<utility::RuntimeError>(
        [&] { check(order, 14); },
        "FEOrder " + std::to_string(order) + " is not possible with 14 charges");
}

/// One to three sizes, counts, ids, types or forms of storage altered at random.
SolutionFile mutatedSolution(u64 seed) {
  std::mt19937_64 random(seed);
  const auto below = [&random](u64 n) { return n == 0 ? 0 : random() % n; };
  const std::int64_t extremes[] = {-1, 0, 1, 2, 3, 4, 5, 7, 69, 70, kHuge, -kHuge - 1, 1LL << 32};
  SolutionFile file = test::smallSolution();
  const u64 count = 1 + below(3);
  for (u64 i = 0; i < count; ++i) {
    Part& part = file.parts[below(file.parts.size())];
    const u64 place = below(part.size());
    const std::int64_t extreme = extremes[below(std::size(extremes))];
    const u64 kind = below(10);
    if (kind < 5 && std::holds_alternative<samples::Ints>(part.values) && part.size() > 0) {
      part.ints()[place] = kind < 2 ? static_cast<std::int64_t>(below(6)) : extreme;
    } else if (kind < 7) {
      std::visit([&](auto& values) { values.resize(kind == 6 ? place : values.size() + 1); },
                 part.values);
    } else if (kind == 7) {
      part.stored = static_cast<Stored>(below(samples::kNumStored));
    } else if (kind == 8) {
      part.rank = below(4);
      part.isCompressed = below(2) == 0;
    } else {
      part.unwritten = u64{1} << below(60);
    }
  }
  return file;
}

TEST_F(SolutionReader, EndsWellOrInWordsOnAlteredFiles) {
  const u64 count = test::numMutations(1000);
  u64 numRead = 0;
  for (u64 seed = 0; seed < count && !HasFailure(); ++seed) {
    SCOPED_TRACE(seed);
    try {
      const VtkHdfSolution solution = read(mutatedSolution(seed));
      ++numRead;
      const grid::GridData& grid = solution.grid;
      ASSERT_EQ(grid.offsets.size(), grid.numElements + 1);
      ASSERT_EQ(grid.offsets.back(), grid.connectivity.size());
      for (const u64 id : grid.connectivity) ASSERT_LT(id, grid.numNodes);
      std::vector<double> centres(3 * grid.numElements);
      grid::ElementsToPoints(grid, centres);
      grid::vertexMeans(grid, centres);
      checkChargeCount(solution);
    } catch (const std::exception& failure) {
      EXPECT_STRNE(failure.what(), "");
    }
  }
  EXPECT_GT(numRead, 0);
  EXPECT_LT(numRead, count);
}

}  // namespace
}  // namespace velmo::h5
