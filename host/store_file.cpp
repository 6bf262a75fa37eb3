#include "host/store_file.h"

#include <fcntl.h>
#include <sys/acl.h>
#include <sys/file.h>
#include <unistd.h>

#include <algorithm>
#include <cerrno>
#include <chrono>
#include <climits>
#include <csignal>
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <memory>
#include <thread>
#include <type_traits>

#include "host/display.h"
#include "host/errors.h"

namespace {

constexpr int kMostLinks = 40;
constexpr size_t kHeadBytes = 4096;
constexpr mode_t kNewFile = S_IRUSR | S_IWUSR | S_IRGRP | S_IWGRP | S_IROTH | S_IWOTH;
constexpr std::chrono::milliseconds kLockTry(20);
constexpr std::chrono::seconds kLockPatience(1);

// Names of temporary files: process and number between these two.
constexpr std::string_view kTemporaryStart = ".orli-";
constexpr std::string_view kTemporaryEnd = ".tmp";

bool Fail(const StoreFile &file, const std::string &what, std::string &error) {
  error = file.path + ": " + what;
  return false;
}

// Follows symbolic links itself: the last may refer to a file that does not exist yet.
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

// Waits for the lock, and reports it if that takes long. False when the file system has no
// locks.
bool WaitForLock(const StoreFile &file) {
  const auto start = std::chrono::steady_clock::now();
  while (flock(file.folder, LOCK_EX | LOCK_NB) != 0) {
    if (errno != EWOULDBLOCK && errno != EINTR) {
      return false;
    }
    if (std::chrono::steady_clock::now() - start >= kLockPatience) {
      Complain(file.path + ": waiting for another program that changes a store in this folder",
               kExitGood);
      int locked = 0;
      do {
        locked = flock(file.folder, LOCK_EX);
      } while (locked != 0 && errno == EINTR);
      return locked == 0;
    }
    std::this_thread::sleep_for(kLockTry);
  }
  return true;
}

// The folder is locked, as the file itself is replaced at each change. On a file system without
// locks the last of two changes wins.
bool LockFolder(StoreFile &file, StoreAccess access, std::string &error) {
  file.folder = open(FolderOf(file).c_str(), O_RDONLY | O_DIRECTORY | O_CLOEXEC);
  if (file.folder < 0) {
    return Fail(file, std::strerror(errno), error);
  }
  if (access == kStoreLook) {
    return faccessat(AT_FDCWD, FolderOf(file).c_str(), W_OK, AT_EACCESS) == 0 ||
           Fail(file, std::strerror(errno), error);
  }
  file.locked = WaitForLock(file);
  return true;
}

// Appends up to `count` bytes of a file.
bool ReadBytes(FILE *input, size_t count, StoreFile &file, std::string &error) {
  const size_t before = file.bytes.size();
  file.bytes.resize(before + count);
  file.bytes.resize(before + std::fread(file.bytes.data() + before, 1, count, input));
  return std::ferror(input) == 0 || Fail(file, std::strerror(errno), error);
}

bool ReadPlainFile(FILE *input, HeadProblem headProblem, StoreFile &file, std::string &error) {
  if (fstat(fileno(input), &file.status) != 0) {
    return Fail(file, std::strerror(errno), error);
  }
  if (!S_ISREG(file.status.st_mode)) {
    return Fail(file, S_ISDIR(file.status.st_mode) ? "is a directory" : "is not a regular file",
                error);
  }
  if (file.status.st_size > INT32_MAX) {
    return Fail(file, "is larger than 2 GiB, which no store is", error);
  }
  const auto size = static_cast<size_t>(file.status.st_size);
  const size_t head = std::min(size, kHeadBytes);
  if (!ReadBytes(input, head, file, error)) {
    return false;
  }
  const std::string problem = headProblem(file.bytes);
  return problem.empty() ? ReadBytes(input, size - head, file, error) : Fail(file, problem, error);
}

struct AclFree {
  void operator()(acl_t acl) const { acl_free(acl); }
};
using Acl = std::unique_ptr<std::remove_pointer_t<acl_t>, AclFree>;

// The owning group's entry of an access control list, null when it has none.
acl_entry_t OwningGroup(acl_t acl) {
  acl_entry_t entry = nullptr;
  acl_tag_t tag = ACL_UNDEFINED_TAG;
  for (int which = ACL_FIRST_ENTRY; acl_get_entry(acl, which, &entry) == 1;
       which = ACL_NEXT_ENTRY) {
    if (acl_get_tag_type(entry, &tag) == 0 && tag == ACL_GROUP_OBJ) {
      return entry;
    }
  }
  return nullptr;
}

// Copies the access control list to a file from the one that it replaces.
bool TakeAcl(int output, const StoreFile &file, bool groupKept) {
  const Acl acl(acl_get_file(file.target.c_str(), ACL_TYPE_ACCESS));
  if (acl == nullptr) {
    return false;
  }
  if (!groupKept) {
    acl_permset_t allowed = nullptr;
    acl_entry_t group = OwningGroup(acl.get());
    if (group == nullptr || acl_get_permset(group, &allowed) != 0 ||
        acl_clear_perms(allowed) != 0) {
      return false;
    }
  }
  return acl_set_fd(output, acl.get()) == 0;
}

// Copies the permissions to a file from the one that it replaces, and its owner where that is
// allowed. Permissions of one group are not given to another.
bool TakePermissions(int output, const StoreFile &file) {
  const struct stat &status = file.status;
  const bool groupKept = fchown(output, status.st_uid, status.st_gid) == 0 ||
                         fchown(output, static_cast<uid_t>(-1), status.st_gid) == 0;
  if (TakeAcl(output, file, groupKept)) {
    return true;
  }
  const mode_t kept = groupKept ? S_IRWXU | S_IRWXG | S_IRWXO : S_IRWXU | S_IRWXO;
  // A file system without access control lists has only the mode, and so does a file that was
  // deleted meanwhile.
  return (errno == ENOTSUP || errno == ENOENT) && fchmod(output, status.st_mode & kept) == 0;
}

bool IsTemporary(std::string_view name) {
  if (name.size() < kTemporaryStart.size() + kTemporaryEnd.size() ||
      name.substr(0, kTemporaryStart.size()) != kTemporaryStart ||
      name.substr(name.size() - kTemporaryEnd.size()) != kTemporaryEnd) {
    return false;
  }
  name.remove_prefix(kTemporaryStart.size());
  name.remove_suffix(kTemporaryEnd.size());
  return name.find_first_not_of("-0123456789") == std::string_view::npos;
}

// Removes the temporary files of writers that were killed. Requires the lock, so that there is no
// other writer.
void SweepTemporaries(const StoreFile &file) {
  std::error_code failed;
  for (std::filesystem::directory_iterator at(FolderOf(file), failed), end; !failed && at != end;
       at.increment(failed)) {
    if (IsTemporary(at->path().filename().native())) {
      unlink(at->path().c_str());
    }
  }
}

// Opens a temporary file in the folder of the store; its name, and -1 with errno on failure. A file
// that replaces another one is accessible only to its owner until it has the permissions of that
// one.
int OpenTemporary(const StoreFile &file, std::string &name) {
  const std::string start =
      FolderOf(file) / (std::string(kTemporaryStart) + std::to_string(getpid()));
  for (unsigned number = 0;; ++number) {
    name = start + '-' + std::to_string(number) + std::string(kTemporaryEnd);
    const int opened = open(name.c_str(), O_WRONLY | O_CREAT | O_EXCL | O_CLOEXEC,
                            file.exists ? S_IRUSR | S_IWUSR : kNewFile);
    if (opened >= 0 || errno != EEXIST) {
      return opened;
    }
  }
}

// Writes the temporary file and renames it into place; 0 or errno.
int Replace(const StoreFile &file, const std::string &bytes) {
  if (file.locked) {
    SweepTemporaries(file);
  }
  std::string temporary;
  const int made = OpenTemporary(file, temporary);
  if (made < 0) {
    return errno;
  }
  FILE *output = fdopen(made, "wb");
  const bool good = output != nullptr &&
                    std::fwrite(bytes.data(), 1, bytes.size(), output) == bytes.size() &&
                    std::fflush(output) == 0 && (!file.exists || TakePermissions(made, file)) &&
                    fsync(made) == 0 && rename(temporary.c_str(), file.target.c_str()) == 0;
  const int problem = good ? 0 : errno;
  if (!good) {
    unlink(temporary.c_str());
  }
  static_cast<void>(output != nullptr ? std::fclose(output) : close(made));
  return problem;
}

}  // namespace

bool StoreFileOpen(const std::string &path, StoreAccess access, HeadProblem headProblem,
                   StoreFile &file, std::string &error) {
  file.path = DisplayName(path);
  file.target = TargetOf(path);
  if (path.empty() || path == "-") {
    error = "a store is a file with a name of its own";
    return false;
  }
  if (access != kStoreRead && !LockFolder(file, access, error)) {
    return false;
  }
  // Without waiting: a pipe is not a store.
  const int opened = open(file.target.c_str(), O_RDONLY | O_NONBLOCK | O_NOCTTY | O_CLOEXEC);
  FILE *input = opened >= 0 ? fdopen(opened, "rb") : nullptr;
  if (input == nullptr) {
    return (errno == ENOENT && (access == kStoreMayCreate || access == kStoreLook)) ||
           Fail(file, std::strerror(errno), error);
  }
  file.exists = true;
  const bool good = ReadPlainFile(input, headProblem, file, error);
  static_cast<void>(std::fclose(input));
  if (good && access != kStoreRead &&
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
  file.locked = false;
}

bool StoreFileWrite(const StoreFile &file, const std::string &bytes, std::string &error) {
  // Interrupts are held until the temporary file is removed; a limit on the size of files is an
  // error like any other.
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
  // Some file systems cannot flush a folder.
  return fsync(file.folder) == 0 || errno == EINVAL ||
         Fail(file, std::string("written, but may not last: ") + std::strerror(errno), error);
}
