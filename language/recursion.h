// The recursion check: no formula may refer to itself, directly or through others.
#ifndef ORLI11_LANGUAGE_RECURSION_H
#define ORLI11_LANGUAGE_RECURSION_H

#include <cstdint>

#include "engine/context.h"
#include "engine/expressions.h"

struct ExprNode;

// What the searches of one load may take together, in nodes: some tenths of a second. Only names
// that a block gives twice make searches that need many.
constexpr int64_t kMostSearchSteps = 4000000;

// While it lives, searches for circles in a context take no more steps than are left in `*steps`.
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

// Restores the order of the context's expressions after one of them has got another tree that
// passed the check; `oldName` is the name that it had before.
void OrderAfterReplace(EC ec, Expression *expression, const char *oldName);

#endif
