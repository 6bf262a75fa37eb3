// The values of the first rows for a text that is still being edited.
#ifndef ORLI11_HOST_EDIT_PREVIEW_H
#define ORLI11_HOST_EDIT_PREVIEW_H

#include <string>
#include <vector>

#include "host/formulas.h"
#include "host/session.h"

// Works on the context of a separate session; the one that is edited is not changed.
struct RowPreview {
  Session *session = nullptr;
  std::vector<CsvRowCopy> rows;  // the first of the file
};

// Reads the first rows, except for those that cannot be read.
void PreviewOpen(RowPreview &preview, Session &session);
// Sets the formulas that a text can call.
void PreviewFormulas(RowPreview &preview, std::vector<Formula> formulas);
// The values of a text, a line for each row; empty for a text without values.
std::vector<std::string> PreviewOf(RowPreview &preview, const char *text);

#endif
