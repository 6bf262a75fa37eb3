#include "engine/items.h"

#include <algorithm>
#include <cassert>
#include <cstddef>
#include <cstring>

#include "engine/context.h"
#include "engine/host_call.h"
#include "platform/text.h"
#include "platform/window_system.h"

namespace {

// A row as its table owns it: the index entry before the record, the parameters after it. The
// record's own kind may come from untrusted input; only `hasParameters` determines what follows it.
struct ItemRow {
  NameEntry entry;
  bool hasParameters;
  ExprItem item;
};

struct FreeItemRow {
  void operator()(ItemRow *row) const {
    const OwnedText routineName(const_cast<char *>(row->item.routineName));
    const Owned<ItemRow> block(row);
  }
};
using OwnedItemRow = std::unique_ptr<ItemRow, FreeItemRow>;

ItemRow *RowOf(const ExprItem *item) {
  const char *start = reinterpret_cast<const char *>(item) - offsetof(ItemRow, item);
  return reinterpret_cast<ItemRow *>(const_cast<char *>(start));
}

// The number of records that follow a function's record.
size_t ParameterRecords(const ExprItem *item) {
  return item->paramCount < 0 ? 1 : static_cast<size_t>(item->paramCount);
}

// A row, not yet in a table, with a copy of the record but no routine name; null when out of
// memory.
OwnedItemRow NewRow(const ExprItem *record, bool hasParameters) {
  const size_t parameters = hasParameters ? ParameterRecords(record) * sizeof(ParamRecord) : 0;
  OwnedItemRow row(Allocate<ItemRow>(1, parameters).release());
  if (row != nullptr) {
    const size_t size = sizeof(ExprItem) + parameters;
    row->hasParameters = hasParameters;
    std::memcpy(static_cast<void *>(&row->item), record, size);
    row->item.name[sizeof row->item.name - 1] = '\0';
    row->item.routineName = nullptr;
  }
  return row;
}

NameEntry *FirstEntry(const ItemTable *table, std::string_view name) {
  // The index may be rehashed after a change of the code page, which does not change the table.
  return table == nullptr ? nullptr : NameIndexFirst(const_cast<ItemTable *>(table)->index, name);
}

ExprItem *ItemOf(NameEntry *entry) {
  return &RowOfEntry<ItemRow>(entry)->item;
}

void RemoveRow(EC ec, ItemTable *table, ExprItem *item, int32_t index) {
  HandleArrayRemove(table->rows, index);
  const OwnedItemRow row(RowOf(item));
  NameIndexRemove(table->index, row->entry);
  ContextChanged(ec);
}

}  // namespace

ItemTable *ItemTableOf(EC ec, int32_t kind) {
  switch (kind) {
    case ORL_FUNCTION:
      return &ec->functions;
    case ORL_INPUT:
      return &ec->inputs;
    case ORL_KEYWORD:
      return &ec->keywords;
    default:
      return nullptr;
  }
}

ExprItem *ItemFind(const ItemTable *table, std::string_view name) {
  NameEntry *entry = FirstEntry(table, name);
  while (entry != nullptr && table->index.ignoreCase && entry->name != name) {
    entry = entry->nextSame;
  }
  return entry == nullptr ? nullptr : ItemOf(entry);
}

ExprItem *ItemFind(const ItemTable *table, const char *name) {
  return name == nullptr ? nullptr : ItemFind(table, std::string_view(name));
}

bool ItemRemove(EC ec, ItemTable *table, const char *name) {
  ExprItem *item = ItemFind(table, name);
  if (item == nullptr) {
    return false;
  }
  RemoveRow(ec, table, item, HandleArrayFindPointer(table->rows, item));
  return true;
}

void ItemTableFree(ItemTable *table) {
  const uint32_t count = HandleArrayRows(table->rows);
  for (uint32_t i = 0; i < count; ++i) {
    ExprItem *item = static_cast<ExprItem *>(HandleArrayPointerAt(table->rows, i));
    if (item != nullptr) {
      const OwnedItemRow row(RowOf(item));
    }
  }
  HandleArrayFree(table->rows);
  NameIndexFree(table->index);
}

bool ItemHasAggregateParam(const ItemTable *table, const char *name) {
  const ExprItem *item = ItemFind(table, name);
  if (item == nullptr || !RowOf(item)->hasParameters) {
    return false;
  }
  const ParamRecord *parameters = ItemParameters(item);
  for (int32_t i = 0; i < item->paramCount; ++i) {
    if (parameters[i].mode != kParamByValue) {
      return true;
    }
  }
  return false;
}

int32_t InputDataType(EC ec, const NameKey &key) {
  NameEntry *entry = NameIndexFirst(ec->inputs.index, key);
  return entry == nullptr ? -1 : ItemOf(entry)->dataType;
}

int32_t FunctionDataType(EC ec, std::string_view name) {
  const ExprItem *item = ItemFind(&ec->functions, name);
  return item == nullptr ? -1 : item->dataType;
}

int32_t KeywordDataType(EC ec, std::string_view name) {
  for (NameEntry *entry = FirstEntry(&ec->keywords, name); entry != nullptr;
       entry = entry->nextSame) {
    const ExprItem *item = ItemOf(entry);
    if (item->caseSensitive == 0 || item->name == name) {
      return item->dataType;
    }
  }
  return -1;
}

int32_t KeywordResultType(EC ec, std::string_view name) {
  NameEntry *entry = FirstEntry(&ec->keywords, name);
  return entry == nullptr ? -1 : ItemOf(entry)->resultType;
}

void ItemRename(EC ec, ItemTable *table, ExprItem *row, const char *name) {
  assert(std::strlen(name) < sizeof row->name);
  char fresh[sizeof row->name] = {};
  lstrcpyA(fresh, name);
  NameIndexRename(table->index, RowOf(row)->entry, fresh);
  std::memcpy(row->name, fresh, sizeof fresh);
  RowOf(row)->entry.name = row->name;
  ContextChanged(ec);
}

bool ItemAppendEmpty(ItemTable *table) {
  return HandleArrayAppendPointer(&table->rows, nullptr);
}

ExprItem *ItemFillLast(EC ec, ItemTable *table, const ExprItem *record) {
  OwnedItemRow row = NewRow(record, false);
  if (row == nullptr) {
    return nullptr;
  }
  row->item.routine = nullptr;
  const int32_t last = static_cast<int32_t>(HandleArrayRows(table->rows)) - 1;
  assert(last >= 0 && HandleArrayPointerAt(table->rows, static_cast<uint32_t>(last)) == nullptr);
  ExprItem *item = &row->item;
  NameIndexAppend(table->index, row->entry, item->name);
  *static_cast<void **>(HandleArrayLock(table->rows, last)) = &row.release()->item;
  HandleArrayUnlock(table->rows);
  ContextChanged(ec);
  return item;
}

bool ItemAdd(EC ec, ItemTable *table, const ExprItem *record) {
  OwnedItemRow row = NewRow(record, table == &ec->functions);
  if (row == nullptr || !HandleArrayAppendPointer(&table->rows, &row->item)) {
    return false;
  }
  ExprItem *item = &row.release()->item;
  NameIndexAppend(table->index, RowOf(item)->entry, item->name);
  ContextChanged(ec);
  if (record->routineName != nullptr) {
    item->routineName = CopyText(record->routineName).release();
    if (ec->lookupProc != nullptr && record->routine == nullptr) {
      item->routine = CallHost([=] { return ec->lookupProc(record->routineName); });
    }
  }
  return true;
}

int32_t ORLAddExpressionItem(EC ec, const ExprItem *row) {
  ItemTable *table = ec == nullptr || row == nullptr ? nullptr : ItemTableOf(ec, row->kind);
  return table != nullptr && ItemAdd(ec, table, row) ? 1 : 0;
}

void ORLEnumExpItems(EC ec, int32_t kind, OrlEnumItemProc proc, void *user) {
  ItemTable *table = ec == nullptr || proc == nullptr ? nullptr : ItemTableOf(ec, kind);
  if (table == nullptr) {
    return;
  }
  for (uint32_t i = 0; i < HandleArrayRows(table->rows); ++i) {
    const ExprItem *item = static_cast<ExprItem *>(HandleArrayPointerAt(table->rows, i));
    if (item != nullptr) {
      CallHost([=] { proc(ec, item->name, user); });
    }
  }
}

int32_t ORLGetExpressionItem(EC ec, int32_t kind, const char *name, ExprItem *row,
                             int32_t parameters) {
  const ItemTable *table = ec == nullptr || name == nullptr ? nullptr : ItemTableOf(ec, kind);
  const ExprItem *item = table == nullptr || row == nullptr ? nullptr : ItemFind(table, name);
  if (item == nullptr) {
    return 0;
  }
  const size_t records = RowOf(item)->hasParameters ? ParameterRecords(item) : 0;
  const size_t wanted = static_cast<size_t>(std::max(parameters, 0));
  std::memcpy(static_cast<void *>(row), item,
              sizeof *row + std::min(records, wanted) * sizeof(ParamRecord));
  return 1;
}

int32_t ORLDelExpItemNoCheck(EC ec, int32_t kind, const char *name) {
  ItemTable *table = ec == nullptr || name == nullptr ? nullptr : ItemTableOf(ec, kind);
  return table != nullptr && ItemRemove(ec, table, name) ? 1 : 0;
}

int32_t ORLDeleteAllECVars(EC ec) {
  if (ec == nullptr || ec->inputs.rows == nullptr) {
    return 0;
  }
  // From the end, so that no rows move.
  for (int32_t i = static_cast<int32_t>(HandleArrayRows(ec->inputs.rows)) - 1; i >= 0; --i) {
    const uint32_t index = static_cast<uint32_t>(i);
    ExprItem *item = static_cast<ExprItem *>(HandleArrayPointerAt(ec->inputs.rows, index));
    if (item != nullptr) {
      RemoveRow(ec, &ec->inputs, item, i);
    }
  }
  return 1;
}

int32_t ORLLoadComboBox(EC ec, int32_t kind, void *comboHandle) {
  const ItemTable *table = ec == nullptr ? nullptr : ItemTableOf(ec, kind);
  const OrlWindowSystem *windows = Windows();
  const uint32_t rows = table == nullptr ? 0 : HandleArrayRows(table->rows);
  for (uint32_t i = 0; i < rows && windows != nullptr; ++i) {
    const auto *item = static_cast<ExprItem *>(HandleArrayPointerAt(table->rows, i));
    if (item != nullptr) {
      const auto name = reinterpret_cast<intptr_t>(item->name);
      CallHost([=] { return windows->SendMessage(comboHandle, ORL_CB_ADDSTRING, 0, name); });
    }
  }
  return static_cast<int32_t>(rows);
}
