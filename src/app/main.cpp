#include <cstdlib>
#include <exception>
#include <iostream>

#include "app/Driver.hpp"
#include "comm/Comm.hpp"
#include "linalg/Products.hpp"

namespace {

constexpr velmo::comm::Comm kWorld = 0;

[[noreturn]] void endWith(const char* words) {
  std::cerr << "(EE) [RANK " << velmo::comm::rank(kWorld) << "]: " << words << std::endl;
  std::exit(1);
}

}  // namespace

int main(int argc, char** argv) {
  // All parallelism is the program's own.
  velmo::linalg::setBlasThreads(1);
  try {
    return orvanta::runPostSolver(argc, argv, kWorld);
  } catch (const std::exception& failure) {
    endWith(failure.what());
  } catch (...) {
    endWith("Unknown error");
  }
}
