#include "host/csv_file.h"

#include <csv.h>
#include <sys/stat.h>

#include <array>
#include <cerrno>
#include <cstring>

#include "host/display.h"

namespace {

constexpr size_t kChunk = 1 << 16;
/* A field larger than this is a closing quote that is missing. */
constexpr size_t kLongestField = size_t{16} << 20;

/* What the two callbacks of the CSV parser work on. */
struct ReadState {
  const CsvFile *csv = nullptr;
  CsvRow row;
  int64_t line = 1;      /* the parser's present line */
  bool begun = false;    /* a piece has been read */
  int lastEnd = 0;       /* byte that ended the row before */
  bool afterEnd = false; /* nothing has come since then */
  bool stopped = false;  /* the rest of the chunk is of no interest */
  bool failed = false;
  CsvRowProc proc = nullptr;
  void *user = nullptr;
  std::string *error = nullptr;
};

std::string At(const CsvFile &csv, int64_t line, const std::string &what) {
  return csv.path + ": line " + std::to_string(line) + ": " + what;
}

void Fail(ReadState &state, const std::string &what) {
  *state.error = what;
  state.stopped = true;
  state.failed = true;
}

/* Line breaks inside a field: "\n", "\r" and the pair of both count one each. */
int64_t BreaksIn(const char *text, size_t length) {
  int64_t breaks = 0;
  for (size_t i = 0; i < length; ++i) {
    if (text[i] == '\n' || (text[i] == '\r' && (i + 1 == length || text[i + 1] != '\n'))) {
      ++breaks;
    }
  }
  return breaks;
}

void OnField(void *field, size_t length, void *user) {
  ReadState &state = *static_cast<ReadState *>(user);
  if (state.stopped) {
    return;
  }
  const char *text = static_cast<const char *>(field);
  if (state.row.starts.empty()) {
    state.row.line = state.line;
  }
  if (length != 0 && std::memchr(text, 0, length) != nullptr) {
    Fail(state, At(*state.csv, state.line, "a zero byte; the file is no text in UTF-8"));
    return;
  }
  state.afterEnd = false;
  state.row.starts.push_back(state.row.bytes.size());
  if (length != 0) {
    state.row.bytes.append(text, length);
  }
  state.row.bytes.push_back('\0');
  state.line += BreaksIn(text, length);
}

void OnRowEnd(int end, void *user) {
  ReadState &state = *static_cast<ReadState *>(user);
  if (state.stopped) {
    return;
  }
  const bool secondOfPair = state.afterEnd && state.lastEnd == '\r' && end == '\n';
  state.lastEnd = end;
  state.afterEnd = !secondOfPair;
  if (secondOfPair) {
    return;
  }
  if (!state.row.starts.empty()) {
    if (!state.proc(state.row, state.user, *state.error)) {
      state.stopped = true;
      state.failed = !state.error->empty();
    }
    state.row.bytes.clear();
    state.row.starts.clear();
  }
  ++state.line;
}

/* The line that the unfinished row or field begins on, and why it is wrong. */
std::string ParserProblem(const CsvFile &csv, const ReadState &state, csv_parser &parser) {
  const int64_t line = state.row.starts.empty() ? state.line : state.row.line;
  if (csv_error(&parser) == CSV_EPARSE) {
    return At(csv, line, "a double quote where none may stand, or one that is never closed");
  }
  return At(csv, line, csv_strerror(csv_error(&parser)));
}

/* One piece of the file, if there is one more, to the parser. */
bool ReadChunk(const CsvFile &csv, csv_parser &parser, ReadState &state) {
  static std::array<char, kChunk> chunk;
  const size_t got = std::fread(chunk.data(), 1, chunk.size(), csv.file);
  const bool marked = !state.begun && got >= 3 && std::memcmp(chunk.data(), "\xEF\xBB\xBF", 3) == 0;
  const size_t mark = marked ? 3 : 0;
  const size_t size = got - mark;
  state.begun = true;
  if (csv_parse(&parser, chunk.data() + mark, size, OnField, OnRowEnd, &state) != size) {
    Fail(state, ParserProblem(csv, state, parser));
  } else if (!state.stopped && csv_get_buffer_size(&parser) > kLongestField) {
    Fail(state, At(csv, state.line, "a field of more than 16 MiB; is a closing quote missing?"));
  }
  return got != 0;
}

/* Puts a copy in a temporary file, which is gone when it is closed, in the place of a pipe. */
bool SpoolToFile(CsvFile &csv, std::string &error) {
  FILE *copy = std::tmpfile();
  std::string chunk(kChunk, '\0');
  size_t got = 0;
  bool good = copy != nullptr;
  while (good && (got = std::fread(chunk.data(), 1, chunk.size(), csv.file)) != 0) {
    good = std::fwrite(chunk.data(), 1, got, copy) == got;
  }
  good = good && std::ferror(csv.file) == 0;
  if (!good) {
    error = csv.path + ": cannot be copied to a temporary file: " + std::strerror(errno);
  }
  CsvClose(csv);
  csv.file = copy;
  return good;
}

}  // namespace

struct CsvReading {
  csv_parser parser = {};
  ReadState state;
};

bool CsvOpen(const char *path, CsvFile &csv, std::string &error) {
  const bool isInput = std::strcmp(path, "-") == 0;
  csv.path = isInput ? "standard input" : DisplayName(path);
  if (*path == '\0') {
    error = "the name of the file is empty";
    return false;
  }
  csv.file = isInput ? stdin : std::fopen(path, "rb");
  struct stat status = {};
  if (csv.file == nullptr || fstat(fileno(csv.file), &status) != 0) {
    error = csv.path + ": " + std::strerror(errno);
    return false;
  }
  if (S_ISDIR(status.st_mode)) {
    error = csv.path + ": is a directory";
    return false;
  }
  return (S_ISREG(status.st_mode) && !isInput) || SpoolToFile(csv, error);
}

void CsvClose(CsvFile &csv) {
  if (csv.file != nullptr && csv.file != stdin) {
    static_cast<void>(std::fclose(csv.file));
  }
  csv.file = nullptr;
}

CsvReadingOwner CsvBegin(CsvFile &csv, CsvRowProc proc, void *user, std::string &error) {
  CsvReadingOwner reading(new CsvReading);
  if (csv_init(&reading->parser, CSV_STRICT | CSV_STRICT_FINI | CSV_REPALL_NL) != 0) {
    error = "no memory";
    return nullptr;
  }
  csv_set_blk_size(&reading->parser, kChunk);
  std::rewind(csv.file);
  error.clear();
  reading->state.csv = &csv;
  reading->state.proc = proc;
  reading->state.user = user;
  reading->state.error = &error;
  return reading;
}

bool CsvReadOn(CsvReading &reading) {
  ReadState &state = reading.state;
  const CsvFile &csv = *state.csv;
  if (state.stopped || ReadChunk(csv, reading.parser, state)) {
    return !state.stopped;
  }
  if (!state.stopped && std::ferror(csv.file) != 0) {
    Fail(state, csv.path + ": " + std::strerror(errno));
  }
  if (!state.stopped && csv_fini(&reading.parser, OnField, OnRowEnd, &state) != 0) {
    Fail(state, ParserProblem(csv, state, reading.parser));
  }
  state.stopped = true;
  return false;
}

void CsvReadingEnd::operator()(CsvReading *reading) const {
  csv_free(&reading->parser);
  delete reading;
}

bool CsvRead(CsvFile &csv, CsvRowProc proc, void *user, std::string &error) {
  const CsvReadingOwner reading = CsvBegin(csv, proc, user, error);
  while (reading != nullptr && CsvReadOn(*reading)) {
  }
  return reading != nullptr && !reading->state.failed;
}

const char *CsvField(const CsvRow &row, size_t index) {
  return row.bytes.data() + row.starts[index];
}
