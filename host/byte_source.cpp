#include "host/byte_source.h"

#include <sys/stat.h>
#include <unistd.h>
#include <zlib.h>

#include <algorithm>
#include <array>
#include <cerrno>
#include <cstring>

#include "host/display.h"

namespace {

constexpr size_t kChunk = 1 << 16;
constexpr std::array<unsigned char, 2> kGzipMark = {0x1F, 0x8B};

// Replaces a pipe by a temporary file with the same bytes, which is deleted when it is closed.
bool SpoolToFile(ByteSource &source, std::string &error) {
  std::unique_ptr<FILE, FileCloser> copy(std::tmpfile());
  std::string chunk(kChunk, '\0');
  size_t got = 0;
  bool good = copy != nullptr;
  while (good && (got = std::fread(chunk.data(), 1, chunk.size(), source.file.get())) != 0) {
    good = std::fwrite(chunk.data(), 1, got, copy.get()) == got;
  }
  good = good && std::ferror(source.file.get()) == 0 && std::fflush(copy.get()) == 0;
  if (!good) {
    error = source.path + ": cannot be copied to a temporary file: " + std::strerror(errno);
  }
  source.file = std::move(copy);
  return good;
}

// Lets the decompressor read the file when it begins like a compressed file.
bool Decompress(ByteSource &source, std::string &error) {
  std::array<unsigned char, kGzipMark.size()> start = {};
  std::rewind(source.file.get());
  const size_t got = std::fread(start.data(), 1, start.size(), source.file.get());
  std::rewind(source.file.get());
  if (got != start.size() || start != kGzipMark) {
    return true;
  }
  const int descriptor = dup(fileno(source.file.get()));
  if (descriptor >= 0 && lseek(descriptor, 0, SEEK_SET) == 0) {
    source.gzip.reset(gzdopen(descriptor, "rb"));
  }
  if (source.gzip == nullptr) {
    error = source.path + ": cannot be decompressed: " + std::strerror(errno);
    if (descriptor >= 0) {
      close(descriptor);
    }
  }
  return source.gzip != nullptr;
}

bool ReadCompressed(ByteSource &source, char *bytes, size_t size, size_t &got, std::string &error) {
  const int count = gzread(source.gzip.get(), bytes, static_cast<unsigned>(size));
  int problem = Z_OK;
  const std::string words = gzerror(source.gzip.get(), &problem);
  got = count > 0 ? static_cast<size_t>(count) : 0;
  if (count > 0 || (count == 0 && problem == Z_OK)) {
    return true;
  }
  if (problem == Z_BUF_ERROR) {
    error = source.path + ": the compressed file is cut short";
  } else if (problem == Z_ERRNO) {
    error = source.path + ": " + std::strerror(errno);
  } else {
    // The library's message begins with a file name that it has invented.
    error = source.path + ": the compressed file is damaged: " +
            words.substr(std::min(words.rfind(": ") + 2, words.size()));
  }
  return false;
}

}  // namespace

void FileCloser::operator()(FILE *file) const {
  if (file != stdin) {
    static_cast<void>(std::fclose(file));
  }
}

void GzipCloser::operator()(gzFile_s *file) const {
  static_cast<void>(gzclose(file));
}

bool ByteSourceOpen(const std::string &path, ByteSource &source, std::string &error) {
  const bool isInput = path == "-";
  source.path = isInput ? "standard input" : DisplayName(path);
  if (path.empty()) {
    error = "the name of the file is empty";
    return false;
  }
  source.file.reset(isInput ? stdin : std::fopen(path.c_str(), "rb"));
  struct stat status = {};
  if (source.file == nullptr || fstat(fileno(source.file.get()), &status) != 0) {
    error = source.path + ": " + std::strerror(errno);
    return false;
  }
  if (S_ISDIR(status.st_mode)) {
    error = source.path + ": is a directory";
    return false;
  }
  return ((S_ISREG(status.st_mode) && !isInput) || SpoolToFile(source, error)) &&
         Decompress(source, error);
}

bool ByteSourceRewind(ByteSource &source, std::string &error) {
  std::rewind(source.file.get());
  const bool good = source.gzip == nullptr || gzrewind(source.gzip.get()) == 0;
  if (!good) {
    error = source.path + ": cannot be read again";
  }
  return good;
}

bool ByteSourceRead(ByteSource &source, char *bytes, size_t size, size_t &got, std::string &error) {
  if (source.gzip != nullptr) {
    return ReadCompressed(source, bytes, size, got, error);
  }
  got = std::fread(bytes, 1, size, source.file.get());
  const bool good = got != 0 || std::ferror(source.file.get()) == 0;
  if (!good) {
    error = source.path + ": " + std::strerror(errno);
  }
  return good;
}
