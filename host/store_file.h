/* store_file.h - the bytes of a store: read as a whole, replaced as a whole. */
#ifndef ORLI11_HOST_STORE_FILE_H
#define ORLI11_HOST_STORE_FILE_H

#include <sys/stat.h>

#include <filesystem>
#include <string>
#include <string_view>

enum StoreAccess {
  kStoreRead,
  kStoreLook,     /* can it be made or changed later? Others may change it until then */
  kStoreChange,   /* nobody else changes a store of the folder meanwhile */
  kStoreMayCreate /* the same for a file that need not be there */
};

struct StoreFile {
  std::string path; /* as messages name it */
  std::string bytes;
  bool exists = false;
  std::filesystem::path target; /* what the path leads to, behind symbolic links */
  struct stat status = {};      /* of the file that is there */
  int folder = -1;              /* its folder, open for who may change the store */
  bool locked = false;          /* the folder: nobody else changes a store of it */
};

/* What the first bytes of a file tell is wrong with it, or nothing. */
using HeadProblem = std::string (*)(std::string_view head);

/* Reads the file, the whole of it only when its first bytes are good. A program that may change a
 * store waits for the others that do, and says so on standard error when that takes long. False
 * with a message, also for a file that is not a regular one or is larger than 2 GiB. StoreFileClose
 * in any case. */
bool StoreFileOpen(const std::string &path, StoreAccess access, HeadProblem headProblem,
                   StoreFile &file, std::string &error);
void StoreFileClose(StoreFile &file);

/* Puts these bytes in the place of the file, with its permissions and access control list: after a
 * failure, told in `error`, or a power cut the old file is there whole, else the new one. Removes
 * what writers that were killed have left in the folder. */
bool StoreFileWrite(const StoreFile &file, const std::string &bytes, std::string &error);

#endif
