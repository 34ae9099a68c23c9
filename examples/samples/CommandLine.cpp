#include "samples/CommandLine.hpp"

#include <algorithm>
#include <charconv>
#include <cmath>
#include <exception>
#include <iostream>

#include "io/Exception.hpp"
#include "io/Format.hpp"

namespace velmo::samples {

namespace {

using utility::RuntimeError;

template <class T>
std::optional<T> parsed(std::string_view text) noexcept {
  T value{};
  const auto [end, error] = std::from_chars(text.data(), text.data() + text.size(), value);
  if (error != std::errc() || end != text.data() + text.size()) return std::nullopt;
  return value;
}

/// Stores a finite number above `low` in a double or an optional one.
template <class Target>
Reader above(Target& target, double low) {
  return [&target, low](std::string_view text) {
    const auto number = numberIn(text);
    if (!number || !std::isfinite(*number) || !(*number > low)) return false;
    target = *number;
    return true;
  };
}

constexpr double kAny = -HUGE_VAL;

const Option& findOption(const std::vector<Option>& table, std::string_view word) {
  const bool hasDashes = word.starts_with("--");
  const auto equals = word.find('=');
  for (const Option& option : table) {
    const bool isMeant = equals != std::string_view::npos || option.name.starts_with("--");
    if (isMeant && !option.name.empty() && option.name == word.substr(0, equals)) return option;
    if (option.name.empty() && !hasDashes) return option;
  }
  if (!hasDashes) throw RuntimeError(io::format("Expected an option, got '{}'", word));
  throw RuntimeError(io::format("Unknown option '{}'", word.substr(0, equals)));
}

}  // namespace

std::optional<double> numberIn(std::string_view text) noexcept { return parsed<double>(text); }

Reader number(double& value) { return above(value, kAny); }
Reader number(std::optional<double>& value) { return above(value, kAny); }
Reader positive(double& value) { return above(value, 0.0); }
Reader positive(std::optional<double>& value) { return above(value, 0.0); }

Reader inRange(u64& value, u64 low, u64 high) {
  return [&value, low, high](std::string_view text) {
    const auto number = parsed<u64>(text);
    if (!number || *number < low || *number > high) return false;
    value = *number;
    return true;
  };
}

Reader vector(Vec3& value) {
  return [&value](std::string_view text) {
    Vec3 components{};
    for (u64 axis = 0; axis < 3; ++axis) {
      const auto end = axis < 2 ? text.find(',') : text.size();
      if (end == std::string_view::npos || !number(components.at(axis))(text.substr(0, end)))
        return false;
      if (axis < 2) text.remove_prefix(end + 1);
    }
    value = components;
    return true;
  };
}

Reader flag(bool& value) {
  return [&value](std::string_view) { return value = true; };
}

void readOptions(const std::vector<Option>& table, Words words) {
  for (u64 i = 0; i < words.size(); ++i) {
    std::string_view value = words[i];
    const Option& option = findOption(table, value);
    const auto equals = value.find('=');
    const bool isFlag = option.values.empty();
    if (option.name.empty()) {
      // The whole word is the value.
    } else if (equals != std::string_view::npos) {
      if (isFlag) throw RuntimeError(io::format("'{}' takes no value", option.name));
      value.remove_prefix(equals + 1);
    } else if (isFlag) {
      value = {};
    } else {
      if (i + 1 == words.size()) throw RuntimeError(io::format("'{}' needs a value", option.name));
      value = words[++i];
    }
    if (!option.read(value))
      throw RuntimeError(
          io::format("Bad value '{}' of '{}', expected {}", value, option.name, option.values));
  }
}

int runTool(std::string_view name, int argc, const char* const* argv,
            const std::function<int(Words)>& tool) {
  try {
    return tool({argv + std::min(argc, 1), argv + argc});
  } catch (const std::exception& failure) {
    std::cerr << name << ": " << failure.what() << '\n';
    return 1;
  }
}

}  // namespace velmo::samples
