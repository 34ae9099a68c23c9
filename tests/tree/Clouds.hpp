#pragma once

#include <cmath>
#include <cstddef>
#include <functional>
#include <random>
#include <string>
#include <vector>

#include "conf/MethodSettings.hpp"
#include "grid/GridData.hpp"

namespace velmo::tree::test {

/// A kind of cloud: how its points are drawn.
struct Cloud {
  /// Seeded points, one after another x, y, z.
  [[nodiscard]] std::vector<double> coordinates(std::size_t n, unsigned seed) const {
    std::mt19937_64 random(seed);
    std::vector<double> result(3 * n);
    for (std::size_t i = 0; i < n; ++i) draw(random, i, &result[3 * i]);
    return result;
  }

  [[nodiscard]] grid::GridData points(std::size_t n, unsigned seed) const {
    return grid::makePointCloud(coordinates(n, seed), n);
  }
  /// The points as triangles whose vertices lie in one place.
  [[nodiscard]] grid::GridData triangles(std::size_t n, unsigned seed) const {
    grid::GridData data = points(n, seed);
    data.elementTypes.assign(n, 203);
    data.connectivity.clear();
    for (u64 i = 0; i < n; ++i) {
      data.connectivity.insert(data.connectivity.end(), 3, i);
      data.offsets[i + 1] = 3 * (i + 1);
    }
    return data;
  }

  std::string name;
  std::function<void(std::mt19937_64&, std::size_t, double*)> draw;
};

inline double uniform(std::mt19937_64& random) {
  return std::uniform_real_distribution<double>()(random);
}

inline void inCube(std::mt19937_64& random, double* p, double edge, double offset) {
  for (int axis = 0; axis < 3; ++axis) p[axis] = offset + edge * uniform(random);
}

inline const std::vector<Cloud>& clouds() {
  static const std::vector<Cloud> all{
      {"cube", [](auto& r, std::size_t, double* p) { inCube(r, p, 1.0, 0.0); }},
      {"far from the origin", [](auto& r, std::size_t, double* p) { inCube(r, p, 1.0, 1e6); }},
      {"tiny", [](auto& r, std::size_t, double* p) { inCube(r, p, 1e-6, 0.3e-6); }},
      {"clusters",  // widths fall from 1/4 to 4^-9 of the cube
       [](auto& r, std::size_t i, double* p) {
         const double width = std::pow(0.25, 1.0 + static_cast<double>(i % 9));
         inCube(r, p, width, 0.618 - 0.3 * width);
       }},
      {"sphere",
       [](auto& r, std::size_t, double* p) {
         const double z = 2 * uniform(r) - 1;
         const double phi = 6.283185307179586 * uniform(r);
         p[0] = std::sqrt(1 - z * z) * std::cos(phi);
         p[1] = std::sqrt(1 - z * z) * std::sin(phi);
         p[2] = z;
       }},
      {"plane",
       [](auto& r, std::size_t, double* p) {
         inCube(r, p, 1.0, 0.0);
         p[1] = 0.25;
       }},
      {"line in z",
       [](auto& r, std::size_t, double* p) {
         p[0] = p[1] = 1;
         p[2] = uniform(r);
       }},
      {"eleven places, shared",
       [](auto& r, std::size_t, double* p) {
         const auto place = static_cast<double>(r() % 11);
         p[0] = place;
         p[1] = place * place;
         p[2] = 3.5;
       }},
      {"one place", [](auto&, std::size_t, double* p) { p[0] = p[1] = p[2] = 4.25; }},
  };
  return all;
}

/// The options that every cloud is tried with.
inline std::vector<Options> allOptions() {
  std::vector<Options> all;
  for (const u64 leafSize : {1, 3, 20, 100, 500}) all.push_back({leafSize, 0, true});
  for (u64 level = 0; level <= 6; ++level) all.push_back({1, level, false});
  return all;
}

inline std::string describe(const Cloud& cloud, const Options& opts) {
  return cloud.name + (opts.adaptive ? ", leaf size " + std::to_string(opts.leafSize)
                                     : ", level " + std::to_string(opts.maxLevel));
}

}  // namespace velmo::tree::test
