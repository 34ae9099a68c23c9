#include "io/CheckedAccess.hpp"

namespace velmo::utility {

int toInt(const std::string& text) {
  try {
    return std::stoi(text);
  } catch (const std::out_of_range&) {
    throw std::out_of_range("stoi argument out of range");
  } catch (const std::invalid_argument&) {
    throw std::invalid_argument("invalid stoi argument");
  }
}

}  // namespace velmo::utility
