#pragma once

#include <mutex>
#include <ostream>
#include <sstream>
#include <string>
#include <vector>

/// The log of the program. Library code writes to a channel and doesn't know where the text goes;
/// the application decides by giving the channel its streams. A channel without streams discards
/// its text; code that has to format text checks `hasStreams()` first.
namespace velmo::io {

/// Buffer that keeps text until a line feed arrives and then passes the finished lines as one block
/// to each stream of a list, in the list's order, and flushes it. With an empty list the text is
/// discarded.
///
/// Only the output of finished text is locked: text of threads that write at the same time may mix
/// within a line, but no other thread's flush splits a block. A line feed takes effect in strings
/// and with std::endl, not when it is put as a single character.
///
/// @throws std::system_error when a lock can't be taken
class StreamBundleBuffer : public std::stringbuf {
 public:
  /// @param streams targets, not owned; they must outlive their use here
  /// @param prefix  written in front of every line
  StreamBundleBuffer(std::vector<std::ostream*> streams, std::string prefix);

  /// Replaces the targets for all blocks that are written from then on.
  void setStreams(std::vector<std::ostream*> streams);

  /// Whether what is written can be read anywhere.
  [[nodiscard]] bool hasStreams() const {
    const std::lock_guard lock(streamsMutex_);
    return !streams_.empty();
  }

 protected:
  /// Puts a character; the end-of-file value gives 0.
  int_type overflow(int_type c) override;
  /// Puts `n` characters and writes out the lines that they complete. Always returns `n`.
  std::streamsize xsputn(const char* text, std::streamsize n) override;
  /// Writes out all text, with or without a line end. Always returns 0.
  int sync() override;

 private:
  [[nodiscard]] std::string takeText_();
  [[nodiscard]] std::string withPrefix_(const std::string& text);

  std::mutex mutex_;         ///< protects the text of the base class while it is written out
  bool atLineStart_ = true;  ///< whether the next character begins a line
  std::string prefix_;
  std::vector<std::ostream*> streams_;
  mutable std::mutex streamsMutex_;  ///< guards `streams_`
};

/// Output stream that forwards whole lines to a list of other streams, which may change at run
/// time.
///
/// Write errors of the targets are ignored, and the stream itself stays good; writing throws
/// std::bad_alloc if there is no memory for the text. Text without a line end is lost when the
/// stream is destroyed.
class StreamBundle : public std::ostream {
 public:
  /// @copydoc StreamBundleBuffer::StreamBundleBuffer
  StreamBundle(std::vector<std::ostream*> streams, std::string prefix);

  /// @copydoc StreamBundleBuffer::setStreams
  void setStreams(std::vector<std::ostream*> streams);

  /// Whether any stream receives the text. Callers skip expensive formatting if not.
  [[nodiscard]] bool hasStreams() const { return buffer_.hasStreams(); }

 private:
  StreamBundleBuffer buffer_;
};

/// Buffer that discards every character.
class NullBuffer : public std::streambuf {
 protected:
  int_type overflow(int_type c) override { return traits_type::not_eof(c); }
};

/// Output stream that discards everything without error.
class NullStream : public std::ostream {
 public:
  NullStream() : std::ostream(nullptr) { rdbuf(&buffer_); }

 private:
  NullBuffer buffer_;
};

// Inline objects of a header are built before the static objects of every file that includes it,
// and destroyed after them, so their constructors and destructors may write here.

inline NullStream nullStream;  ///< for callers that must pass a stream but want no text

inline StreamBundle out({}, {});    ///< the run's report; main() connects it to standard output
inline StreamBundle info({}, {});   ///< details: file names, parameters
inline StreamBundle debug({}, {});  ///< for debugging
inline StreamBundle warn({}, {});   ///< warnings

}  // namespace velmo::io
