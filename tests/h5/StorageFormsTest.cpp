#include <gtest/gtest.h>
#include <hdf5.h>

#include <filesystem>
#include <fstream>
#include <numeric>
#include <string>
#include <vector>

#include "h5/Dataset.hpp"
#include "h5/SolutionReader.hpp"
#include "io/Exception.hpp"
#include "support/ExpectThrow.hpp"
#include "support/SmallSolution.hpp"
#include "support/TemporaryFolder.hpp"

namespace velmo::h5 {
namespace {

using test::expectThrow;

/// Selection of `count` entries from `first` on in a list of `size`.
Dataspace slice(hsize_t size, hsize_t first, hsize_t count) {
  Dataspace space(H5Screate_simple(1, &size, nullptr));
  H5Sselect_hyperslab(space.get(), H5S_SELECT_SET, &first, nullptr, &count, nullptr);
  return space;
}

/// The entries of a part of a list: 1000, 1001, ... with the given distance from the list's first.
std::vector<double> ramp(hsize_t size, double first = 0) {
  std::vector<double> values(size);
  std::iota(values.begin(), values.end(), 1000 + first);
  return values;
}

/// How the entries of a dataset lie in files that the test writes one by one.
class StorageForms : public ::testing::Test {
 protected:
  static void SetUpTestSuite() { H5Eset_auto2(H5E_DEFAULT, nullptr, nullptr); }

  std::string path(const std::string& file) const { return folder_.path() / file; }

  File open(const std::string& file) const {
    return File(std::filesystem::exists(path(file))
                    ? H5Fopen(path(file).c_str(), H5F_ACC_RDWR, H5P_DEFAULT)
                    : H5Fcreate(path(file).c_str(), H5F_ACC_EXCL, H5P_DEFAULT, H5P_DEFAULT));
  }

  /// Declares a list of doubles and writes the entries [0, written).
  void create(const std::string& file, const char* name, hsize_t size, const PropertyList& form,
              hsize_t written) const {
    const File home = open(file);
    const Dataspace space(H5Screate_simple(1, &size, nullptr));
    const DatasetHandle dataset(H5Dcreate2(home.get(), name, H5T_NATIVE_DOUBLE, space.get(),
                                           H5P_DEFAULT, form.get(), H5P_DEFAULT));
    ASSERT_GE(dataset.get(), 0);
    if (written == 0) return;
    const Dataspace memory(H5Screate_simple(1, &written, nullptr));
    ASSERT_GE(H5Dwrite(dataset.get(), H5T_NATIVE_DOUBLE, memory.get(),
                       slice(size, 0, written).get(), H5P_DEFAULT, ramp(written).data()),
              0);
  }
  void create(const std::string& file, const char* name, hsize_t size) const {
    create(file, name, size, PropertyList(H5Pcreate(H5P_DATASET_CREATE)), size);
  }

  std::vector<double> read(const std::string& file, const char* name,
                           Unwritten unwritten = Unwritten::Refused) const {
    const File home(H5Fopen(path(file).c_str(), H5F_ACC_RDONLY, H5P_DEFAULT));
    const auto entries = Dataset(home.get(), name).read<double>(unwritten);
    return {entries.begin(), entries.end()};
  }
  void expectRefusal(const std::string& file, const char* name, const std::string& words) const {
    expectThrow<utility::RuntimeError>([&] { (void)read(file, name); }, words);
  }

  test::TemporaryFolder folder_;
};

PropertyList plain() { return PropertyList(H5Pcreate(H5P_DATASET_CREATE)); }
PropertyList chunked(hsize_t length, bool isCompressed) {
  PropertyList form = plain();
  H5Pset_chunk(form.get(), 1, &length);
  if (isCompressed) H5Pset_deflate(form.get(), 6);
  return form;
}

TEST_F(StorageForms, EntriesThatWereNeverWrittenAreNoValues) {
  constexpr hsize_t kSize = 50;
  const struct {
    const char* name;
    PropertyList form;
    hsize_t written;
  } cases[] = {{"contiguous", plain(), 0},
               {"chunked", chunked(10, false), 0},
               {"compressed", chunked(10, true), 0},
               {"broken_off", chunked(10, true), 40},
               {"short_of_one_in_the_last_chunk", chunked(15, false), 45}};
  for (const auto& c : cases) {
    create("a.h5", c.name, kSize, c.form, c.written);
    expectRefusal(
        "a.h5", c.name,
        std::string("'/") + c.name + "' has entries that were never written; write the file anew");
    std::vector<double> filled = ramp(c.written);
    filled.resize(kSize);
    EXPECT_EQ(read("a.h5", c.name, Unwritten::Filled), filled) << c.name;
  }
  create("a.h5", "whole", kSize, chunked(15, true), kSize);
  EXPECT_EQ(read("a.h5", "whole"), ramp(kSize));
  create("a.h5", "empty", 0, plain(), 0);
  EXPECT_EQ(read("a.h5", "empty"), ramp(0));
}

TEST_F(StorageForms, EntriesInRawFilesAreReadOrMissed) {
  constexpr hsize_t kSize = 20000;
  PropertyList form = plain();
  H5Pset_external(form.get(), path("one.raw").c_str(), 8, kSize);
  H5Pset_external(form.get(), path("two.raw").c_str(), 0, H5F_UNLIMITED);
  create("a.h5", "charges", kSize, form, kSize);
  EXPECT_EQ(read("a.h5", "charges"), ramp(kSize));

  std::filesystem::resize_file(path("two.raw"), 7 * kSize - 1);
  expectRefusal(
      "a.h5", "charges",
      "'/charges' has entries in '" + path("two.raw") + "', which is missing or too short");
  std::filesystem::remove(path("one.raw"));
  expectRefusal(
      "a.h5", "charges",
      "'/charges' has entries in '" + path("one.raw") + "', which is missing or too short");
}

/// A list that is put together of others.
class VirtualDatasets : public StorageForms {
 protected:
  struct Piece {
    std::string file;
    const char* name;
    hsize_t size;  ///< entries that it adds behind those of the pieces before
  };

  /// A list of all entries of the pieces, followed by `gap` entries of none.
  void join(const std::string& file, const char* name, const std::vector<Piece>& pieces,
            hsize_t gap = 0) const {
    hsize_t size = gap;
    for (const Piece& piece : pieces) size += piece.size;
    PropertyList form = plain();
    hsize_t first = 0;
    for (const Piece& piece : pieces) {
      H5Pset_virtual(form.get(), slice(size, first, piece.size).get(), piece.file.c_str(),
                     piece.name, slice(piece.size, 0, piece.size).get());
      first += piece.size;
    }
    create(file, name, size, form, 0);
  }
};

TEST_F(VirtualDatasets, GiveTheEntriesOfTheirSourcesWhateverTheirSize) {
  std::filesystem::create_directory(path("ranks"));
  std::vector<Piece> pieces;
  std::vector<double> expected;
  for (const hsize_t size : {3U, 70000U, 0U, 1200U}) {
    const std::string file = "ranks/" + std::to_string(size) + ".h5";
    if (size > 0) create(file, "charges", size);  // a rank without entries writes no file
    pieces.push_back({file, "charges", size});
    const std::vector<double> values = ramp(size);
    expected.insert(expected.end(), values.begin(), values.end());
  }
  join("top.h5", "charges", pieces);
  EXPECT_EQ(read("top.h5", "charges"), expected);

  create("top.h5", "own", 5);
  join("top.h5", "nested", {{".", "own", 5}, {"top.h5", "charges", expected.size()}});
  const std::vector<double> own = ramp(5);
  expected.insert(expected.begin(), own.begin(), own.end());
  EXPECT_EQ(read("top.h5", "nested"), expected);

  std::filesystem::create_symlink(path("top.h5"), path("ranks/link.h5"));
  EXPECT_EQ(read("ranks/link.h5", "nested"), expected);
}

TEST_F(VirtualDatasets, MayGrowWithTheirSources) {
  const hsize_t zero = 0, one = 1, five = 5, ten = 10, endless = H5S_UNLIMITED;
  for (const char* file : {"block0.h5", "block1.h5"}) create(file, "list%", five);
  create("block0.h5", "long", ten, chunked(five, false), ten);
  const File home = open("top.h5");
  const auto readMapped = [&](const char* name, const Dataspace& target, const char* file,
                              const char* source, const Dataspace& selection) {
    PropertyList form = plain();
    H5Pset_virtual(form.get(), target.get(), file, source, selection.get());
    const DatasetHandle dataset(H5Dcreate2(home.get(), name, H5T_NATIVE_DOUBLE, target.get(),
                                           H5P_DEFAULT, form.get(), H5P_DEFAULT));
    const auto values = Dataset(home.get(), name).read<double>();
    return std::vector<double>(values.begin(), values.end());
  };
  const Dataspace target(H5Screate_simple(1, &ten, &endless));
  const Dataspace source(H5Screate_simple(1, &ten, &endless));

  H5Sselect_hyperslab(target.get(), H5S_SELECT_SET, &zero, &five, &endless, &five);
  std::vector<double> twice = ramp(five);
  twice.insert(twice.end(), {1000, 1001, 1002, 1003, 1004});
  EXPECT_EQ(readMapped("blocks", target, "block%b.h5", "list%%", slice(5, 0, 5)), twice);

  H5Sselect_hyperslab(target.get(), H5S_SELECT_SET, &zero, nullptr, &one, &endless);
  H5Sselect_hyperslab(source.get(), H5S_SELECT_SET, &zero, nullptr, &one, &endless);
  EXPECT_EQ(readMapped("endless", target, "block0.h5", "long", source), ramp(ten));
}

TEST_F(VirtualDatasets, RefuseSourcesThatLackEntries) {
  create("full.h5", "list", 10);
  create("bare.h5", "list", 10, plain(), 0);
  join("top.h5", "lost", {{"full.h5", "list", 10}, {"gone.h5", "list", 10}});
  expectRefusal("top.h5", "lost",
                "'/lost' takes entries from 'list' of 'gone.h5', which is not there");
  join("top.h5", "misnamed", {{"full.h5", "list", 10}, {"full.h5", "other", 10}});
  expectRefusal("top.h5", "misnamed",
                "'/misnamed' takes entries from 'other' of 'full.h5', which is not there");
  join("top.h5", "unwritten", {{"full.h5", "list", 10}, {"bare.h5", "list", 10}});
  expectRefusal("top.h5", "unwritten",
                "'list' of 'bare.h5' has entries that were never written; write the file anew");
  EXPECT_EQ(read("top.h5", "unwritten", Unwritten::Filled)[9], 1009);
  join("top.h5", "gap", {{"full.h5", "list", 6}}, 4);
  expectRefusal("top.h5", "gap", "'/gap' has entries that no source holds");
  join("top.h5", "huge", {{"full.h5", "list", 10}}, hsize_t{1} << 50U);
  expectRefusal("top.h5", "huge", "'/huge' has more entries than its sources");
  create("full.h5", "more", 10);
  join("top.h5", "shorter", {{"full.h5", "list", 12}, {"full.h5", "more", 4}});
  expectRefusal("top.h5", "shorter",
                "'/shorter' takes entries from 'list' of 'full.h5', which has others");
}

TEST_F(VirtualDatasets, RefuseToLeadInACircle) {
  join("a.h5", "self", {{".", "self", 10}});
  expectRefusal("a.h5", "self", "'self' of '.' takes entries from itself");
  join("a.h5", "named", {{"a.h5", "named", 10}});
  expectRefusal("a.h5", "named", "'named' of 'a.h5' takes entries from itself");
  join("a.h5", "pair", {{"b.h5", "pair", 10}});
  join("b.h5", "pair", {{"a.h5", "pair", 10}});
  expectRefusal("a.h5", "pair", "'pair' of 'a.h5' takes entries from itself");

  create("a.h5", "0", 10);
  for (int i = 1; i <= 9; ++i)
    join("a.h5", std::to_string(i).c_str(), {{".", std::to_string(i - 1).c_str(), 10}});
  EXPECT_EQ(read("a.h5", "8"), ramp(10));
  expectRefusal("a.h5", "9", "'/9' leads through more than 8 virtual datasets");
}

}  // namespace
}  // namespace velmo::h5
