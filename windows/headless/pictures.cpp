// Drawing of the rows of owner-drawn lists, and bitmaps.
#include "windows/headless/state.h"

#include <algorithm>
#include <cstring>

namespace headless {

namespace {

bool IsOwnerDrawn(const Control *list) {
  return (list->style & ORL_STYLE_OWNER_DRAW) != 0;
}

// The drawing for a surface that a dialog received, while it is being drawn.
RowPicture *OpenPicture(const void *surface) {
  return surface != nullptr && surface == session.surface ? session.surface : nullptr;
}

Bitmap **LinkOf(const void *bitmap) {
  Bitmap **link = &session.bitmaps;
  while (*link != nullptr && *link != bitmap) {
    link = &(*link)->next;
  }
  return link;
}

uint32_t Little(const uint8_t *bytes) {
  return bytes[0] | uint32_t{bytes[1]} << 8 | uint32_t{bytes[2]} << 16 | uint32_t{bytes[3]} << 24;
}

// True when the file begins like a BMP file of that size.
bool IsBitmapFile(const OrlBitmap &bitmap) {
  constexpr uint32_t kHeader = 26;
  const uint8_t *file = bitmap.file;
  return file != nullptr && bitmap.fileSize > kHeader && file[0] == 'B' && file[1] == 'M' &&
         Little(file + 2) == bitmap.fileSize &&
         static_cast<int32_t>(Little(file + 18)) == bitmap.width &&
         static_cast<int32_t>(Little(file + 22)) == bitmap.height;
}

}  // namespace

void Wipe(RowPicture *picture) {
  FreeText(&picture->text);
  *picture = {};
}

void FreePicture(List *list, Row *row) {
  if (row->picture == nullptr) {
    return;
  }
  if (session.surface == row->picture) {
    session.surface = nullptr;
  }
  FreeText(&row->picture->text);
  ReplaceBlock(row->picture);
  --list->pictures;
}

void ForgetPictures(Control *list) {
  List &rows = list->list;
  for (int32_t row = 0; row < rows.count && rows.pictures > 0; ++row) {
    FreePicture(&rows, &rows.rows[row]);
  }
  rows.dirty = IsOwnerDrawn(list);
}

uint32_t StateOfRow(const Control *list, int32_t row) {
  const bool current = row == list->list.current && row >= 0;
  const bool focus = HasFocus(list) && (current || list->list.count == 0);
  return (current ? +ORL_STATE_SELECTED : 0U) | (focus ? +ORL_STATE_FOCUS : 0U);
}

void Draw(Control *list, int32_t row, uint32_t action, uint32_t state, RowPicture *picture) {
  if (session.surface != nullptr) {
    return;  // no drawing within a drawing
  }
  if ((action & ORL_DRAW_ENTIRE) != 0) {
    Wipe(picture);
  }
  const int32_t height = list->list.rowHeight;
  const int32_t top = row < 0 ? 0 : (row - list->list.top) * height;
  OrlDrawItem item = {};
  item.control = list->id;
  item.row = row;
  item.action = action;
  item.state = state;
  item.list = list->window;
  item.surface = picture;
  item.rect = {0, top, Width(list->rect), top + height};
  item.data = row < 0 ? 0 : list->list.rows[row].data;
  picture->rowRect = item.rect;
  ++picture->drawings;
  session.surface = picture;
  Send(list->dialog->window, ORL_WM_DRAWITEM, static_cast<uintptr_t>(list->id),
       reinterpret_cast<intptr_t>(&item));
  session.surface = nullptr;
}

void DrawPart(Control *list, int32_t row, uint32_t action) {
  if (!IsOwnerDrawn(list)) {
    return;
  }
  if (HasRow(list, row)) {
    RowPicture *picture = list->list.rows[row].picture;
    if (picture != nullptr) {
      Draw(list, row, action, StateOfRow(list, row), picture);
    }
  } else if (list->list.count == 0 && action == ORL_DRAW_FOCUS) {
    Draw(list, -1, action, StateOfRow(list, -1), &session.loose);
  }
}

void DrawWhole(Control *list, int32_t row) {
  Row &entry = list->list.rows[row];
  if (!IsOwnerDrawn(list)) {
    return;
  }
  if (entry.picture == nullptr) {
    entry.picture = static_cast<RowPicture *>(WRENMemAlloc(sizeof(RowPicture)));
    if (entry.picture == nullptr) {
      return;
    }
    ++list->list.pictures;
  }
  Draw(list, row, ORL_DRAW_ENTIRE, StateOfRow(list, row), entry.picture);
}

void FreeBitmaps() {
  while (session.bitmaps != nullptr) {
    DeleteBitmapHandle(session.bitmaps);
  }
  Wipe(&session.loose);
}

void *LoadBitmapFile(const OrlBitmap *bitmap) {
  if (bitmap == nullptr || !IsBitmapFile(*bitmap)) {
    return nullptr;
  }
  auto *loaded = static_cast<Bitmap *>(WRENMemAlloc(sizeof(Bitmap)));
  if (loaded != nullptr) {
    CopyOut(bitmap->name, loaded->name, sizeof(loaded->name));
    loaded->next = session.bitmaps;
    session.bitmaps = loaded;
  }
  return loaded;
}

void DeleteBitmapHandle(void *bitmap) {
  Bitmap **link = LinkOf(bitmap);
  const Owned<Bitmap> found(*link);
  if (found != nullptr) {
    *link = found->next;
  }
}

void DrawBitmapAt(void *surface, void *bitmap, int32_t x, int32_t y) {
  RowPicture *picture = OpenPicture(surface);
  const Bitmap *drawn = *LinkOf(bitmap);
  if (picture != nullptr && drawn != nullptr) {
    std::memcpy(picture->bitmap, drawn->name, sizeof(picture->bitmap));
    picture->bitmapX = x;
    picture->bitmapY = y;
  }
}

void DrawTextIn(void *surface, const char *text, const OrlRect *rect) {
  RowPicture *picture = OpenPicture(surface);
  if (picture != nullptr && rect != nullptr && SetText(&picture->text, text)) {
    picture->textRect = *rect;
  }
}

void InvertIn(void *surface, const OrlRect *rect) {
  RowPicture *picture = OpenPicture(surface);
  if (picture != nullptr && rect != nullptr) {
    picture->inverted = !picture->inverted;
    picture->invertedRect = *rect;
  }
}

void DrawFocusIn(void *surface, const OrlRect *rect) {
  RowPicture *picture = OpenPicture(surface);
  if (picture != nullptr && rect != nullptr) {
    picture->focusRect = !picture->focusRect;
  }
}

}  // namespace headless
