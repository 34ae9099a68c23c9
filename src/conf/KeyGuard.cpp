#include "conf/KeyGuard.hpp"

#include <yaml-cpp/exceptions.h>

#include <cstdio>
#include <cstdlib>
#include <iostream>

namespace velmo::conf {

void abortOverKey(std::string_view key) noexcept {
  // abort() flushes neither the C++ stream nor the C stream.
  std::cout.flush();
  std::fflush(stdout);
  try {
    throw;
  } catch (const YAML::ParserException& failure) {
    std::cout << "\n(EE) YAML Parser exception: " << failure.what() << "\n";
  } catch (const YAML::RepresentationException& failure) {
    std::cout << "\n(EE) YAML Representation exception: " << failure.what() << "\n";
  } catch (...) {
    std::cout << "\n(EE) Unknown exception\n";
  }
  std::cout << "(EE) when trying to read \"" << key << "\"" << std::endl;
  std::fflush(stdout);
  std::abort();
}

}  // namespace velmo::conf
