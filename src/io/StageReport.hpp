#pragma once

#include <chrono>
#include <string>

/// The run's report on channel `out`: stages with their wall-clock times, and the lines between its
/// blocks. Main thread only, like all writing to the channels.
namespace velmo::io {

/// Lines that set off the blocks of the report, with their line ends; each begins with "#", so that
/// readers can treat the report as comments.
inline constexpr const char* kDoubleRule =
    "#===================================================================\n";
inline constexpr const char* kSingleRule =
    "#-------------------------------------------------------------------\n";

/// Wall clock of one sequence of stages; runs from its construction on. Monotonic: setting the
/// system's time doesn't move it.
struct Timer {
  using Clock = std::chrono::steady_clock;
  using TimePoint = std::chrono::time_point<Clock, std::chrono::nanoseconds>;

  TimePoint start = Clock::now();  ///< from which the next report measures
  TimePoint last = start;          ///< time of the last restart; always equal to `start`

  /// Measures from now on.
  void restart() { last = start = Clock::now(); }
};

/// Writes "# <name>: <time>s" to channel `out`, by the format "# {:<30} {:>8.3f}s\n" of the name
/// with its colon and the seconds since `timer` was started. A longer name widens the line.
///
/// Restarts the timer after the output, so that the time for printing isn't added to the next
/// stage: the figures of one timer add up to less than the time that passed.
void reportStage(std::string name, Timer& timer);

}  // namespace velmo::io
