// The bytes of one input: a file, standard input, or either compressed by gzip.
#ifndef ORLI11_HOST_BYTE_SOURCE_H
#define ORLI11_HOST_BYTE_SOURCE_H

#include <cstddef>
#include <cstdio>
#include <memory>
#include <string>

struct FileCloser {
  void operator()(FILE *file) const;
};
struct GzipStream;
struct GzipStreamEnd {
  void operator()(GzipStream *stream) const;
};

// An input that is open for reading, from its start as often as wanted. Owns its files.
struct ByteSource {
  std::string path;  // as messages name it
  std::unique_ptr<FILE, FileCloser> file;
  std::unique_ptr<GzipStream, GzipStreamEnd> gzip;  // the decompressor, if the bytes need one
};

// Opens a file by name, or standard input for "-". What cannot be read twice (a pipe) is first
// copied to a temporary file. False with a message in `error`.
bool ByteSourceOpen(const std::string &path, ByteSource &source, std::string &error);

// Moves back to the first byte. False with a message in `error`.
bool ByteSourceRewind(ByteSource &source, std::string &error);

// Reads up to `size` bytes and returns their number in `got`; 0 is the end. False with a message in
// `error` when the input cannot be read or its compressed form is damaged.
bool ByteSourceRead(ByteSource &source, char *bytes, size_t size, size_t &got, std::string &error);

#endif
