// The bytes of a store: read as a whole, replaced as a whole.
#ifndef ORLI11_HOST_STORE_FILE_H
#define ORLI11_HOST_STORE_FILE_H

#include <sys/stat.h>

#include <filesystem>
#include <string>
#include <string_view>

enum StoreAccess {
  kStoreRead,
  // Check whether it can be created or changed later; others may change it until then.
  kStoreLook,
  kStoreChange,    // no other program changes a store of the folder meanwhile
  kStoreMayCreate  // the same for a file that need not be there
};

struct StoreFile {
  std::string path;  // as messages name it
  std::string bytes;
  bool exists = false;
  std::filesystem::path target;  // the target of the path after symbolic links
  struct stat status = {};       // of the file that is there
  int folder = -1;               // its folder, open for programs that may change the store
  bool locked = false;           // the folder is locked: no other program changes a store in it
};

// The error that the first bytes of a file show, or nothing.
using HeadProblem = std::string (*)(std::string_view head);

// Reads the file, completely only when its first bytes are valid. A program that may change a store
// waits for others that do, and says so on standard error when that takes long. False with a
// message, also for a file that is not a regular one or is larger than 2 GiB. StoreFileClose in any
// case.
bool StoreFileOpen(const std::string &path, StoreAccess access, HeadProblem headProblem,
                   StoreFile &file, std::string &error);
void StoreFileClose(StoreFile &file);

// Replaces the file by these bytes, with its permissions and access control list: after a failure,
// described in `error`, or a power cut the old file is intact, else the new one is complete.
// Removes temporary files of killed writers from the folder.
bool StoreFileWrite(const StoreFile &file, const std::string &bytes, std::string &error);

#endif
