/* Preloaded into a program, makes one of its calls on files fail, as a bad disk, a full one or a missing right would.
 *
 * FAIL_PROGRAM    the name of the program; others that it starts are left alone
 * FAIL_DIRECTORY  only calls on files in this directory or below count
 * FAIL_AT         which of these calls fails, from 1; none if it is 0
 * FAIL_LOG        a file that gets a line for the call that failed, or for every call if none shall fail
 *
 * A program and its copies by fork() count together. */
#define _GNU_SOURCE
#include <dirent.h>
#include <dlfcn.h>
#include <errno.h>
#include <fcntl.h>
#include <stdarg.h>
#include <stdio.h>
#include <stdlib.h>
#include <string.h>
#include <sys/mman.h>
#include <sys/syscall.h>
#include <unistd.h>

static char directory[4096];
static long fail_at = -1;
static int log_file = -1;
static long* count;

#define REAL(name) (__extension__(__typeof__(&name)) dlsym(RTLD_NEXT, #name))

__attribute__((constructor)) static void Begin(void) {
  const char* program = getenv("FAIL_PROGRAM");
  const char* where = getenv("FAIL_DIRECTORY");
  const char* at = getenv("FAIL_AT");
  const char* log = getenv("FAIL_LOG");
  if (!program || !where || !at || !log || strcmp(program, program_invocation_short_name) != 0) {
    return;
  }
  snprintf(directory, sizeof directory, "%s", where);
  count = mmap(NULL, sizeof *count, PROT_READ | PROT_WRITE, MAP_SHARED | MAP_ANONYMOUS, -1, 0);
  log_file = (int)syscall(SYS_openat, AT_FDCWD, log, O_WRONLY | O_CREAT | O_APPEND | O_CLOEXEC, 0666);
  fail_at = atol(at);
}

/* True if this call is the one that fails. */
static int FailsOn(const char* call, const char* path, int error) {
  char line[8400];
  const size_t length = strlen(directory);
  if (path[0] == '/' && (strncmp(path, directory, length) != 0 || (path[length] != '/' && path[length] != 0))) {
    return 0;
  }
  ++*count;
  if (fail_at != 0 && *count != fail_at) {
    return 0;
  }
  path = path[0] == '/' && path[length] == '/' ? path + length + 1 : path;
  const int size = snprintf(line, sizeof line, "%ld\t%s\t%s\n", *count, call, path);
  syscall(SYS_write, log_file, line, (size_t)size);
  if (fail_at == 0) {
    return 0;
  }
  errno = error;
  return 1;
}

static int Fails(const char* call, const char* path, int error) {
  return fail_at >= 0 && path && FailsOn(call, path, error);
}

static int FailsOnDescriptor(const char* call, int descriptor, int error) {
  char link[64];
  char path[4096];
  if (fail_at < 0 || descriptor < 0) {
    return 0;
  }
  snprintf(link, sizeof link, "/proc/self/fd/%d", descriptor);
  const ssize_t size = readlink(link, path, sizeof path - 1);
  if (size <= 0 || path[0] != '/') {
    return 0;
  }
  path[size] = 0;
  return FailsOn(call, path, error);
}

#define OPEN(name)                                                                                   \
  int name(const char* path, int flags, ...) {                                                       \
    va_list rest;                                                                                    \
    va_start(rest, flags);                                                                           \
    const int mode = va_arg(rest, int);                                                              \
    va_end(rest);                                                                                    \
    return Fails("open", path, flags & O_CREAT ? ENOSPC : EIO) ? -1 : REAL(name)(path, flags, mode); \
  }
OPEN(open)
OPEN(open64)

#define FOPEN(name)                                                      \
  FILE* name(const char* path, const char* mode) {                       \
    return Fails("fopen", path, EACCES) ? NULL : REAL(name)(path, mode); \
  }
FOPEN(fopen)
FOPEN(fopen64)

ssize_t read(int descriptor, void* bytes, size_t size) {
  return FailsOnDescriptor("read", descriptor, EIO) ? -1 : REAL(read)(descriptor, bytes, size);
}
ssize_t pread(int descriptor, void* bytes, size_t size, off_t offset) {
  return FailsOnDescriptor("pread", descriptor, EIO) ? -1 : REAL(pread)(descriptor, bytes, size, offset);
}
ssize_t pread64(int descriptor, void* bytes, size_t size, off64_t offset) {
  return FailsOnDescriptor("pread", descriptor, EIO) ? -1 : REAL(pread64)(descriptor, bytes, size, offset);
}
ssize_t write(int descriptor, const void* bytes, size_t size) {
  return FailsOnDescriptor("write", descriptor, ENOSPC) ? -1 : REAL(write)(descriptor, bytes, size);
}
int close(int descriptor) {
  const int fails = FailsOnDescriptor("close", descriptor, ENOSPC);
  const int result = REAL(close)(descriptor);
  if (fails) {
    errno = ENOSPC;
  }
  return fails ? -1 : result;
}
size_t fread(void* bytes, size_t size, size_t items, FILE* file) {
  return FailsOnDescriptor("fread", fileno(file), EIO) ? 0 : REAL(fread)(bytes, size, items, file);
}
size_t fwrite(const void* bytes, size_t size, size_t items, FILE* file) {
  return FailsOnDescriptor("fwrite", fileno(file), ENOSPC) ? 0 : REAL(fwrite)(bytes, size, items, file);
}
int fclose(FILE* file) {
  const int fails = FailsOnDescriptor("fclose", fileno(file), ENOSPC);
  const int result = REAL(fclose)(file);
  return fails ? EOF : result;
}
int rename(const char* from, const char* to) {
  return Fails("rename", to, EIO) ? -1 : REAL(rename)(from, to);
}
DIR* opendir(const char* path) {
  return Fails("opendir", path, EACCES) ? NULL : REAL(opendir)(path);
}
struct dirent* readdir(DIR* stream) {
  return FailsOnDescriptor("readdir", dirfd(stream), EIO) ? NULL : REAL(readdir)(stream);
}
struct dirent64* readdir64(DIR* stream) {
  return FailsOnDescriptor("readdir", dirfd(stream), EIO) ? NULL : REAL(readdir64)(stream);
}
