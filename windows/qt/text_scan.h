// What stands where in a text while it is written: quotes, brackets, calls, words. Places are units
// of UTF-16; the text need not be right.
#ifndef ORLI11_WINDOWS_QT_TEXT_SCAN_H
#define ORLI11_WINDOWS_QT_TEXT_SCAN_H

#include <QString>
#include <vector>

namespace qt_windows {

struct Piece {
  qsizetype start = 0, end = 0;

  bool IsEmpty() const { return start == end; }
};

// The literals in single quotes that have a part between two places.
std::vector<Piece> QuotedBetween(QStringView text, Piece part);

// The two brackets that belong together, of which one stands beside the caret; -1 when there are
// none.
struct BracketPair {
  qsizetype open = -1, close = -1;
};
BracketPair BracketsAt(QStringView text, qsizetype caret);

// The innermost call that the caret is inside of: its function, and how many arguments end before.
struct Call {
  QStringView name;  // empty when there is none
  int argument = 0;
};
Call CallAround(QStringView text, qsizetype caret);

// The word that the caret stands behind or in; empty in quotes and behind what is none.
Piece WordAt(QStringView text, qsizetype caret);

}  // namespace qt_windows

#endif
