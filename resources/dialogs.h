// The templates of the dialogs: every control with its id, caption and rectangle.
#ifndef ORLI11_RESOURCES_DIALOGS_H
#define ORLI11_RESOURCES_DIALOGS_H

#include "orli11/windows.h"

constexpr char kDialogEditor[] = "EXPBILD";
constexpr char kDialogTextView[] = "EXPTEXTVIEW";
constexpr char kDialogValues[] = "LISTVALUES";
constexpr char kDialogError[] = "DLGERROR";
constexpr char kDialogLoadError[] = "DLGFERROR";

// The template of this name, null when there is none. Valid as long as the module is loaded.
const OrlDialogTemplate *FindDialog(const char *name);

#endif
