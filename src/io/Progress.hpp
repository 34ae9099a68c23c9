#pragma once

#include <chrono>
#include <condition_variable>
#include <string>
#include <string_view>
#include <thread>

/// One line on a terminal that shows the progress of a long run.
///
/// It is written to standard error, updated in place a few times a second, and erased before any
/// other text appears. Nothing at all is written if standard error is not a terminal, if TERM is
/// missing or "dumb", if the program runs in the background, or during the first second of a run.
namespace velmo::io {

/// Adds to the work done in the current stage. Any thread may call it; a call costs an atomic
/// addition, so call it after tasks of microseconds or more, not in a loop over pairs.
/// @param work in the unit of the stage's total
void addWorkDone(double work) noexcept;

/// The line while one stage runs: "FMM apply: 43 %, 2 min 05 s left" if the work is known in
/// advance, otherwise "Preparation: 12 s", the time since the stage began.
///
/// The time left is the remaining work divided by the rate of the last seconds, since the time per
/// unit of work may change during a stage. The line is drawn by a thread of its own, which ends
/// with this object, even if the stage ends by an exception. One object at a time; made and
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
  Clock::time_point lastTime_ = begin_;  ///< of the last reading of the work done
  double lastDone_ = 0.0;
  double rate_ = 0.0;  ///< work per second
  bool ended_ = false;
  std::condition_variable wake_;
  std::thread drawer_;
};

/// Writes a message to standard error; a progress line is erased first. Library code that may warn
/// during a stage writes through this.
void printMessage(std::string_view text);

}  // namespace velmo::io
