#include "host/csv_block.h"

#include <algorithm>
#include <cstring>

namespace {

// Eight bytes at a time, since every byte of a file is counted here.
int64_t CountByte(const char *bytes, size_t size, char byte) {
  constexpr uint64_t kOnes = UINT64_C(0x0101010101010101);
  constexpr uint64_t kLows = 0x7F * kOnes;
  constexpr uint64_t kEvenBytes = UINT64_C(0x00FF00FF00FF00FF);
  constexpr size_t kMostWords = 255;  // that the counts, of a byte each, hold
  const uint64_t wanted = kOnes * static_cast<unsigned char>(byte);
  int64_t count = 0;
  while (size >= sizeof wanted) {
    const size_t words = std::min(size / sizeof wanted, kMostWords);
    uint64_t counts = 0;
    for (size_t i = 0; i < words; ++i, bytes += sizeof wanted) {
      uint64_t word = 0;
      std::memcpy(&word, bytes, sizeof word);
      word ^= wanted;
      counts += ~(((word & kLows) + kLows) | word | kLows) >> 7;
    }
    const uint64_t pairs = (counts & kEvenBytes) + ((counts >> 8) & kEvenBytes);
    count += static_cast<int64_t>(pairs * UINT64_C(0x0001000100010001) >> 48);
    size -= words * sizeof wanted;
  }
  return count + std::count(bytes, bytes + size, byte);
}

}  // namespace

int64_t CsvLineBreaks(const char *bytes, size_t size) {
  if (size == 0) {
    return 0;
  }
  int64_t breaks = CountByte(bytes, size, '\n');
  const char *end = bytes + size;
  for (const char *at = bytes; at != end; ++at) {
    at = static_cast<const char *>(std::memchr(at, '\r', static_cast<size_t>(end - at)));
    if (at == nullptr) {
      break;
    }
    breaks += at + 1 == end || at[1] != '\n' ? 1 : 0;
  }
  return breaks;
}

CsvRowCopy::CsvRowCopy(const CsvRow &row) : input(row.input), line(row.line) {
  for (size_t i = 0; i < row.fields; ++i) {
    starts.push_back(static_cast<uint32_t>(bytes.size()));
    bytes += CsvField(row, i);
    bytes += '\0';
  }
}
