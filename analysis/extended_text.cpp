// Extended text: a formula made self-contained for a reader outside the engine. Each reference to a
// named formula becomes that formula's text in parentheses, at every depth; with marks, calls of
// functions that are so declared are written in the ODBC escape for scalar functions, and dates by
// the pictures and templates of the context.
//
// The positions come from the trees. Each formula text is walked from start to end, and the
// replacement for a position is written when the walk reaches it. The walk runs twice: the first
// pass only counts, to find the length; the second writes into the host's buffer. So no memory is
// allocated, and a result that grows beyond bounds is detected early.
#include <algorithm>
#include <cstring>

#include "dates/date_template.h"
#include "dates/date_text.h"
#include "engine/context.h"
#include "engine/items.h"
#include "language/bound_formula.h"
#include "language/formula_walk.h"
#include "language/stored_tree.h"

namespace {

constexpr char kOpenMark[] = " {fn ";
constexpr char kCloseMark[] = " } ";
constexpr int32_t kMarksLength = sizeof kOpenMark + sizeof kCloseMark - 2;

// The longest text that splicing formulas may produce.
constexpr int64_t kLongestSpliced = UINT16_MAX;

struct Target {
  char *buffer;      // null: nothing is written, only counted
  int64_t capacity;  // bytes that may be written
  int64_t length;    // of the whole text so far
};

struct Expansion {
  EC ec;
  bool topMarks;   // the expression itself is marked
  bool bodyMarks;  // the formulas spliced into it are
  uint32_t walkNumber;
  bool spliced;
  Target target;
};

void Put(Target &target, const char *text, int64_t length) {
  if (target.buffer != nullptr && target.length < target.capacity) {
    const int64_t written = std::min(length, target.capacity - target.length);
    std::memcpy(target.buffer + target.length, text, static_cast<size_t>(written));
  }
  target.length += length;
}

void PutText(Target &target, const char *text) {
  Put(target, text, static_cast<int64_t>(std::strlen(text)));
}

// Writes the text up to `offset` that has not been written yet.
void PutUpTo(Target &target, Expression &expression, int64_t offset) {
  if (offset > expression.walkPlace) {
    Put(target, expression.text + expression.walkPlace, offset - expression.walkPlace);
    expression.walkPlace = static_cast<int32_t>(offset);
  }
}

// True when the text has the node's name at the node's position. It may not have it after a rename
// whose text did not parse; that position is then left unchanged.
bool HasNameAt(const Expression &expression, const ExprNode *node) {
  const int64_t length = WRENStrLen(NodeText(node));
  return NodeOffset(node) >= 0 && NodeOffset(node) + length <= expression.textLength &&
         std::memcmp(expression.text + NodeOffset(node), NodeText(node),
                     static_cast<size_t>(length)) == 0;
}

// The same for a name with its parentheses; without them the position of the closing one is not
// known.
bool HasParentheses(const Expression &expression, const ExprNode *node) {
  return HasNameAt(expression, node) && NodeCloseOffset(node) > NodeOffset(node) &&
         NodeCloseOffset(node) < expression.textLength &&
         expression.text[NodeCloseOffset(node)] == ')';
}

bool IsMarkedFunction(EC ec, const ExprNode *node) {
  const ExprItem *row =
      NodeKindOf(node) == NODE_CALL ? ItemFind(&ec->functions, NodeText(node)) : nullptr;
  return row != nullptr && (row->itemFlags & ORL_FUNC_ESCAPE) != 0;
}

// ---- Dates --------------------------------------------------------------------------------------

// Writes a date in the form that the context defines; without one the date is copied unchanged.
void PutDate(Target &target, EC ec, Expression &expression, const ExprNode *node) {
  char date[kDateTextSize];
  const int32_t form =
      DateRewriteText(NodeText(node), date, ec->pictures[0], ec->pictures[1], ec->pictures[2]);
  const bool convert = (ec->dateConvertFlags & ORL_CONVERT_EXTENDED_TEXT) != 0;
  const char *text = convert ? TemplateOfForm(ec->dateConvert, form) : nullptr;
  const bool empty = date[0] == '\0' || (text != nullptr && text[0] == '\0');
  if (empty || !HasNameAt(expression, node)) {
    return;
  }
  PutUpTo(target, expression, NodeOffset(node));
  if (text != nullptr) {
    FillDateTemplate(text, date,
                     [&target](const char *part, int64_t length) { Put(target, part, length); });
  } else {
    PutText(target, date);
  }
  expression.walkPlace = NodeOffset(node) + WRENStrLen(NodeText(node));
}

// ---- The walk -----------------------------------------------------------------------------------

// What is written when the walk reaches a node.
void Arrive(Expansion &expansion, Expression &expression, const ExprNode *node, bool marks) {
  if (!marks) {
    return;
  }
  if (NodeKindOf(node) == NODE_DATE) {
    PutDate(expansion.target, expansion.ec, expression, node);
  } else if (IsMarkedFunction(expansion.ec, node) && HasParentheses(expression, node)) {
    PutUpTo(expansion.target, expression, NodeOffset(node));
    PutText(expansion.target, kOpenMark);
  }
}

// Writes the closing marks of the calls that the walk leaves between one node and the next node of
// the same tree, or its end.
void Leave(Expansion &expansion, Expression &expression, const ExprNode *from, const ExprNode *next,
           bool marks) {
  const ExprNode *stays = next != nullptr ? NodeParent(next) : nullptr;
  for (const ExprNode *node = from; marks && node != stays; node = NodeParent(node)) {
    if (IsMarkedFunction(expansion.ec, node) && HasParentheses(expression, node)) {
      PutUpTo(expansion.target, expression, NodeCloseOffset(node) + 1);
      PutText(expansion.target, kCloseMark);
    }
  }
}

// The formula to be spliced in at a node, or null.
Expression *FormulaToSplice(const Expansion &expansion, const Expression &expression,
                            ExprNode *node) {
  if (NodeKindOf(node) != NODE_FORMULA || !HasParentheses(expression, node)) {
    return nullptr;
  }
  return BoundFormula(expansion.ec, node);
}

// Writes the expanded text of an expression. False when it is too long or has no end.
bool Expand(Expansion &expansion, Expression *top) {
  Target &target = expansion.target;
  expansion.walkNumber = NextWalkNumber(expansion.ec);
  EnterExpression(expansion.walkNumber, top, nullptr, 0);
  Expression *current = top;
  ExprNode *node = top->tree;
  for (;;) {
    bool marks = current == top ? expansion.topMarks : expansion.bodyMarks;
    if (node != nullptr) {
      Arrive(expansion, *current, node, marks);
      Expression *body = FormulaToSplice(expansion, *current, node);
      if (body != nullptr) {
        if (body->walkNumber == expansion.walkNumber && body->walkState == WalkState::Open) {
          return false;  // the formulas refer to each other in a cycle
        }
        PutUpTo(target, *current, NodeOffset(node));
        PutText(target, "(");
        expansion.spliced = true;
        EnterExpression(expansion.walkNumber, body, current, IndexOf(current->tree, node));
        current = body;
        node = body->tree;
        continue;
      }
    } else {
      PutText(target, current->text + current->walkPlace);
      current->walkState = WalkState::No;
      if (current == top) {
        return !expansion.spliced || target.length <= kLongestSpliced;
      }
      PutText(target, ")");
      const uint32_t from = current->walkReturn;
      current = current->walkCaller;
      node = current->tree + from;
      current->walkPlace = NodeCloseOffset(node) + 1;
      marks = current == top ? expansion.topMarks : expansion.bodyMarks;
    }
    if (expansion.spliced && target.length > kLongestSpliced) {
      return false;
    }
    const ExprNode *from = node;
    node = ExprNodeNext(current->tree, node);
    Leave(expansion, *current, from, node, marks);
  }
}

// ---- The bound ----------------------------------------------------------------------------------

// What one node adds to the length of its text, formulas aside.
int64_t GrowthOfNode(EC ec, const ExprNode *node, bool withMarks) {
  if (NodeKindOf(node) == NODE_DATE && withMarks) {
    return std::max<int64_t>(int64_t{ec->pictureWidth} - WRENStrLen(NodeText(node)), 0);
  }
  return IsMarkedFunction(ec, node) ? kMarksLength : 0;
}

// Sums saturate at these bounds, which are far from the limits of their type.
void AddGrowth(Expression &expression, int64_t growth) {
  const int64_t sum = expression.walkPlace + growth;
  expression.walkPlace =
      static_cast<int32_t>(std::clamp<int64_t>(sum, -int64_t{INT32_MAX}, INT32_MAX));
}

// What splicing in a formula adds when that formula's own growth is known. The parentheses of the
// reference count as those of the splice.
int64_t GrowthOfSplice(const Expression &body, const ExprNode *reference) {
  return int64_t{body.walkPlace} + body.textLength - WRENStrLen(NodeText(reference));
}

// The most by which the text can grow. Each formula is summed once, however often it is referred
// to.
int64_t ExtendedGrowth(EC ec, Expression *top, bool withMarks) {
  const uint32_t number = NextWalkNumber(ec);
  EnterExpression(number, top, nullptr, 0);
  Expression *current = top;
  ExprNode *node = top->tree;
  for (;;) {
    if (node != nullptr) {
      Expression *body = NodeKindOf(node) == NODE_FORMULA ? BoundFormula(ec, node) : nullptr;
      if (body != nullptr && body->walkNumber != number) {
        EnterExpression(number, body, current, IndexOf(current->tree, node));
        current = body;
        node = body->tree;
        continue;
      }
      if (body == nullptr) {
        AddGrowth(*current, GrowthOfNode(ec, node, withMarks));
      } else {
        AddGrowth(*current,
                  body->walkState == WalkState::Open ? INT32_MAX : GrowthOfSplice(*body, node));
      }
    } else {
      current->walkState = WalkState::No;
      if (current == top) {
        return current->walkPlace;
      }
      const Expression &body = *current;
      const uint32_t from = current->walkReturn;
      current = current->walkCaller;
      node = current->tree + from;
      AddGrowth(*current, GrowthOfSplice(body, node));
    }
    node = ExprNodeNext(current->tree, node);
  }
}

}  // namespace

int32_t ORLGetExtendedTextLength(EC ec, HEXP exp, int32_t withMarks) {
  if (ec == nullptr || exp == nullptr) {
    return 0;
  }
  if (NodeKindOf(exp->tree) == NODE_DATE && ec->pictureWidth != 0 && withMarks != 0) {
    return ec->pictureWidth;
  }
  const int64_t bound = exp->textLength + ExtendedGrowth(ec, exp, withMarks != 0);
  return static_cast<int32_t>(std::clamp<int64_t>(bound, 0, INT32_MAX));
}

int32_t ORLGetExtendedText(EC ec, HEXP exp, int32_t size, char *buffer, int32_t withMarks) {
  if (size < 1 || buffer == nullptr) {
    return 0;
  }
  buffer[0] = '\0';
  if (ec == nullptr || exp == nullptr) {
    return 0;
  }
  const bool marks = withMarks != 0;
  Expansion expansion = {ec, marks, marks && ec->pictureWidth != 0, 0, false, {nullptr, 0, 0}};
  if (!Expand(expansion, exp)) {
    return 0;
  }
  expansion.target = {buffer, size - 1, 0};
  Expand(expansion, exp);
  const int64_t length = std::min<int64_t>(expansion.target.length, size - 1);
  buffer[length] = '\0';
  return static_cast<int32_t>(length) - 1;
}
