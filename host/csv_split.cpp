// Blocks of plain rows, split in place.
#include <algorithm>
#include <bit>
#include <cstring>

#include "host/csv_block.h"
#include "host/csv_file.h"

#if defined(__SSE2__)
#include <emmintrin.h>
#endif

namespace {

constexpr size_t kStep = 16;  // bytes that are compared at once

bool IsBlank(char byte) {
  return byte == ' ' || byte == '\t';
}

bool AllBlank(const char *begin, const char *end) {
  return std::all_of(begin, end, IsBlank);
}

// The special bytes of a block in order: delimiters, line ends and quotes.
class Marks {
 public:
  Marks(const char *bytes, size_t size, char delimiter)
      : bytes_(bytes), size_(size), delimiter_(delimiter) {
    Seek(0);
  }

  // The position of the next one, which must exist.
  size_t Next() {
    while (bits_ == 0) {
      base_ += kStep;
      bits_ = BitsAt(base_);
    }
    const size_t place = base_ + static_cast<size_t>(std::countr_zero(bits_));
    bits_ &= bits_ - 1;
    return place;
  }

  // Continues at a position.
  void Seek(size_t place) {
    base_ = place;
    bits_ = BitsAt(place);
  }

 private:
  bool IsMark(char byte) const {
    return byte == delimiter_ || byte == '\n' || byte == '\r' || byte == '"';
  }

  // A bit for each of the next bytes.
  uint32_t BitsAt(size_t place) const {
#if defined(__SSE2__)
    if (place + kStep <= size_) {
      const __m128i some = _mm_loadu_si128(reinterpret_cast<const __m128i *>(bytes_ + place));
      const auto equal = [some](char byte) { return _mm_cmpeq_epi8(some, _mm_set1_epi8(byte)); };
      return static_cast<uint32_t>(_mm_movemask_epi8(_mm_or_si128(
          _mm_or_si128(equal(delimiter_), equal('\n')), _mm_or_si128(equal('\r'), equal('"')))));
    }
#endif
    uint32_t bits = 0;
    for (size_t i = place; i < std::min(place + kStep, size_); ++i) {
      bits |= (IsMark(bytes_[i]) ? 1U : 0U) << (i - place);
    }
    return bits;
  }

  const char *bytes_;
  size_t size_;
  char delimiter_;
  size_t base_ = 0;
  uint32_t bits_ = 0;
};

struct Splitter {
  CsvBlock *block;
  char delimiter;
  char *bytes;
  size_t size;
  size_t field = 0;       // start of the current field
  bool quoted = false;    // it was enclosed in quotes, and has ended
  uint32_t rowStart = 0;  // the first field of the current row
  uint32_t rowLine = 0;   // lines before the current row
  uint32_t line = 0;      // lines before the current position
  char lastEnd = '\0';    // the line end directly before the current row

  bool InRow() const { return block->starts.size() != rowStart; }
  void EndField(size_t end);
  void EndRow(char end);
  bool TakeQuoted(Marks &marks, size_t quote);
};

// Ends a field. Blanks around it are not part of it.
void Splitter::EndField(size_t end) {
  if (quoted) {
    quoted = false;
    return;
  }
  while (field < end && IsBlank(bytes[field])) {
    ++field;
  }
  while (end > field && IsBlank(bytes[end - 1])) {
    --end;
  }
  bytes[end] = '\0';
  block->starts.push_back(static_cast<uint32_t>(field));
}

// A line end after a field, or of an empty line.
void Splitter::EndRow(char end) {
  const bool secondOfPair = !InRow() && lastEnd == '\r' && end == '\n';
  lastEnd = secondOfPair ? '\0' : end;
  line += secondOfPair ? 0 : 1;
  if (InRow()) {
    block->rows.push_back({rowStart, rowLine});
    rowStart = static_cast<uint32_t>(block->starts.size());
  }
  rowLine = line;
}

// A field enclosed in quotes; false when there are quotes in it or other bytes around it.
bool Splitter::TakeQuoted(Marks &marks, size_t quote) {
  const char *closing =
      static_cast<const char *>(std::memchr(bytes + quote + 1, '"', size - quote - 1));
  const size_t end = closing == nullptr ? size : static_cast<size_t>(closing - bytes);
  if (!AllBlank(bytes + field, bytes + quote) || end + 1 >= size ||
      (bytes[end + 1] != delimiter && bytes[end + 1] != '\n' && bytes[end + 1] != '\r')) {
    return false;
  }
  line += static_cast<uint32_t>(CsvLineBreaks(bytes + quote + 1, end - quote - 1));
  bytes[end] = '\0';
  block->starts.push_back(static_cast<uint32_t>(quote + 1));
  quoted = true;
  marks.Seek(end + 1);
  return true;
}

// Splits a block that ends with a line end. False, with its bytes changed, for other fields than
// plain ones.
bool SplitPlain(char delimiter, CsvBlock &block, size_t size) {
  Splitter splitter = {&block, delimiter, block.bytes.data(), size};
  Marks marks(splitter.bytes, size, delimiter);
  for (size_t place = 0; splitter.field < size;) {
    place = marks.Next();
    const char mark = splitter.bytes[place];
    if (mark == '"') {
      if (!splitter.TakeQuoted(marks, place)) {
        return false;
      }
      continue;
    }
    const bool ends = mark != delimiter;
    if (!ends || splitter.InRow() || splitter.quoted ||
        !AllBlank(splitter.bytes + splitter.field, splitter.bytes + place)) {
      splitter.EndField(place);
    }
    if (ends) {
      splitter.EndRow(mark);
    }
    splitter.field = place + 1;
  }
  block.rows.push_back({splitter.rowStart, splitter.line});
  return true;
}

}  // namespace

void CsvSplit(const CsvFile &csv, CsvBlock &block) {
  block.starts.clear();
  block.rows.clear();
  const char *bytes = block.bytes.data();
  // The parser reports zero bytes and fields that are too long.
  const bool wrong = block.size > kLongestField || std::memchr(bytes, 0, block.size) != nullptr;
  const bool quotes = std::memchr(bytes, '"', block.size) != nullptr;
  const std::string before = quotes ? block.bytes : std::string();
  size_t size = block.size;
  if (size != 0 && bytes[size - 1] != '\n' && bytes[size - 1] != '\r') {
    block.bytes[size++] = '\n';  // the last line of a file may have none
  }
  if (wrong || !SplitPlain(csv.inputs[block.input].delimiter, block, size)) {
    if (quotes) {
      block.bytes = before;
    }
    block.starts.clear();
    block.rows.clear();
    CsvParse(csv, block);
  }
  if (block.header && block.Count() != 0) {
    block.rows.erase(block.rows.begin());
  }
}
