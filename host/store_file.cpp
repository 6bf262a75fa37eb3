#include "host/store_file.h"

#include <fcntl.h>
#include <sys/file.h>
#include <unistd.h>

#include <cerrno>
#include <climits>
#include <csignal>
#include <cstdio>
#include <cstdlib>
#include <cstring>

#include "host/display.h"

namespace {

constexpr int kMostLinks = 40;

bool Fail(const StoreFile &file, const std::string &what, std::string &error) {
  error = file.path + ": " + what;
  return false;
}

/* Follows symbolic links by hand: the last may lead to a file that is still to be made. */
std::filesystem::path TargetOf(std::filesystem::path path) {
  std::error_code unread;
  for (int i = 0; i < kMostLinks && std::filesystem::is_symlink(path, unread); ++i) {
    path = path.parent_path() / std::filesystem::read_symlink(path, unread);
  }
  return path;
}

std::filesystem::path FolderOf(const StoreFile &file) {
  return file.target.has_parent_path() ? file.target.parent_path() : ".";
}

/* The lock is one of the folder, as the file itself is another one after each change. File systems
 * without locks are left to their luck: the last of two changes wins there. */
bool LockFolder(StoreFile &file, StoreAccess access, std::string &error) {
  file.folder = open(FolderOf(file).c_str(), O_RDONLY | O_DIRECTORY | O_CLOEXEC);
  if (file.folder < 0) {
    return Fail(file, std::strerror(errno), error);
  }
  if (access == STORE_LOOK) {
    return faccessat(AT_FDCWD, FolderOf(file).c_str(), W_OK, AT_EACCESS) == 0 ||
           Fail(file, std::strerror(errno), error);
  }
  while (flock(file.folder, LOCK_EX) != 0 && errno == EINTR) {
  }
  return true;
}

bool ReadPlainFile(FILE *input, StoreFile &file, std::string &error) {
  if (fstat(fileno(input), &file.status) != 0) {
    return Fail(file, std::strerror(errno), error);
  }
  if (!S_ISREG(file.status.st_mode)) {
    return Fail(file, S_ISDIR(file.status.st_mode) ? "is a directory" : "is no plain file", error);
  }
  if (file.status.st_size > INT32_MAX) {
    return Fail(file, "is larger than 2 GiB, which no store is", error);
  }
  file.bytes.resize(static_cast<size_t>(file.status.st_size));
  file.bytes.resize(std::fread(file.bytes.data(), 1, file.bytes.size(), input));
  return std::ferror(input) == 0 || Fail(file, std::strerror(errno), error);
}

/* Gives a new file the permissions of the one before, and its owner where that is allowed. */
bool TakePermissions(int output, const StoreFile &file) {
  mode_t mode = file.status.st_mode & (S_IRWXU | S_IRWXG | S_IRWXO);
  if (!file.exists) {
    const mode_t mask = umask(0);
    umask(mask);
    mode = 0666 & ~mask;
  } else if (fchown(output, file.status.st_uid, file.status.st_gid) != 0 &&
             fchown(output, static_cast<uid_t>(-1), file.status.st_gid) != 0) {
    mode &= ~static_cast<mode_t>(S_IRWXG); /* what one group was allowed is not for another */
  }
  return fchmod(output, mode) == 0;
}

/* Writes the temporary file and puts it in place; 0 or the number of the error. */
int Replace(const StoreFile &file, const std::string &bytes) {
  std::string temporary = FolderOf(file) / ".orli-XXXXXX";
  const int made = mkostemp(temporary.data(), O_CLOEXEC);
  if (made < 0) {
    return errno;
  }
  FILE *output = fdopen(made, "wb");
  const bool good = output != nullptr &&
                    std::fwrite(bytes.data(), 1, bytes.size(), output) == bytes.size() &&
                    std::fflush(output) == 0 && TakePermissions(made, file) && fsync(made) == 0 &&
                    rename(temporary.c_str(), file.target.c_str()) == 0;
  const int problem = good ? 0 : errno;
  if (!good) {
    unlink(temporary.c_str());
  }
  static_cast<void>(output != nullptr ? std::fclose(output) : close(made));
  return problem;
}

}  // namespace

bool StoreFileOpen(const std::string &path, StoreAccess access, StoreFile &file,
                   std::string &error) {
  file.path = DisplayName(path);
  file.target = TargetOf(path);
  if (path.empty() || path == "-") {
    error = "a store is a file with a name of its own";
    return false;
  }
  if (access != STORE_READ && !LockFolder(file, access, error)) {
    return false;
  }
  /* Nothing is waited for: a pipe is no store. */
  const int opened = open(file.target.c_str(), O_RDONLY | O_NONBLOCK | O_NOCTTY | O_CLOEXEC);
  FILE *input = opened >= 0 ? fdopen(opened, "rb") : nullptr;
  if (input == nullptr) {
    return (errno == ENOENT && (access == STORE_MAY_CREATE || access == STORE_LOOK)) ||
           Fail(file, std::strerror(errno), error);
  }
  file.exists = true;
  const bool good = ReadPlainFile(input, file, error);
  static_cast<void>(std::fclose(input));
  if (good && access != STORE_READ &&
      faccessat(AT_FDCWD, file.target.c_str(), W_OK, AT_EACCESS) != 0) {
    return Fail(file, std::strerror(errno), error);
  }
  return good;
}

void StoreFileClose(StoreFile &file) {
  if (file.folder >= 0) {
    close(file.folder);
  }
  file.folder = -1;
}

bool StoreFileWrite(const StoreFile &file, const std::string &bytes, std::string &error) {
  /* Who interrupts the program waits until the temporary file is gone; a limit on the size of files
   * is an error like any other. */
  sigset_t interrupts;
  sigset_t before;
  sigemptyset(&interrupts);
  for (const int number : {SIGINT, SIGTERM, SIGHUP, SIGQUIT}) {
    sigaddset(&interrupts, number);
  }
  static_cast<void>(std::signal(SIGXFSZ, SIG_IGN));
  sigprocmask(SIG_BLOCK, &interrupts, &before);
  const int problem = Replace(file, bytes);
  sigprocmask(SIG_SETMASK, &before, nullptr);
  if (problem != 0) {
    return Fail(file, std::string("not written: ") + std::strerror(problem), error);
  }
  /* Some file systems have nothing to flush there. */
  return fsync(file.folder) == 0 || errno == EINVAL ||
         Fail(file, std::string("written, but may not last: ") + std::strerror(errno), error);
}
