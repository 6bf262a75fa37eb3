// Scans a text while it is being edited: quotes, brackets, calls, words. Positions are units of
// UTF-16; the text need not be valid.
#ifndef ORLI11_WINDOWS_QT_TEXT_SCAN_H
#define ORLI11_WINDOWS_QT_TEXT_SCAN_H

#include <QString>
#include <vector>

namespace qt_windows {

struct Piece {
  qsizetype start = 0, end = 0;

  bool IsEmpty() const { return start == end; }
};

// The literals in single quotes that overlap a range.
std::vector<Piece> QuotedBetween(QStringView text, Piece part);

// The pair of matching brackets next to the caret; -1 when there is none.
struct BracketPair {
  qsizetype open = -1, close = -1;
};
BracketPair BracketsAt(QStringView text, qsizetype caret);

// The innermost call that the caret is in: its function, and the number of arguments before the
// caret.
struct Call {
  QStringView name;  // empty when there is none
  int argument = 0;
};
Call CallAround(QStringView text, qsizetype caret);

// The word at the caret or before it; empty in quotes and when there is none.
Piece WordAt(QStringView text, qsizetype caret);

}  // namespace qt_windows

#endif
