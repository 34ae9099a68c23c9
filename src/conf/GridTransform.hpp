#pragma once

#include <array>
#include <memory>
#include <string>
#include <string_view>
#include <vector>

#include "conf/Base.hpp"
#include "io/Types.hpp"

namespace velmo::conf {

/// A placement of parts of the grid. This program keeps placements and writes them back; it applies
/// none of them.
struct GridTransformBase : Base {
  std::vector<u64> partIDs;  ///< parts that this placement moves
  u64 position = 0;          ///< place in the order in which placements are applied
  u64 timeId = kNone;        ///< time function that moves it, if any
  std::string type;          ///< the kind's text, set by the derived structure

  void describe(SchemaWriter& writer) const override;

  /// A copy of the derived object.
  [[nodiscard]] virtual std::unique_ptr<GridTransformBase> clone() const = 0;

 protected:
  explicit GridTransformBase(std::string_view kind) : type(kind) {}
};

/// Scaling by one factor per axis, about `center`.
struct GridScaling : GridTransformBase {
  static constexpr std::string_view kType = "scaling";

  std::array<double, 3> factors{};
  std::array<double, 3> center{};

  GridScaling() : GridTransformBase(kType) {}
  void describe(SchemaWriter& writer) const override;
  [[nodiscard]] std::unique_ptr<GridTransformBase> clone() const override;
};

/// Translation by `shifts`.
struct GridTranslation : GridTransformBase {
  static constexpr std::string_view kType = "translation";

  std::array<double, 3> shifts{};

  GridTranslation() : GridTransformBase(kType) {}
  void describe(SchemaWriter& writer) const override;
  [[nodiscard]] std::unique_ptr<GridTransformBase> clone() const override;
};

/// Rotation about an axis through `center`.
struct GridRotation : GridTransformBase {
  static constexpr std::string_view kType = "rotation";

  std::array<double, 3> axis{0.0, 0.0, 1.0};
  std::array<double, 3> center{};
  double angle = 0.0;  ///< degrees

  GridRotation() : GridTransformBase(kType) {}
  void describe(SchemaWriter& writer) const override;
  [[nodiscard]] std::unique_ptr<GridTransformBase> clone() const override;
};

/// Affine map with matrix A and shift b.
struct GridAffine : GridTransformBase {
  static constexpr std::string_view kType = "affine";

  std::array<double, 9> A{1.0, 0.0, 0.0, 0.0, 1.0, 0.0, 0.0, 0.0, 1.0};  ///< column-major
  std::array<double, 3> b{};

  GridAffine() : GridTransformBase(kType) {}
  void describe(SchemaWriter& writer) const override;
  [[nodiscard]] std::unique_ptr<GridTransformBase> clone() const override;
};

}  // namespace velmo::conf
