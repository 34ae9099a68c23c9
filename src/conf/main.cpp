#include <iostream>

#include "conf/SettingsSchema.hpp"

/// Writes the JSON Schema of settings files to standard output; the build installs it.
int main() {
  velmo::conf::writeSettingsSchema(std::cout);
  return std::cout.flush() ? 0 : 1;
}
