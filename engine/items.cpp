#include "engine/items.h"

#include <cstddef>
#include <cstring>

#include "engine/context.h"
#include "engine/host_call.h"
#include "platform/text.h"

namespace {

// A row as its table owns it: the index entry ahead of the record, the parameters behind it.
struct ItemRow {
  NameEntry entry;
  ExprItem item;
};

ItemRow *RowOf(ExprItem *item) {
  return reinterpret_cast<ItemRow *>(reinterpret_cast<char *>(item) - offsetof(ItemRow, item));
}

uint32_t ItemSize(const ExprItem *item) {
  size_t parameters = 0;
  if (item->kind == ORL_FUNCTION) {
    parameters = item->paramCount < 0 ? 1 : static_cast<size_t>(item->paramCount);
  }
  return static_cast<uint32_t>(sizeof(ExprItem) + parameters * sizeof(ParamRecord));
}

void CopyItem(ExprItem *target, const ExprItem *source) {
  std::memcpy(static_cast<void *>(target), source, ItemSize(source));
  target->name[sizeof target->name - 1] = '\0';
  target->routineName = nullptr;
}

NameEntry *FirstEntry(const ItemTable *table, const char *name) {
  // The index may follow a change of the code page, which does not change the table.
  return table == nullptr ? nullptr : NameIndexFirst(const_cast<ItemTable *>(table)->index, name);
}

ExprItem *ItemOf(NameEntry *entry) {
  return static_cast<ExprItem *>(entry->row);
}

int32_t DataTypeOf(const ItemTable *table, const char *name) {
  const ExprItem *item = ItemFind(table, name);
  return item == nullptr ? -1 : item->dataType;
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

ExprItem *ItemFind(const ItemTable *table, const char *name) {
  NameEntry *entry = FirstEntry(table, name);
  while (entry != nullptr && !SameText(entry->name, name)) {
    entry = entry->nextSame;
  }
  return entry == nullptr ? nullptr : ItemOf(entry);
}

int32_t ItemRemove(EC ec, ItemTable *table, const char *name) {
  ExprItem *item = ItemFind(table, name);
  if (item == nullptr) {
    return 0;
  }
  HandleArrayRemove(table->rows, HandleArrayFindPointer(table->rows, item));
  ItemRow *row = RowOf(item);
  NameIndexRemove(table->index, row->entry);
  WRENMemFree(item->routineName);
  WRENMemFree(row);
  ContextChanged(ec);
  return 1;
}

void ItemTableFree(ItemTable *table) {
  const uint32_t count = HandleArrayRows(table->rows);
  for (uint32_t i = 0; i < count; i++) {
    ExprItem *item = static_cast<ExprItem *>(HandleArrayPointerAt(table->rows, i));
    if (item != nullptr) {
      WRENMemFree(item->routineName);
      WRENMemFree(RowOf(item));
    }
  }
  HandleArrayFree(table->rows);
  NameIndexFree(table->index);
}

int32_t ItemHasAggregateParam(const ItemTable *table, const char *name) {
  const ExprItem *item = ItemFind(table, name);
  if (item == nullptr || item->kind != ORL_FUNCTION) {
    return 0;
  }
  const ParamRecord *parameters = ItemParameters(item);
  for (int32_t i = 0; i < item->paramCount; i++) {
    if (parameters[i].mode != 0) {
      return 1;
    }
  }
  return 0;
}

int32_t InputDataType(EC ec, const char *name) {
  return DataTypeOf(&ec->inputs, name);
}

int32_t FunctionDataType(EC ec, const char *name) {
  return DataTypeOf(&ec->functions, name);
}

int32_t KeywordDataType(EC ec, const char *name) {
  for (NameEntry *entry = FirstEntry(&ec->keywords, name); entry != nullptr;
       entry = entry->nextSame) {
    const ExprItem *item = ItemOf(entry);
    if (item->caseSensitive == 0 || SameText(item->name, name)) {
      return item->dataType;
    }
  }
  return -1;
}

int32_t KeywordResultType(EC ec, const char *name) {
  NameEntry *entry = FirstEntry(&ec->keywords, name);
  return entry == nullptr ? -1 : ItemOf(entry)->resultType;
}

int32_t ORLAddExpressionItem(EC ec, const ExprItem *row) {
  ItemTable *table = ec == nullptr || row == nullptr ? nullptr : ItemTableOf(ec, row->kind);
  if (table == nullptr) {
    return 0;
  }
  const uint32_t size = ItemSize(row);
  ItemRow *added =
      static_cast<ItemRow *>(WRENMemAlloc(static_cast<uint32_t>(offsetof(ItemRow, item)) + size));
  if (added == nullptr) {
    return 0;
  }
  ExprItem *item = &added->item;
  CopyItem(item, row);
  if (!HandleArrayAppendPointer(&table->rows, item)) {
    WRENMemFree(added);
    return 0;
  }
  NameIndexAppend(table->index, added->entry, item->name, item);
  ContextChanged(ec);
  if (row->routineName != nullptr) {
    item->routineName = CopyText(row->routineName);
    if (ec->lookupProc != nullptr && row->routine == nullptr) {
      item->routine = CallHost([=] { return ec->lookupProc(row->routineName); });
    }
  }
  return 1;
}

void ORLEnumExpItems(EC ec, int32_t kind, OrlEnumItemProc proc, void *user) {
  ItemTable *table = ec == nullptr || proc == nullptr ? nullptr : ItemTableOf(ec, kind);
  if (table == nullptr) {
    return;
  }
  for (uint32_t i = 0; i < HandleArrayRows(table->rows); i++) {
    const ExprItem *item = static_cast<ExprItem *>(HandleArrayPointerAt(table->rows, i));
    if (item != nullptr) {
      CallHost([=] { proc(ec, item->name, user); });
    }
  }
}

int32_t ORLDelExpItemNoCheck(EC ec, int32_t kind, const char *name) {
  ItemTable *table = ec == nullptr || name == nullptr ? nullptr : ItemTableOf(ec, kind);
  return table == nullptr ? 0 : ItemRemove(ec, table, name);
}

int32_t ORLDeleteAllECVars(EC ec) {
  if (ec == nullptr || ec->inputs.rows == nullptr) {
    return 0;
  }
  for (uint32_t i = HandleArrayRows(ec->inputs.rows); i > 0; i--) {
    ExprItem *item = static_cast<ExprItem *>(HandleArrayPointerAt(ec->inputs.rows, i - 1));
    if (item != nullptr && ORLDelExpItemNoCheck(ec, ORL_INPUT, item->name) == 0) {
      return 0;
    }
  }
  return 1;
}

int32_t ORLLoadComboBox(EC ec, int32_t kind, void * /*comboHandle*/) {
  const ItemTable *table = ec == nullptr ? nullptr : ItemTableOf(ec, kind);
  // No window system is attached, so there is no box that could take the names.
  return table == nullptr ? 0 : static_cast<int32_t>(HandleArrayRows(table->rows));
}
