// Preloaded into a program, makes one of its calls of the system fail. TRELLION_FAILS names the
// function, says which of its calls it is to be, from 1, and gives the error number: "fstat 2 5".

#include <dlfcn.h>
#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

#include <atomic>
#include <cerrno>
#include <cstdarg>
#include <cstdio>
#include <cstdlib>
#include <string_view>

namespace {

struct fault {
  char function[32] = "";
  int call = 0;
  int error_number = 0;

  fault() noexcept {
    const char* const text = std::getenv("TRELLION_FAILS");
    if (text != nullptr) std::sscanf(text, "%31s %d %d", function, &call, &error_number);
    unsetenv("LD_PRELOAD");  // the programs that this one starts are to be left alone
  }
};

/// Whether this call of the function is to fail. Sets errno then.
bool fails(std::string_view function) noexcept {
  static const fault chosen;
  static std::atomic<int> calls = 0;
  if (function != chosen.function || ++calls != chosen.call) return false;
  errno = chosen.error_number;
  return true;
}

/// The function that would have been called.
template <class F>
F* next(F* /*like*/, const char* name) noexcept {
  return reinterpret_cast<F*>(dlsym(RTLD_NEXT, name));
}

__attribute__((constructor)) void choose_fault() { fails(""); }

}  // namespace

extern "C" {

int open(const char* name, int flags, ...) {
  va_list rest;
  va_start(rest, flags);
  const mode_t mode = (flags & O_CREAT) != 0 ? va_arg(rest, mode_t) : 0;
  va_end(rest);
  return fails("open") ? -1 : next(&open, "open")(name, flags, mode);
}

int openat(int directory, const char* name, int flags, ...) {
  va_list rest;
  va_start(rest, flags);
  const mode_t mode = (flags & O_CREAT) != 0 ? va_arg(rest, mode_t) : 0;
  va_end(rest);
  return fails("openat") ? -1 : next(&openat, "openat")(directory, name, flags, mode);
}

// All others fail with -1, too.
#define CAN_FAIL(result, name, parameters, arguments, ...) \
  result name parameters __VA_ARGS__ { return fails(#name) ? -1 : next(&name, #name) arguments; }

CAN_FAIL(int, close, (int file), (file))
CAN_FAIL(ssize_t, read, (int file, void* buffer, size_t size), (file, buffer, size))
CAN_FAIL(ssize_t, write, (int file, const void* bytes, size_t size), (file, bytes, size))
CAN_FAIL(int, fsync, (int file), (file))
CAN_FAIL(int, ftruncate, (int file, off_t size), (file, size), noexcept)
CAN_FAIL(int, fchmod, (int file, mode_t mode), (file, mode), noexcept)
CAN_FAIL(int, fstat, (int file, struct stat* status), (file, status), noexcept)
CAN_FAIL(int, stat, (const char* name, struct stat* status), (name, status), noexcept)
CAN_FAIL(int, lstat, (const char* name, struct stat* status), (name, status), noexcept)
CAN_FAIL(int, link, (const char* from, const char* to), (from, to), noexcept)
CAN_FAIL(int, rename, (const char* from, const char* to), (from, to), noexcept)
CAN_FAIL(int, unlink, (const char* name), (name), noexcept)
CAN_FAIL(int, mkdir, (const char* name, mode_t mode), (name, mode), noexcept)
}
