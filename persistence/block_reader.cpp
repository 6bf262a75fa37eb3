// The reader of EC blocks, all versions.
#include "persistence/block_reader.h"

#include <cstddef>
#include <cstring>

#include "engine/context.h"
#include "engine/host_call.h"
#include "engine/items.h"
#include "persistence/block_cursor.h"
#include "persistence/block_format.h"
#include "persistence/formula_loader.h"

namespace {

struct VersionRules {
  int32_t start;       // offset of the operator area
  int32_t inputSize;   // fixed bytes of an input row
  bool functions;      // has a section of functions, which is skipped
  bool reportAverage;  // inputs get the subclass that ReportAverage requires
  bool loadsInOrder;   // no reference to a later formula, no repair
};

constexpr VersionRules kVersions[] = {
    {0, kOldestInputSize, true, true, true},
    {1, sizeof(StoredOldInput), false, true, true},
    {1, sizeof(OrlStoredInput), false, true, false},
    {1, sizeof(OrlStoredInput), false, false, false},
};

struct BlockLoad {
  EC ec;
  int32_t version;
  const VersionRules *rules;
  BlockCursor cursor;
  bool renaming;  // version 0: a name was a date unit, so the formulas must be updated
  OrlErrorProc errorProc;
  const LoadDialogs &dialogs;
};

void *LookUp(EC ec, const char *routineName) {
  return CallHost([=] { return ec->lookupProc(routineName); });
}

// Stores an operator name; false when out of memory or when the host rejects it.
bool SetOperator(EC ec, OperatorGroup group, int32_t type, const char *name) {
  OwnedText copy = CopyText(name);
  if (copy == nullptr) {
    return false;
  }
  OrlOperatorProc proc = nullptr;
  if (ec->lookupProc != nullptr) {
    proc = reinterpret_cast<OrlOperatorProc>(LookUp(ec, copy.get()));
    if (proc == nullptr) {
      copy.reset();
    }
  }
  char *&owned = ec->operators[group].names[type];
  ReplaceBlock(owned, std::move(copy));
  SetOperatorRoutine(ec, group, type, proc);
  return owned != nullptr;
}

// Reads the operator names; false at the first that fails.
bool ReadOperators(BlockLoad &load) {
  for (int32_t i = 0; i < kGroupCount * kOperatorTypes; ++i) {
    const char *name = TakeText(load.cursor, BlockEnd::Allowed);
    if (name == nullptr) {
      return false;
    }
    const auto group = static_cast<OperatorGroup>(i / kOperatorTypes);
    if (name[0] != '\0' && !SetOperator(load.ec, group, i % kOperatorTypes, name)) {
      return false;
    }
  }
  return true;
}

// The record of an input row's fixed bytes. Sets `load.renaming` for a name that is a date unit.
ExprItem ReadRecord(BlockLoad &load, const char *bytes) {
  ExprItem record = {};
  if (load.rules->inputSize == sizeof(OrlStoredInput)) {
    OrlStoredInput stored;
    std::memcpy(&stored, bytes, sizeof stored);
    record.kind = stored.kind;
    record.dataType = stored.dataType;
    std::memcpy(record.name, stored.name, sizeof record.name);
    record.paramCount = stored.paramCount;
    record.subClass = stored.subClass;
    record.optionalCount = stored.optionalCount;
    record.itemFlags = stored.itemFlags;
    return record;
  }
  StoredOldInput stored = {};
  std::memcpy(&stored, bytes, static_cast<size_t>(load.rules->inputSize));
  char name[sizeof stored.name + 1] = {};
  std::memcpy(name, stored.name, sizeof stored.name);
  record.kind = stored.kind;
  record.dataType = stored.dataType;
  record.paramCount = stored.paramCount;
  record.subClass = stored.subClass;
  record.optionalCount = stored.optionalCount;
  record.itemFlags = stored.itemFlags;
  if (load.version == kVersion0) {
    load.renaming = ORLInputNameIsKeyword(record.name, name) != 0 || load.renaming;
  } else {
    std::memcpy(record.name, name, std::strlen(name));
  }
  return record;
}

// Reads one input row; false when it failed. The table may then end with an empty element.
bool ReadInput(BlockLoad &load) {
  EC ec = load.ec;
  const bool appended = ItemAppendEmpty(&ec->inputs);
  const char *bytes = TakeBytes(load.cursor, load.rules->inputSize, BlockEnd::Refused);
  if (!appended || bytes == nullptr) {
    return false;
  }
  const ExprItem record = ReadRecord(load, bytes);
  ExprItem *row = ItemFillLast(ec, &ec->inputs, &record);
  const char *routineName = row != nullptr ? TakeText(load.cursor, BlockEnd::Allowed) : nullptr;
  if (routineName == nullptr) {
    return false;
  }
  row->routineName = CopyText(routineName).release();
  if (row->routineName == nullptr) {
    return false;
  }
  if (ec->lookupProc == nullptr) {
    return true;
  }
  void *routine = LookUp(ec, routineName);
  if (HandleArrayFindPointer(ec->inputs.rows, row) >= 0) {  // the host may have deleted it
    row->routine = routine;
  }
  return routine != nullptr;
}

// In blocks written before ReportAverage used the subclass of items, all items have that one.
void TakeReportAverageClass(EC ec) {
  const ExprItem *function = ItemFind(&ec->functions, "ReportAverage");
  if (function == nullptr || function->paramCount == 0) {
    return;  // a negative count has one parameter record
  }
  const uint16_t subClass = ItemParameters(function)[0].subClass;
  for (uint32_t i = 0; i < HandleArrayRows(ec->inputs.rows); ++i) {
    ExprItem *row = static_cast<ExprItem *>(HandleArrayPointerAt(ec->inputs.rows, i));
    if (row != nullptr) {
      row->subClass = subClass;
    }
  }
  ContextChanged(ec);
}

bool ReadInputs(BlockLoad &load) {
  const int32_t count = TakeSectionHeader(load.cursor);
  for (int32_t i = 0; i < count; ++i) {
    if (!ReadInput(load)) {
      return false;
    }
  }
  if (load.cursor.ok && load.rules->reportAverage) {
    TakeReportAverageClass(load.ec);
  }
  return load.cursor.ok;
}

bool StepOverFunctions(BlockLoad &load) {
  const int32_t count = TakeSectionHeader(load.cursor);
  for (int32_t i = 0; i < count; ++i) {
    const char *row = TakeBytes(load.cursor, kOldestInputSize, BlockEnd::Allowed);
    if (row == nullptr) {
      return false;
    }
    int16_t parameters = 0;
    std::memcpy(&parameters, row + offsetof(StoredOldInput, paramCount), sizeof parameters);
    const int32_t bytes = parameters > 0 ? parameters * kStoredParameterSize : 0;
    if (TakeBytes(load.cursor, bytes, BlockEnd::Allowed) == nullptr ||
        TakeText(load.cursor, BlockEnd::Allowed) == nullptr) {
      return false;
    }
  }
  return load.cursor.ok;
}

bool ReadFormulas(BlockLoad &load) {
  const int32_t count = TakeSectionHeader(load.cursor);
  if (!load.cursor.ok) {
    return false;
  }
  return load.rules->loadsInOrder
             ? LoadOldFormulas(load.ec, load.cursor, count, load.version == kVersion0,
                               load.renaming, load.errorProc)
             : LoadFormulas(load.ec, load.cursor, count, LoadOrder::Stored, load.errorProc,
                            load.dialogs) == LoadEnd::Complete;
}

// The sections after the operator area, if any. What follows the last known one is not read.
bool ReadSections(BlockLoad &load, bool loadFormulas) {
  if (PeekTag(load.cursor) == ORL_BLOCK_TAG_INPUTS && !ReadInputs(load)) {
    return false;
  }
  if (load.rules->functions && PeekTag(load.cursor) == kTagFunctions && !StepOverFunctions(load)) {
    return false;
  }
  return PeekTag(load.cursor) != ORL_BLOCK_TAG_FORMULAS || !loadFormulas || ReadFormulas(load);
}

}  // namespace

bool ReadContext(EC ec, int32_t size, const void *block, bool loadFormulas, OrlErrorProc errorProc,
                 const LoadDialogs &dialogs) {
  const char *bytes = static_cast<const char *>(block);
  if (ec == nullptr || bytes == nullptr || size < 1) {
    return false;
  }
  const auto version = static_cast<uint8_t>(bytes[0]);
  if (version > kVersion3) {
    return false;
  }
  const VersionRules &rules = kVersions[version];
  BlockLoad load = {ec,    version,   &rules, {bytes, size, rules.start, true},
                    false, errorProc, dialogs};
  return ReadOperators(load) && ReadSections(load, loadFormulas);
}
