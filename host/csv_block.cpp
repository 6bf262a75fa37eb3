#include "host/csv_block.h"

#include <algorithm>
#include <cstring>

int64_t CsvLineBreaks(const char *bytes, size_t size) {
  if (size == 0) {
    return 0;
  }
  int64_t breaks = std::count(bytes, bytes + size, '\n');
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
