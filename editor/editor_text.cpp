#include "editor/editor_text.h"

#include <cstring>

#include "engine/module.h"
#include "platform/owned.h"
#include "platform/strings.h"
#include "platform/text.h"
#include "platform/window_system.h"

EditorText LoadText(uint32_t id) {
  EditorText loaded = {};
  LoadStringA(moduleHandle, id, loaded.text, sizeof loaded.text);
  return loaded;
}

void AppendText(EditorText &text, uint32_t id) {
  const size_t length = std::strlen(text.text);
  if (length + 1 < sizeof text.text) {
    LoadStringA(moduleHandle, id, text.text + length,
                static_cast<int32_t>(sizeof text.text - length));
  }
}

bool SetJoinedTitle(OrlWindow window, const char *left, const char *right) {
  constexpr char kBetween[] = " - ";
  const size_t size = std::strlen(left) + std::strlen(right) + sizeof kBetween;
  const OwnedText title = size <= INT32_MAX ? Allocate<char>(size) : nullptr;
  if (title == nullptr) {
    return false;
  }
  lstrcpyA(title.get(), left);
  lstrcatA(title.get(), kBetween);
  lstrcatA(title.get(), right);
  Windows()->SetWindowText(window, title.get());
  return true;
}
