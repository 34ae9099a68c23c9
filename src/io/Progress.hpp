#pragma once

#include <chrono>
#include <condition_variable>
#include <string>
#include <string_view>
#include <thread>

/// One line on a terminal that tells how far a long run is.
///
/// It stands on standard error, is rewritten in place a few times a second, and is gone before any
/// other text appears. Nothing at all is written where standard error is no terminal, TERM is
/// missing or "dumb", the program runs in the background, or during the first second of a run.
namespace velmo::io {

/// Adds to what is done of the present stage. Any thread may call it; one call costs an atomic
/// addition, so it belongs behind a task of microseconds, not into a loop over pairs.
/// @param work in the unit of the stage's total
void addWorkDone(double work) noexcept;

/// The line while one stage runs: "FMM apply: 43 %, 2 min 05 s left" where the work is known in
/// advance, else "Preparation: 12 s", the time since the stage began.
///
/// The time left is the work left divided by the rate of the last seconds: the unit of work need
/// not take the same time in all parts of a stage. The line is drawn by a thread of its own, which
/// ends with this object, also when an exception leaves the stage. One object at a time; made and
/// destroyed on the main thread.
class Progress {
 public:
  /// @param stage name, without colon
  /// @param work  total that `addWorkDone` will reach; 0 if it isn't known
  explicit Progress(std::string_view stage, double work = 0.0);
  /// Erases the line.
  ~Progress();
  Progress(const Progress&) = delete;
  Progress& operator=(const Progress&) = delete;

 private:
  using Clock = std::chrono::steady_clock;

  void draw_();
  [[nodiscard]] std::string line_();
  [[nodiscard]] double timeLeft_(double done);

  std::string stage_;
  double work_;
  Clock::time_point begin_ = Clock::now();
  Clock::time_point lastTime_ = begin_;  ///< of the last look at the work done
  double lastDone_ = 0.0;
  double rate_ = 0.0;  ///< work per second
  bool ended_ = false;
  std::condition_variable wake_;
  std::thread drawer_;
};

/// Writes a message to the standard error stream, on a line of its own where a progress line
/// stands. Library code that warns while a stage may run writes through this.
void printMessage(std::string_view text);

}  // namespace velmo::io
