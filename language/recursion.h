// The recursion check: no formula may refer to itself, directly or through others.
#ifndef ORLI11_LANGUAGE_RECURSION_H
#define ORLI11_LANGUAGE_RECURSION_H

#include <cstdint>

#include "engine/context.h"
#include "engine/expressions.h"

struct ExprNode;

// The limit for the searches of one load together, in nodes: a few tenths of a second. Only blocks
// that store a name twice come near it.
constexpr int64_t kMostSearchSteps = 4000000;

// During its lifetime searches for cycles in a context take no more steps than are left in
// `*steps`.
class SearchLimit {
 public:
  SearchLimit(EC ec, int64_t *steps) : context_(ec), outer_(ec->searchSteps) {
    ec->searchSteps = steps;
  }
  ~SearchLimit() { context_->searchSteps = outer_; }
  SearchLimit(const SearchLimit &) = delete;
  SearchLimit &operator=(const SearchLimit &) = delete;

 private:
  EC context_;
  int64_t *outer_;
};

enum class RecursionCheck : uint8_t {
  Passed,
  Recursive,
  OutOfSteps  // the context allows searches no more steps
};

// Whether a tree that is to be stored under `name` refers to that name, itself or through stored
// formulas. Recursive: with the node of the tree that does in `*where`.
RecursionCheck CheckReferences(EC ec, const char *name, ExprNode *tree, const ExprNode **where);

// Updates the order of the context's expressions. Call after an expression received a checked tree.
// `oldName` is its former name. `wasInOrder`: it was in the order, and the new tree has taken over
// its links.
void OrderAfterReplace(EC ec, Expression *expression, const char *oldName, bool wasInOrder);

#endif
