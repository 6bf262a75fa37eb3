#include "host/csv_file.h"

#include <csv.h>

#include <algorithm>
#include <array>
#include <cstring>
#include <string_view>

#include "host/display.h"

namespace {

constexpr size_t kChunk = 1 << 16;
/* A field larger than this means a missing closing quote. */
constexpr size_t kLongestField = size_t{16} << 20;
constexpr std::string_view kByteOrderMark = "\xEF\xBB\xBF";
constexpr std::string_view kSeparator = "sep="; /* before a delimiter, on a line of its own */

/* What begins in these ways is no text that can be read. */
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

/* Reads rows from one input; the state of the two callbacks of the CSV parser. */
struct InputState {
  const CsvFile *csv = nullptr;
  CsvRow row;
  int64_t line = 1;      /* the parser's present line */
  bool begun = false;    /* a chunk has been read */
  bool inHeader = true;  /* the first row is yet to come */
  int lastEnd = 0;       /* byte that ended the row before */
  bool afterEnd = false; /* nothing has been read since then */
  bool quotes = false;   /* a field that ends now may have quotes around it */
  bool quoted = false;   /* the chunk has a quote */
  bool zeros = false;    /* a zero byte was read */
  bool stopped = false;  /* the rest of the chunk is not needed */
  bool failed = false;
  bool headerOnly = false; /* stop after the header, which goes to `proc` */
  CsvRowProc proc = nullptr;
  void *user = nullptr;
  std::string *error = nullptr;
};

struct ParserEnd {
  void operator()(csv_parser *parser) const {
    csv_free(parser);
    delete parser;
  }
};
using ParserOwner = std::unique_ptr<csv_parser, ParserEnd>;

std::string At(const InputState &state, int64_t line, const std::string &what) {
  return CsvPlace(*state.csv, state.row.input, line) + ": " + what;
}

void Fail(InputState &state, const std::string &what) {
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
  InputState &state = *static_cast<InputState *>(user);
  if (state.stopped) {
    return;
  }
  const char *text = static_cast<const char *>(field);
  if (state.row.starts.empty()) {
    state.row.line = state.line;
  }
  if (state.zeros && length != 0 && std::memchr(text, 0, length) != nullptr) {
    Fail(state, At(state, state.line, "a zero byte; the file is not text in UTF-8"));
    return;
  }
  state.afterEnd = false;
  state.row.starts.push_back(state.row.bytes.size());
  if (length != 0) {
    state.row.bytes.append(text, length);
  }
  state.row.bytes.push_back('\0');
  state.line += state.quotes ? BreaksIn(text, length) : 0;
}

/* The row is complete. */
void FinishRow(InputState &state) {
  const bool wanted = state.headerOnly || !state.inHeader;
  state.inHeader = false;
  if (wanted && !state.proc(state.row, state.user, *state.error)) {
    state.stopped = true;
    state.failed = !state.error->empty();
  }
  state.stopped = state.stopped || state.headerOnly;
  state.row.bytes.clear();
  state.row.starts.clear();
}

void OnRowEnd(int end, void *user) {
  InputState &state = *static_cast<InputState *>(user);
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
    FinishRow(state);
  }
  ++state.line;
}

/* The line on which the unfinished row or field begins, and the error. */
std::string ParserProblem(const InputState &state, csv_parser &parser) {
  const int64_t line = state.row.starts.empty() ? state.line : state.row.line;
  if (csv_error(&parser) == CSV_EPARSE) {
    return At(state, line, "a double quote in the wrong place, or one that is never closed");
  }
  return At(state, line, csv_strerror(csv_error(&parser)));
}

/* What is skipped at the start of a file, and what it says. */
struct Preamble {
  size_t length = 0;     /* of the byte-order mark and the line "sep=;" */
  int64_t lines = 0;     /* in it */
  char delimiter = '\0'; /* that the line names */
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

ParserOwner NewParser(char delimiter) {
  ParserOwner parser(new csv_parser{});
  if (csv_init(parser.get(), CSV_STRICT | CSV_STRICT_FINI | CSV_REPALL_NL) != 0) {
    return nullptr;
  }
  csv_set_delim(parser.get(), static_cast<unsigned char>(delimiter));
  csv_set_blk_size(parser.get(), kChunk);
  return parser;
}

/* Passes the next chunk of the input to the parser; false at the end of the input. */
bool ReadChunk(ByteSource &source, csv_parser &parser, InputState &state) {
  std::array<char, kChunk> chunk;
  size_t got = 0;
  if (!ByteSourceRead(source, chunk.data(), chunk.size(), got, *state.error)) {
    state.stopped = true;
    state.failed = true;
    return true;
  }
  if (got == 0) {
    return false;
  }
  const Preamble skipped = state.begun ? Preamble() : PreambleOf({chunk.data(), got});
  const size_t mark = skipped.length;
  const size_t size = got - mark;
  state.line += skipped.lines;
  state.begun = true;
  /* Checks once per chunk what can be ignored in it. A quoted field is reported at the byte after
   * its last quote, which may be the first one of the next chunk. */
  const bool quoted = std::memchr(chunk.data(), '"', got) != nullptr;
  state.quotes = quoted || state.quoted;
  state.quoted = quoted;
  state.zeros = state.zeros || std::memchr(chunk.data(), 0, got) != nullptr;
  const size_t parsed = csv_parse(&parser, chunk.data() + mark, size, OnField, OnRowEnd, &state);
  if (!state.stopped && parsed != size) {
    Fail(state, ParserProblem(state, parser));
  } else if (!state.stopped && csv_get_buffer_size(&parser) > kLongestField) {
    Fail(state, At(state, state.line, "a field of more than 16 MiB; is a closing quote missing?"));
  }
  return true;
}

/* Finds the delimiter in the header: a comma unless it has no comma but semicolons or tabs. */
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

/* Checks the start of the input: finds its delimiter, unless given; rejects other encodings. */
bool LookAtStart(CsvInput &input, char delimiter, std::string &error) {
  std::array<char, kChunk> chunk;
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

}  // namespace

struct CsvReading {
  CsvFile *csv = nullptr;
  ParserOwner parser;
  InputState state;
};

namespace {

/* Starts reading an input. False with a message. */
bool BeginInput(CsvReading &reading, size_t index) {
  InputState &state = reading.state;
  state.row.input = index;
  state.line = 1;
  state.begun = state.afterEnd = state.quoted = state.zeros = false;
  state.inHeader = true;
  CsvInput &input = reading.csv->inputs[index];
  reading.parser = NewParser(input.delimiter);
  if (reading.parser == nullptr) {
    *state.error = "out of memory";
    return false;
  }
  return ByteSourceRewind(input.source, *state.error);
}

CsvReadingOwner Begin(CsvFile &csv, size_t input, CsvRowProc proc, void *user, std::string &error) {
  CsvReadingOwner reading(new CsvReading);
  error.clear();
  reading->csv = &csv;
  reading->state.csv = &csv;
  reading->state.proc = proc;
  reading->state.user = user;
  reading->state.error = &error;
  if (!BeginInput(*reading, input)) {
    reading.reset();
  }
  return reading;
}

/* The end of an input: the last row may lack its line end. */
void FinishInput(CsvReading &reading) {
  InputState &state = reading.state;
  if (!state.stopped && csv_fini(reading.parser.get(), OnField, OnRowEnd, &state) != 0) {
    Fail(state, ParserProblem(state, *reading.parser));
  }
}

bool TakeHeader(const CsvRow &row, void *user, std::string & /*error*/) {
  std::vector<std::string> &names = *static_cast<std::vector<std::string> *>(user);
  for (size_t i = 0; i < row.starts.size(); ++i) {
    names.emplace_back(CsvField(row, i));
  }
  return true;
}

bool ReadHeader(CsvFile &csv, size_t input, std::vector<std::string> &names, std::string &error) {
  const CsvReadingOwner reading = Begin(csv, input, TakeHeader, &names, error);
  if (reading == nullptr) {
    return false;
  }
  InputState &state = reading->state;
  state.headerOnly = true;
  while (!state.stopped && ReadChunk(csv.inputs[input].source, *reading->parser, state)) {
  }
  FinishInput(*reading);
  if (!state.failed && names.empty()) {
    error = csv.Path(input) + ": the file is empty";
  }
  return error.empty();
}

/* Whether a file has the same columns as the first one. */
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

}  // namespace

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

CsvReadingOwner CsvBegin(CsvFile &csv, CsvRowProc proc, void *user, std::string &error) {
  return Begin(csv, 0, proc, user, error);
}

bool CsvReadOn(CsvReading &reading) {
  InputState &state = reading.state;
  CsvFile &csv = *reading.csv;
  if (state.stopped || ReadChunk(csv.inputs[state.row.input].source, *reading.parser, state)) {
    return !state.stopped;
  }
  FinishInput(reading);
  const size_t next = state.row.input + 1;
  if (!state.stopped && next < csv.inputs.size() && BeginInput(reading, next)) {
    return true;
  }
  state.failed = !state.error->empty();
  state.stopped = true;
  return false;
}

void CsvReadingEnd::operator()(CsvReading *reading) const {
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

std::string CsvPlace(const CsvFile &csv, size_t input, int64_t line) {
  return csv.Path(input) + ": line " + std::to_string(line);
}
