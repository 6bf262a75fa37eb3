// Blocks, strings, and the lookup of windows by handle.
#include "windows/headless/state.h"

#include <algorithm>
#include <cassert>
#include <cstring>

namespace headless {

Session session;

namespace {

// A handle is not an address of user space: its upper bits are a tag.
constexpr uint64_t kTag = uint64_t{0x4F52} << 48;
constexpr uint64_t kTagBits = uint64_t{0xFFFF} << 48;
constexpr uint32_t kControlBits = 12;

}  // namespace

const char *Bytes(const Text &text) {
  return text.bytes == nullptr ? "" : text.bytes;
}

bool Reserve(void **entries, int32_t *capacity, int32_t needed, uint32_t entrySize) {
  if (needed <= *capacity) {
    return true;
  }
  const int64_t wanted = std::max<int64_t>(needed, int64_t{*capacity} * 2);
  const int64_t size = wanted * entrySize;
  if (wanted > INT32_MAX / 2 || size > INT32_MAX) {
    return false;
  }
  void *larger = WRENMemRealloc(*entries, static_cast<uint32_t>(size));
  if (larger == nullptr) {
    return false;
  }
  *entries = larger;
  *capacity = static_cast<int32_t>(wanted);
  return true;
}

bool ReplaceBytes(Text *text, int32_t from, int32_t to, const char *bytes, int32_t count) {
  assert(from >= 0 && from <= to && to <= text->length && count >= 0);
  const int64_t length = int64_t{text->length} - (to - from) + count;
  if (length >= INT32_MAX / 2) {
    return false;
  }
  void *block = text->bytes;
  if (!Reserve(&block, &text->capacity, static_cast<int32_t>(length) + 1, 1) || block == nullptr) {
    return false;
  }
  text->bytes = static_cast<char *>(block);
  std::memmove(text->bytes + from + count, text->bytes + to,
               static_cast<size_t>(text->length - to));
  std::copy_n(bytes, count, text->bytes + from);
  text->length = static_cast<int32_t>(length);
  text->bytes[length] = 0;
  return true;
}

bool SetText(Text *text, const char *bytes) {
  return ReplaceBytes(text, 0, text->length, bytes, WRENStrLen(bytes));
}

void FreeText(Text *text) {
  const OwnedText bytes(text->bytes);
  *text = {};
}

OwnedText CopyOfText(const char *text) {
  Text copy = {};
  SetText(&copy, text);
  return OwnedText(copy.bytes);
}

int32_t CopyOut(const char *text, char *buffer, int32_t size) {
  const int32_t length = WRENStrLen(text);
  if (buffer != nullptr && size > 0) {
    const int32_t copied = std::min(length, size - 1);
    std::copy_n(text, copied, buffer);
    buffer[copied] = 0;
  }
  return length;
}

OrlWindow HandleOf(uint64_t serial, uint64_t control) {
  static_assert(kMostControls < int64_t{1} << kControlBits);
  assert(control <= kMostControls);
  return reinterpret_cast<OrlWindow>(kTag | serial << kControlBits | control);
}

Place Find(OrlWindow window) {
  const auto handle = reinterpret_cast<uint64_t>(window);
  if ((handle & kTagBits) != kTag) {
    return {};
  }
  const uint64_t serial = (handle & ~kTagBits) >> kControlBits;
  const uint64_t control = handle & ((uint64_t{1} << kControlBits) - 1);
  for (Dialog *dialog = session.newest; dialog != nullptr; dialog = dialog->older) {
    if (dialog->serial != serial) {
      continue;
    }
    if (control > static_cast<uint64_t>(dialog->controlCount)) {
      return {};
    }
    return {dialog, control == 0 ? nullptr : &dialog->controls[control - 1]};
  }
  return {};
}

Control *FindControl(OrlWindow window) {
  return Find(window).control;
}

Dialog *FindDialog(OrlWindow window) {
  const Place place = Find(window);
  return place.control == nullptr ? place.dialog : nullptr;
}

Control *ControlById(Dialog *dialog, int32_t id) {
  if (dialog == nullptr || id == ORL_HEADLESS_SELF) {
    return nullptr;
  }
  Control *end = dialog->controls + dialog->controlCount;
  Control *found =
      std::find_if(dialog->controls, end, [id](const Control &each) { return each.id == id; });
  return found == end ? nullptr : found;
}

Dialog *TopModal() {
  Dialog *dialog = session.newest;
  while (dialog != nullptr && !dialog->modal) {
    dialog = dialog->older;
  }
  return dialog;
}

int32_t ModalCount() {
  int32_t count = 0;
  for (const Dialog *dialog = session.newest; dialog != nullptr; dialog = dialog->older) {
    count += dialog->modal ? 1 : 0;
  }
  return count;
}

bool IsInFront(const Dialog *dialog) {
  const Dialog *top = TopModal();
  if (top == nullptr) {
    return true;
  }
  while (dialog != nullptr && dialog != top) {
    dialog = Find(dialog->parent).dialog;
  }
  return dialog == top;
}

bool IsUsable(const Dialog *dialog) {
  const Dialog *top = TopModal();
  return dialog->visible && dialog->enabled && !dialog->going && IsInFront(dialog) &&
         (top == nullptr || !top->ended);
}

bool IsUsable(const Control *control) {
  return control->visible && control->enabled && IsUsable(control->dialog);
}

int32_t Width(const OrlRect &rect) {
  return rect.right - rect.left;
}

int32_t Height(const OrlRect &rect) {
  return rect.bottom - rect.top;
}

}  // namespace headless
