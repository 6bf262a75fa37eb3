#include "windows/qt/text_scan.h"

namespace qt_windows {

namespace {

enum class Mark : uint8_t { Open, Close, Comma, Quoted, Named };

bool IsWordPart(QChar at) {
  return at.isLetterOrNumber() || at == u'_';
}

qsizetype StartOfWord(QStringView text, qsizetype end) {
  while (end > 0 && IsWordPart(text[end - 1])) {
    --end;
  }
  return end;
}

// The end of quoted text: after the next quote without a backslash before it, or the end of the
// text. Two quotes in a row are read as two adjacent pieces.
qsizetype EndOfQuoted(QStringView text, qsizetype start) {
  const QChar quote = text[start];
  qsizetype at = start + 1;
  while (at < text.size() && text[at] != quote) {
    const bool escapes = quote == u'\'' && text[at] == u'\\' && at + 1 < text.size();
    at += escapes && text[at + 1] == quote ? 2 : 1;
  }
  return std::min(at + 1, text.size());
}

// Calls `take(mark, start, end)` for each mark in order; false ends it.
template <class Take>
void EachMark(QStringView text, Take take) {
  for (qsizetype at = 0; at < text.size();) {
    const qsizetype start = at++;
    bool goOn = true;
    switch (text[start].unicode()) {
      case u'\'':
      case u'"':
        at = EndOfQuoted(text, start);
        goOn = take(text[start] == u'\'' ? Mark::Quoted : Mark::Named, start, at);
        break;
      case u'(':
        goOn = take(Mark::Open, start, at);
        break;
      case u')':
        goOn = take(Mark::Close, start, at);
        break;
      case u',':
        goOn = take(Mark::Comma, start, at);
        break;
      default:
        break;
    }
    if (!goOn) {
      return;
    }
  }
}

}  // namespace

std::vector<Piece> QuotedBetween(QStringView text, Piece part) {
  std::vector<Piece> quoted;
  EachMark(text, [&](Mark mark, qsizetype start, qsizetype end) {
    if (mark == Mark::Quoted && end > part.start && start < part.end) {
      quoted.push_back({start, end});
    }
    return start < part.end;
  });
  return quoted;
}

BracketPair BracketsAt(QStringView text, qsizetype caret) {
  std::vector<qsizetype> open;
  BracketPair found;
  const auto isBeside = [caret](qsizetype place) { return place == caret || place + 1 == caret; };
  EachMark(text, [&](Mark mark, qsizetype start, qsizetype /*end*/) {
    if (mark == Mark::Open) {
      open.push_back(start);
    } else if (mark == Mark::Close && !open.empty()) {
      if (isBeside(open.back()) || isBeside(start)) {
        found = {open.back(), start};
      }
      open.pop_back();
    }
    // One after the caret, which the user looks at, comes after those inside it.
    return found.open < 0 || start <= caret;
  });
  return found;
}

Call CallAround(QStringView text, qsizetype caret) {
  std::vector<std::pair<qsizetype, int>> open;  // place and commas
  EachMark(text, [&](Mark mark, qsizetype start, qsizetype end) {
    const bool isBefore = end <= caret;
    if (isBefore && mark == Mark::Open) {
      open.emplace_back(start, 0);
    } else if (isBefore && mark == Mark::Close && !open.empty()) {
      open.pop_back();
    } else if (isBefore && mark == Mark::Comma && !open.empty()) {
      ++open.back().second;
    }
    return isBefore;
  });
  while (!open.empty()) {
    const Piece name = {StartOfWord(text, open.back().first), open.back().first};
    if (!name.IsEmpty()) {
      return {text.mid(name.start, name.end - name.start), open.back().second};
    }
    open.pop_back();  // brackets around a part of an argument
  }
  return {};
}

Piece WordAt(QStringView text, qsizetype caret) {
  Piece word = {StartOfWord(text, caret), caret};
  while (word.end < text.size() && IsWordPart(text[word.end])) {
    ++word.end;
  }
  bool isQuoted = false;
  EachMark(text, [&](Mark mark, qsizetype start, qsizetype end) {
    const bool quotes = mark == Mark::Quoted || mark == Mark::Named;
    isQuoted = isQuoted || (quotes && start < caret && caret < end);
    isQuoted = isQuoted || (quotes && start < caret && end == text.size() && caret == end &&
                            (end - start == 1 || text[end - 1] != text[start]));
    return start < caret;
  });
  return isQuoted ? Piece{caret, caret} : word;
}

}  // namespace qt_windows
