#include "windows/qt/text_map.h"

#include <iconv.h>

#include <QStringList>
#include <algorithm>
#include <array>
#include <cstring>
#include <vector>

#include "closed/wren/utf8.h"
#include "platform/text.h"
#include "wreni11.h"

namespace qt_windows {

namespace {

constexpr char16_t kLineBreak = 0x2028;
constexpr char16_t kParagraphBreak = 0x2029;
constexpr char16_t kReplacement = 0xFFFD;
constexpr char16_t kEscape = 0xDC00;  // of byte 0
constexpr int32_t kLongest = 4;       // bytes of a character

// Characters that the text widgets treat as breaks, frame borders or pictures.
constexpr char16_t kTakenForElse[] = {kLineBreak, kParagraphBreak, 0xFDD0, 0xFDD1, 0xFFFC};

bool IsTakenForElse(char32_t code) {
  for (const char16_t each : kTakenForElse) {
    if (code == each) {
      return true;
    }
  }
  return false;
}

bool IsBreak(QChar unit) {
  return unit == u'\r' || unit == u'\n' || unit == kLineBreak || unit == kParagraphBreak;
}

// ---- Code pages 1252 and 932 ----

// Characters of a code page by their bytes, a single one or lead << 8 | trail, and back; 0 for
// none. Several characters may have the same bytes, but `characters` has only those that convert
// both ways: for duplicates in the code page the one that is written.
struct CodeTable {
  std::vector<char16_t> characters = std::vector<char16_t>(0x10000);
  std::vector<uint16_t> codes = std::vector<uint16_t>(0x10000);
};

// Converts one character between encodings, as one number; 0 when it cannot be converted.
// `lowFirst` is the byte order of the output.
uint32_t Converted(iconv_t conversion, const char *bytes, size_t count, bool lowFirst) {
  char *from = const_cast<char *>(bytes);
  std::array<uint8_t, 8> target = {};
  char *to = reinterpret_cast<char *>(target.data());
  size_t room = target.size();
  const size_t lost = iconv(conversion, &from, &count, &to, &room);
  const size_t made = target.size() - room;
  if (lost != 0 || count != 0 || made == 0 || made > 2) {
    iconv(conversion, nullptr, nullptr, nullptr, nullptr);
    return 0;
  }
  if (made == 1) {
    return target[0];
  }
  return static_cast<uint32_t>(lowFirst ? target[0] | target[1] << 8 : target[0] << 8 | target[1]);
}

CodeTable MakeTable(const char *codePage) {
  CodeTable table;
  iconv_t encoder = iconv_open(codePage, "UTF-16LE");
  iconv_t decoder = iconv_open("UTF-16LE", codePage);
  const auto failed = reinterpret_cast<iconv_t>(-1);
  const bool opened = encoder != failed && decoder != failed;
  for (uint32_t code = 1; opened && code < 0x10000; ++code) {
    const char units[] = {static_cast<char>(code), static_cast<char>(code >> 8)};
    table.codes[code] = static_cast<uint16_t>(Converted(encoder, units, 2, false));
  }
  for (uint32_t code = 1; opened && code < 0x10000; ++code) {
    const char bytes[] = {static_cast<char>(code >> 8), static_cast<char>(code)};
    const bool single = code < 0x100;
    const uint32_t character = Converted(decoder, single ? bytes + 1 : bytes, single ? 1 : 2, true);
    // Two characters of one byte each yield two units, which are not one character.
    if (character != 0 && table.codes[character] == code) {
      table.characters[code] = static_cast<char16_t>(character);
    }
  }
  for (iconv_t each : {encoder, decoder}) {
    if (each != failed) {
      iconv_close(each);
    }
  }
  return table;
}

const CodeTable &TableOf(int32_t page) {
  if (page == kCodePage932) {
    static const CodeTable japanese = MakeTable("CP932");
    return japanese;
  }
  static const CodeTable western = MakeTable("CP1252");
  return western;
}

// ---- Characters ----

// The character of the bytes; 0 when they are not one. In UTF-8 more than one byte is a valid
// sequence, as WRENStrAdvance determined its length.
char32_t CharacterOf(const char *bytes, int32_t count, int32_t page) {
  const auto first = static_cast<uint8_t>(bytes[0]);
  if (page != kCodePageUtf8) {
    const int code = count == 1 ? first : first << 8 | static_cast<uint8_t>(bytes[1]);
    return TableOf(page).characters[static_cast<size_t>(code)];
  }
  if (count == 1) {
    return first < 0x80 ? first : 0;
  }
  uint32_t code = 0;
  DecodeUtf8(bytes, &code);
  return code;
}

struct Coded {
  int32_t units = 1;  // of the character in UTF-16
  int32_t count = 0;  // of its bytes; 0 when the code page does not have it
  std::array<char, kLongest + 1> bytes = {};
};

// The character at a position that is neither a break nor an escape. Lone surrogates have no bytes.
Coded CharacterAt(QStringView text, qsizetype at, int32_t page) {
  Coded coded;
  char32_t code = text[at].unicode();
  if (text[at].isHighSurrogate() && at + 1 < text.size() && text[at + 1].isLowSurrogate()) {
    code = QChar::surrogateToUcs4(text[at], text[at + 1]);
    coded.units = 2;
  }
  if (code == 0 || QChar::isSurrogate(code)) {
    return coded;
  }
  if (page == kCodePageUtf8) {
    coded.count = static_cast<int32_t>(EncodeUtf8(code, coded.bytes.data()));
    return coded;
  }
  const uint32_t found = code < 0x10000 ? TableOf(page).codes[code] : 0;
  if (found >= 0x100) {
    coded.bytes[0] = static_cast<char>(found >> 8);
  }
  coded.count = found == 0 ? 0 : found < 0x100 ? 1 : 2;
  if (found != 0) {
    coded.bytes[static_cast<size_t>(coded.count) - 1] = static_cast<char>(found);
  }
  return coded;
}

// The same for everything that a widget may hold.
Coded ShownAt(QStringView shown, qsizetype at, TextKind kind, int32_t page) {
  const char16_t unit = shown[at].unicode();
  if (unit == kParagraphBreak || unit == kLineBreak) {
    const bool lines = kind == TextKind::Lines;
    return !lines                    ? Coded{}
           : unit == kParagraphBreak ? Coded{1, 1, {'\n'}}
                                     : Coded{1, 2, {'\r', '\n'}};
  }
  if (unit > kEscape && unit <= kEscape + 0xFF) {  // alone, as pairs are passed as a whole
    return {1, 1, {static_cast<char>(unit - kEscape)}};
  }
  return CharacterAt(shown, at, page);
}

// Appends the display form of the character or break at an address; returns its bytes.
int32_t Show(const char *at, TextKind kind, int32_t page, QString *shown) {
  if (kind == TextKind::Lines && at[0] == '\r' && at[1] == '\n') {
    shown->append(QChar(kLineBreak));
    return 2;
  }
  if (kind == TextKind::Lines && at[0] == '\n') {
    shown->append(QChar(kParagraphBreak));
    return 1;
  }
  const auto count = static_cast<int32_t>(WRENStrAdvance(at, 1) - at);
  const char32_t code = at[0] == '\r' || at[0] == '\n' ? 0 : CharacterOf(at, count, page);
  if (code >= 0x10000) {
    shown->append(QChar(QChar::highSurrogate(code)));
    shown->append(QChar(QChar::lowSurrogate(code)));
  } else if (code != 0 && !IsTakenForElse(code)) {
    shown->append(QChar(static_cast<char16_t>(code)));
  } else {
    for (int32_t index = 0; index < count; ++index) {
      shown->append(QChar(static_cast<char16_t>(kEscape + static_cast<uint8_t>(at[index]))));
    }
  }
  return count;
}

}  // namespace

QString ShownText(const char *bytes, TextKind kind) {
  QString shown;
  if (bytes != nullptr) {
    const int32_t page = ActiveCodePage();
    shown.reserve(static_cast<qsizetype>(std::strlen(bytes)));
    while (*bytes != '\0') {
      bytes += Show(bytes, kind, page, &shown);
    }
  }
  return shown;
}

QByteArray BytesOfText(QStringView shown, TextKind kind) {
  QByteArray bytes;
  const int32_t page = ActiveCodePage();
  bytes.reserve(shown.size());
  for (qsizetype at = 0; at < shown.size();) {
    const Coded coded = ShownAt(shown, at, kind, page);
    bytes.append(coded.bytes.data(), coded.count);
    at += coded.units;
  }
  return bytes;
}

int32_t ByteOfPosition(QStringView shown, qsizetype position, TextKind kind) {
  const int32_t page = ActiveCodePage();
  int32_t byte = 0;
  for (qsizetype at = 0; at < shown.size();) {
    const Coded coded = ShownAt(shown, at, kind, page);
    at += coded.units;
    if (at > position) {
      break;
    }
    byte += coded.count;
  }
  return byte;
}

qsizetype PositionOfByte(QStringView shown, int32_t byte, TextKind kind) {
  const int32_t page = ActiveCodePage();
  int32_t passed = 0;
  qsizetype at = 0;
  while (at < shown.size()) {
    const Coded coded = ShownAt(shown, at, kind, page);
    passed += coded.count;
    if (passed > byte) {
      break;
    }
    at += coded.units;
  }
  return at;
}

QString EnterableText(const QString &entered, TextKind kind, int32_t limit, bool *whole) {
  const int32_t page = ActiveCodePage();
  QString enterable;
  for (qsizetype at = 0; at < entered.size();) {
    const bool isBreak = IsBreak(entered[at]);
    Coded coded = isBreak ? Coded{1, 1, {'\n'}} : CharacterAt(entered, at, page);
    if ((isBreak && kind == TextKind::OneLine) || (limit >= 0 && coded.count > limit)) {
      *whole = false;
      break;
    }
    const bool pair = isBreak && entered.mid(at, 2) == QLatin1String("\r\n");
    at += pair ? 2 : coded.units;
    limit -= limit >= 0 ? coded.count : 0;
    if (coded.count == 0) {
      *whole = false;
    } else {
      Show(coded.bytes.data(), kind, page, &enterable);
    }
  }
  return enterable;
}

QString HarmlessText(QStringView shown) {
  QString text = shown.toString();
  for (qsizetype at = 0; at < text.size(); ++at) {
    if (text[at] == kParagraphBreak || text[at] == kLineBreak) {
      text[at] = u'\n';
    } else if (text[at].isHighSurrogate()) {
      ++at;  // of a pair; escapes are the other half
    } else if (text[at].isLowSurrogate()) {
      text[at] = QChar(kReplacement);
    }
  }
  return text;
}

QString CaptionText(const char *bytes) {
  return HarmlessText(ShownText(bytes, TextKind::OneLine));
}

QString PlainTip(const QString &text) {
  constexpr qsizetype kLongLine = 100;
  const QStringList lines = text.split(u'\n');
  const bool isLong = std::any_of(lines.begin(), lines.end(),
                                  [](const QString &line) { return line.size() > kLongLine; });
  return text.isEmpty() ? text
                        : QStringLiteral("<p style=\"white-space:%1\">%2</p>")
                              .arg(isLong ? "pre-wrap" : "pre", text.toHtmlEscaped());
}

QByteArray TypedBytes(const QString &typed) {
  const int32_t page = ActiveCodePage();
  QByteArray bytes;
  for (qsizetype at = 0; at < typed.size();) {
    const Coded coded = CharacterAt(typed, at, page);
    if (coded.count == 0) {
      return {};
    }
    bytes.append(coded.bytes.data(), coded.count);
    at += coded.units;
  }
  return bytes;
}

}  // namespace qt_windows
