#include "engine/context.h"

#include <cstring>

#include "dates/date_text.h"
#include "platform/text.h"

void SetOperatorRoutine(EC ec, OperatorGroup group, int32_t dataType, OrlOperatorProc routine) {
  ec->operators[group].procs[dataType] = routine;
  ec->hasNumberOperators = false;
  for (const OperatorGroup number : {kGroupAdd, kGroupSub, kGroupMul, kGroupDiv}) {
    if (ec->operators[number].procs[ORL_TYPE_NUMBER] != nullptr) {
      ec->hasNumberOperators = true;
    }
  }
}

EC ORLCreateEC(void *owner, OrlLookupProc lookup, OrlRenameProc rename, uint16_t flags) {
  EC ec = Allocate<ExprContext>().release();
  if (ec == nullptr) {
    return nullptr;
  }
  ec->owner = owner;
  ec->lookupProc = lookup;
  ec->renameProc = rename;
  ec->flags = flags;
  ec->concatAllowed = (flags & ORL_FLAG_NO_CONCAT) == 0 ? 1 : 0;
  for (uint16_t &number : ec->nextNumber) {
    number = 1;
  }
  ec->keywords.index.ignoreCase = true;
  ec->keywords.index.codePage = ActiveCodePage();
  ec->generation = 1;  // above the 0 of a node that was never looked up
  return ec;
}

void ORLSetHelpPath(EC ec, const char *path, int32_t helpContext) {
  if (ec == nullptr) {
    return;
  }
  ec->helpContext = helpContext;
  const size_t size = path == nullptr ? 0 : std::strlen(path) + 1;
  if (size > 0 && size <= sizeof ec->helpPath) {
    std::memcpy(ec->helpPath, path, size);
  }
}

void ORLSetDateConvert(EC ec, const char *template1, const char *template2, const char *template3,
                       uint16_t convertFlags) {
  if (ec == nullptr) {
    return;
  }
  ec->dateConvertFlags = convertFlags;
  const char *const templates[] = {template1, template2, template3};
  for (int32_t i = 0; i < kDateForms; ++i) {
    if (templates[i] != nullptr) {
      ReplaceBlock(ec->dateConvert[i], CopyText(templates[i]));
    }
  }
}

int32_t ORLSetDatePicture(EC ec, const char *picture1, const char *picture2, const char *picture3) {
  if (ec == nullptr) {
    return 1;
  }
  const char *const pictures[] = {picture1, picture2, picture3};
  for (int32_t i = 0; i < kDateForms; ++i) {
    const bool given = pictures[i] != nullptr && pictures[i][0] != '\0';
    ReplaceBlock(ec->pictures[i], given ? CopyText(pictures[i]) : nullptr);
  }
  ec->pictureWidth = DatePictureWidth(ec->dateConvertFlags, ec->pictures, ec->dateConvert);
  return 1;
}

void ORLSetListValuesCallback(EC ec, OrlListValuesProc proc) {
  if (ec != nullptr) {
    ec->listValuesProc = proc;
  }
}

void ORLSetDelPermissionCallback(EC ec, OrlDelPermissionProc proc) {
  if (ec != nullptr) {
    ec->delPermissionProc = proc;
  }
}

intptr_t ORLSetUserLong(EC ec, intptr_t value) {
  if (ec == nullptr) {
    return 0;
  }
  const intptr_t before = ec->userLong;
  ec->userLong = value;
  return before;
}

intptr_t ORLGetUserLong(EC ec) {
  return ec == nullptr ? 0 : ec->userLong;
}
