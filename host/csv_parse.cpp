// Blocks with all forms of fields, split by the CSV parser.
#include <csv.h>

#include <algorithm>
#include <cstring>
#include <memory>
#include <new>
#include <string_view>

#include "host/csv_block.h"
#include "host/csv_file.h"

namespace {

constexpr size_t kParseSize = 1 << 16;

// The state of the two callbacks of the parser.
struct State {
  const CsvFile *csv;
  CsvBlock *block;
  std::string fields;  // each with a terminating zero
  uint32_t rowStart = 0;
  uint32_t rowLine = 0;
  uint32_t line = 0;      // lines of the block before the parser's present one
  int lastEnd = 0;        // byte that ended the row before
  bool afterEnd = false;  // nothing has been read since then
};

struct ParserEnd {
  void operator()(csv_parser *parser) const {
    csv_free(parser);
    delete parser;
  }
};
using ParserOwner = std::unique_ptr<csv_parser, ParserEnd>;

ParserOwner NewParser(char delimiter) {
  ParserOwner parser(new csv_parser{});
  if (csv_init(parser.get(), CSV_STRICT | CSV_STRICT_FINI | CSV_REPALL_NL) != 0) {
    throw std::bad_alloc();
  }
  csv_set_delim(parser.get(), static_cast<unsigned char>(delimiter));
  csv_set_blk_size(parser.get(), kParseSize);
  return parser;
}

bool InRow(const State &state) {
  return state.block->starts.size() != state.rowStart;
}

void Fail(State &state, uint32_t line, const char *what) {
  CsvBlock &block = *state.block;
  block.error = CsvPlace(*state.csv, block.input, block.line + line) + ": " + what;
}

void OnField(void *field, size_t length, void *user) {
  State &state = *static_cast<State *>(user);
  if (!state.block->error.empty()) {
    return;
  }
  const std::string_view text(length == 0 ? "" : static_cast<const char *>(field), length);
  if (!InRow(state)) {
    state.rowLine = state.line;
  }
  if (text.find('\0') != std::string_view::npos) {
    Fail(state, state.line, "a zero byte; the file is not text in UTF-8");
    return;
  }
  state.afterEnd = false;
  state.block->starts.push_back(static_cast<uint32_t>(state.fields.size()));
  state.fields += text;
  state.fields += '\0';
  state.line += static_cast<uint32_t>(CsvLineBreaks(text.data(), length));
}

void OnRowEnd(int end, void *user) {
  State &state = *static_cast<State *>(user);
  if (!state.block->error.empty()) {
    return;
  }
  const bool secondOfPair = state.afterEnd && state.lastEnd == '\r' && end == '\n';
  state.lastEnd = end;
  state.afterEnd = !secondOfPair;
  if (secondOfPair) {
    return;
  }
  if (InRow(state)) {
    state.block->rows.push_back({state.rowStart, state.rowLine});
    state.rowStart = static_cast<uint32_t>(state.block->starts.size());
  }
  ++state.line;
}

// The line on which the unfinished row or field begins, and the error.
void FailAsParser(State &state, csv_parser &parser) {
  Fail(state, InRow(state) ? state.rowLine : state.line,
       csv_error(&parser) == CSV_EPARSE
           ? "a double quote in the wrong place, or one that is never closed"
           : csv_strerror(csv_error(&parser)));
}

}  // namespace

void CsvParse(const CsvFile &csv, CsvBlock &block) {
  const ParserOwner parser = NewParser(csv.inputs[block.input].delimiter);
  std::string failure;
  failure.swap(block.error);  // after these rows
  State state = {&csv, &block, {}};
  state.fields.reserve(block.size + 1);
  for (size_t at = 0; at < block.size && block.error.empty(); at += kParseSize) {
    const size_t size = std::min(kParseSize, block.size - at);
    const size_t parsed =
        csv_parse(parser.get(), block.bytes.data() + at, size, OnField, OnRowEnd, &state);
    if (block.error.empty() && parsed != size) {
      FailAsParser(state, *parser);
    } else if (block.error.empty() && csv_get_buffer_size(parser.get()) > kLongestField) {
      Fail(state, state.line, "a field of more than 16 MiB; is a closing quote missing?");
    }
  }
  if (block.error.empty() && block.last && csv_fini(parser.get(), OnField, OnRowEnd, &state) != 0) {
    FailAsParser(state, *parser);
  }
  // An unfinished row is left out.
  block.starts.resize(state.rowStart);
  block.rows.push_back({state.rowStart, state.line});
  block.bytes.swap(state.fields);
  block.size = block.bytes.size();
  block.error = block.error.empty() ? failure : block.error;
}
