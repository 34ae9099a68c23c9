#pragma once

#include <mutex>
#include <ostream>
#include <sstream>
#include <string>
#include <vector>

/// The log of the program. Library code writes to a channel and doesn't know where the text goes;
/// the application decides by giving the channel its streams. A channel without streams drops what
/// it gets; code that has to format its text first asks `hasStreams()`.
namespace velmo::io {

/// Buffer that keeps text until a line feed arrives and then hands the finished lines as one block
/// to each stream of a list, in the list's order, and flushes it. With an empty list the text is
/// dropped.
///
/// Only taking the text out is guarded: threads that write at the same time may mix within a line,
/// but a block is never torn by another thread's flush. A line feed is noticed in strings and by
/// std::endl, not when a single character is put.
///
/// @throws std::system_error when a lock can't be taken
class StreamBundleBuffer : public std::stringbuf {
 public:
  /// @param streams targets, not owned; they must outlive their use here
  /// @param prefix  written in front of every line
  StreamBundleBuffer(std::vector<std::ostream*> streams, std::string prefix);

  /// Replaces the targets: for the blocks that are handed out from then on.
  void setStreams(std::vector<std::ostream*> streams);

  /// Whether what is written can be read anywhere.
  [[nodiscard]] bool hasStreams() const {
    const std::lock_guard lock(streamsMutex_);
    return !streams_.empty();
  }

 protected:
  /// Puts a character; the end-of-file value gives 0.
  int_type overflow(int_type c) override;
  /// Puts `n` characters and hands out what they complete. Always gives `n`.
  std::streamsize xsputn(const char* text, std::streamsize n) override;
  /// Hands out all that is kept, line end or not. Always gives 0.
  int sync() override;

 private:
  [[nodiscard]] std::string takeText_();
  [[nodiscard]] std::string withPrefix_(const std::string& text);

  std::mutex mutex_;         ///< guards the text of the base class while it is taken out
  bool atLineStart_ = true;  ///< whether the next character begins a line
  std::string prefix_;
  std::vector<std::ostream*> streams_;
  mutable std::mutex streamsMutex_;  ///< guards `streams_`
};

/// Output stream that forwards whole lines to a list of other streams, which may change at run
/// time.
///
/// Write errors of the targets are not looked at, and the stream itself stays good; writing throws
/// std::bad_alloc where there is no memory for the text. Text without a line end is lost when the
/// stream is destroyed.
class StreamBundle : public std::ostream {
 public:
  /// @copydoc StreamBundleBuffer::StreamBundleBuffer
  StreamBundle(std::vector<std::ostream*> streams, std::string prefix);

  /// @copydoc StreamBundleBuffer::setStreams
  void setStreams(std::vector<std::ostream*> streams);

  /// Whether what is written can be read anywhere. Text that takes work to make is made only then.
  [[nodiscard]] bool hasStreams() const { return buffer_.hasStreams(); }

 private:
  StreamBundleBuffer buffer_;
};

/// Buffer that accepts every character and keeps none.
class NullBuffer : public std::streambuf {
 protected:
  int_type overflow(int_type c) override { return traits_type::not_eof(c); }
};

/// Output stream that swallows everything without error.
class NullStream : public std::ostream {
 public:
  NullStream() : std::ostream(nullptr) { rdbuf(&buffer_); }

 private:
  NullBuffer buffer_;
};

// Inline objects of a header are built before the static objects of every file that includes it,
// and destroyed after them, so those may write here, too.

inline NullStream nullStream;  ///< for callers that must pass a stream and want no text

inline StreamBundle out({}, {});    ///< the run's report; main() gives it the standard output
inline StreamBundle info({}, {});   ///< details: file names, parameters
inline StreamBundle debug({}, {});  ///< for the search of faults
inline StreamBundle warn({}, {});   ///< warnings

}  // namespace velmo::io
