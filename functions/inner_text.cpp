// String functions, in the buffer that holds their argument. ASCII strings, which are the same in
// every code page, are handled here; others by the routines for multi-byte characters.
#include <algorithm>
#include <bit>
#include <cstring>

#include "functions/inner_routines.h"
#include "functions/number_text.h"

namespace {

// The bits of the first `count` bytes of a word.
uint64_t FirstBytes(uint32_t count) {
  return count >= 8 ? UINT64_MAX : (UINT64_C(1) << (count * 8)) - 1;
}

// Whether the first `length` bytes are ASCII. The buffer may be read beyond them.
bool IsAscii(const char *bytes, uint32_t length) {
  for (; length > 8; bytes += 8, length -= 8) {
    if ((LoadWord(bytes) & kHighBits) != 0) {
      return false;
    }
  }
  return (LoadWord(bytes) & kHighBits & FirstBytes(length)) == 0;
}

// Bytes of the first n characters.
uint32_t BytesOf(InnerCall call, const TextSpan &span, int32_t n) {
  const char *text = call.texts.bytes + span.offset;
  const uint32_t most = std::min(span.length, static_cast<uint32_t>(std::max(n, 0)));
  if (IsAscii(text, most)) [[likely]] {
    return most;
  }
  TerminatedText(call.texts, span);
  return static_cast<uint32_t>(WRENStrAdvance(text, n) - text);
}

// A count or position, clamped to 0 and `most`.
uint32_t CountWithin(InnerCall call, uint32_t place, uint32_t most) {
  return std::min(static_cast<uint32_t>(std::max(CountOf(call, place), 0)), most);
}

int64_t CharactersOf(InnerCall call, const TextSpan &span) {
  if (IsAscii(call.texts.bytes + span.offset, span.length)) [[likely]] {
    return span.length;
  }
  return WRENStrChars(TerminatedText(call.texts, span));
}

void SetPart(InnerCall call, const TextSpan &span, uint32_t from, uint32_t length) {
  SetText(call.texts, call.Result(), span.offset + from, length);
}

// Blanks are counted in the words in which strings are stored. How many there are cannot be
// predicted byte by byte.
constexpr uint64_t kBlanks = kOnes * ' ';

uint32_t LeadingBlanksOf(const char *text, uint32_t length) {
  for (uint32_t at = 0; at < length; at += 8) {
    const uint64_t others = LoadWord(text + at) ^ kBlanks;
    if (others != 0) {
      return std::min(at + FirstMarked(others), length);
    }
  }
  return length;
}

uint32_t LengthWithoutBlanks(const char *text, uint32_t length) {
  while (length > 0) {
    const uint32_t at = (length - 1) & ~7U;
    const uint64_t others = (LoadWord(text + at) ^ kBlanks) & FirstBytes(length - at);
    if (others != 0) {
      return at + 8 - static_cast<uint32_t>(std::countl_zero(others)) / 8;
    }
    length = at;
  }
  return 0;
}

// The result: the string from `from` on, after its leading blanks if that is not 0, without
// trailing blanks. A blank may be the second half of a character, so strings other than ASCII are
// walked from the start.
void SetTrimmed(InnerCall call, const TextSpan &span, uint32_t from) {
  char *text = call.texts.bytes + span.offset;
  uint32_t end = span.length;
  if (IsAscii(text, end)) [[likely]] {
    end = std::max(from, LengthWithoutBlanks(text, end));
  } else {
    TerminatedText(call.texts, span);
    WRENStrRTrim(text + from, text + from);
    end = from + static_cast<uint32_t>(std::strlen(text + from));
  }
  SetPart(call, span, from, end - from);
}

// The same word with the case of its ASCII letters from `first` to `first` + 25 changed.
uint64_t ChangedCase(uint64_t word, char first) {
  const uint64_t low = word & ~kHighBits;
  const uint64_t from = low + kOnes * (0x80 - static_cast<uint64_t>(first));
  const uint64_t above = low + kOnes * (0x80 - static_cast<uint64_t>(first + 26));
  const uint64_t letters = (from ^ above) & ~word & kHighBits;
  return word ^ letters >> 2;  // 'a' - 'A' is 0x20
}

// Changes the case of ASCII letters from `first` on; `change` handles other strings.
void ChangeCase(InnerCall call, char first, void (*change)(char *)) {
  const TextSpan span = TextOf(call, 0);
  char *text = call.texts.bytes + span.offset;
  for (uint32_t at = 0; at < span.length; at += 8) {
    const uint64_t word = LoadWord(text + at);
    if ((word & kHighBits & FirstBytes(span.length - at)) != 0) [[unlikely]] {
      change(TerminatedText(call.texts, span));
      break;
    }
    const uint64_t changed = ChangedCase(word, first);
    std::memcpy(text + at, &changed, sizeof changed);
  }
  SetPart(call, span, 0, span.length);
}

}  // namespace

void InnerStrLeft(InnerCall call) {
  const TextSpan span = TextOf(call, 0);
  SetPart(call, span, 0, BytesOf(call, span, CountOf(call, 1)));
}

void InnerStrRight(InnerCall call) {
  const TextSpan span = TextOf(call, 0);
  const int64_t left = CharactersOf(call, span) - std::max(CountOf(call, 1), 0);
  const uint32_t from = left <= 0 ? 0 : BytesOf(call, span, static_cast<int32_t>(left));
  SetPart(call, span, from, span.length - from);
}

void InnerStrMid(InnerCall call) {
  const TextSpan span = TextOf(call, 0);
  const int32_t position = CountOf(call, 1);
  if (position < 0) {
    SetPart(call, span, 0, 0);
    return;
  }
  const uint32_t from = BytesOf(call, span, position);
  const TextSpan rest = {span.offset + from, span.length - from};
  SetPart(call, rest, 0, BytesOf(call, rest, CountOf(call, 2)));
}

void InnerStrLength(InnerCall call) {
  const int64_t characters = CharactersOf(call, TextOf(call, 0));
  SetNumber(call.Result(), {characters, 0});
}

void InnerStrTrim(InnerCall call) {
  const TextSpan span = TextOf(call, 0);
  SetTrimmed(call, span, LeadingBlanksOf(call.texts.bytes + span.offset, span.length));
}

void InnerStrLTrim(InnerCall call) {
  const TextSpan span = TextOf(call, 0);
  const uint32_t from = LeadingBlanksOf(call.texts.bytes + span.offset, span.length);
  SetPart(call, span, from, span.length - from);
}

void InnerStrRTrim(InnerCall call) {
  SetTrimmed(call, TextOf(call, 0), 0);
}

void InnerStrUpper(InnerCall call) {
  ChangeCase(call, 'a', WRENStrUpper);
}

void InnerStrLower(InnerCall call) {
  ChangeCase(call, 'A', WRENStrLower);
}

void InnerStrToNumber(InnerCall call) {
  NumberValue number;
  NumberFromText(&number, TerminatedText(call.texts, TextOf(call, 0)));
  SetNumberFrom(call.Result(), &number);
}

// The result is built after the arguments.
void InnerStrReplace(InnerCall call) {
  const TextSpan text = TextOf(call, 0);
  const TextSpan replacement = TextOf(call, 3);
  const uint32_t position = CountWithin(call, 1, text.length);
  const uint32_t n = CountWithin(call, 2, replacement.length);
  // Space for two more terminated copies.
  const uint64_t most = 2 * (uint64_t{text.length} + replacement.length + 2);
  if (!TextReserve(call.texts, call.texts.used, most)) {
    call.Result()->form = ValueForm::None;
    return;
  }
  const char *source = call.texts.bytes + text.offset;
  const char *middle = call.texts.bytes + replacement.offset;
  const uint32_t target = call.texts.used;
  char *bytes = call.texts.bytes + target;
  if (IsAscii(source, text.length)) [[likely]] {
    const uint32_t tail = std::min(position + n, text.length);
    CopyBytes(bytes, source, position);
    CopyBytes(bytes + position, middle, replacement.length);
    CopyBytes(bytes + position + replacement.length, source + tail, text.length - tail);
    SetText(call.texts, call.Result(), target, position + replacement.length + text.length - tail);
    return;
  }
  char *first = bytes + text.length + replacement.length + 1;
  char *second = first + text.length + 1;
  std::memcpy(first, source, text.length);
  std::memcpy(second, middle, replacement.length);
  first[text.length] = second[replacement.length] = '\0';
  WRENStrReplace(bytes, first, second, static_cast<int32_t>(position), static_cast<int32_t>(n));
  SetText(call.texts, call.Result(), target, static_cast<uint32_t>(std::strlen(bytes)));
}

void InnerStrIff(InnerCall call) {
  const TextSpan span = TextOf(call, SelectedPlace(call));
  SetPart(call, span, 0, span.length);
}
