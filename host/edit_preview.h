/* edit_preview.h - the values of the first rows for a text that is still being written. */
#ifndef ORLI11_HOST_EDIT_PREVIEW_H
#define ORLI11_HOST_EDIT_PREVIEW_H

#include <string>
#include <vector>

#include "host/formulas.h"
#include "host/session.h"

/* Works on the context of a session of its own use; the one that is edited is not touched. */
struct RowPreview {
  Session *session = nullptr;
  std::vector<CsvRow> rows; /* the first of the file */
};

/* Reads the first rows. Those that cannot be read are missing. */
void PreviewOpen(RowPreview &preview, Session &session);
/* The formulas that a text can call from now on. */
void PreviewFormulas(RowPreview &preview, std::vector<Formula> formulas);
/* What a text gives, a line for each row; nothing for one that has no values. */
std::vector<std::string> PreviewOf(RowPreview &preview, const char *text);

#endif
