#pragma once

#include <array>
#include <memory>
#include <string>
#include <string_view>
#include <vector>

#include "conf/Base.hpp"
#include "io/Types.hpp"

/// The bodies of a problem and their positions. Carried: this program uses the grid as it is in the
/// solution file, and applies no placement. The unit of length is that of the grid's coordinates.
namespace velmo::conf {

/// A body of the grid.
struct Part : Base {
  std::string name;  ///< "name", required
  u64 id = 0;        ///< "id", required: the boundary conditions refer to it as `partId`
  /// "regionIds", optional: tags of the grid's regions that form it. Never empty after reading: if
  /// the file has none, the reader inserts `id`.
  std::vector<u64> regionIds;

  void describe(SchemaWriter& writer) const override;
};

/// What all placements share: an entry of "placements". The texts of `type` are the `kType` of the
/// kinds below; a file with any other text is refused, and also one in which a key of the kind is
/// missing or a vector has the wrong length.
struct GridTransformBase : Base {
  std::vector<u64> partIDs;  ///< "partIDs", required: parts that this placement moves
  u64 position = 0;          ///< "position", optional: place in the order of application
  u64 timeId = kNone;        ///< "timeId", optional: time function that moves it, if any
  std::string type;          ///< "type", required: the text of the kind, exact in its letters

  void describe(SchemaWriter& writer) const override;

  /// A copy of the derived object.
  [[nodiscard]] virtual std::unique_ptr<GridTransformBase> clone() const = 0;

 protected:
  explicit GridTransformBase(std::string_view kind) : type(kind) {}
};

/// Scaling by one factor per axis, about `center`.
struct GridScaling : GridTransformBase {
  static constexpr std::string_view kType = "scaling";

  std::array<double, 3> factors{};  ///< "factors", required: of x, y and z
  std::array<double, 3> center{};   ///< "center", required: point that stays fixed

  GridScaling() : GridTransformBase(kType) {}
  void describe(SchemaWriter& writer) const override;
  [[nodiscard]] std::unique_ptr<GridTransformBase> clone() const override {
    return std::make_unique<GridScaling>(*this);
  }
};

/// Translation by one vector.
struct GridTranslation : GridTransformBase {
  static constexpr std::string_view kType = "translation";

  std::array<double, 3> shifts{};  ///< "shifts", required: along x, y and z

  GridTranslation() : GridTransformBase(kType) {}
  void describe(SchemaWriter& writer) const override;
  [[nodiscard]] std::unique_ptr<GridTransformBase> clone() const override {
    return std::make_unique<GridTranslation>(*this);
  }
};

/// Rotation about an axis through `center`.
struct GridRotation : GridTransformBase {
  static constexpr std::string_view kType = "rotation";

  std::array<double, 3> axis{0.0, 0.0, 1.0};  ///< "axis", required: its direction, of any length
  std::array<double, 3> center{};             ///< "center", required: a point of the axis
  double angle = 0.0;                         ///< "angle", required, in degrees

  GridRotation() : GridTransformBase(kType) {}
  void describe(SchemaWriter& writer) const override;
  [[nodiscard]] std::unique_ptr<GridTransformBase> clone() const override {
    return std::make_unique<GridRotation>(*this);
  }
};

/// Affine map x -> A x + b.
struct GridAffine : GridTransformBase {
  static constexpr std::string_view kType = "affine";

  /// "A", required: the matrix, column-major, shape (3, 3); initially the identity.
  std::array<double, 9> A{1.0, 0.0, 0.0, 0.0, 1.0, 0.0, 0.0, 0.0, 1.0};
  std::array<double, 3> b{};  ///< "b", required: the shift

  GridAffine() : GridTransformBase(kType) {}
  void describe(SchemaWriter& writer) const override;
  [[nodiscard]] std::unique_ptr<GridTransformBase> clone() const override {
    return std::make_unique<GridAffine>(*this);
  }
};

/// The bodies and their positions: the block "domain". A copy has its own copies of the placements.
struct Domain : Base {
  std::vector<Part> parts;  ///< "parts", required, may be empty
  /// "placements", optional. No entry is null.
  std::vector<std::unique_ptr<GridTransformBase>> placements;

  Domain() = default;
  Domain(const Domain& other) : Base(other), parts(other.parts) {
    placements.reserve(other.placements.size());
    for (const auto& placement : other.placements) placements.push_back(placement->clone());
  }
  Domain(Domain&&) = default;
  Domain& operator=(const Domain& other) { return *this = Domain(other); }
  Domain& operator=(Domain&&) = default;
  ~Domain() override = default;

  void describe(SchemaWriter& writer) const override;
};

}  // namespace velmo::conf
