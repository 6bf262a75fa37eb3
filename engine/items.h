// Context items: the rows of functions, input items and keywords.
#ifndef ORLI11_ENGINE_ITEMS_H
#define ORLI11_ENGINE_ITEMS_H

#include <cstdint>
#include <string_view>

#include "engine/handle_array.h"
#include "engine/name_index.h"
#include "orli11.h"

struct ItemTable;

// The parameter records that follow a function's record.
inline ParamRecord *ItemParameters(ExprItem *row) {
  return reinterpret_cast<ParamRecord *>(row + 1);
}
inline const ParamRecord *ItemParameters(const ExprItem *row) {
  return reinterpret_cast<const ParamRecord *>(row + 1);
}

// `mode` of a parameter. A host may store any other value: then the argument is evaluated as with
// kParamByValue, but the function counts as an aggregate as with kParamByName.
enum ParamMode : uint16_t { kParamByValue = 0, kParamByName = 1 };
inline bool IsByName(const ParamRecord &parameter) {
  return parameter.mode == kParamByName;
}

// The table of a kind, or null for an unknown kind.
ItemTable *ItemTableOf(EC ec, int32_t kind);

// The first row of exactly that name, or null.
ExprItem *ItemFind(const ItemTable *table, std::string_view name);
// The same for a name that may be null.
ExprItem *ItemFind(const ItemTable *table, const char *name);

// Removes the first row of that name with its routine name; false when there is none.
bool ItemRemove(EC ec, ItemTable *table, const char *name);

// Adds a copy of a record to a table, as ORLAddExpressionItem does, whatever kind the record has;
// only in the table of functions do parameter records follow it. False when the table is full or
// when out of memory.
bool ItemAdd(EC ec, ItemTable *table, const ExprItem *record);

// Renames a row of the table; the name has at most 64 bytes, and the row keeps its position.
void ItemRename(EC ec, ItemTable *table, ExprItem *row, const char *name);

// For reading a block: ItemAppendEmpty adds a null element; ItemFillLast replaces it by a copy of
// `record` without routine and routine name. They return false or null when the table is full or
// when out of memory.
bool ItemAppendEmpty(ItemTable *table);
ExprItem *ItemFillLast(EC ec, ItemTable *table, const ExprItem *record);

// Frees all rows of a table and the table.
void ItemTableFree(ItemTable *table);

// True when the first row of that name has a parameter with a mode other than kParamByValue.
bool ItemHasAggregateParam(const ItemTable *table, const char *name);

// The data type of the first row of that name, or -1. For a keyword, its `caseSensitive` decides
// whether case must match.
int32_t InputDataType(EC ec, const NameKey &key);
inline int32_t InputDataType(EC ec, std::string_view name) {
  return InputDataType(ec, KeyOfName(name));
}
int32_t FunctionDataType(EC ec, std::string_view name);
int32_t KeywordDataType(EC ec, std::string_view name);
// The result type of the first keyword of that name in any case, or -1.
int32_t KeywordResultType(EC ec, std::string_view name);

#endif
