#pragma once

#include <mutex>
#include <ostream>
#include <sstream>
#include <string>
#include <vector>

namespace velmo::io {

/// Buffer that keeps text until a line feed arrives and then hands the finished lines as one block
/// to each stream of a list. With an empty list the text is dropped.
///
/// Only taking the text out is guarded: threads that write at the same time may mix within a line,
/// but a block is never torn by another thread's flush. A line feed is noticed in strings and by
/// std::endl, not when a single character is put.
class StreamBundleBuffer : public std::stringbuf {
 public:
  /// @param streams targets, not owned; they must outlive their use here
  /// @param prefix  written in front of every line
  StreamBundleBuffer(std::vector<std::ostream*> streams, std::string prefix);

  /// Replaces the targets. Belongs before the first write of any other thread.
  void setStreams(std::vector<std::ostream*> streams);

 protected:
  int_type overflow(int_type c) override;
  std::streamsize xsputn(const char* text, std::streamsize n) override;
  int sync() override;

 private:
  [[nodiscard]] std::string takeText_();
  [[nodiscard]] std::string withPrefix_(const std::string& text);

  std::mutex mutex_;         ///< guards the text of the base class while it is taken out
  bool atLineStart_ = true;  ///< whether the next character begins a line
  std::string prefix_;
  std::vector<std::ostream*> streams_;
  std::mutex streamsMutex_;
};

/// Output stream that forwards whole lines to a list of other streams, which may change at run
/// time.
///
/// Write errors of the targets are not looked at. Text without a line end is lost when the stream
/// is destroyed.
class StreamBundle : public std::ostream {
 public:
  StreamBundle(std::vector<std::ostream*> streams, std::string prefix);

  /// @copydoc StreamBundleBuffer::setStreams
  void setStreams(std::vector<std::ostream*> streams);

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

}  // namespace velmo::io
