#include <dlfcn.h>
#include <fcntl.h>
#include <sys/stat.h>
#include <sys/uio.h>
#include <unistd.h>

#include <algorithm>
#include <atomic>
#include <cerrno>
#include <cstdarg>
#include <cstdio>
#include <cstdlib>
#include <string>

/// A library to preload: the n-th of the calls below goes wrong. The environment tells n (FAIL_AT),
/// whether all later ones but those of printing do so, too (FAIL_EVER), the error number or 0 for
/// half the bytes (FAIL_WITH), and where to note the calls, one name a line, those that went wrong
/// with an exclamation mark (FAIL_NOTES).
namespace {

long variable(const char* name) {
  const char* const value = std::getenv(name);
  return value == nullptr ? -1 : std::strtol(value, nullptr, 10);
}

template <class Function>
Function* next(const char* name) {
  return reinterpret_cast<Function*>(dlsym(RTLD_NEXT, name));
}

/// Notes a call, and tells whether it goes wrong.
bool goesWrong(const std::string& name) {
  static const long first = variable("FAIL_AT");
  static const bool forEver = variable("FAIL_EVER") > 0;
  static const char* const path = std::getenv("FAIL_NOTES");
  static const int notes =
      next<int(const char*, int, ...)>("open")(path, O_WRONLY | O_APPEND | O_CREAT, 0600);
  static std::atomic<long> count = 0;
  const long n = count++;
  const bool wrong = n == first || (forEver && n > first && first >= 0 && name != "print");
  const std::string line = name + (wrong ? "!\n" : "\n");
  if (next<ssize_t(int, const void*, std::size_t)>("write")(notes, line.data(), line.size()) < 0)
    std::abort();
  return wrong;
}

/// A call that moves bytes: fewer of them, or none and an error.
template <class Result, class Move>
Result moved(const char* name, std::size_t size, Result failure, const Move& move) {
  static const long error = variable("FAIL_WITH");
  if (!goesWrong(name)) return move(size);
  if (error == 0) return move(std::max<std::size_t>(size / 2, 1));
  errno = static_cast<int>(error);
  return failure;
}

/// A call that moves none.
template <class Result, class Call>
Result called(const char* name, Result failure, const Call& call) {
  return moved(name, 0, failure, [&](std::size_t) { return call(); });
}

using Open = int(const char*, int, ...);
using Fopen = std::FILE*(const char*, const char*);
using Pread = ssize_t(int, void*, std::size_t, off_t);

}  // namespace

extern "C" {

int open(const char* path, int flags, ...) {
  std::va_list list;
  va_start(list, flags);
  const unsigned mode = (flags & O_CREAT) != 0 ? va_arg(list, unsigned) : 0;
  va_end(list);
  return called("open", -1, [&] { return next<Open>("open")(path, flags, mode); });
}
int open64(const char* path, int flags, ...) { return open(path, flags, 0600); }

std::FILE* fopen(const char* path, const char* mode) {
  return called(*mode == 'r' ? "fopen" : "create", static_cast<std::FILE*>(nullptr),
                [&] { return next<Fopen>("fopen")(path, mode); });
}
std::FILE* fopen64(const char* path, const char* mode) { return fopen(path, mode); }

ssize_t read(int file, void* to, std::size_t size) {
  return moved<ssize_t>("read", size, -1, [&](std::size_t n) {
    return next<ssize_t(int, void*, std::size_t)>("read")(file, to, n);
  });
}

ssize_t pread(int file, void* to, std::size_t size, off_t at) {
  return moved<ssize_t>("pread", size, -1,
                        [&](std::size_t n) { return next<Pread>("pread")(file, to, n, at); });
}
ssize_t pread64(int file, void* to, std::size_t size, off_t at) {
  return pread(file, to, size, at);
}

ssize_t write(int file, const void* from, std::size_t size) {
  return moved<ssize_t>("write", size, -1, [&](std::size_t n) {
    return next<ssize_t(int, const void*, std::size_t)>("write")(file, from, n);
  });
}

ssize_t writev(int file, const iovec* parts, int count) {
  return moved<ssize_t>("writev", 2, -1, [&](std::size_t n) {
    return next<ssize_t(int, const iovec*, int)>("writev")(file, parts, n == 2 ? count : 1);
  });
}

std::size_t fwrite(const void* from, std::size_t size, std::size_t count, std::FILE* file) {
  return moved<std::size_t>("print", count, 0, [&](std::size_t n) {
    return next<std::size_t(const void*, std::size_t, std::size_t, std::FILE*)>("fwrite")(
        from, size, n, file);
  });
}

int fstat(int file, struct stat* status) noexcept {
  return called("fstat", -1, [&] { return next<int(int, struct stat*)>("fstat")(file, status); });
}

int close(int file) {
  return called("close", -1, [&] { return next<int(int)>("close")(file); });
}
}
