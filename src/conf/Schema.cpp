#include "conf/Schema.hpp"

#include <array>
#include <concepts>
#include <cstddef>
#include <cstdint>
#include <memory>
#include <string>
#include <string_view>
#include <tuple>
#include <type_traits>
#include <vector>

#include "conf/FieldTables.hpp"
#include "conf/SchemaWriter.hpp"

namespace velmo::conf {
namespace {

/// Turns the fields of a structure into items, by the type of each.
class FieldDescriber {
 public:
  explicit FieldDescriber(SchemaWriter& writer) : writer_(writer) {}

  template <class T>
  void describe(const T& block) {
    forEachField<T>([&](const auto& field) {
      const FieldForm& form = field.form;
      const std::string_view fileKey = keyName(Fields<T>::section, field.fullKey);
      const std::string_view key = form.schemaKey.empty() ? fileKey : form.schemaKey;
      const SchemaItem item{.key = key,
                            .title = form.title.empty() ? key : form.title,
                            .description = form.description,
                            .isRequired = field.presence == Presence::kRequired};
      write(item, form, block.*field.member);
    });
  }

 private:
  SchemaWriter& writer_;

  void write(const SchemaItem& item, const FieldForm& /*form*/, u64 value) {
    writer_.integer(item, static_cast<std::int64_t>(value));
  }

  void write(const SchemaItem& item, const FieldForm& /*form*/, double value) {
    writer_.number(item, value);
  }

  void write(const SchemaItem& item, const FieldForm& /*form*/, bool value) {
    writer_.boolean(item, value);
  }

  void write(const SchemaItem& item, const FieldForm& form, const std::string& value) {
    if (form.isConstant)
      writer_.constString(item, value);
    else if (!form.choices.empty())
      writer_.enumeration(item, form.choices, value);
    else
      writer_.string(item, value);
  }

  template <HasFields T>
  void write(const SchemaItem& item, const FieldForm& /*form*/, const T& block) {
    writer_.object(item, [&](SchemaWriter& writer) { describeBlock(block, writer); });
  }

  template <std::size_t N>
  void write(const SchemaItem& item, const FieldForm& /*form*/, const std::array<double, N>&) {
    writer_.array(item, N, false, [](SchemaWriter& writer) { writer.type("number"); });
  }

  template <class T>
  void write(const SchemaItem& item, const FieldForm& form, const std::vector<T>&) {
    writer_.array(item, form.minItems, form.uniqueItems, [](SchemaWriter& writer) {
      if constexpr (std::integral<T>)
        writer.type("integer");
      else
        writer.objectBody({}, {}, [](SchemaWriter& inner) { describeBlock(T{}, inner); });
    });
  }

  void write(const SchemaItem& item, const FieldForm& form,
             const std::vector<std::unique_ptr<GridTransformBase>>&) {
    writer_.array(item, form.minItems, form.uniqueItems, [](SchemaWriter& writer) {
      const auto choose = [&]<class... Kind>(std::type_identity<Kind>...) {
        writer.oneOf(std::array{Fields<Kind>::definition...});
      };
      std::apply(choose, PlacementKinds{});
    });
  }

  /// Records of other folders have no such operation of their own.
  template <HasFields T>
  static void describeBlock(const T& block, SchemaWriter& writer) {
    if constexpr (std::derived_from<T, Base>)
      block.describe(writer);
    else
      FieldDescriber(writer).describe(block);
  }
};

template <class T>
void describeWithComment(const T& block, SchemaWriter& writer) {
  FieldDescriber describer(writer);
  describer.describe(block);
  describer.describe(static_cast<const Base&>(block));
}

template <class Kind>
void describePlacement(const Kind& placement, SchemaWriter& writer) {
  placement.GridTransformBase::describe(writer);
  FieldDescriber(writer).describe(placement);
}

template <class Kind>
void definePlacement(SchemaWriter& writer) {
  const SchemaItem item{.key = Fields<Kind>::definition, .title = Fields<Kind>::title};
  writer.object(item, [](SchemaWriter& inner) { Kind().describe(inner); });
}

}  // namespace

void Part::describe(SchemaWriter& writer) const { describeWithComment(*this, writer); }
void Domain::describe(SchemaWriter& writer) const { describeWithComment(*this, writer); }
void Dielectric::describe(SchemaWriter& writer) const { describeWithComment(*this, writer); }
void Electrode::describe(SchemaWriter& writer) const { describeWithComment(*this, writer); }
void Floating::describe(SchemaWriter& writer) const { describeWithComment(*this, writer); }
void FEM::describe(SchemaWriter& writer) const { describeWithComment(*this, writer); }
void BEM::describe(SchemaWriter& writer) const { describeWithComment(*this, writer); }
void BEMEval::describe(SchemaWriter& writer) const { describeWithComment(*this, writer); }
void MatOut::describe(SchemaWriter& writer) const { describeWithComment(*this, writer); }
void VTKHDF::describe(SchemaWriter& writer) const { describeWithComment(*this, writer); }
void InteriorSurface::describe(SchemaWriter& writer) const { describeWithComment(*this, writer); }
void PostProc::describe(SchemaWriter& writer) const { describeWithComment(*this, writer); }
void Solver::describe(SchemaWriter& writer) const { describeWithComment(*this, writer); }
void ESProblem::describe(SchemaWriter& writer) const { describeWithComment(*this, writer); }

void GridTransformBase::describe(SchemaWriter& writer) const { describeWithComment(*this, writer); }
void GridScaling::describe(SchemaWriter& writer) const { describePlacement(*this, writer); }
void GridTranslation::describe(SchemaWriter& writer) const { describePlacement(*this, writer); }
void GridRotation::describe(SchemaWriter& writer) const { describePlacement(*this, writer); }
void GridAffine::describe(SchemaWriter& writer) const { describePlacement(*this, writer); }

void writeSchema(std::ostream& stream, const ESProblem& problem) {
  SchemaWriter writer(stream);
  writer.document([&](SchemaWriter& root) {
    root.group("$defs", [](SchemaWriter& definitions) {
      const auto define = [&]<class... Kind>(std::type_identity<Kind>...) {
        (definePlacement<Kind>(definitions), ...);
      };
      std::apply(define, PlacementKinds{});
    });
    root.objectBody({}, {}, [&](SchemaWriter& members) { problem.describe(members); });
  });
}

}  // namespace velmo::conf
