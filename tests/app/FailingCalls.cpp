#include <dlfcn.h>
#include <fcntl.h>
#include <sys/stat.h>
#include <sys/uio.h>
#include <unistd.h>

#include <algorithm>
#include <atomic>
#include <cerrno>
#include <cstdio>
#include <cstdlib>
#include <string>

/// A library to preload: the call number n of those below goes wrong. FAILING_CALL holds n, the
/// error number, 0 for half the bytes, and 1 if all later calls but those that print go wrong, too.
/// The file "notes" gets the names of the calls, those that go wrong with a mark.
namespace {

template <class Function>
Function* next(const char* name) {
  return reinterpret_cast<Function*>(dlsym(RTLD_NEXT, name));
}

struct Plan {
  Plan() {
    const char* const text = std::getenv("FAILING_CALL");
    if (text == nullptr || std::sscanf(text, "%ld %d %d", &first, &error, &forEver) != 3)
      std::abort();
  }
  long first = 0;
  int error = 0;
  int forEver = 0;
  int notes = next<decltype(open)>("open")("notes", O_WRONLY | O_APPEND | O_CREAT, 0600);
  std::atomic<long> count = 0;
};

Plan& thePlan() {
  static Plan plan;
  return plan;
}

/// A call that moves bytes: it moves half of them, or gives `failure`.
template <class Result, class Move>
Result moved(const std::string& name, std::size_t size, Result failure, const Move& move) {
  Plan& plan = thePlan();
  const long n = plan.count++;
  const bool isWrong = n == plan.first || (plan.forEver == 1 && n > plan.first && name != "print");
  const std::string line = name + (isWrong ? "!\n" : "\n");
  if (next<decltype(write)>("write")(plan.notes, line.data(), line.size()) < 0) std::abort();
  if (!isWrong) return move(size);
  if (plan.error == 0) return move(std::max<std::size_t>(size / 2, 1));
  errno = plan.error;
  return failure;
}

}  // namespace

extern "C" {

int open(const char* path, int flags, ...) {
  return moved("open", 0, -1,
               [&](std::size_t) { return next<decltype(open)>("open")(path, flags, 0600); });
}
int open64(const char* path, int flags, ...) { return open(path, flags); }

std::FILE* fopen(const char* path, const char* mode) {
  return moved(*mode == 'r' ? "fopen" : "create", 0, static_cast<std::FILE*>(nullptr),
               [&](std::size_t) { return next<decltype(fopen)>("fopen")(path, mode); });
}
std::FILE* fopen64(const char* path, const char* mode) { return fopen(path, mode); }

int fstat(int file, struct stat* status) noexcept {
  return moved("fstat", 0, -1,
               [&](std::size_t) { return next<decltype(fstat)>("fstat")(file, status); });
}

ssize_t read(int file, void* to, std::size_t size) {
  return moved<ssize_t>("read", size, -1,
                        [&](std::size_t n) { return next<decltype(read)>("read")(file, to, n); });
}

ssize_t pread(int file, void* to, std::size_t size, off_t at) {
  return moved<ssize_t>("pread", size, -1, [&](std::size_t n) {
    return next<decltype(pread)>("pread")(file, to, n, at);
  });
}
ssize_t pread64(int file, void* to, std::size_t size, off_t at) {
  return pread(file, to, size, at);
}

ssize_t write(int file, const void* from, std::size_t size) {
  return moved<ssize_t>("write", size, -1, [&](std::size_t n) {
    return next<decltype(write)>("write")(file, from, n);
  });
}

ssize_t writev(int file, const iovec* parts, int count) {
  return moved<ssize_t>("write", 2, -1, [&](std::size_t n) {
    return next<decltype(writev)>("writev")(file, parts, n == 2 ? count : 1);
  });
}

std::size_t fwrite(const void* from, std::size_t size, std::size_t count, std::FILE* file) {
  return moved<std::size_t>("print", count, 0, [&](std::size_t n) {
    return next<decltype(fwrite)>("fwrite")(from, size, n, file);
  });
}

int close(int file) {
  return moved("close", 0, -1, [&](std::size_t) { return next<decltype(close)>("close")(file); });
}
}
