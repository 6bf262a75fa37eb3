#include "plain_matcher.h"

#include <array>
#include <bit>
#include <cctype>
#include <cstring>

#include "functions/date_text.h"
#include "platform/text.h"

namespace {

// Bit i: a reading stands before byte i.
using Places = uint64_t;
using ByteTest = bool (*)(uint8_t byte);

constexpr int kRules = 15;

struct Matcher {
  std::string bytes;  // the text and its one blank
  PlainPage page;
  Places wanted = 0;  // a reading asked for the byte here
  std::array<Places, kRules> ends{};
  std::array<int, 64> cut{};  // of a date's match by its end: the last mark, or 0
  bool ambiguous = false;
};

bool IsOneOf(uint8_t byte, const char *set) {
  return byte != 0 && std::strchr(set, byte) != nullptr;
}
bool Letter(uint8_t byte) {
  return byte < 128 && std::isalpha(byte) != 0;
}
bool Digit(uint8_t byte) {
  return byte >= '0' && byte <= '9';
}
bool Blank(uint8_t byte) {
  return byte == ' ';
}
bool White(uint8_t byte) {
  return IsOneOf(byte, "\t\n ");
}
bool Dash(uint8_t byte) {
  return IsOneOf(byte, "-/\\");
}
bool Separator(uint8_t byte) {
  return IsOneOf(byte, "-./:\\");
}
bool Point(uint8_t byte) {
  return IsOneOf(byte, ".:");
}
bool Dot(uint8_t byte) {
  return byte == '.';
}
bool Comma(uint8_t byte) {
  return byte == ',';
}
bool Sign(uint8_t byte) {
  return IsOneOf(byte, "+-");
}
bool LetterE(uint8_t byte) {
  return IsOneOf(byte, "Ee");
}
bool Trailer(uint8_t byte) {
  return IsOneOf(byte, "\n ()*+,-/|");
}
bool At(uint8_t byte) {
  return byte == '@';
}
bool Bar(uint8_t byte) {
  return byte == '|';
}
bool Open(uint8_t byte) {
  return byte == '(';
}
bool DoubleQuote(uint8_t byte) {
  return byte == '"';
}
bool NoDoubleQuote(uint8_t byte) {
  return byte != '"';
}
bool Backtick(uint8_t byte) {
  return byte == '`';
}
bool NoBacktick(uint8_t byte) {
  return byte != '`';
}
bool Operator(uint8_t byte) {
  return IsOneOf(byte, "%()*+,-/<=>{}");
}
bool NoLineFeed(uint8_t byte) {
  return byte != '\n';
}
bool Lead(uint8_t byte) {
  return (byte >= 0x81 && byte <= 0x9F) || (byte >= 0xE0 && byte <= 0xFC);
}
bool Trail(uint8_t byte) {
  return (byte >= 0x40 && byte <= 0x7E) || (byte >= 0x80 && byte <= 0xFC);
}
bool Starter(uint8_t byte) {
  return Letter(byte) || IsOneOf(byte, "#$_@") || byte >= 0x81;
}
bool Utf8Starter(uint8_t byte) {
  return Starter(byte) || byte == 0x80;
}

int FirstOf(Places places) {
  return std::countr_zero(places);
}

Places One(Matcher &m, Places from, ByteTest test) {
  m.wanted |= from;
  Places to = 0;
  for (; from != 0; from &= from - 1) {
    const auto at = static_cast<size_t>(FirstOf(from));
    if (at < m.bytes.size() && test(static_cast<uint8_t>(m.bytes[at]))) to |= Places{2} << at;
  }
  return to;
}

Places Some(Matcher &m, Places from, ByteTest test) {
  Places all = 0;
  for (Places to = One(m, from, test); to != 0; to = One(m, to, test)) all |= to;
  return all;
}

Places Any(Matcher &m, Places from, ByteTest test) {
  return from | Some(m, from, test);
}

Places NoCase(Matcher &m, Places from, const char *capitals) {
  for (; *capitals != '\0'; capitals++) {
    m.wanted |= from;
    Places to = 0;
    for (Places rest = from; rest != 0; rest &= rest - 1) {
      const auto at = static_cast<size_t>(FirstOf(rest));
      if (at < m.bytes.size() && (m.bytes[at] | 32) == (*capitals | 32)) to |= Places{2} << at;
    }
    from = to;
  }
  return from;
}

Places NameStart(Matcher &m, Places from) {
  if (m.page == PlainPage::kUtf8) return One(m, from, Utf8Starter);
  return One(m, from, Starter) | One(m, One(m, from, Lead), Trail);
}

Places PlainName(Matcher &m, Places from) {
  Places all = NameStart(m, from);
  for (Places fresh = all; fresh != 0;) {
    const Places to = NameStart(m, fresh) | One(m, fresh, Digit);
    fresh = to & ~all;
    all |= to;
  }
  return all;
}

Places Segment(Matcher &m, Places from) {
  return PlainName(m, from) |
         One(m, Some(m, One(m, from, DoubleQuote), NoDoubleQuote), DoubleQuote) |
         One(m, Some(m, One(m, from, Backtick), NoBacktick), Backtick);
}

Places Number(Matcher &m, Places from) {
  return Some(m, from, Digit);
}
Places LongWord(Matcher &m, Places from) {
  return Some(m, One(m, One(m, from, Letter), Letter), Letter);
}
Places Tail(Matcher &m, Places from) {
  return Any(m, One(m, from, Comma), Blank) | Some(m, from, Blank);
}

// ---- The date rule ----

void EndDate(Matcher &m, Places ends, int mark) {
  for (Places rest = ends; rest != 0; rest &= rest - 1) {
    const auto at = static_cast<size_t>(FirstOf(rest));
    m.ambiguous = m.ambiguous || ((m.ends[8] >> at & 1) != 0 && m.cut[at] != mark);
    m.cut[at] = mark;
  }
  m.ends[8] |= ends;
}

void MaybeMarker(Matcher &m, Places from) {
  Places marks = One(m, One(m, Any(m, from, White), Letter), Letter);
  for (; marks != 0; marks &= marks - 1) {
    EndDate(m, One(m, marks & -marks, Trailer), FirstOf(marks));
  }
}

void MaybeTime(Matcher &m, Places dates, int mark) {
  EndDate(m, dates, mark);
  Places part = Number(m, Some(m, dates, White) | One(m, dates, Separator));
  Places times = part;
  for (int more = 0; more < 3; more++) {
    part = Number(m, One(m, part, Point));
    times |= part;
  }
  EndDate(m, times, mark);
  MaybeMarker(m, times);
}

void MatchDates(Matcher &m, Places start) {
  const Places n = Number(m, start);
  const Places dashed = Number(m, One(m, n, Dash));
  const Places pointed = Number(m, One(m, n, Point));
  const Places twicePointed = Number(m, One(m, pointed, Point));
  MaybeTime(m, Number(m, One(m, dashed, Separator)), 0);
  MaybeTime(m, Number(m, One(m, pointed, Dash)), 0);
  MaybeTime(m, twicePointed, 0);
  const Places word = Some(m, One(m, n, Separator), Letter);
  MaybeTime(m, Number(m, One(m, word, Separator)), 0);
  const Places monthFirst = Number(m, Some(m, LongWord(m, start), White));
  MaybeTime(m, Number(m, Tail(m, monthFirst)), 0);
  Places marks = One(m, One(m, Some(m, n, White), Letter), Letter);
  for (; marks != 0; marks &= marks - 1) {
    const Places month = Some(m, marks & -marks, Letter);
    MaybeTime(m, Number(m, Tail(m, month)), FirstOf(marks));
  }
  for (const Places times : {n, pointed, twicePointed}) {
    EndDate(m, times, 0);
    MaybeMarker(m, times);
  }
}

// ---- Strings, by their states ----

enum StringState { kInside, kEscaped, kClosed, kDoubled, kQuoted, kRequoted, kStop };
struct StringRow {
  StringState other, backslash, quote;
  bool accepting;
};
constexpr StringRow kStringStates[] = {
    {kInside, kEscaped, kClosed, false},   // inside
    {kInside, kEscaped, kQuoted, false},   // escaped
    {kStop, kStop, kDoubled, true},        // closed
    {kInside, kEscaped, kClosed, false},   // doubled
    {kInside, kEscaped, kRequoted, true},  // quoted
    {kInside, kEscaped, kRequoted, true},  // requoted
};

void MatchString(Matcher &m, size_t start) {
  if (m.bytes[start] != '\'') return;
  StringState state = kInside;
  for (size_t at = start + 1; state != kStop; at++) {
    if (kStringStates[state].accepting) m.ends[9] |= Places{1} << at;
    m.wanted |= Places{1} << at;
    if (at == m.bytes.size()) return;
    const StringRow &row = kStringStates[state];
    state = m.bytes[at] == '\'' ? row.quote : m.bytes[at] == '\\' ? row.backslash : row.other;
  }
}

void MatchAll(Matcher &m, size_t at) {
  m.wanted = 0;
  m.ends.fill(0);
  const Places start = Places{1} << at;
  const Places word = Some(m, start, Letter);
  const Places number = Number(m, start);
  const Places point = One(m, number, Dot);
  m.ends[0] = word;
  m.ends[1] = Some(m, One(m, word, Blank), Letter);
  m.ends[2] = NoCase(m, One(m, start, At), "NOW") | NoCase(m, One(m, start, At), "PI");
  Places name = Segment(m, start);
  for (int segments = 0; segments < 3; segments++) {
    m.ends[3] |= name;
    if (segments < 2) name = Segment(m, One(m, name, Dot));
  }
  m.ends[4] = number | Any(m, point, Digit);
  const Places mantissa = Number(m, One(m, One(m, start, Digit), Dot));
  m.ends[5] = Number(m, One(m, One(m, mantissa, LetterE), Sign));
  m.ends[6] = Number(m, One(m, Any(m, start, Digit), Dot)) | number;
  m.ends[7] = Number(m, Tail(m, LongWord(m, Some(m, number, White))));
  MatchDates(m, start);
  MatchString(m, at);
  m.ends[10] = One(m, Any(m, PlainName(m, start), Blank), Open);
  m.ends[11] = One(m, One(m, start, Bar), Bar);
  m.ends[12] = One(m, start, Operator);
  m.ends[13] = Some(m, start, White);
  m.ends[14] = One(m, start, NoLineFeed);
}

// ---- What is done with a match ----

struct Run {
  const PlainInput &input;
  Matcher matcher;
  PlainResult result;
  ScannedToken token;  // carries what a token leaves untouched
};

std::string Capitals(std::string text) {
  for (char &byte : text) {
    if (byte >= 'a' && byte <= 'z') byte = static_cast<char>(byte - 32);
  }
  return text;
}

enum { kGood = -1, kRefuse = -2 };

bool NameByte(PlainPage page, uint8_t byte) {
  if (Letter(byte) || Digit(byte) || IsOneOf(byte, "@#$_.")) return true;
  if (page == PlainPage::kDoubleByte) return WRENIsDigit(byte) != 0;
  return IsCharAlphaA(static_cast<char>(byte)) != 0;
}

int StopOfName(PlainPage page, const std::string &text) {
  bool quoted = false;
  for (size_t i = 0; i < text.size(); i++) {
    const auto byte = static_cast<uint8_t>(text[i]);
    if (IsOneOf(byte, "\"`")) {
      quoted = !quoted;
    } else if (page == PlainPage::kDoubleByte && Lead(byte)) {
      if (i + 1 == text.size()) return -static_cast<int>(i) - 10;
      if (!Trail(static_cast<uint8_t>(text[++i]))) return -static_cast<int>(i) - 10;
    } else if (!quoted && !NameByte(page, byte)) {
      return static_cast<int>(i);
    }
  }
  return kGood;
}

int JudgeName(PlainPage page, const std::string &text, bool call) {
  const int stop = StopOfName(page, text);
  if (stop <= -10) return -(stop + 10);  // half a pair: no excuse
  if (stop == kGood) return kGood;
  const auto at = static_cast<size_t>(stop);
  if (call && IsOneOf(static_cast<uint8_t>(text[at]), " (")) {
    return text.find_first_not_of(' ', at) == text.size() - 1 && text.back() == '(' ? kGood : stop;
  }
  const bool bar = page != PlainPage::kDoubleByte && at == text.size() - 1 && text[at] == '|';
  return bar ? kRefuse : stop;
}

bool GoodString(PlainPage page, const std::string &text) {
  if (page != PlainPage::kDoubleByte || text == "''") return true;
  for (size_t i = 1; i < text.size(); i++) {
    const std::string two = text.substr(i, 2);
    if (Lead(static_cast<uint8_t>(text[i])) || two == "''" || two == "\\'") {
      i++;
    } else if (text[i] == '\'') {
      return i == text.size() - 1;
    }
  }
  return false;
}

bool IsKeyword(const std::string &text) {
  return text == kExactKeyword || Capitals(text) == Capitals(kLooseKeyword);
}

int Place(Run &run, int code, size_t at, size_t span, const std::string &value = "") {
  run.token.offset = static_cast<int32_t>(at);
  run.token.span = static_cast<int32_t>(span);
  run.token.value = value;
  return code;
}

int JudgeWord(Run &run, size_t at, const std::string &text) {
  const std::string word = Capitals(text);
  if (word == "AND") return 269;
  const char *const units[] = {"DAY", "MONTH", "YEAR", "HOUR", "MINUTE", "SECOND"};
  for (int i = 0; i < 6 && (run.input.flags & 0x20) == 0; i++) {
    if (word != units[i] && word != std::string(units[i]) + "S") continue;
    run.token.dateUnit = static_cast<uint16_t>(1 << i);
    return Place(run, 266, at, text.size());
  }
  if ((run.input.flags & 4) != 0 && (word == "DISTINCT" || word == "ALL")) {
    run.token.modifier = word == "ALL" ? 2 : 1;
    return Place(run, 267, at, text.size());
  }
  return Place(run, 258, at, text.size(), text);
}

int JudgeDate(Run &run, size_t at, const std::string &text) {
  NumberValue value;
  if ((run.input.flags & 0x80) == 0 || DateFromText(&value, text.c_str()) != 0) {
    return Place(run, 263, at, text.size(), text);
  }
  ScanResult &scan = run.result.scan;
  if (!scan.badDateSeen) {
    scan.badDateSeen = true;
    scan.badDateOffset = static_cast<int32_t>(at);
    scan.badDateLength = static_cast<int32_t>(text.size());
  }
  return kRefuse;
}

int JudgeNamed(Run &run, size_t at, const std::string &text, bool call) {
  const int answer = JudgeName(run.input.page, text, call);
  if (answer == kRefuse) return kRefuse;
  if (answer >= 0) return Place(run, 265, at + static_cast<size_t>(answer), 1);
  if (!call) return Place(run, 258, at, text.size(), text);
  return Place(run, 259, at, text.size(), text.substr(0, text.find_last_not_of(" (") + 1));
}

int JudgeNumber(Run &run, size_t at, const std::string &text) {
  NumberValue value;
  WRENNumFromText(&value, text.c_str());
  std::string bytes(sizeof value, '\0');
  std::memcpy(bytes.data(), &value, sizeof value);
  return Place(run, 257, at, text.size(), bytes);
}

// A token code, 0 to skip the match, or kRefuse.
int Judge(Run &run, int rule, size_t at, const std::string &text) {
  const size_t size = text.size();
  switch (rule) {
    case 0:
      return JudgeWord(run, at, text);
    case 1:
      return run.input.nameCheck || !IsKeyword(text) ? kRefuse : Place(run, 258, at, size, text);
    case 2:
      return Place(run, 260, at, size, text);
    case 3:
      return JudgeNamed(run, at, text, false);
    case 4:
    case 5:
    case 6:
      return JudgeNumber(run, at, text);
    case 7:
    case 8:
      return JudgeDate(run, at, text);
    case 9:
      if (!GoodString(run.input.page, text)) return kRefuse;
      return Place(run, 262, at, size, text.substr(1, size - 2));
    case 10:
      return JudgeNamed(run, at, text, true);
    case 11:
      return Place(run, 264, at, size);
    case 12:
      return Place(run, text == "%" && (run.input.flags & 0x40) == 0 ? 265 : text[0], at, size);
    case 13:
      return 0;
    default:
      return Place(run, 265, at, size);
  }
}

// Takes a match at `at` and returns its code, 0 for one that is skipped; `taken` gets its length.
int TakeAt(Run &run, size_t at, size_t *taken) {
  Matcher &m = run.matcher;
  MatchAll(m, at);
  Places reached = m.wanted;
  for (const Places ends : m.ends) reached |= ends;
  size_t last = 63;
  while (last > at && (reached >> last & 1) == 0) last--;
  const bool asksOn = (m.wanted >> last & 1) != 0 && last < m.bytes.size();
  const auto read = static_cast<int32_t>(asksOn ? last + 1 : last);
  if (read > run.token.delivered) run.token.delivered = read;
  for (size_t end = last; end > at; end--) {
    for (int rule = 0; rule < kRules; rule++) {
      if ((m.ends[static_cast<size_t>(rule)] >> end & 1) == 0) continue;
      const bool cut = rule == 8 && m.cut[end] > 0;
      *taken = (cut ? static_cast<size_t>(m.cut[end]) : end) - at;
      const int code = Judge(run, rule, at, m.bytes.substr(at, *taken));
      if (code != kRefuse) return code;
    }
  }
  *taken = m.bytes.size() - at;
  return -1;
}

}  // namespace

PlainResult PlainScan(const PlainInput &input) {
  Run run{input, {input.text + " ", input.page, 0, {}, {}, false}, {}, {}};
  size_t taken = 0;
  for (size_t at = 0; at < run.matcher.bytes.size(); at += taken) {
    run.token.value.clear();
    run.token.code = TakeAt(run, at, &taken);
    run.token.taken = static_cast<int32_t>(taken);
    if (run.token.code != 0) run.result.scan.tokens.push_back(run.token);
  }
  run.token.code = 0;
  run.token.value.clear();
  run.result.scan.tokens.push_back(run.token);
  run.result.ambiguous = run.matcher.ambiguous;
  return run.result;
}
