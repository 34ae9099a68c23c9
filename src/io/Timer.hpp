#pragma once

#include <chrono>

namespace velmo::io {

/// Wall clock of one sequence of stages; runs from its construction on.
struct Timer {
  using Clock = std::chrono::steady_clock;
  using TimePoint = std::chrono::time_point<Clock, std::chrono::nanoseconds>;

  TimePoint start = Clock::now();  ///< from which the next report measures
  TimePoint last = start;          ///< time of the last restart

  void restart() { last = start = Clock::now(); }
};

}  // namespace velmo::io
