#include "engine/expressions.h"

#include <cassert>
#include <charconv>
#include <cstring>
#include <iterator>

#include "engine/host_call.h"
#include "engine/items.h"
#include "engine/module.h"
#include "engine/references.h"
#include "platform/text.h"

namespace {

int32_t CopyToHost(const char *text, int32_t size, char *buffer) {
  const int32_t length = WRENStrLen(text);
  if (size < 1 || buffer == nullptr) {
    return 0;
  }
  const int32_t copied = length < size ? length : size - 1;
  std::memcpy(buffer, text, static_cast<size_t>(copied));
  buffer[copied] = '\0';
  return length < size ? length : size;
}

// True when neither a function nor an expression other than `exp` has the name.
bool IsUnique(EC ec, HEXP exp, const NameKey &key) {
  const NameEntry *own = exp == nullptr ? nullptr : &exp->entry;
  for (const NameEntry *entry = NameIndexFirst(ec->expressionNames, key); entry != nullptr;
       entry = entry->nextSame) {
    if (entry != own) {
      return false;
    }
  }
  return NameIndexFirst(ec->functions.index, key) == nullptr;
}

}  // namespace

NameKey GeneratedName(EC ec, ExpressionClass which, char (&buffer)[kGeneratedNameSize]) {
  assert(which >= 0 && which < kClassCount);
  uint16_t number = ec->nextNumber[which];
  const size_t baseLength = std::strlen(moduleTexts.baseNames[which]);
  char *digits = buffer + baseLength;
  std::memcpy(buffer, moduleTexts.baseNames[which], baseLength);
  for (uint32_t tried = 0; tried <= UINT16_MAX; ++tried, ++number) {
    char *end = std::to_chars(digits, std::end(buffer) - 1, number).ptr;
    *end = '\0';
    const NameKey key = KeyOfName({buffer, static_cast<size_t>(end - buffer)});
    if (IsUnique(ec, nullptr, key)) {
      ec->nextNumber[which] = number;
      return key;
    }
  }
  buffer[0] = '\0';
  return KeyOfName({});
}

int32_t ExpressionDataType(EC ec, const char *name) {
  HEXP exp = ORLHEXPFromName(ec, name);
  return exp == nullptr ? -1 : exp->dataType;
}

uint32_t NextWalkNumber(EC ec) {
  if (++ec->walkNumber == 0) {  // the counter wrapped around
    for (uint32_t i = 0; i < HandleArrayRows(ec->expressions); ++i) {
      static_cast<HEXP>(HandleArrayPointerAt(ec->expressions, i))->walkNumber = 0;
    }
    ec->lastUsageWalk = 0;
    ec->walkNumber = 1;
  }
  return ec->walkNumber;
}

ExpressionRef RefTo(HEXP exp) {
  return {exp, exp == nullptr ? 0 : exp->entry.order};
}

bool IsStored(EC ec, const ExpressionRef &ref) {
  return ref.exp != nullptr && ORLGetExpressionOrdinal(ec, ref.exp) >= 0 &&
         ref.exp->entry.order == ref.serial;
}

int32_t ORLGetExpressionCount(EC ec) {
  return ec == nullptr ? 0 : static_cast<int32_t>(HandleArrayRows(ec->expressions));
}

int32_t ORLEnumExpressions(EC ec, OrlEnumExpressionProc proc) {
  if (ec == nullptr || proc == nullptr) {
    return 0;
  }
  int32_t result = 0;
  for (uint32_t i = 0; i < HandleArrayRows(ec->expressions); ++i) {
    HEXP exp = static_cast<HEXP>(HandleArrayPointerAt(ec->expressions, i));
    result = CallHost([=] { return proc(ec, exp, static_cast<int32_t>(i)); });
    if (result == 0) {
      break;
    }
  }
  return result;
}

HEXP ORLHEXPFromName(EC ec, const char *name) {
  NameEntry *entry = ec == nullptr ? nullptr : NameIndexFirst(ec->expressionNames, name);
  return RowOfEntry<Expression>(entry);
}

HEXP ORLHEXPFromOrdinal(EC ec, int32_t ordinal) {
  if (ec == nullptr) {
    return nullptr;
  }
  return static_cast<HEXP>(HandleArrayPointerAt(ec->expressions, static_cast<uint16_t>(ordinal)));
}

int32_t ORLGetExpressionOrdinal(EC ec, HEXP exp) {
  return ec == nullptr || exp == nullptr ? -1 : HandleArrayFindPointer(ec->expressions, exp);
}

int32_t ORLGetExpressionTextLength(EC /*ec*/, HEXP exp) {
  return exp == nullptr ? 0 : exp->textLength;
}

int32_t ORLGetExpressionText(EC /*ec*/, HEXP exp, int32_t size, char *buffer) {
  return CopyToHost(exp == nullptr ? "" : exp->text, size, buffer);
}

int32_t ORLGetExpressionNameLength(EC /*ec*/, HEXP exp) {
  return exp == nullptr ? 0 : WRENStrLen(exp->entry.name);
}

int32_t ORLGetExpressionName(EC /*ec*/, HEXP exp, int32_t size, char *buffer) {
  return CopyToHost(exp == nullptr ? "" : exp->entry.name, size, buffer);
}

int32_t ORLIsExpNameGenerated(EC /*ec*/, HEXP exp) {
  const char *base = moduleTexts.baseNames[kClassFormula];
  const int32_t characters = WRENStrChars(base);
  if (exp == nullptr || WRENStrHasPrefix(exp->entry.name, base, characters) == 0) {
    return 0;
  }
  for (const char *at = WRENStrAdvance(exp->entry.name, characters); *at != '\0';
       at = CharNextA(at)) {
    if (*at < '0' || *at > '9') {
      return 0;
    }
  }
  return 1;
}

int32_t ORLIsExpNameUnique(EC ec, HEXP exp, const char *name) {
  if (ec == nullptr || name == nullptr) {
    return 0;
  }
  return IsUnique(ec, exp, KeyOfName(name)) ? 1 : 0;
}

int32_t ORLIsNamedFormulaUsed(EC ec, const char *name) {
  // A formula is used by some expression exactly when some stored tree names it.
  return ec != nullptr && name != nullptr && ReferenceCount(ec, name) > 0 ? 1 : 0;
}

uint16_t ORLGetExpressionDataType(EC /*ec*/, HEXP exp) {
  return exp == nullptr ? UINT16_MAX : exp->dataType;
}
