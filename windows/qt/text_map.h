// Texts at the interface, bytes in the active code page, and what widgets show of them.
//
// Every text comes back byte for byte. Bytes that are no character of the code page, and characters
// that the text widgets take for something else, are shown as lone surrogates: byte b as U+DC00 +
// b, as Python's "surrogateescape" does (PEP 383). In a text of several lines "\n" is a paragraph
// break (U+2029 in the widget's raw text), which is what the user makes, as formulas take no "\r";
// "\r\n" is a line break within the paragraph (U+2028). In a text of one line both are escaped.
#ifndef ORLI11_WINDOWS_QT_TEXT_MAP_H
#define ORLI11_WINDOWS_QT_TEXT_MAP_H

#include <QByteArray>
#include <QString>
#include <cstdint>

namespace qt_windows {

enum class TextKind { OneLine, Lines };

// What a widget is to hold for these bytes; null is the empty text.
QString ShownText(const char *bytes, TextKind kind);
// The bytes of what a widget holds. Characters that the code page does not have are left out.
QByteArray BytesOfText(QStringView shown, TextKind kind);

// The bytes of the first `position` units of UTF-16, and the units that the first `byte` bytes
// make: a place inside of a character is its beginning. Beyond the text is its end.
int32_t ByteOfPosition(QStringView shown, qsizetype position, TextKind kind);
qsizetype PositionOfByte(QStringView shown, int32_t byte, TextKind kind);

// What may be entered of a text from the keyboard or the clipboard: characters of the code page
// alone, breaks of every kind as "\n", in a text of one line nothing from the
// first break on, and at most `room` bytes in whole characters (-1: any number). `whole` becomes
// false when something was left out.
QString EnterableText(const QString &entered, TextKind kind, int32_t room, bool *whole);

// What goes out to other programs of what a widget holds: every break as "\n", escapes as the
// replacement character.
QString HarmlessText(QStringView shown);

// A caption or title: a text of one line that nobody reads back from the widget. Escapes are shown
// as the replacement character.
QString CaptionText(const char *bytes);

// The bytes of characters that a key has typed; empty when the code page does not have them.
QByteArray TypedBytes(const QString &typed);

}  // namespace qt_windows

#endif
