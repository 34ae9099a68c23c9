#include "io/Channels.hpp"

#include <algorithm>
#include <utility>

namespace velmo::io {

StreamBundleBuffer::StreamBundleBuffer(std::vector<std::ostream*> streams, std::string prefix)
    : prefix_(std::move(prefix)), streams_(std::move(streams)) {}

void StreamBundleBuffer::setStreams(std::vector<std::ostream*> streams) {
  const std::lock_guard lock(streamsMutex_);
  streams_ = std::move(streams);
}

StreamBundleBuffer::int_type StreamBundleBuffer::overflow(int_type c) {
  if (traits_type::eq_int_type(c, traits_type::eof())) return 0;
  const int_type written = std::stringbuf::overflow(c);
  const bool failed = traits_type::eq_int_type(written, traits_type::eof());
  if (!failed && traits_type::to_char_type(c) == '\n') pubsync();
  return written;
}

std::streamsize StreamBundleBuffer::xsputn(const char* text, std::streamsize n) {
  const char* const end = text + n;
  for (const char* first = text; first != end;) {
    const char* const lineFeed = std::find(first, end, '\n');
    const bool endsLine = lineFeed != end;
    const char* const last = endsLine ? lineFeed + 1 : end;
    std::stringbuf::xsputn(first, last - first);
    if (endsLine) pubsync();
    first = last;
  }
  return n;
}

int StreamBundleBuffer::sync() {
  std::string text = takeText_();
  if (!prefix_.empty() && !text.empty()) text = withPrefix_(text);
  const std::lock_guard lock(streamsMutex_);
  for (std::ostream* const stream : streams_) {
    stream->write(text.data(), static_cast<std::streamsize>(text.size()));
    stream->flush();
  }
  return 0;
}

std::string StreamBundleBuffer::takeText_() {
  const std::lock_guard lock(mutex_);
  std::string text = str();
  str({});
  return text;
}

std::string StreamBundleBuffer::withPrefix_(const std::string& text) {
  std::string prefixed;
  prefixed.reserve(text.size() + 2 * prefix_.size());
  for (const char c : text) {
    if (atLineStart_) prefixed += prefix_;
    prefixed += c;
    atLineStart_ = c == '\n';
  }
  return prefixed;
}

StreamBundle::StreamBundle(std::vector<std::ostream*> streams, std::string prefix)
    : std::ostream(nullptr), buffer_(std::move(streams), std::move(prefix)) {
  rdbuf(&buffer_);
  // If there is no memory for the text, the caller must learn of it.
  exceptions(badbit);
}

void StreamBundle::setStreams(std::vector<std::ostream*> streams) {
  buffer_.setStreams(std::move(streams));
}

}  // namespace velmo::io
