// The recursion check: no formula may refer to itself, directly or through others.
#ifndef ORLI11_LANGUAGE_RECURSION_H
#define ORLI11_LANGUAGE_RECURSION_H

#include <cstdint>

#include "engine/context.h"
#include "engine/expressions.h"

struct ExprNode;

// The limit for the searches of one load together, in nodes: some tenths of a second. Only names
// that occur twice in a block cause searches that need many.
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

// Whether a tree that is to be stored under `name` refers to that name, itself or through stored
// formulas. 0 when it does not; ORL_ERR_RECURSIVE with the node of the tree that does in `*where`;
// ORL_ERR_MEMORY when the steps that the context allows for searches are used up.
int32_t FormulaRefersTo(EC ec, const char *name, ExprNode *tree, const ExprNode **where);

// Updates the order of the context's expressions after one of them was given another tree that
// passed the check, and with it its former place if it was and is in the order; `oldName` is its
// former name.
void OrderAfterReplace(EC ec, Expression *expression, const char *oldName, bool wasInOrder);

#endif
