#include <hdf5.h>
#include <sys/wait.h>
#include <unistd.h>

#include <algorithm>
#include <array>
#include <csignal>
#include <cstdlib>
#include <exception>
#include <filesystem>
#include <fstream>
#include <iostream>
#include <limits>
#include <sstream>
#include <string>
#include <vector>

#include "accuracy/LargeElements.hpp"
#include "app/Driver.hpp"
#include "app/ProcessPost.hpp"
#include "app/RunInputs.hpp"
#include "fuzz/FuzzChecks.hpp"
#include "io/Exception.hpp"
#include "samples/InputFiles.hpp"
#include "samples/Pieces.hpp"
#include "support/TextMutation.hpp"
#include "validation/RunResult.hpp"

namespace {

namespace fs = std::filesystem;
using velmo::u64;
using velmo::samples::SolutionFile;
using velmo::test::Bytes;

std::string readFile(const std::string& path) {
  std::ifstream file(path, std::ios::binary);
  return {std::istreambuf_iterator<char>(file), {}};
}

/// Alters the text of a file at random, in one of `n` cases, not in that of missing bytes.
void alterText(const std::string& path, u64 n, Bytes& bytes) {
  if (bytes.below(n) != 1) return;
  const std::string text = velmo::test::mutatedText(readFile(path), bytes.below(65536));
  std::ofstream(path, std::ios::binary) << text;
}

/// Exchanges, replaces or removes values of a part, or stores it otherwise.
void alter(velmo::samples::Part& part, Bytes& bytes) {
  constexpr std::array<double, 11> kNumbers{0.0,  -0.0, 1.0,    2.0,   -3.0, 69.0,
                                            70.0, 1e-9, -1e300, 1e160, 1e18};
  const u64 kind = bytes.below(16);
  if (kind == 0) part.stored = static_cast<velmo::samples::Stored>(bytes.below(8));
  if (kind == 1) part.rank = bytes.below(4);
  if (kind == 2) part.isCompressed = true;
  if (kind == 3) part.unwritten = 1 + bytes.below(9);
  const auto alterValues = [&]<class List>(List& values) {
    if (kind < 4 || values.empty()) return;
    auto& value = values[bytes.below(values.size())];
    const double number = kNumbers[bytes.below(kNumbers.size())];
    if (kind < 9)
      std::swap(value, values[bytes.below(values.size())]);
    else if (kind < 14)
      value = static_cast<typename List::value_type>(
          std::is_same_v<List, velmo::samples::Doubles> ? number : std::clamp(number, -1.0, 100.0));
    else
      values.resize(kind == 14 ? values.size() + 1 : bytes.below(values.size()));
  };
  std::visit(alterValues, part.values);
}

/// Writes s.vtkhdf, s.xyz and s.yaml of a random problem, with alterations at random.
void writeFiles(Bytes& bytes) {
  const velmo::accuracy::OddMesh odd = velmo::test::smallOddMesh(bytes.below(65536));
  const auto& [mesh, density, points] = odd.problem;
  const velmo::samples::PieceOptions pieces{1 + bytes.below(4), bytes.below(2) == 0, 1};
  SolutionFile solution = velmo::samples::pieces(mesh, density, pieces);
  solution.store({bytes.below(2) == 0, static_cast<velmo::samples::IntegerWidth>(bytes.below(3)),
                  static_cast<velmo::samples::TextForm>(bytes.below(2))});
  for (u64 n = bytes.below(4); n > 1; --n)
    alter(solution.parts[bytes.below(solution.parts.size())], bytes);
  try {
    solution.write("s.vtkhdf");
  } catch (const velmo::utility::RuntimeError&) {
    // Not every alteration can be stored; what there is of the file is read all the same.
  }
  velmo::samples::writeXyz("s.xyz", points, "points");
  velmo::samples::writeSettings("s.yaml", {.femOrder = density.order,
                                           .fmm = odd.method.fmm,
                                           .quad = odd.method.quad,
                                           .tree = odd.method.tree,
                                           .numThreads = 1 + bytes.below(3)});
  alterText("s.xyz", 4, bytes);
  alterText("s.yaml", 4, bytes);
}

/// A command line on these files in one of its forms, or an altered one.
struct CommandLine {
  std::vector<std::string> words{"orvanta.post"};
  bool isWhole = true;  ///< whether it names all files
};

CommandLine commandLine(Bytes& bytes) {
  std::vector<std::array<std::string, 2>> options{
      {"input", "s.vtkhdf"}, {"points", "s.xyz"}, {"settings", "s.yaml"}, {"output", "t"}};
  CommandLine line;
  std::rotate(options.begin(), options.begin() + static_cast<int>(bytes.below(4)), options.end());
  if (bytes.below(8) == 1) {
    options.pop_back();
    line.isWhole = false;
  }
  if (bytes.below(8) == 1) options.push_back({"extra", "value"});
  const bool fromFile = bytes.below(4) == 1;
  std::string text = "# options\n";
  for (const auto& [name, value] : options) {
    const bool isShort = bytes.below(2) == 0;
    text += (isShort ? name.substr(0, 1) : name) + " " + value + "\n";
    if (!isShort) line.words.push_back("--" + name + "=" + value);
    if (isShort) line.words.insert(line.words.end(), {"-" + name.substr(0, 1), value});
  }
  if (bytes.below(8) == 1) {
    line.isWhole = false;
    std::string& word = line.words[bytes.below(line.words.size())];
    (fromFile ? text : word) =
        velmo::test::mutatedText(fromFile ? text : word, bytes.below(65536)).c_str();
  }
  std::ofstream("options") << text;
  if (fromFile) line.words = {"orvanta.post", "@options"};
  return line;
}

/// Whether reading the text files ends the process, as a key with a bad value does on purpose. A
/// process apart finds out.
bool endsOverAKey() {
  const pid_t process = fork();
  if (process == 0) {
    std::signal(SIGABRT, SIG_DFL);
    std::cout.rdbuf(nullptr);
    try {
      (void)orvanta::readRunInputs("s.xyz", "s.yaml", "t");
    } catch (const std::exception&) {
    }
    _exit(0);
  }
  int status = 0;
  if (waitpid(process, &status, 0) != process) std::abort();
  if (WIFEXITED(status) && WEXITSTATUS(status) == 0) return false;
  if (!WIFSIGNALED(status) || WTERMSIG(status) != SIGABRT) std::abort();
  return true;
}

velmo::accuracy::Values valuesOf(const std::string& path) {
  velmo::accuracy::Values values;
  for (const auto& [x, potential, gradient] : velmo::validation::readTable(path)) {
    values.potential.push_back(potential);
    values.field.insert(values.field.end(), gradient.begin(), gradient.end());
  }
  return values;
}

/// Compares the table of a run with that of one leaf for all, if the quadrature deserves it.
void compareWithDirectRun() {
  orvanta::RunInputs inputs = *orvanta::readRunInputs("s.xyz", "s.yaml", "direct");
  velmo::conf::ESProblem& problem = inputs.problem;
  const velmo::accuracy::Values values = valuesOf("t.csv");
  if (values.potential.size() != inputs.numPoints) std::abort();
  const auto& quad = problem.postEval.quad;
  const auto& fmm = problem.postEval.fmm;
  if (quad.order < 8 || quad.minRelDist < 2.0 || fmm.leafQuadratureOrder < fmm.degree + 3) return;
  problem.bem.tree = {.leafSize = std::numeric_limits<u64>::max() / 2};
  (void)orvanta::processPost("s.vtkhdf", inputs.pointCloud, problem, 0);
  velmo::test::requireClose(values, valuesOf("direct.csv"), fmm.degree);
}

/// Runs the program's main function, and looks at what it leaves.
void run(CommandLine line) {
  std::vector<char*> argv;
  for (std::string& word : line.words) argv.push_back(word.data());
  std::ostringstream report;
  std::streambuf* const cout = std::cout.rdbuf(report.rdbuf());
  try {
    const int status = orvanta::runPostSolver(static_cast<int>(argv.size()), argv.data(), 0);
    const bool hasEnd = report.str().find("# NORMAL TERMINATION") != std::string::npos;
    if (hasEnd != (status == 0)) std::abort();
    if (status == 0 && line.isWhole) compareWithDirectRun();
  } catch (const std::exception& failure) {
    if (*failure.what() == '\0') std::abort();
  }
  std::cout.rdbuf(cout);
}

}  // namespace

/// A whole run of the program on a random problem whose solution, points, settings and arguments
/// are altered. It ends in words or in a table, which is compared with the direct run.
extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
  static const fs::path folder =
      fs::temp_directory_path() / ("program-" + std::to_string(getpid()));
  H5Eset_auto2(H5E_DEFAULT, nullptr, nullptr);
  std::cerr.rdbuf(nullptr);
  // The fuzzer's own files stand where it was started.
  const fs::path before = fs::current_path();
  fs::remove_all(folder);
  fs::create_directories(folder);
  fs::current_path(folder);
  Bytes bytes(data, size);
  writeFiles(bytes);
  const CommandLine line = commandLine(bytes);
  if (!endsOverAKey()) run(line);
  fs::current_path(before);
  return 0;
}
