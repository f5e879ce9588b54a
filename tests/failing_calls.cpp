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

int close(int file) { return fails("close") ? -1 : next(&close, "close")(file); }

ssize_t read(int file, void* buffer, size_t size) {
  return fails("read") ? -1 : next(&read, "read")(file, buffer, size);
}

ssize_t write(int file, const void* bytes, size_t size) {
  return fails("write") ? -1 : next(&write, "write")(file, bytes, size);
}

int fsync(int file) { return fails("fsync") ? -1 : next(&fsync, "fsync")(file); }

int ftruncate(int file, off_t size) noexcept {
  return fails("ftruncate") ? -1 : next(&ftruncate, "ftruncate")(file, size);
}

int fchmod(int file, mode_t mode) noexcept {
  return fails("fchmod") ? -1 : next(&fchmod, "fchmod")(file, mode);
}

int fstat(int file, struct stat* status) noexcept {
  return fails("fstat") ? -1 : next(&fstat, "fstat")(file, status);
}

int stat(const char* name, struct stat* status) noexcept {
  return fails("stat") ? -1 : next(&stat, "stat")(name, status);
}

int lstat(const char* name, struct stat* status) noexcept {
  return fails("lstat") ? -1 : next(&lstat, "lstat")(name, status);
}

int link(const char* from, const char* to) noexcept {
  return fails("link") ? -1 : next(&link, "link")(from, to);
}

int rename(const char* from, const char* to) noexcept {
  return fails("rename") ? -1 : next(&rename, "rename")(from, to);
}

int unlink(const char* name) noexcept {
  return fails("unlink") ? -1 : next(&unlink, "unlink")(name);
}

int mkdir(const char* name, mode_t mode) noexcept {
  return fails("mkdir") ? -1 : next(&mkdir, "mkdir")(name, mode);
}
}
