#include "plain_matcher.h"

#include <array>
#include <bit>
#include <cstring>
#include <string_view>

#include "closed/wren/utf8.h"
#include "dates/date_text.h"
#include "platform/name_character.h"
#include "platform/text.h"

namespace {

using Places = uint64_t;  // bit i: a reading is before byte i

constexpr size_t kRules = 15, kDateRule = 8;

constexpr std::string_view kLetter = "A-Za-z", kDigit = "0-9", kWhite = "\t\n ";
constexpr std::string_view kSeparator = "-./:\\", kPoint = ".:";
constexpr std::string_view kLead = "\x81-\x9F\xE0-\xFC", kTrail = "@-~\x80-\xFC";

// Whether a byte is in a set like "A-Z_", or "^ab" for all bytes but a and b.
bool In(std::string_view set, char byte) {
  const auto code = static_cast<uint8_t>(byte);
  const size_t none = set[0] == '^' ? 1 : 0;
  for (size_t i = none; i < set.size(); ++i) {
    const auto low = static_cast<uint8_t>(set[i]);
    if (i + 2 < set.size() && set[i + 1] == '-') i += 2;
    if (low <= code && code <= static_cast<uint8_t>(set[i])) return none == 0;
  }
  return none != 0;
}

size_t First(Places places) {
  return static_cast<size_t>(std::countr_zero(places));
}

struct Matcher {
  std::string bytes;  // the text and its one blank
  int32_t codePage;
  Places wanted = 0;  // a reading requested the byte here
  std::array<Places, kRules> ends{};
  std::array<size_t, 64> cut{};  // of a date's match by its end: the last mark, or 0

  Places One(Places from, std::string_view set) {
    wanted |= from;
    Places to = 0;
    for (; from != 0; from &= from - 1) {
      const size_t at = First(from);
      if (at < bytes.size() && In(set, bytes[at])) to |= Places{2} << at;
    }
    return to;
  }

  Places Some(Places from, std::string_view set) {
    Places all = 0;
    for (Places to = One(from, set); to != 0; to = One(to, set)) all |= to;
    return all;
  }

  Places Any(Places from, std::string_view set) { return from | Some(from, set); }
  Places Number(Places from) { return Some(from, kDigit); }
  Places TwoLetters(Places from) { return One(One(from, kLetter), kLetter); }
  Places Tail(Places from) { return Any(One(from, ","), " ") | Some(from, " "); }

  Places NameStart(Places from) {
    if (codePage == 65001) return One(from, "A-Za-z#$_@\x80-\xFF");
    return One(from, "A-Za-z#$_@\x81-\xFF") | One(One(from, kLead), kTrail);
  }

  Places PlainName(Places from) {
    Places all = NameStart(from);
    for (Places fresh = all, to = 0; fresh != 0; all |= to) {
      to = NameStart(fresh) | One(fresh, kDigit);
      fresh = to & ~all;
    }
    return all;
  }

  Places Segment(Places from) {
    return PlainName(from) | One(Some(One(from, "\""), "^\""), "\"") |
           One(Some(One(from, "`"), "^`"), "`");
  }

  void EndDate(Places places, size_t mark) {
    ends[kDateRule] |= places;
    for (; places != 0; places &= places - 1) cut[First(places)] = mark;
  }

  void MaybeMarker(Places from) {
    for (Places marks = TwoLetters(Any(from, kWhite)); marks != 0; marks &= marks - 1) {
      EndDate(One(marks & -marks, "-\n ()*+,/|"), First(marks));
    }
  }

  void MaybeTime(Places dates, size_t mark) {
    EndDate(dates, mark);
    Places part = Number(Some(dates, kWhite) | One(dates, kSeparator));
    Places times = part;
    for (int more = 0; more < 3; ++more) times |= part = Number(One(part, kPoint));
    EndDate(times, mark);
    MaybeMarker(times);
  }

  void Dates(Places start) {
    const Places n = Number(start);
    const Places dashed = Number(One(n, "-/\\"));
    const Places pointed = Number(One(n, kPoint));
    const Places twicePointed = Number(One(pointed, kPoint));
    MaybeTime(Number(One(dashed, kSeparator)), 0);
    MaybeTime(Number(One(pointed, "-/\\")), 0);
    MaybeTime(twicePointed, 0);
    MaybeTime(Number(One(Some(One(n, kSeparator), kLetter), kSeparator)), 0);
    const Places month = Some(TwoLetters(start), kLetter);
    MaybeTime(Number(Tail(Number(Some(month, kWhite)))), 0);
    for (Places marks = TwoLetters(Some(n, kWhite)); marks != 0; marks &= marks - 1) {
      MaybeTime(Number(Tail(Some(marks & -marks, kLetter))), First(marks));
    }
    EndDate(n | pointed | twicePointed, 0);
    MaybeMarker(n | pointed | twicePointed);
  }

  // A quote ends the text unless the next byte is a quote too; after backslashes and quotes any
  // quote may end it.
  Places String(Places start) {
    Places inside = One(start, "'"), closed = 0;
    for (Places before = 0; before != inside;) {
      before = inside;
      const Places quoted = One(inside, "'");
      const Places escapes = Any(One(inside, "\\"), "\\'");
      closed = quoted | One(escapes, "'");
      inside |= One(inside | escapes, "^\\'") | One(quoted, "'");
    }
    return closed;
  }

  void MatchAll(size_t at) {
    wanted = 0;
    ends.fill(0);
    const Places start = Places{1} << at;
    const Places word = Some(start, kLetter), number = Number(start);
    const Places sign = One(start, "@");
    ends[0] = word;
    ends[1] = Some(One(word, " "), kLetter);
    ends[2] = One(One(One(sign, "Nn"), "Oo"), "Ww") | One(One(sign, "Pp"), "Ii");
    const Places name = Segment(start), second = Segment(One(name, "."));
    ends[3] = name | second | Segment(One(second, "."));
    ends[4] = number | Any(One(number, "."), kDigit);
    const Places mantissa = Number(One(One(start, kDigit), "."));
    ends[5] = Number(One(One(mantissa, "Ee"), "+-"));
    ends[6] = Number(One(Any(start, kDigit), ".")) | number;
    ends[7] = Number(Tail(Some(TwoLetters(Some(number, kWhite)), kLetter)));
    Dates(start);
    ends[9] = String(start);
    ends[10] = One(Any(PlainName(start), " "), "(");
    ends[11] = One(One(start, "|"), "|");
    ends[12] = One(start, "-%()*+,/<=>{}");
    ends[13] = Some(start, kWhite);
    ends[14] = One(start, "^\n");
  }
};

std::string Capitals(std::string text) {
  for (char &byte : text) byte = In("a-z", byte) ? static_cast<char>(byte - 32) : byte;
  return text;
}

// The result for a match: a token code, 0 to skip the match, or kRefuse.
enum { kGood = -1, kRefuse = -2 };

struct Run {
  const ScanInput &input;
  Matcher matcher;
  ScanResult result;
  ScannedToken token;  // keeps what a token leaves unchanged
  size_t at;
  std::string text;  // of the match

  bool Has(int flag) const { return (input.flags & flag) != 0; }
  bool DoubleByte() const { return input.codePage == 932; }

  int Take(int code, const std::string &value = "") {
    token.offset = static_cast<int32_t>(at);
    token.span = static_cast<int32_t>(text.size());
    token.value = value;
    return code;
  }

  // kGood, kRefuse or the place of the first byte that is in no name.
  int JudgeBytes(bool call) const {
    bool quoted = false;
    for (size_t i = 0; i < text.size(); ++i) {
      const char byte = text[i];
      const bool last = i + 1 == text.size();
      uint32_t point = 0;
      const size_t bytes = input.codePage == 65001 ? DecodeUtf8(&text[i], &point) : 0;
      const bool other = bytes > 1      ? IsNameCharacter(point)
                         : DoubleByte() ? WRENIsDigit(static_cast<uint8_t>(byte)) != 0
                                        : IsCharAlphaA(byte) != 0;
      if (In("\"`", byte)) {
        quoted = !quoted;
      } else if (DoubleByte() && In(kLead, byte)) {
        if (last || !In(kTrail, text[++i])) return static_cast<int>(i);
      } else if (!quoted && !other && !In("A-Za-z0-9@#$_.", byte)) {
        if (call && In(" (", byte)) return kGood;
        return !DoubleByte() && last && byte == '|' ? kRefuse : static_cast<int>(i);
      } else if (bytes > 1) {
        i += bytes - 1;
      }
    }
    return kGood;
  }

  int JudgeName(int code, const std::string &value) {
    const int answer = JudgeBytes(code == 259);
    if (answer == kRefuse) return kRefuse;
    if (answer == kGood) return Take(code, value);
    Take(265);
    token.offset += answer;
    token.span = 1;
    return 265;
  }

  bool GoodString() const {
    if (!DoubleByte() || text == "''") return true;
    for (size_t i = 1; i < text.size(); ++i) {
      const std::string two = text.substr(i, 2);
      if (text[i] == '\'' && two != "''") return i == text.size() - 1;
      if (In(kLead, text[i]) || two == "''" || two == "\\'") ++i;
    }
    return false;
  }

  int JudgeWord() {
    const std::string word = Capitals(text);
    if (word == "AND") return 269;
    const char *const units[] = {"DAY", "MONTH", "YEAR", "HOUR", "MINUTE", "SECOND"};
    for (int i = 0; i < 6 && !Has(ORL_FLAG_NO_DATE_UNITS); ++i) {
      if (word != units[i] && word != std::string(units[i]) + "S") continue;
      token.dateUnit = static_cast<uint16_t>(1 << i);
      return Take(266);
    }
    if (!Has(ORL_FLAG_MODIFIERS) || (word != "DISTINCT" && word != "ALL")) return Take(258, text);
    token.modifier = word == "ALL" ? 2 : 1;
    return Take(267);
  }

  int JudgeDate() {
    NumberValue value;
    if (!Has(ORL_FLAG_RANGES) || DateFromText(&value, text.c_str())) return Take(263, text);
    if (result.failures.empty()) {
      result.failures = " bad date " + std::to_string(at) + "+" + std::to_string(text.size());
    }
    return kRefuse;
  }

  int Judge(size_t rule) {
    const bool keyword = text == kExactKeyword || Capitals(text) == Capitals(kLooseKeyword);
    if (rule == 0) return JudgeWord();
    if (rule == 1) return input.nameCheck || !keyword ? kRefuse : Take(258, text);
    if (rule == 2) return Take(260, text);
    if (rule == 3) return JudgeName(258, text);
    NumberValue value;
    if (rule <= 6) {
      WRENNumFromText(&value, text.c_str());
      return Take(257, std::string(reinterpret_cast<const char *>(&value), sizeof value));
    }
    if (rule <= kDateRule) return JudgeDate();
    if (rule == 9) return GoodString() ? Take(262, text.substr(1, text.size() - 2)) : kRefuse;
    if (rule == 10) return JudgeName(259, text.substr(0, text.find_last_not_of(" (") + 1));
    if (rule == 11) return Take(264);
    if (rule == 12) return Take(text == "%" && !Has(ORL_FLAG_PERCENT) ? 265 : text[0]);
    return rule == 13 ? 0 : Take(265);
  }

  int TakeMatch() {
    matcher.MatchAll(at);
    Places reached = matcher.wanted;
    for (const Places ends : matcher.ends) reached |= ends;
    const auto last = static_cast<size_t>(63 - std::countl_zero(reached));
    const bool asksOn = (matcher.wanted >> last & 1) != 0 && last < matcher.bytes.size();
    token.delivered = std::max(token.delivered, static_cast<int32_t>(asksOn ? last + 1 : last));
    for (size_t end = last; end > at; --end) {
      for (size_t rule = 0; rule < kRules; ++rule) {
        if ((matcher.ends[rule] >> end & 1) == 0) continue;
        const size_t cut = rule == kDateRule ? matcher.cut[end] : 0;
        text = matcher.bytes.substr(at, (cut > 0 ? cut : end) - at);
        const int code = Judge(rule);
        if (code != kRefuse) return code;
      }
    }
    return kRefuse;
  }
};

}  // namespace

ScanResult PlainScan(const ScanInput &input) {
  Run run{input, {input.text + " ", input.codePage}, {}, {}, 0, ""};
  for (; run.at < run.matcher.bytes.size(); run.at += run.text.size()) {
    run.token.value.clear();
    run.token.code = run.TakeMatch();
    run.token.taken = static_cast<int32_t>(run.text.size());
    if (run.token.code != 0) run.result.tokens.push_back(run.token);
  }
  run.token.code = 0;
  run.token.value.clear();
  run.result.tokens.push_back(run.token);
  return run.result;
}
