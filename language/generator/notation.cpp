#include "language/generator/notation.h"

#include <cctype>
#include <stdexcept>

// Every part of a pattern becomes a fragment: states from `first` to `last`, with no edges out of
// `last` yet. Parts are joined by epsilon transitions (Thompson's construction).

namespace {

struct Fragment {
  int32_t first, last;
};

struct PatternReader {
  Nfa &nfa;
  const Definitions &definitions;
  std::string_view text;
  size_t at;
  bool marked;
};

[[noreturn]] void Fail(const PatternReader &reader, const char *what) {
  throw std::runtime_error(std::string(what) + " at " + std::to_string(reader.at) + " of " +
                           std::string(reader.text));
}

char Peek(const PatternReader &reader) {
  return reader.at < reader.text.size() ? reader.text[reader.at] : '\0';
}

char Take(PatternReader &reader) {
  if (reader.at >= reader.text.size()) {
    Fail(reader, "unexpected end");
  }
  return reader.text[reader.at++];
}

void SkipBlanks(PatternReader &reader) {
  while (std::isspace(static_cast<unsigned char>(Peek(reader)))) {
    ++reader.at;
  }
}

int32_t NewState(Nfa &nfa) {
  nfa.states.emplace_back();
  return static_cast<int32_t>(nfa.states.size() - 1);
}

void Join(Nfa &nfa, int32_t from, int32_t to) {
  nfa.states[static_cast<size_t>(from)].epsilonTargets.push_back(to);
}

Fragment OneByte(Nfa &nfa, const ByteSet &bytes) {
  const Fragment result{NewState(nfa), NewState(nfa)};
  nfa.states[static_cast<size_t>(result.first)].bytes = bytes;
  nfa.states[static_cast<size_t>(result.first)].byteTarget = result.last;
  return result;
}

Fragment ReadChoice(PatternReader &reader);

// A byte of a set, possibly escaped.
unsigned ReadSetByte(PatternReader &reader) {
  const auto byte = static_cast<unsigned char>(Take(reader));
  if (byte != '\\') {
    return byte;
  }
  const char escaped = Take(reader);
  if (escaped == 't') {
    return '\t';
  }
  if (escaped == 'n') {
    return '\n';
  }
  if (escaped != 'x') {
    return static_cast<unsigned char>(escaped);
  }
  const std::string digits{Take(reader), Take(reader)};
  return static_cast<unsigned>(std::stoul(digits, nullptr, 16));
}

ByteSet ReadSet(PatternReader &reader) {
  ByteSet bytes;
  const bool inverted = Peek(reader) == '^';
  if (inverted) {
    ++reader.at;
  }
  while (Peek(reader) != ']') {
    const unsigned from = ReadSetByte(reader);
    const bool range = Peek(reader) == '-' && reader.text.substr(reader.at + 1, 1) != "]" &&
                       reader.at + 1 < reader.text.size();
    if (range) {
      ++reader.at;
    }
    const unsigned to = range ? ReadSetByte(reader) : from;
    if (to < from) {
      Fail(reader, "empty range");
    }
    for (unsigned byte = from; byte <= to; ++byte) {
      bytes.set(byte);
    }
  }
  ++reader.at;
  if (inverted) {
    bytes.flip();
  }
  return bytes.reset(0);
}

Fragment ReadQuoted(PatternReader &reader) {
  const int32_t start = NewState(reader.nfa);
  Fragment result{start, start};
  for (char byte = Take(reader); byte != '"'; byte = Take(reader)) {
    const Fragment next = OneByte(reader.nfa, ByteSet().set(static_cast<unsigned char>(byte)));
    Join(reader.nfa, result.last, next.first);
    result.last = next.last;
  }
  return result;
}

Fragment ReadDefinition(PatternReader &reader) {
  const size_t end = reader.text.find('}', reader.at);
  if (end == std::string_view::npos) {
    Fail(reader, "missing } after the name");
  }
  const auto found = reader.definitions.find(reader.text.substr(reader.at, end - reader.at));
  if (found == reader.definitions.end()) {
    Fail(reader, "unknown name");
  }
  reader.at = end + 1;
  PatternReader inner{reader.nfa, reader.definitions, found->second, 0, false};
  const Fragment result = ReadChoice(inner);
  if (inner.at != inner.text.size()) {
    Fail(inner, "unexpected )");
  }
  reader.marked = reader.marked || inner.marked;
  return result;
}

Fragment ReadMark(PatternReader &reader) {
  const int32_t state = NewState(reader.nfa);
  reader.nfa.states[static_cast<size_t>(state)].mark = true;
  reader.marked = true;
  return {state, state};
}

Fragment ReadGroup(PatternReader &reader) {
  const Fragment result = ReadChoice(reader);
  if (Take(reader) != ')') {
    Fail(reader, "missing ) after the group");
  }
  return result;
}

Fragment ReadPart(PatternReader &reader) {
  switch (Take(reader)) {
    case '"':
      return ReadQuoted(reader);
    case '[':
      return OneByte(reader.nfa, ReadSet(reader));
    case '{':
      return ReadDefinition(reader);
    case '(':
      return ReadGroup(reader);
    case '/':
      return ReadMark(reader);
    default:
      Fail(reader, "no part begins here");
  }
}

// A part with its ? * or +.
Fragment ReadRepeated(PatternReader &reader) {
  const Fragment part = ReadPart(reader);
  const char sign = Peek(reader);
  if (sign != '?' && sign != '*' && sign != '+') {
    return part;
  }
  ++reader.at;
  Nfa &nfa = reader.nfa;
  const Fragment result{NewState(nfa), NewState(nfa)};
  Join(nfa, result.first, part.first);
  Join(nfa, part.last, result.last);
  if (sign != '+') {
    Join(nfa, result.first, result.last);
  }
  if (sign != '?') {
    Join(nfa, part.last, part.first);
  }
  return result;
}

Fragment ReadSequence(PatternReader &reader) {
  const int32_t start = NewState(reader.nfa);
  Fragment result{start, start};
  for (SkipBlanks(reader); Peek(reader) != '\0' && Peek(reader) != '|' && Peek(reader) != ')';
       SkipBlanks(reader)) {
    const Fragment next = ReadRepeated(reader);
    Join(reader.nfa, result.last, next.first);
    result.last = next.last;
  }
  return result;
}

Fragment ReadChoice(PatternReader &reader) {
  const Fragment result{NewState(reader.nfa), NewState(reader.nfa)};
  for (;;) {
    const Fragment branch = ReadSequence(reader);
    Join(reader.nfa, result.first, branch.first);
    Join(reader.nfa, branch.last, result.last);
    if (Peek(reader) != '|') {
      return result;
    }
    ++reader.at;
  }
}

}  // namespace

int32_t AddRule(Nfa &nfa, const Definitions &definitions, int32_t rule, std::string_view pattern) {
  PatternReader reader{nfa, definitions, pattern, 0, false};
  const Fragment whole = ReadChoice(reader);
  if (reader.at != pattern.size()) {
    Fail(reader, "unexpected )");
  }
  nfa.states[static_cast<size_t>(whole.last)].rule = rule;
  if (reader.marked) {
    nfa.markedRules |= 1U << rule;
  }
  return whole.first;
}
