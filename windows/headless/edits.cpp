// Edits: text in bytes, changed by the user in whole characters.
//
// A byte is as wide as the font's average character; lines are not wrapped.
#include "windows/headless/state.h"

#include <algorithm>
#include <cstdlib>
#include <cstring>

#include "platform/text.h"

namespace headless {

namespace {

bool HasLines(const Control *edit) {
  return (edit->style & ORL_STYLE_LINES) != 0;
}

// The bytes of the character at the address: 0 at the end, two for a line break.
int32_t CharacterSize(const char *text) {
  if (text[0] == '\r' && text[1] == '\n') {
    return 2;
  }
  return static_cast<int32_t>(WRENStrAdvance(text, 1) - text);
}

// The first start of a character (or the end) at `position` or after it.
int32_t CharacterFrom(const Text &text, int32_t position) {
  const int32_t begin = CharacterAt(text, position);
  return begin == position ? position : begin + CharacterSize(Bytes(text) + begin);
}

int32_t PreviousCharacter(const Text &text, int32_t position) {
  return position <= 0 ? 0 : CharacterAt(text, position - 1);
}

int32_t NextCharacter(const Text &text, int32_t position) {
  return std::min(text.length, CharacterFrom(text, position + 1));
}

int32_t SelectionStart(const Edit &edit) {
  return std::min(edit.anchor, edit.caret);
}

int32_t SelectionEnd(const Edit &edit) {
  return std::max(edit.anchor, edit.caret);
}

void Select(Control *edit, int32_t anchor, int32_t caret) {
  edit->edit.anchor = anchor;
  edit->edit.caret = caret;
  edit->edit.typedCount = 0;
}

// ---- Lines ----

int32_t LineStart(const Control *edit, int32_t position) {
  const char *text = Bytes(edit->text);
  while (HasLines(edit) && position > 0 && text[position - 1] != '\n') {
    --position;
  }
  return HasLines(edit) ? position : 0;
}

// The end of the line's text, before its break.
int32_t LineEnd(const Control *edit, int32_t position) {
  if (!HasLines(edit)) {
    return edit->text.length;
  }
  const char *text = Bytes(edit->text);
  const int32_t start = LineStart(edit, position);
  const auto end = static_cast<int32_t>(std::strcspn(text + position, "\n")) + position;
  return text[end] == '\n' && end > start && text[end - 1] == '\r' ? end - 1 : end;
}

int32_t LineOf(const Control *edit, int32_t position) {
  const char *text = Bytes(edit->text);
  return HasLines(edit) ? static_cast<int32_t>(std::count(text, text + position, '\n')) : 0;
}

int32_t StartOfLine(const Control *edit, int32_t line) {
  const char *text = Bytes(edit->text);
  int32_t start = 0;
  for (; HasLines(edit) && line > 0; --line) {
    const char *end = std::strchr(text + start, '\n');
    if (end == nullptr) {
      break;
    }
    start = static_cast<int32_t>(end - text) + 1;
  }
  return start;
}

int32_t ByteAt(const Control *edit, int64_t line, int64_t column) {
  const int32_t start =
      StartOfLine(edit, static_cast<int32_t>(std::clamp<int64_t>(line, 0, edit->text.length)));
  const int64_t wanted = start + std::max<int64_t>(column, 0);
  return CharacterAt(edit->text,
                     static_cast<int32_t>(std::min<int64_t>(wanted, LineEnd(edit, start))));
}

int32_t ByteAtPoint(const Control *edit, intptr_t point) {
  const auto x = static_cast<int16_t>(point & 0xFFFF);
  const auto y = static_cast<int16_t>(point >> 16 & 0xFFFF);
  return ByteAt(edit, edit->edit.topLine + y / kFont.height,
                edit->edit.leftColumn + x / kFont.averageWidth);
}

// ---- Changes by the user ----

// The selected text, extended to whole characters.
struct Span {
  int32_t from, to;
};
Span Selected(const Control *edit) {
  const Edit &state = edit->edit;
  const int32_t from = CharacterAt(edit->text, SelectionStart(state));
  const bool empty = state.anchor == state.caret;
  return {from, empty ? from : CharacterFrom(edit->text, SelectionEnd(state))};
}

// Replaces the selection. Text beyond the limit is dropped, as a whole or by characters; when
// nothing of it is left, the selection is kept.
void Replace(Control *edit, const char *bytes, int32_t count, bool allOrNothing) {
  Edit &state = edit->edit;
  const auto [from, to] = Selected(edit);
  const int32_t spare = state.limit - (edit->text.length - (to - from));
  if (state.limit > 0 && count > std::max(0, spare)) {
    ++session.beeps;
    if (allOrNothing) {
      return;
    }
    const Text whole = {const_cast<char *>(bytes), count, 0};
    count = CharacterAt(whole, std::max(0, spare));
    if (count == 0) {
      return;
    }
  }
  if ((from == to && count == 0) || !ReplaceBytes(&edit->text, from, to, bytes, count)) {
    return;
  }
  Select(edit, from + count, from + count);
  state.modified = true;
  Notify(edit, ORL_EN_CHANGE);
}

// The selection, or without one the text between.
void Erase(Control *edit, int32_t from, int32_t to) {
  if (edit->edit.anchor == edit->edit.caret) {
    Select(edit, from, to);
  }
  Replace(edit, "", 0, false);
}

// False when the selected text could not be put on the clipboard.
bool Copy(const Control *edit) {
  const auto [from, to] = Selected(edit);
  Text copy = {};
  if (from == to || !ReplaceBytes(&copy, 0, 0, Bytes(edit->text) + from, to - from)) {
    return false;
  }
  ReplaceBlock(session.clipboard, OwnedText(copy.bytes));
  return true;
}

void Cut(Control *edit) {
  if (Copy(edit)) {
    Replace(edit, "", 0, false);
  }
}

void Clear(Control *edit) {
  if (edit->edit.anchor != edit->edit.caret) {
    Replace(edit, "", 0, false);
  }
}

void Paste(Control *edit) {
  // A copy, as the clipboard may change while the dialog is notified.
  const OwnedText text = session.clipboard == nullptr ? nullptr : CopyOfText(session.clipboard);
  if (text != nullptr) {
    const char *bytes = text.get();
    const size_t length = HasLines(edit) ? std::strlen(bytes) : std::strcspn(bytes, "\r\n");
    if (length > 0) {
      Replace(edit, bytes, static_cast<int32_t>(length), false);
    }
  }
}

// ---- Keys ----

void Type(Control *edit, uint8_t byte) {
  Edit &state = edit->edit;
  const bool goesOn =
      state.typedCount == 0 || ActiveCodePage() != kCodePageUtf8 || (byte >= 0x80 && byte < 0xC0);
  if (!goesOn) {
    state.typedCount = 0;  // the rest of that character never arrived
  }
  state.typed[state.typedCount++] = static_cast<char>(byte);
  if (state.typedCount >= CharacterBytes(static_cast<uint8_t>(state.typed[0]))) {
    char typed[sizeof(state.typed)];
    const int32_t count = state.typedCount;
    std::copy_n(state.typed, count, typed);
    state.typedCount = 0;
    Replace(edit, typed, count, true);
  }
}

// The characters of the Control key with C, V and X.
constexpr uint8_t kControlC = 3;
constexpr uint8_t kControlV = 22;
constexpr uint8_t kControlX = 24;

void TakeCharacter(Control *edit, uintptr_t code) {
  const auto byte = static_cast<uint8_t>(code);
  const bool pending = edit->edit.typedCount > 0;
  if (byte >= 32 || pending) {
    if (byte != 127 || pending) {
      Type(edit, byte);
    }
    return;
  }
  switch (byte) {
    case kControlC:
      Copy(edit);
      break;
    case kControlV:
      Paste(edit);
      break;
    case kControlX:
      Cut(edit);
      break;
    case '\b': {
      const int32_t caret = edit->edit.caret;
      Erase(edit, PreviousCharacter(edit->text, caret), CharacterFrom(edit->text, caret));
      break;
    }
    case '\t':
    case '\n':
      if (HasLines(edit)) {
        const char text = static_cast<char>(byte);
        Replace(edit, &text, 1, true);
      }
      break;
    default:
      break;
  }
}

// The position to which a key moves the caret.
int32_t MovedCaret(const Control *edit, uintptr_t key, bool far) {
  const Text &text = edit->text;
  const int32_t caret = edit->edit.caret;
  const int32_t start = LineStart(edit, caret);
  switch (key) {
    case ORL_VK_HOME:
      return far ? 0 : start;
    case ORL_VK_END:
      return far ? text.length : LineEnd(edit, caret);
    case ORL_VK_UP:
      if (HasLines(edit)) {
        return start == 0 ? caret : ByteAt(edit, LineOf(edit, caret) - 1, caret - start);
      }
      return PreviousCharacter(text, caret);
    case ORL_VK_DOWN:
      if (HasLines(edit)) {
        const bool last = std::strchr(Bytes(text) + caret, '\n') == nullptr;
        return last ? caret : ByteAt(edit, LineOf(edit, caret) + 1, caret - start);
      }
      return NextCharacter(text, caret);
    case ORL_VK_LEFT:
      return PreviousCharacter(text, caret);
    default:
      return NextCharacter(text, caret);
  }
}

void TakeEditKey(Control *edit, uintptr_t key) {
  const bool control = (session.keysHeld & ORL_HEADLESS_CONTROL) != 0;
  edit->edit.typedCount = 0;
  switch (key) {
    case ORL_VK_RETURN:
      if (HasLines(edit) && !control) {
        PressDefault(edit->dialog);
      }
      break;
    case ORL_VK_DELETE: {
      const int32_t caret = edit->edit.caret;
      Erase(edit, CharacterAt(edit->text, caret), NextCharacter(edit->text, caret));
      break;
    }
    case ORL_VK_HOME:
    case ORL_VK_END:
    case ORL_VK_LEFT:
    case ORL_VK_RIGHT:
    case ORL_VK_UP:
    case ORL_VK_DOWN: {
      const int32_t caret = MovedCaret(edit, key, control);
      const bool grows = (session.keysHeld & ORL_HEADLESS_SHIFT) != 0;
      Select(edit, grows ? edit->edit.anchor : caret, caret);
      break;
    }
    default:
      break;
  }
}

// ---- The mouse ----

void SelectWord(Control *edit, int32_t position) {
  const char *text = Bytes(edit->text);
  const int32_t end = position + static_cast<int32_t>(std::strcspn(text + position, " \t\r\n"));
  int32_t start = position;
  while (start > 0 && std::strchr(" \t\r\n", text[start - 1]) == nullptr) {
    --start;
  }
  Select(edit, start, end);
}

void TakeMouse(Control *edit, uint32_t message, intptr_t point) {
  const int32_t position = ByteAtPoint(edit, point);
  switch (message) {
    case ORL_WM_LBUTTONDOWN:
      edit->edit.dragging = true;
      Select(edit, position, position);
      SetFocusTo(edit->dialog, edit);
      break;
    case ORL_WM_LBUTTONDBLCLK:
      SelectWord(edit, position);
      break;
    default:
      if (edit->edit.dragging) {
        Select(edit, edit->edit.anchor, position);
      }
      edit->edit.dragging = edit->edit.dragging && message == ORL_WM_MOUSEMOVE;
      break;
  }
}

// ---- Messages ----

void SetSelection(Control *edit, uintptr_t wParam, intptr_t lParam) {
  const int32_t length = edit->text.length;
  const auto start = static_cast<int32_t>(wParam);
  const auto end = static_cast<int32_t>(lParam);
  if (start < 0) {
    Select(edit, edit->edit.caret, edit->edit.caret);
  } else {
    Select(edit, std::min(start, length), end < 0 ? length : std::min(end, length));
  }
}

intptr_t GetSelection(const Edit &edit, uintptr_t wParam, intptr_t lParam) {
  const int32_t start = SelectionStart(edit);
  const int32_t end = SelectionEnd(edit);
  if (wParam != 0) {
    *reinterpret_cast<int32_t *>(wParam) = start;
  }
  if (lParam != 0) {
    *reinterpret_cast<int32_t *>(lParam) = end;
  }
  return end > 0xFFFF ? -1 : start | static_cast<intptr_t>(end) << 16;
}

}  // namespace

int32_t CharacterAt(const Text &text, int32_t position) {
  const char *bytes = Bytes(text);
  int32_t at = 0;
  while (at < position && at < text.length) {
    const int32_t next = at + CharacterSize(bytes + at);
    if (next > position) {
      return at;
    }
    at = next;
  }
  return at;
}

void SetEditText(Control *edit, const char *text) {
  if (!SetText(&edit->text, text)) {
    return;
  }
  const int32_t limit = edit->edit.limit;
  edit->edit = {};
  edit->edit.limit = limit;
  if (!HasLines(edit)) {
    Notify(edit, ORL_EN_CHANGE);
  }
}

void SelectAll(Control *edit) {
  Select(edit, 0, edit->text.length);
}

intptr_t PointOfByte(Control *edit, int32_t position) {
  Edit &state = edit->edit;
  const int32_t lines = std::clamp(Height(edit->rect) / kFont.height, 1, INT16_MAX / kFont.height);
  const int32_t columns =
      std::clamp(Width(edit->rect) / kFont.averageWidth, 1, INT16_MAX / kFont.averageWidth);
  const int32_t line = LineOf(edit, position);
  const int32_t column = position - LineStart(edit, position);
  state.topLine = std::clamp(state.topLine, std::max(0, line - lines + 1), line);
  state.leftColumn = std::clamp(state.leftColumn, std::max(0, column - columns + 1), column);
  const auto x = static_cast<intptr_t>(column - state.leftColumn) * kFont.averageWidth;
  const auto y = static_cast<intptr_t>(line - state.topLine) * kFont.height;
  return x | y << 16;
}

intptr_t EditProc(Control *edit, uint32_t message, uintptr_t wParam, intptr_t lParam) {
  switch (message) {
    case ORL_EM_GETSEL:
      return GetSelection(edit->edit, wParam, lParam);
    case ORL_EM_SETSEL:
      SetSelection(edit, wParam, lParam);
      break;
    case ORL_EM_GETMODIFY:
      return edit->edit.modified ? 1 : 0;
    case ORL_EM_SETMODIFY:
      edit->edit.modified = wParam != 0;
      break;
    case ORL_EM_LIMITTEXT:
      edit->edit.limit = wParam > INT32_MAX ? 0 : static_cast<int32_t>(wParam);
      break;
    case ORL_WM_CUT:
      Cut(edit);
      break;
    case ORL_WM_COPY:
      Copy(edit);
      break;
    case ORL_WM_PASTE:
      Paste(edit);
      break;
    case ORL_WM_CLEAR:
      Clear(edit);
      break;
    case ORL_WM_CHAR:
      TakeCharacter(edit, wParam);
      break;
    case ORL_WM_KEYDOWN:
      TakeEditKey(edit, wParam);
      break;
    case ORL_WM_MOUSEMOVE:
    case ORL_WM_LBUTTONDOWN:
    case ORL_WM_LBUTTONUP:
    case ORL_WM_LBUTTONDBLCLK:
      TakeMouse(edit, message, lParam);
      break;
    default:
      break;
  }
  return 0;
}

}  // namespace headless
