#include "io/Progress.hpp"

#include <sys/ioctl.h>
#include <unistd.h>

#include <algorithm>
#include <atomic>
#include <cmath>
#include <cstdlib>
#include <iostream>
#include <mutex>
#include <system_error>

#include "io/Format.hpp"

namespace velmo::io {

namespace {

using namespace std::chrono_literals;

/// Short runs show no line.
constexpr auto kQuietTime = 1s;
/// Between two drawings, and before the first one of a stage.
constexpr auto kInterval = 250ms;
/// The rate is averaged over a quarter of the time so far: tasks of a long stage take long, too.
/// But over so many seconds at least.
constexpr double kLeastMemory = 5.0;
/// Estimates beyond this are not shown.
constexpr double kMostSeconds = 360000.0;
/// Returns to the start of the line and erases it.
constexpr std::string_view kErase = "\r\x1b[K";

const auto programStart = std::chrono::steady_clock::now();

std::atomic<double> workDone{0.0};

std::mutex terminalMutex;  ///< held while something is written, and for `isDrawn` and `ended_`
bool isDrawn = false;      ///< the terminal shows a line

bool hasTerminal() {
  const char* const kind = std::getenv("TERM");
  if (kind == nullptr || std::string_view(kind) == "dumb" || isatty(STDERR_FILENO) == 0)
    return false;
  // Don't disturb the foreground process of the terminal.
  const pid_t foreground = tcgetpgrp(STDERR_FILENO);
  return foreground == -1 || foreground == getpgrp();
}

/// Columns that a line may take; a line that wraps could not be erased.
std::size_t terminalWidth() {
  winsize size{};
  const bool isKnown = ioctl(STDERR_FILENO, TIOCGWINSZ, &size) == 0 && size.ws_col > 1;
  return isKnown ? size.ws_col - 1U : 79U;
}

void writeToTerminal(std::string_view text) {
  // A line that can't be written is no loss.
  [[maybe_unused]] const auto written = ::write(STDERR_FILENO, text.data(), text.size());
}

/// @pre terminalMutex is held
void erase() {
  if (isDrawn) writeToTerminal(kErase);
  isDrawn = false;
}

std::string duration(double seconds) {
  const long long s = std::llround(seconds);
  if (s < 60) return format("{} s", s);
  if (s < 3600) return format("{} min {:02} s", s / 60, s % 60);
  return format("{} h {:02} min", s / 3600, s / 60 % 60);
}

}  // namespace

void addWorkDone(double work) noexcept { workDone.fetch_add(work, std::memory_order_relaxed); }

Progress::Progress(std::string_view stage, double work) : stage_(stage), work_(work) {
  workDone.store(0.0, std::memory_order_relaxed);
  if (!hasTerminal()) return;
  try {
    drawer_ = std::thread([this] { draw_(); });
  } catch (const std::system_error&) {
    // If no thread can be started, the run continues without the line.
  }
}

Progress::~Progress() {
  if (!drawer_.joinable()) return;
  {
    const std::lock_guard lock(terminalMutex);
    ended_ = true;
    wake_.notify_one();
  }
  drawer_.join();
}

void Progress::draw_() {
  std::unique_lock lock(terminalMutex);
  auto next = std::max(programStart + kQuietTime, begin_ + kInterval);
  while (!wake_.wait_until(lock, next, [this] { return ended_; })) {
    if (hasTerminal()) {
      writeToTerminal(std::string(kErase) + line_());
      isDrawn = true;
    }
    next = Clock::now() + kInterval;
  }
  erase();
}

double Progress::timeLeft_(double done) {
  const auto now = Clock::now();
  const double seconds = std::chrono::duration<double>(now - lastTime_).count();
  const double present = (done - lastDone_) / seconds;
  const double memory =
      std::max(kLeastMemory, 0.25 * std::chrono::duration<double>(now - begin_).count());
  rate_ += (lastDone_ > 0.0 ? 1.0 - std::exp(-seconds / memory) : 1.0) * (present - rate_);
  lastTime_ = now;
  lastDone_ = done;
  return std::min((work_ - done) / rate_, kMostSeconds);
}

std::string Progress::line_() {
  std::string line = stage_ + ": ";
  if (work_ > 0.0) {
    const double done = std::min(workDone.load(std::memory_order_relaxed), work_);
    line += format("{} %", static_cast<int>(100.0 * done / work_));
    if (done > 0.0) line += ", " + duration(timeLeft_(done)) + " left";
  } else {
    line += duration(std::chrono::duration<double>(Clock::now() - begin_).count());
  }
  line.resize(std::min(line.size(), terminalWidth()));
  return line;
}

void printMessage(std::string_view text) {
  const std::lock_guard lock(terminalMutex);
  erase();
  std::cerr << text << std::flush;
}

}  // namespace velmo::io
