#include <algorithm>
#include <iostream>
#include <string_view>

#include "samples/MakeSample.hpp"

namespace velmo::samples {
namespace {

int makeSampleFiles(Words words) {
  if (std::ranges::find(words, std::string_view("--help"),
                        [](const char* word) { return std::string_view(word); }) != words.end()) {
    std::cout << requestHelp();
    return 0;
  }
  const SampleRequest request = parseRequest(words);
  std::cout << writeSample(request, makeSample(request));
  return 0;
}

}  // namespace
}  // namespace velmo::samples

/// Writes an example for the post solver: solution, points and settings.
int main(int argc, char** argv) {
  return velmo::samples::runTool("make_sample", argc, argv, velmo::samples::makeSampleFiles);
}
