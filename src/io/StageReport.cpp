#include "io/StageReport.hpp"

#include <chrono>

#include "io/Channels.hpp"
#include "io/Format.hpp"

namespace velmo::io {

void reportStage(std::string name, Timer& timer) {
  const std::chrono::nanoseconds elapsed = Timer::Clock::now() - timer.start;
  const double seconds = static_cast<double>(elapsed.count()) / 1e9;
  name += ':';
  out << format("# {:<30} {:>8.3f}s\n", name, seconds);
  timer.restart();
}

}  // namespace velmo::io
