// Rows in batches: programs that call no host routine run once for a batch of rows, on a stack of
// batches. Each named formula is computed once for a batch.
#include <algorithm>
#include <cstring>

#include "dates/stored_date.h"
#include "engine/context.h"
#include "engine/items.h"
#include "evaluation/arithmetic.h"
#include "evaluation/batch.h"
#include "evaluation/batch_dates.h"
#include "evaluation/row_output.h"
#include "evaluation/rows.h"
#include "platform/owned.h"

namespace {

// Longer chains of formulas and deeper programs are computed row by row.
constexpr uint32_t kMostFormulas = 64;
constexpr uint32_t kMostDepth = 64;

struct PlannedFormula {
  Expression *expression;
  Program *program;
  uint32_t depth;  // batches that it pushes at most, those of formulas that it refers to included
  bool open;       // its program is being examined
  bool computed;   // for this batch
  Batch result;
};

struct Plan {
  const RowsCall *call;
  bool needsMemory;  // steps may need memory
  uint32_t count;
  PlannedFormula formulas[kMostFormulas];  // the first is the expression itself
};

// ---- Whether a formula can be computed in batches ----

RowsOutcome PlanFormula(Plan &plan, Expression *expression, uint32_t *depth);

RowsOutcome PlanInput(const Plan &plan, const Word *code) {
  const ExprItem *item = ItemFind(&plan.call->ec->inputs, code[kInputName].text);
  const bool asked =
      code[kInputRoutine].routine != nullptr && ColumnOf(*plan.call, item) == nullptr;
  return asked || code->instruction.operation == Operation::OtherInput ? RowsOutcome::NotSuitable
                                                                       : RowsOutcome::Done;
}

RowsOutcome PlanCall(Plan &plan, const Word *code) {
  const BuiltIn *builtIn = code[kCallBuiltIn].builtIn;
  if (code[kCallRow].row != nullptr && builtIn == nullptr) {
    return RowsOutcome::NotSuitable;
  }
  plan.needsMemory = plan.needsMemory || (builtIn != nullptr && builtIn->inner == nullptr);
  return RowsOutcome::Done;
}

// `depth` becomes the largest of the formulas that the program refers to.
RowsOutcome PlanCode(Plan &plan, Program *program, uint32_t *depth) {
  Word *code = ProgramCode(program);
  const Word *end = code + program->length;
  RowsOutcome outcome = RowsOutcome::Done;
  for (; outcome == RowsOutcome::Done && code < end;
       code += InstructionLength(code->instruction.operation)) {
    switch (code->instruction.operation) {
      case Operation::NumberInput:
      case Operation::DateInput:
      case Operation::OtherInput:
        outcome = PlanInput(plan, code);
        break;
      case Operation::TextInput:
        plan.needsMemory = true;
        outcome = PlanInput(plan, code);
        break;
      case Operation::Call:
        outcome = PlanCall(plan, code);
        break;
      case Operation::Text:
      case Operation::EscapedText:
        plan.needsMemory = true;
        break;
      case Operation::Formula:
        if (code[kFormulaExpression].expression != nullptr) {
          uint32_t inner = 0;
          outcome = PlanFormula(plan, code[kFormulaExpression].expression, &inner);
          *depth = std::max(*depth, inner);
        }
        break;
      default:
        break;
    }
  }
  return outcome;
}

RowsOutcome PlanFormula(Plan &plan, Expression *expression, uint32_t *depth) {
  for (uint32_t i = 0; i < plan.count; ++i) {
    if (plan.formulas[i].expression == expression) {
      *depth = plan.formulas[i].depth;
      return plan.formulas[i].open ? RowsOutcome::NotSuitable : RowsOutcome::Done;
    }
  }
  if (plan.count == kMostFormulas) {
    return RowsOutcome::NotSuitable;
  }
  Program *program = BindProgram(plan.call->ec, expression);
  if (program == nullptr) {
    return RowsOutcome::Failed;
  }
  PlannedFormula &formula = plan.formulas[plan.count++];
  formula.expression = expression;
  formula.program = program;
  formula.open = true;
  const RowsOutcome outcome = PlanCode(plan, program, depth);
  formula.open = false;
  formula.depth = *depth = std::min(program->depth, kMostDepth + 1) + *depth;
  return outcome != RowsOutcome::Done || *depth <= kMostDepth ? outcome : RowsOutcome::NotSuitable;
}

// ---- The run ----

struct Runner {
  BatchRun run;
  Plan plan;
  Batch stack[kMostDepth];
  Owned<char> memory;  // of all batches

  explicit Runner(const RowsCall *call) : run(call) {
    plan.call = call;
    plan.needsMemory = call->results->form == ORL_COLUMN_TEXT;
    plan.count = 0;
  }
};

PlannedFormula *FindFormula(Plan &plan, const Expression *expression) {
  PlannedFormula *formula = plan.formulas;
  while (formula->expression != expression) {
    ++formula;
  }
  return formula;
}

void PushInput(Runner &runner, const Word *code, Batch *top) {
  const RowsCall &call = *runner.run.call;
  const ExprItem *item = ItemFind(&call.ec->inputs, code[kInputName].text);
  const OrlColumn *column = item == nullptr ? nullptr : ColumnOf(call, item);
  if (column == nullptr || item->dataType != code->instruction.type) {
    SetNoValues(top);
  } else {
    LoadColumn(runner.run, *column, item->dataType, top);
  }
}

void PushEscaped(BatchRun &run, const char *text, Batch *top) {
  char *bytes = ArenaText(run.arena, static_cast<uint32_t>(std::strlen(text)) + 1);
  if (bytes == nullptr) {
    run.outOfMemory = true;
    SetNoValues(top);
  } else {
    SetSingleText(top, bytes, UnescapeString(bytes, text));
  }
}

void PushPacked(const Word *code, Batch *top) {
  Value value;
  SetPacked(&value, code + 1);
  SetSingleValue(top, value);
}

void PushDateOf(const char *text, Batch *top) {
  Value value;
  PushDate(text, &value);
  NumberValue date;
  StoreValue(&date, value);
  DateTimeParts parts;
  if (DecodeDate(date, &parts)) {
    SetSingleInstant(top, InstantOfParts(parts));
  } else {
    SetSingleValue(top, value);
  }
}

void RunFormula(Runner &runner, const PlannedFormula &formula, Batch *stack);

// Pushes a formula's result; the pushed batch borrows its elements.
void PushFormula(Runner &runner, const Expression *expression, Batch *top) {
  if (expression == nullptr) {
    SetNoValues(top);
    return;
  }
  PlannedFormula *formula = FindFormula(runner.plan, expression);
  if (!formula->computed) {
    RunFormula(runner, *formula, top);
    std::swap(formula->result, *top);
    formula->computed = true;
  }
  void *own = top->own;
  *top = formula->result;
  top->own = own;
}

// Returns the words up to the code of an argument, or to what follows it: one that the function
// does not declare is not computed and has no value.
uint32_t BeginArgument(const Word *code, const ExprItem *function, int32_t place, Batch *&top) {
  if (place < function->paramCount) {
    return InstructionLength(code->instruction.operation);
  }
  SetNoValues(++top);
  return static_cast<uint32_t>(code->instruction.operand);
}

// Pushes the frame of a call and returns the words up to the code to run next. A call without a
// routine is complete: it has no value.
uint32_t BeginBatchCall(Word *code, Batch *&top) {
  const ExprItem *function = code[kCallRow].row;
  (++top)->call = code;
  if (function == nullptr) {
    SetNoValues(top);
    return code[kCallShape].call.length;
  }
  return code[kCallShape].call.arguments == 0 ? uint32_t{kCallEnd}
                                              : BeginArgument(code, function, 0, top);
}

// Runs a program; its value becomes the first one on the stack.
void RunFormula(Runner &runner, const PlannedFormula &formula, Batch *stack) {
  BatchRun &run = runner.run;
  Word *code = ProgramCode(formula.program);
  Batch *top = stack - 1;
  while (!run.outOfMemory && !ArenaIsFull(run)) {
    const Instruction &instruction = code->instruction;
    uint32_t length = InstructionLength(instruction.operation);
    switch (instruction.operation) {
      case Operation::NumberInput:
      case Operation::DateInput:
      case Operation::TextInput:
      case Operation::OtherInput:
        PushInput(runner, code, ++top);
        break;
      case Operation::SmallNumber:
        SetSingleNumber(++top, {instruction.operand, 0});
        break;
      case Operation::Number:
        SetSingleNumber(++top, DecimalOfWords(code));
        break;
      case Operation::Constant:
        SetSingleNumber(++top, DecimalOfWords(code));
        length = static_cast<uint32_t>(instruction.operand);
        break;
      case Operation::Nothing:
        break;
      case Operation::PackedNumber:
        PushPacked(code, ++top);
        break;
      case Operation::Add:
      case Operation::Subtract:
      case Operation::Multiply:
      case Operation::Divide:
        --top;
        BatchArithmetic(run, instruction.operation, top, top + 1);
        break;
      case Operation::Text:
        SetSingleText(++top, code[1].text, static_cast<uint32_t>(code[2].bits));
        break;
      case Operation::EscapedText:
        PushEscaped(run, code[1].text, ++top);
        break;
      case Operation::Concatenate:
        --top;
        BatchConcatenate(run, top, top + 1);
        break;
      case Operation::Date:
        PushDateOf(code[1].text, ++top);
        break;
      case Operation::MoveDate:
        --top;
        BatchMoveDate(run, instruction, top, top + 1);
        break;
      case Operation::SubtractDates:
        --top;
        BatchSubtractDates(run, top, top + 1);
        break;
      case Operation::Call:
        length = BeginBatchCall(code, top);
        break;
      case Operation::NextArgument: {
        const Batch *frame = top - instruction.detail;
        length = BeginArgument(code, frame->call[kCallRow].row, instruction.detail, top);
        break;
      }
      case Operation::Invoke:
        top -= instruction.operand;
        BatchCall(run, top->call, top, static_cast<uint32_t>(instruction.operand));
        break;
      case Operation::Formula:
        PushFormula(runner, code[kFormulaExpression].expression, ++top);
        break;
      case Operation::NoValue:
        SetNoValues(++top);
        break;
      case Operation::End:
        return;
    }
    code += length;
  }
}

// Allocates the memory of each batch; false when out of memory.
bool BeginRunner(Runner &runner, uint32_t rows) {
  BatchRun &run = runner.run;
  Plan &plan = runner.plan;
  const uint32_t depth = plan.formulas[0].depth;
  const uint64_t size = uint64_t{rows} * sizeof(Value);
  runner.memory = Allocate<char>(size * (depth + plan.count));
  char *own = runner.memory.get();
  if (own == nullptr ||
      (depth >= run.inner.values.capacity && !StackGrow(run.inner.values, depth + 1))) {
    return false;
  }
  for (uint32_t i = 0; i < depth; ++i, own += size) {
    runner.stack[i].own = own;
  }
  for (uint32_t i = 0; i < plan.count; ++i, own += size) {
    plan.formulas[i].result.own = own;
  }
  return true;
}

// Computes a batch and stores its results; false when out of memory. When the strings of the batch
// are too large nothing is stored.
bool RunBatch(Runner &runner, RowOutput &output) {
  BatchRun &run = runner.run;
  for (uint32_t i = 0; i < runner.plan.count; ++i) {
    runner.plan.formulas[i].computed = false;
  }
  ArenaReset(run.arena);
  RunFormula(runner, runner.plan.formulas[0], runner.stack);
  if (run.outOfMemory || ArenaIsFull(run)) {
    return !run.outOfMemory;
  }
  MakeRows(run, runner.stack);
  return StoreBatch(run, output, runner.stack[0]);
}

bool RunBatches(Runner &runner, RowOutput &output) {
  constexpr uint32_t kFewerRows = 8;  // divisor of the rows when strings are too large
  BatchRun &run = runner.run;
  const int64_t rows = run.call->rows;
  uint32_t size = kBatchRows;
  while (run.first < rows) {
    const int64_t inChunk = kChunkRows - run.first % kChunkRows;
    run.count = static_cast<uint32_t>(std::min({int64_t{size}, inChunk, rows - run.first}));
    if (!RunBatch(runner, output)) {
      return false;
    }
    if (ArenaIsFull(run)) {
      size = std::max(size / kFewerRows, kLeastBatchRows);
    } else {
      run.first += run.count;
    }
  }
  return true;
}

}  // namespace

RowsOutcome EvaluateInBatches(const RowsCall &call, RowOutput &output) {
  if (call.ec->hasNumberOperators) {
    return RowsOutcome::NotSuitable;
  }
  Runner runner(&call);
  uint32_t depth = 0;
  const RowsOutcome planned = PlanFormula(runner.plan, call.exp, &depth);
  if (planned != RowsOutcome::Done) {
    return planned;
  }
  const auto most = static_cast<uint32_t>(std::min(call.rows, int64_t{kBatchRows}));
  const bool done = BeginRunner(runner, most + kLeastBatchRows) &&
                    OutputBegin(output, call.results, call.rows, !runner.plan.needsMemory) &&
                    RunBatches(runner, output);
  return done ? RowsOutcome::Done : RowsOutcome::Failed;
}
