#include "resources/bitmaps.h"

namespace {

#include "resources/bitmaps.inc"

char Upper(char letter) {
  return letter >= 'a' && letter <= 'z' ? static_cast<char>(letter - 'a' + 'A') : letter;
}

bool SameName(const char *left, const char *right) {
  for (; Upper(*left) == Upper(*right); ++left, ++right) {
    if (*left == 0) {
      return true;
    }
  }
  return false;
}

}  // namespace

const OrlBitmap *FindBitmap(const char *name) {
  for (const OrlBitmap &bitmap : kBitmaps) {
    if (name != nullptr && SameName(bitmap.name, name)) {
      return &bitmap;
    }
  }
  return nullptr;
}
