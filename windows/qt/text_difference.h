// The difference of two texts.
#ifndef ORLI11_WINDOWS_QT_TEXT_DIFFERENCE_H
#define ORLI11_WINDOWS_QT_TEXT_DIFFERENCE_H

#include <QStringView>
#include <algorithm>

namespace qt_windows {

// The first `prefix` and the last `suffix` units are the same. That may split a surrogate pair,
// which documents allow: it is whole again after the change.
struct Difference {
  qsizetype prefix = 0, suffix = 0;
};

inline Difference Compare(QStringView from, QStringView to) {
  const auto prefix = std::mismatch(from.begin(), from.end(), to.begin(), to.end()).first;
  const qsizetype same = prefix - from.begin();
  const qsizetype most = std::min(from.size(), to.size()) - same;
  const auto suffix = std::mismatch(from.rbegin(), from.rbegin() + most, to.rbegin()).first;
  return {same, suffix - from.rbegin()};
}

}  // namespace qt_windows

#endif
