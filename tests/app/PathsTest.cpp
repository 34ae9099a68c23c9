#include <gtest/gtest.h>

#include <filesystem>
#include <string>
#include <vector>

#include "app/SampleRuns.hpp"

namespace orvanta {
namespace {

/// A folder with a sample whose files lie under the names "s.*".
class Paths : public ::testing::Test {
 protected:
  Paths() : request_(smallRequest(folder_.path() / "s")) {
    request_.mesh.refine = 2;
    request_.count = 3;
    request_.settings.numThreads = 1;
    (void)write(request_);
    EXPECT_EQ(run(request_.out).status, 0);
    table_ = readFile(path("s.csv"));
    fs::remove(path("s.csv"));
  }

  [[nodiscard]] fs::path path(const std::string& name) const { return folder_.path() / name; }

  [[nodiscard]] ProgramResult runIn(const std::vector<std::string>& arguments) const {
    return velmo::test::runProgram(ORVANTA_POST_PROGRAM, arguments, folder_.path());
  }

  /// Expects that a run ends well and writes the table to `name`, which is removed.
  void expectTableAt(const std::string& name, const std::vector<std::string>& arguments) const {
    const ProgramResult result = runIn(arguments);
    EXPECT_EQ(result.status, 0) << result.err;
    EXPECT_EQ(result.err, "");
    EXPECT_EQ(readFile(path(name)), table_) << name;
    fs::remove(path(name));
  }

  /// Expects that a run fails with `words` at the end of the error stream and writes no table.
  void expectRefusal(const std::string& words, const std::vector<std::string>& arguments) const {
    const ProgramResult result = runIn(arguments);
    EXPECT_EQ(result.status, 1);
    EXPECT_TRUE(result.err.ends_with(words)) << result.err;
    for (const auto& entry : fs::directory_iterator(folder_.path()))
      EXPECT_NE(entry.path().extension(), ".csv");
  }

  TemporaryFolder folder_;
  SampleRequest request_;
  std::string table_;
};

TEST_F(Paths, OfTheResultAreNoneOfTheInputs) {
  fs::copy_file(path("s.vtkhdf"), path("i.csv"));
  fs::copy_file(path("s.xyz"), path("p.csv"));
  fs::copy_file(path("s.yaml"), path("y.csv"));
  folder_.write("o.csv", "input s.vtkhdf\npoints s.xyz\nsettings s.yaml\noutput o\n");
  fs::create_symlink("p.csv", path("link.csv"));
  fs::create_hard_link(path("p.csv"), path("twin.csv"));
  const std::string i = "--input=s.vtkhdf";
  const std::string p = "--points=s.xyz";
  const std::string y = "--settings=s.yaml";
  const struct {
    std::vector<std::string> arguments;
    std::string input;
  } cases[] = {{{i, "--points=p.csv", y}, "p.csv"},
               {{i, "--points=" + path("p.csv").string(), y, "--output=./p.csv"}, path("p.csv")},
               {{i, "--points=p.csv", y, "--output=link"}, "p.csv"},
               {{i, "--points=p.csv", y, "--output=twin.vtk"}, "p.csv"},
               {{i, "--points=link.csv", y, "--output=p"}, "link.csv"},
               {{"--input=i.csv", p, y, "--output=i"}, "i.csv"},
               {{i, p, "--settings=y.csv", "--output=y"}, "y.csv"},
               {{"@o.csv"}, "o.csv"}};
  for (const auto& c : cases) {
    const std::string before = readFile(path(c.input));
    const ProgramResult result = runIn(c.arguments);
    EXPECT_EQ(result.status, 1);
    EXPECT_EQ(result.err, "(EE) [RANK 0]: The result would replace the input '" + c.input +
                              "'; choose another name with --output\n");
    EXPECT_TRUE(readFile(path(c.input)) == before) << c.input;
  }
  expectTableAt("twin.csv.csv", {i, "--points=p.csv", y, "--output=twin.csv.csv"});
}

/// 41 folders of 100 letters: longer than the system takes as a path.
std::string endlessPath() {
  std::string path;
  for (int i = 0; i < 41; ++i) path += std::string(100, 'd') + "/";
  return path + "f";
}

TEST_F(Paths, MayHoldAllButBlanks) {
  for (const std::string& name :
       {std::string(251, 'n'), std::string("q\"uo'te"), std::string("back\\slash\\"),
        std::string("um\xC3\xA4lt-\xE6\xBC\xA2"), std::string("latin-\xE4\xFF"),
        std::string("-dash"), std::string("@at"), std::string("hash#"), std::string("key=value"),
        std::string("$(x)*?"), std::string("..."), std::string("./s/../s//n")}) {
    SCOPED_TRACE(name);
    fs::create_directory(path("s"));
    fs::copy_file(path("s.vtkhdf"), path(name));
    expectTableAt("s.csv", {"--input=" + name, "--points=s.xyz", "--settings=s.yaml"});
    fs::copy_file(path("s.yaml"), path(name), fs::copy_options::overwrite_existing);
    expectTableAt("s.csv", {"--input=s.vtkhdf", "--points=s.xyz", "--settings=" + name});
    fs::copy_file(path("s.xyz"), path(name), fs::copy_options::overwrite_existing);
    const std::string stem = fs::path(name).replace_extension().string();
    expectTableAt(stem + ".csv", {"--input=s.vtkhdf", "--points=" + name, "--settings=s.yaml"});
    folder_.write(name, "input s.vtkhdf\np s.xyz\nsettings s.yaml\noutput " + name);
    expectTableAt(name + ".csv", {"@" + name});
    fs::remove(path(name));
  }
}

TEST_F(Paths, EndTheRunWellWhereTheTableCannotBeWritten) {
  fs::create_symlink("/dev/full", path("full.csv"));
  fs::create_symlink("loop.csv", path("loop.csv"));
  fs::create_directory(path("folder.csv"));
  for (const std::string& name :
       {std::string("no-such-folder/r"), std::string("full"), std::string("loop"),
        std::string("folder"), endlessPath(), std::string(252, 'n')}) {
    const ProgramResult result = run(request_.out, {"--output=" + name});

    EXPECT_EQ(result.status, 0);
    EXPECT_EQ(result.err, "");
    EXPECT_NE(result.out.find("# NORMAL TERMINATION \n"), std::string::npos);
    EXPECT_NE(result.out.find("#       -- \"" + name + ".csv\"\n"), std::string::npos);
    EXPECT_FALSE(fs::exists(path("s.csv")));
  }
}

}  // namespace
}  // namespace orvanta
