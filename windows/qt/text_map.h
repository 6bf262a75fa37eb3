// Conversion between texts at the interface, bytes in the active code page, and their form in
// widgets.
//
// Every text is preserved byte for byte. Bytes that are not a character of the code page, and
// characters that have a special meaning in text widgets, are shown as lone surrogates: byte b as
// U+DC00 + b, as Python's "surrogateescape" does (PEP 383). In a text of several lines "\n" is a
// paragraph break (U+2029 in the widget's raw text), which is what the Return key enters, as
// formulas cannot contain "\r"; "\r\n" is a line break within the paragraph (U+2028). In a text of
// one line both are escaped.
#ifndef ORLI11_WINDOWS_QT_TEXT_MAP_H
#define ORLI11_WINDOWS_QT_TEXT_MAP_H

#include <QByteArray>
#include <QString>
#include <cstdint>

namespace qt_windows {

enum class TextKind { OneLine, Lines };

// The widget's form of these bytes; null is the empty text.
QString ShownText(const char *bytes, TextKind kind);
// The bytes of a widget's text. Characters that the code page does not have are omitted.
QByteArray BytesOfText(QStringView shown, TextKind kind);

// The bytes of the first `position` units of UTF-16, and the units of the first `byte` bytes: a
// position inside a character means its start, and one beyond the text its end.
int32_t ByteOfPosition(QStringView shown, qsizetype position, TextKind kind);
qsizetype PositionOfByte(QStringView shown, int32_t byte, TextKind kind);

// The part of a text from the keyboard or the clipboard that may be entered: only characters of the
// code page, breaks of every kind as "\n", in a text of one line nothing from the first break on,
// and at most `limit` bytes in whole characters (-1: any number). `whole` becomes false when
// something was omitted.
QString EnterableText(const QString &entered, TextKind kind, int32_t limit, bool *whole);

// A widget's text for other programs: every break as "\n", escapes as the replacement character.
QString HarmlessText(QStringView shown);

// A caption or title: a text of one line that is never read back from the widget. Escapes are shown
// as the replacement character.
QString CaptionText(const char *bytes);

// The same for a tooltip, whose lines stay whole as long as a screen has room for them.
QString PlainTip(const QString &text);

// The bytes of characters that a key has typed; empty when the code page does not have them.
QByteArray TypedBytes(const QString &typed);

}  // namespace qt_windows

#endif
