// Help for users of the editor: the pages of functions, messages and controls, for
// OrlEditorHost.
#ifndef ORLI11_HOST_EDIT_HELP_H
#define ORLI11_HOST_EDIT_HELP_H

#include <orli11/windows.h>

#include <string>

// A page of help in Markdown, with its title.
struct HelpPage {
  std::string title, text;
};
// The page for a request: the function, the message, else the control.
HelpPage HelpPageFor(const OrlHelp &help);

// Signature and description, as DescribeFunction of OrlEditorHost has them.
int32_t DescribeFunction(const char *name, char *buffer, int32_t size);

#endif
