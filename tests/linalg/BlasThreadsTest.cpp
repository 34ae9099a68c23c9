#include "linalg/Products.hpp"

#include <gtest/gtest.h>

#include <random>
#include <thread>
#include <vector>

namespace velmo::linalg {
namespace {

/// One square product and one with a single column, of size n.
struct Work {
  explicit Work(u64 size, unsigned seed) : n(size), a(n * n), b(n * n), c(n * n), y(n) {
    std::mt19937_64 generator(seed);
    std::uniform_real_distribution<double> uniform(-1.0, 1.0);
    for (double& value : a) value = uniform(generator);
    for (double& value : b) value = uniform(generator);
  }

  void run() {
    const MatrixView<double> A(a.data(), n, n);
    matMatMult(A, MatrixView<double>(b.data(), n, n), MatrixView<double>(c.data(), n, n));
    matMatMult(A, MatrixView<double>(b.data(), n, 1), MatrixView<double>(y.data(), n, 1));
  }

  u64 n;
  std::vector<double> a, b, c, y;
};

// A library build without its own locks hands the same work buffer to two callers.
TEST(BlasThreads, ConcurrentCallsGiveTheBitsOfSequentialOnes) {
  setBlasThreads(1);
  for (const u64 n : std::vector<u64>{200, 300, 400}) {
    std::vector<Work> works;
    for (unsigned seed = 0; seed < 4; ++seed) works.emplace_back(n, seed);
    std::vector<Work> expected = works;
    for (Work& work : expected) work.run();

    for (int round = 0; round < 5; ++round) {
      std::vector<std::thread> threads;
      threads.reserve(works.size());
      for (Work& work : works) threads.emplace_back([&work] { work.run(); });
      for (std::thread& thread : threads) thread.join();

      for (u64 i = 0; i < works.size(); ++i) {
        ASSERT_EQ(works[i].c, expected[i].c) << "size " << n << ", caller " << i;
        ASSERT_EQ(works[i].y, expected[i].y) << "size " << n << ", caller " << i;
      }
    }
  }
}

}  // namespace
}  // namespace velmo::linalg
