// Strings that dialogs compose.
#ifndef ORLI11_EDITOR_EDITOR_TEXT_H
#define ORLI11_EDITOR_EDITOR_TEXT_H

#include <cstdint>

#include "orli11/windows.h"

// A string of the table, or several concatenated, as far as they fit.
struct EditorText {
  char text[256];
};

// The string with this id; empty when there is none.
EditorText LoadText(uint32_t id);

// Appends a string to the text.
void AppendText(EditorText &text, uint32_t id);

// Sets "left - right" as a window's title; false when out of memory.
bool SetJoinedTitle(OrlWindow window, const char *left, const char *right);

#endif
