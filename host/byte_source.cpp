#include "host/byte_source.h"

#include <sys/stat.h>
#include <zlib.h>

#include <array>
#include <cerrno>
#include <cstring>

#include "host/display.h"

namespace {

constexpr size_t kChunk = 1 << 16;
constexpr std::array<unsigned char, 2> kGzipMark = {0x1F, 0x8B};

}  // namespace

// The state of a decompression; a file may have several parts, each compressed on its own.
struct GzipStream {
  z_stream state = {};
  bool ended = false;  // after a part, and no other one has begun
  std::string error;   // at the bytes that follow
  std::array<unsigned char, kChunk> input;
};

namespace {

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

// Creates a decompressor if the file begins like a compressed one.
bool Decompress(ByteSource &source, std::string &error) {
  std::array<unsigned char, kGzipMark.size()> start = {};
  std::rewind(source.file.get());
  const size_t got = std::fread(start.data(), 1, start.size(), source.file.get());
  std::rewind(source.file.get());
  if (got != start.size() || start != kGzipMark) {
    return true;
  }
  auto gzip = std::make_unique<GzipStream>();
  constexpr int kGzipFormat = 16;  // added to the bits of the window
  if (inflateInit2(&gzip->state, MAX_WBITS + kGzipFormat) != Z_OK) {
    error = source.path + ": out of memory";
    return false;
  }
  source.gzip.reset(gzip.release());
  return true;
}

// Reads on where the decompressor has no more bytes. False at the end of the file, and with a
// message if it cannot be read or ends within compressed data.
bool FillCompressed(ByteSource &source, std::string &error) {
  GzipStream &gzip = *source.gzip;
  gzip.state.next_in = gzip.input.data();
  gzip.state.avail_in =
      static_cast<unsigned>(std::fread(gzip.input.data(), 1, gzip.input.size(), source.file.get()));
  if (gzip.state.avail_in != 0) {
    return true;
  }
  if (std::ferror(source.file.get()) != 0) {
    error = source.path + ": " + std::strerror(errno);
  } else if (!gzip.ended) {
    error = source.path + ": the compressed file is cut short";
  }
  return false;
}

// After compressed data: more of it may follow, and zeros that fill a block. Other bytes could be
// rows of a file whose parts were joined wrongly, so they are not ignored.
bool BeginNextPart(ByteSource &source, std::string &error) {
  GzipStream &gzip = *source.gzip;
  if (*gzip.state.next_in == 0) {
    ++gzip.state.next_in;
    --gzip.state.avail_in;
    return true;
  }
  if (*gzip.state.next_in != kGzipMark[0]) {
    error = source.path + ": other bytes follow the compressed data; gzip -dc ignores them";
    return false;
  }
  gzip.ended = false;
  return inflateReset(&gzip.state) == Z_OK;
}

bool ReadCompressed(ByteSource &source, char *bytes, size_t size, size_t &got, std::string &error) {
  GzipStream &gzip = *source.gzip;
  gzip.state.next_out = reinterpret_cast<unsigned char *>(bytes);
  gzip.state.avail_out = static_cast<unsigned>(size);
  bool more = gzip.error.empty();
  while (more && gzip.state.avail_out != 0) {
    if (gzip.state.avail_in == 0) {
      more = FillCompressed(source, gzip.error);
    } else if (gzip.ended) {
      more = BeginNextPart(source, gzip.error);
    } else {
      const int result = inflate(&gzip.state, Z_NO_FLUSH);
      gzip.ended = result == Z_STREAM_END;
      more = gzip.ended || result == Z_OK || result == Z_BUF_ERROR;
      if (result == Z_MEM_ERROR) {
        gzip.error = source.path + ": out of memory";
      } else if (!more) {
        gzip.error = source.path + ": the compressed file is damaged: " +
                     (gzip.state.msg == nullptr ? "it needs a dictionary" : gzip.state.msg);
      }
    }
  }
  // What precedes an error is returned first.
  got = size - gzip.state.avail_out;
  error = got == 0 ? gzip.error : error;
  return got != 0 || gzip.error.empty();
}

}  // namespace

void FileCloser::operator()(FILE *file) const {
  if (file != stdin) {
    static_cast<void>(std::fclose(file));
  }
}

void GzipStreamEnd::operator()(GzipStream *stream) const {
  inflateEnd(&stream->state);
  delete stream;
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
  if (source.gzip == nullptr) {
    return true;
  }
  source.gzip->state.avail_in = 0;
  source.gzip->ended = false;
  source.gzip->error.clear();
  const bool good = inflateReset(&source.gzip->state) == Z_OK;
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
