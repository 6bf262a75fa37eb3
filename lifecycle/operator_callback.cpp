// Operator callbacks of a context. Here, because it destroys the context when out of memory.
#include "engine/context.h"
#include "engine/host_call.h"

namespace {

// ORDER OPERATOR: the codes of ORLSetOperatorCallback, which are not the order of the groups.
constexpr OperatorGroup kGroupOfCode[] = {kGroupAdd, kGroupSub, kGroupDiv, kGroupMul, kGroupConcat};
constexpr int16_t kOperatorCodes = sizeof kGroupOfCode / sizeof kGroupOfCode[0];
static_assert(kOperatorCodes == kGroupCount);

}  // namespace

int32_t ORLSetOperatorCallback(EC ec, int16_t op, int16_t dataType, const char *name) {
  if (ec == nullptr) {
    return 0;
  }
  void *routine = nullptr;
  if (ec->lookupProc != nullptr && name != nullptr) {
    routine = CallHost([=] { return ec->lookupProc(name); });
  }
  if (op < 0 || op >= kOperatorCodes || dataType < 0 || dataType >= kOperatorTypes) {
    return 1;
  }
  OperatorSlots &slots = ec->operators[kGroupOfCode[op]];
  SetOperatorRoutine(ec, kGroupOfCode[op], dataType, reinterpret_cast<OrlOperatorProc>(routine));
  if (name == nullptr) {
    ReplaceBlock(slots.names[dataType]);
    return 1;
  }
  ReplaceBlock(slots.names[dataType], CopyText(name));
  if (slots.names[dataType] == nullptr) {
    ORLDestroyEC(ec);
    return 0;
  }
  return 1;
}
