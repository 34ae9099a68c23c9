#include <algorithm>
#include <exception>
#include <iostream>
#include <span>
#include <string_view>

#include "samples/SampleRequest.hpp"

/// Writes an example for the post solver: solution, points and settings.
int main(int argc, char** argv) {
  using namespace velmo::samples;
  try {
    const auto arguments = std::span<const char* const>(argv, static_cast<std::size_t>(argc))
                               .subspan(argc > 0 ? 1 : 0);
    if (std::any_of(arguments.begin(), arguments.end(),
                    [](std::string_view word) { return word == "--help"; })) {
      std::cout << requestHelp();
      return 0;
    }
    const SampleRequest request = parseRequest(arguments);
    std::cout << writeSample(request, makeSample(request));
    return 0;
  } catch (const std::exception& error) {
    std::cerr << "make_sample: " << error.what() << '\n';
    return 1;
  }
}
