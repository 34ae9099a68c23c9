#include "app/Driver.hpp"

#include <array>
#include <filesystem>
#include <iostream>
#include <optional>
#include <string>
#include <utility>

#include "app/ProcessPost.hpp"
#include "app/RunInputs.hpp"
#include "cli/CommandlineInput.hpp"
#include "h5/SolutionReader.hpp"
#include "io/Channels.hpp"
#include "io/Format.hpp"
#include "io/StageReport.hpp"

namespace orvanta {

namespace fs = std::filesystem;
namespace io = velmo::io;

namespace {

constexpr const char* kDescription =
    "Orvanta post solver\n"
    "Given the surface density function from 'orvanta' main solver,\n"
    "compute potential and E-field at provided list of points";

// The program doesn't query its memory; the lines stay in the report for its readers.
constexpr double kPeakMemoryMiB = 0.0;

/// The file with the command line's options, if there is one.
fs::path optionsFileOf(int argc, char** argv) {
  return argc == 2 && argv[1][0] == '@' ? fs::path(argv[1] + 1) : fs::path();
}

void reportInputs(const std::string& input, const std::string& points, const fs::path& settings) {
  io::out << io::kDoubleRule << "# INPUT \n"
          << io::kSingleRule << "# Reading solution file, point cloud and settings ..."
          << std::endl;
  if (io::info.hasStreams())
    io::info << "Solution file: " << input << "\nEvaluation points: " << points
             << "\nSettings: " << settings << std::endl;
}

void reportEnd(velmo::u64 numPoints, const fs::path& result, const fs::path& secondResult,
               io::Timer& totalTimer) {
  io::out << io::kDoubleRule << "# NORMAL TERMINATION \n"
          << io::kSingleRule << "# Number of evaluation points: " << numPoints << std::endl;
  io::reportStage("Total runtime", totalTimer);
  const std::string memory = io::format("{:>7.3f}MiB\n", kPeakMemoryMiB);
  io::out << "# Total memory consumption:\n"
          << "#       -- Peak memory per rank: " << memory
          << "#       -- Total peak memory:    " << memory;
  io::out << "# Solution data:\n"
          << "#       -- " << result << std::endl;
  if (!secondResult.empty()) io::out << "#       -- " << secondResult << std::endl;
  io::out << io::kSingleRule << std::flush;
}

}  // namespace

int runPostSolver(int argc, char** argv, velmo::comm::Comm comm) {
  io::Timer totalTimer;
  io::Timer inputTimer;
  io::out.setStreams({&std::cout});
  velmo::h5::skipLibraryCleanUp();

  velmo::cli::CommandlineInput cli(argc, argv, kDescription);
  const auto input =
      cli.requiredParameter<std::string>("input", 'i', "Input Orvanta result file (.vtkhdf)");
  const auto points = cli.requiredParameter<std::string>(
      "points", 'p', "Input file with coordinates of evaluation points (.xyz)");
  const auto settings =
      cli.optionalParameter<fs::path>("settings", 's', {}, "Settings file (.yaml)");
  const auto output = cli.optionalParameter<std::string>(
      "output", 'o', {}, "Basename for output file (defaults to points file)");
  if (!cli.finish()) return 1;

  reportInputs(input, points, settings);
  requireNewResult(points, output,
                   std::array<fs::path, 4>{input, points, settings, optionsFileOf(argc, argv)});
  std::optional<RunInputs> inputs = readRunInputs(points, settings, output);
  if (!inputs) return 1;
  io::reportStage("Input", inputTimer);
  applyThreadSetting(inputs->problem);

  const auto [result, secondResult] =
      processPost(input, std::move(inputs->pointCloud), inputs->problem, comm);
  reportEnd(inputs->numPoints, result, secondResult, totalTimer);
  return 0;
}

}  // namespace orvanta
