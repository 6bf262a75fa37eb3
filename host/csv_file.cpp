#include "host/csv_file.h"

#include <algorithm>
#include <array>
#include <cstring>
#include <string_view>

#include "host/display.h"

namespace {

constexpr size_t kReadSize = 1 << 16;
constexpr size_t kBlock = 1 << 17;               // bytes of a block whose rows are not longer
constexpr size_t kLongestRow = size_t{1} << 30;  // places in a block are of 32 bits
constexpr std::string_view kByteOrderMark = "\xEF\xBB\xBF";
constexpr std::string_view kSeparator = "sep=";  // before a delimiter, on a line of its own

// Files that begin with these bytes are not text.
struct ForeignStart {
  std::string_view bytes;
  const char *problem;
};
constexpr ForeignStart kForeignStarts[] = {
    {"\xFF\xFE", "is text in UTF-16; iconv -f UTF-16 -t UTF-8 converts it"},
    {"\xFE\xFF", "is text in UTF-16; iconv -f UTF-16 -t UTF-8 converts it"},
    {"PK\x03\x04", "is a spreadsheet or a zip archive; save the table in it as CSV"},
    {"\xD0\xCF\x11\xE0", "is a spreadsheet; save it as CSV"},
    {"(\xB5/\xFD", "is compressed with zstd; zstd -dc decompresses it"},
    {"\xFD\x37zXZ", "is compressed with xz; xz -dc decompresses it"},
    {"BZh91AY&SY", "is compressed with bzip2; bzip2 -dc decompresses it"},
    {"PAR1\x15", "is a Parquet file; convert it to CSV"},
    {"SQLite format 3", "is a database of SQLite; orli sql --dsn computes there"},
};

// What is skipped at the start of a file, and what it says.
struct Preamble {
  size_t length = 0;      // of the byte-order mark and the line "sep=;"
  int64_t lines = 0;      // in it
  char delimiter = '\0';  // that the line names
};

Preamble PreambleOf(std::string_view start) {
  Preamble preamble;
  if (start.starts_with(kByteOrderMark)) {
    preamble.length = kByteOrderMark.size();
    start.remove_prefix(preamble.length);
  }
  constexpr size_t kPlace = kSeparator.size();
  if (start.starts_with(kSeparator) && start.size() > kPlace + 1) {
    const std::string_view rest = start.substr(kPlace + 1);
    const size_t end = rest.starts_with("\r\n") ? 2 : rest.starts_with('\n') ? 1 : 0;
    const bool separates = std::string_view("\"\r\n").find(start[kPlace]) == std::string::npos;
    if (end != 0 && separates) {
      preamble = {preamble.length + kPlace + 1 + end, 1, start[kPlace]};
    }
  }
  return preamble;
}

// Finds the delimiter in the header: a comma unless it has no comma but semicolons or tabs.
void FindDelimiter(std::string_view start, CsvInput &input) {
  size_t commas = 0;
  size_t semicolons = 0;
  size_t tabs = 0;
  bool quoted = false;
  bool empty = true;
  const Preamble preamble = PreambleOf(start);
  if (preamble.delimiter != '\0') {
    input.delimiter = preamble.delimiter;
    return;
  }
  for (const char byte : start.substr(preamble.length)) {
    const bool lineEnd = byte == '\n' || byte == '\r';
    if (!quoted && lineEnd && !empty) {
      break;
    }
    empty = empty && lineEnd;
    quoted = quoted != (byte == '"');
    if (!quoted) {
      commas += byte == ',' ? 1 : 0;
      semicolons += byte == ';' ? 1 : 0;
      tabs += byte == '\t' ? 1 : 0;
    }
  }
  const bool moreTabs = tabs > semicolons;
  if (commas != 0 || semicolons + tabs == 0) {
    input.delimiter = ',';
    input.other = semicolons + tabs == 0 ? '\0' : moreTabs ? '\t' : ';';
  } else {
    input.delimiter = moreTabs ? '\t' : ';';
    input.other = semicolons == 0 || tabs == 0 ? '\0' : moreTabs ? ';' : '\t';
  }
}

// Checks the start of the input: finds its delimiter, unless given; rejects other encodings.
bool LookAtStart(CsvInput &input, char delimiter, std::string &error) {
  std::array<char, kReadSize> chunk;
  size_t got = 0;
  if (!ByteSourceRewind(input.source, error) ||
      !ByteSourceRead(input.source, chunk.data(), chunk.size(), got, error)) {
    return false;
  }
  const std::string_view start(chunk.data(), got);
  for (const ForeignStart &foreign : kForeignStarts) {
    if (start.starts_with(foreign.bytes)) {
      error = input.source.path + ": " + foreign.problem;
      return false;
    }
  }
  input.delimiter = delimiter;
  if (delimiter == '\0') {
    FindDelimiter(start, input);
  }
  return true;
}

// The offset after the last complete row, that is, after a line end outside quotes. 0 if there is
// none.
size_t EndOfRows(const char *bytes, size_t size) {
  if (std::memchr(bytes, '"', size) == nullptr) {
    const void *end = memrchr(bytes, '\n', size);
    if (end != nullptr) {
      return static_cast<size_t>(static_cast<const char *>(end) - bytes) + 1;
    }
  }
  // A quote within quotes is written twice, so that an even number is before each row.
  bool quoted = std::count(bytes, bytes + size, '"') % 2 != 0;
  for (size_t i = size; i-- > 0;) {
    quoted = quoted != (bytes[i] == '"');
    const bool alone = bytes[i] == '\r' && i + 1 < size && bytes[i + 1] != '\n';
    if (!quoted && (bytes[i] == '\n' || alone)) {
      return i + 1;
    }
  }
  return 0;
}

// Whether there is a row among lines, and not only blanks.
bool HasRow(std::string_view lines, char delimiter) {
  return std::any_of(lines.begin(), lines.end(), [delimiter](char byte) {
    return byte == delimiter || std::strchr(" \t\r\n", byte) == nullptr || byte == '\0';
  });
}

// Whether an unfinished row already has an error, such as a field that is too long.
bool IsWrong(const CsvFile &csv, const CsvBlock &block) {
  CsvBlock parsed = block;
  CsvParse(csv, parsed);
  return !parsed.error.empty();
}

// Whether a file has the same columns as the first one.
bool CheckHeader(const CsvFile &csv, size_t input, const std::vector<std::string> &names,
                 std::string &error) {
  const auto [one, other] =
      std::mismatch(csv.header.begin(), csv.header.end(), names.begin(), names.end());
  if (one == csv.header.end() && other == names.end()) {
    return true;
  }
  const auto shown = [](auto place, auto end) {
    return place == end ? std::string("missing") : "'" + DisplayName(*place) + "'";
  };
  error = csv.Path(input) + ": column " + std::to_string(one - csv.header.begin() + 1) + " is " +
          shown(other, names.end()) + ", but " + shown(one, csv.header.end()) + " in " + csv.Path();
  return false;
}

bool ReadHeader(CsvFile &csv, size_t input, std::vector<std::string> &names, std::string &error) {
  CsvReader reader(csv, input);
  CsvBlock block;
  if (reader.Read(block)) {
    block.header = false;
    CsvSplit(csv, block);
    error = block.Count() == 0 ? block.error : "";
    for (size_t i = 0; block.Count() != 0 && i < block.Fields(0); ++i) {
      names.emplace_back(block.Field(0, i));
    }
  }
  if (error.empty() && names.empty()) {
    error = csv.Path(input) + ": the file is empty";
  }
  return error.empty();
}

}  // namespace

bool CsvReader::Read(CsvBlock &block) {
  block.error.clear();
  block.size = 0;
  block.last = false;
  while (block.size == 0 && block.error.empty() && input_ < csv_->inputs.size()) {
    block.input = input_;
    block.header = !begun_;
    if (begun_ || ByteSourceRewind(csv_->inputs[input_].source, block.error)) {
      Fill(block);
    }
    begun_ = true;
    if (block.last) {
      ++input_;
      begun_ = false;
      line_ = 1;
    }
  }
  return block.size != 0 || !block.error.empty();
}

// Reads until there is a complete row.
void CsvReader::Fill(CsvBlock &block) {
  size_t used = rest_.size();
  block.bytes.resize(std::max(kBlock, 2 * used) + 1);
  rest_.copy(block.bytes.data(), used);
  bool again = true;
  while (again) {
    again = FillMore(block, used);
  }
  rest_.assign(block.bytes, block.size, used - block.size);
  block.line = line_;
  line_ += CsvLineBreaks(block.bytes.data(), block.size);
}

// False when the block is full.
bool CsvReader::FillMore(CsvBlock &block, size_t &used) {
  CsvInput &input = csv_->inputs[input_];
  char *bytes = block.bytes.data();
  size_t got = 0;
  const bool good =
      ByteSourceRead(input.source, bytes + used, block.bytes.size() - 1 - used, got, block.error);
  if (!begun_ && used == 0) {
    const Preamble preamble = PreambleOf({bytes, got});
    std::memmove(bytes, bytes + preamble.length, got - preamble.length);
    got -= preamble.length;
    line_ = 1 + preamble.lines;
    block.last = got == 0 && preamble.length == 0;
  } else {
    block.last = got == 0;
  }
  used += got;
  block.last = block.last && good;
  block.size = block.last ? used : EndOfRows(bytes, used);
  const bool whole = block.size != 0 && (begun_ || HasRow({bytes, block.size}, input.delimiter));
  if (!good || block.last || whole) {
    return false;
  }
  block.size = used;
  if (used > kLongestField && (used > kLongestRow || IsWrong(*csv_, block))) {
    return false;
  }
  block.bytes.resize(std::max(block.bytes.size(), 2 * used + 1));
  return true;
}

bool CsvOpen(const DataOptions &options, CsvFile &csv, std::string &error) {
  if (options.paths.empty()) {
    error = "the name of the file is empty";
    return false;
  }
  if (std::count(options.paths.begin(), options.paths.end(), "-") > 1) {
    error = "standard input can be read once";
    return false;
  }
  for (const std::string &path : options.paths) {
    CsvInput &input = csv.inputs.emplace_back();
    std::vector<std::string> names;
    const size_t index = csv.inputs.size() - 1;
    if (!ByteSourceOpen(path, input.source, error) ||
        !LookAtStart(input, options.delimiter, error) || !ReadHeader(csv, index, names, error)) {
      return false;
    }
    if (index == 0) {
      csv.header = std::move(names);
    } else if (!CheckHeader(csv, index, names, error)) {
      return false;
    }
  }
  return true;
}

struct CsvReading {
  CsvFile *csv;
  CsvRowProc proc;
  void *user;
  std::string *error;
  CsvReader reader;
  CsvBlock block;
  bool failed = false;
};

CsvReadingOwner CsvBegin(CsvFile &csv, CsvRowProc proc, void *user, std::string &error) {
  error.clear();
  return CsvReadingOwner(new CsvReading{&csv, proc, user, &error, CsvReader(csv), {}});
}

bool CsvReadOn(CsvReading &reading) {
  CsvBlock &block = reading.block;
  if (!reading.reader.Read(block)) {
    return false;
  }
  CsvSplit(*reading.csv, block);
  bool more = true;
  for (size_t i = 0; more && i < block.Count(); ++i) {
    more = reading.proc(block.Row(i), reading.user, *reading.error);
  }
  if (more && !block.error.empty()) {
    *reading.error = block.error;
  }
  reading.failed = !reading.error->empty();
  return more && !reading.failed;
}

void CsvReadingEnd::operator()(CsvReading *reading) const {
  delete reading;
}

bool CsvRead(CsvFile &csv, CsvRowProc proc, void *user, std::string &error) {
  const CsvReadingOwner reading = CsvBegin(csv, proc, user, error);
  while (CsvReadOn(*reading)) {
  }
  return !reading->failed;
}
