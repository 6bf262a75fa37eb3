// Functions on texts, in the buffer where their argument is. Texts of ASCII alone, which are the
// same characters in every code page, are handled here; others by the routines for characters.
#include <algorithm>
#include <cstring>

#include "functions/inner_routines.h"

namespace {

constexpr uint64_t kHighBits = UINT64_C(0x8080808080808080);

uint64_t LoadWord(const char *bytes) {
  uint64_t word = 0;
  std::memcpy(&word, bytes, sizeof word);
  return word;
}

// Whether the first `length` bytes are ASCII. The buffer may be read beyond them.
bool IsAscii(const char *bytes, uint32_t length) {
  for (; length >= 8; bytes += 8, length -= 8) {
    if ((LoadWord(bytes) & kHighBits) != 0) {
      return false;
    }
  }
  const uint64_t mask = (UINT64_C(1) << (length * 8)) - 1;
  return (LoadWord(bytes) & kHighBits & mask) == 0;
}

// The text of an argument, as a text of the buffer in any case; false when out of memory.
bool TakeText(InnerCall &call, uint32_t place, TextSpan *span) {
  *span = TextOf(call, place);
  if (span->length == 0 && ArgumentOf(call, place, ValueForm::Text) == nullptr) {
    if (!TextReserve(call.texts, span->offset, 1)) {
      call.result->form = ValueForm::None;
      return false;
    }
    call.texts.bytes[span->offset] = '\0';
  }
  return true;
}

// Bytes of the first n characters.
uint32_t BytesOf(const InnerCall &call, const TextSpan &span, int32_t n) {
  const char *text = call.texts.bytes + span.offset;
  const uint32_t most = std::min(span.length, static_cast<uint32_t>(std::max(n, 0)));
  if (IsAscii(text, most)) {
    return most;
  }
  return static_cast<uint32_t>(WRENStrAdvance(text, n) - text);
}

void SetPart(InnerCall &call, const TextSpan &span, uint32_t from, uint32_t length) {
  SetText(call.texts, call.result, span.offset + from, length);
}

uint32_t LeadingBlanksOf(const char *text, const TextSpan &span) {
  uint32_t blanks = 0;
  while (blanks < span.length && text[blanks] == ' ') {
    blanks++;
  }
  return blanks;
}

// Bytes without the blanks at the end, from `from` on. A blank may be the second half of a
// character, so other texts than ASCII are walked from the start.
uint32_t TrimmedEnd(char *text, uint32_t from, uint32_t length) {
  if (!IsAscii(text + from, length - from)) {
    WRENStrRTrim(text + from, text + from);
    return from + static_cast<uint32_t>(std::strlen(text + from));
  }
  while (length > from && text[length - 1] == ' ') {
    length--;
  }
  return length;
}

// Changes the case of ASCII letters from `first` on; `change` handles other texts.
void ChangeCase(InnerCall &call, char first, void (*change)(char *)) {
  TextSpan span;
  if (!TakeText(call, 0, &span)) {
    return;
  }
  char *text = call.texts.bytes + span.offset;
  if (IsAscii(text, span.length)) {
    for (uint32_t i = 0; i < span.length; i++) {
      const bool letter = static_cast<uint8_t>(text[i] - first) < 26;
      text[i] = static_cast<char>(text[i] ^ (letter ? 'a' - 'A' : 0));
    }
  } else {
    change(text);
  }
  SetPart(call, span, 0, span.length);
}

}  // namespace

void InnerStrLeft(InnerCall &call) {
  TextSpan span;
  if (TakeText(call, 0, &span)) {
    SetPart(call, span, 0, BytesOf(call, span, CountOf(call, 1)));
  }
}

void InnerStrRight(InnerCall &call) {
  TextSpan span;
  if (!TakeText(call, 0, &span)) {
    return;
  }
  char *text = call.texts.bytes + span.offset;
  const int32_t n = CountOf(call, 1);
  const int32_t left = WRENStrChars(text) - std::max(n, 0);
  const uint32_t from = left <= 0 ? 0 : BytesOf(call, span, left);
  SetPart(call, span, from, span.length - from);
}

void InnerStrMid(InnerCall &call) {
  TextSpan span;
  if (!TakeText(call, 0, &span)) {
    return;
  }
  const int32_t position = CountOf(call, 1);
  if (position < 0) {
    SetPart(call, span, 0, 0);
    return;
  }
  const uint32_t from = BytesOf(call, span, position);
  const TextSpan rest = {span.offset + from, span.length - from};
  SetPart(call, rest, 0, BytesOf(call, rest, CountOf(call, 2)));
}

void InnerStrLength(InnerCall &call) {
  const TextSpan span = TextOf(call, 0);
  const bool ascii = span.length == 0 || IsAscii(call.texts.bytes + span.offset, span.length);
  const int64_t characters = ascii ? span.length : WRENStrChars(call.texts.bytes + span.offset);
  SetNumber(call.result, {characters, 0});
}

void InnerStrTrim(InnerCall &call) {
  TextSpan span;
  if (TakeText(call, 0, &span)) {
    char *text = call.texts.bytes + span.offset;
    const uint32_t from = LeadingBlanksOf(text, span);
    SetPart(call, span, from, TrimmedEnd(text, from, span.length) - from);
  }
}

void InnerStrLTrim(InnerCall &call) {
  TextSpan span;
  if (TakeText(call, 0, &span)) {
    const uint32_t from = LeadingBlanksOf(call.texts.bytes + span.offset, span);
    SetPart(call, span, from, span.length - from);
  }
}

void InnerStrRTrim(InnerCall &call) {
  TextSpan span;
  if (TakeText(call, 0, &span)) {
    SetPart(call, span, 0, TrimmedEnd(call.texts.bytes + span.offset, 0, span.length));
  }
}

void InnerStrUpper(InnerCall &call) {
  ChangeCase(call, 'a', WRENStrUpper);
}

void InnerStrLower(InnerCall &call) {
  ChangeCase(call, 'A', WRENStrLower);
}

void InnerStrIff(InnerCall &call) {
  TextSpan span;
  if (TakeText(call, SelectedPlace(call), &span)) {
    SetPart(call, span, 0, span.length);
  }
}
