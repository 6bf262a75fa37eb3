// The built-in functions that have a batch form.
#ifndef ORLI11_EVALUATION_BATCH_FUNCTIONS_H
#define ORLI11_EVALUATION_BATCH_FUNCTIONS_H

#include "evaluation/batch.h"

// Computes the function for each row: the result replaces the frame, which the arguments follow.
// False, with nothing done, when it has to be called row by row.
using BatchRoutine = bool (*)(BatchRun &run, Batch *frame, uint32_t count);

// The batch form of a built-in function, or null.
BatchRoutine BatchRoutineOf(const BuiltIn *builtIn);

// Those on strings.
bool BatchStrLeft(BatchRun &run, Batch *frame, uint32_t count);
bool BatchStrRight(BatchRun &run, Batch *frame, uint32_t count);
bool BatchStrMid(BatchRun &run, Batch *frame, uint32_t count);
bool BatchStrLength(BatchRun &run, Batch *frame, uint32_t count);
bool BatchStrTrim(BatchRun &run, Batch *frame, uint32_t count);
bool BatchStrLTrim(BatchRun &run, Batch *frame, uint32_t count);
bool BatchStrRTrim(BatchRun &run, Batch *frame, uint32_t count);
bool BatchStrUpper(BatchRun &run, Batch *frame, uint32_t count);
bool BatchStrLower(BatchRun &run, Batch *frame, uint32_t count);

#endif
