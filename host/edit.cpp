// The command that opens the formula editor on a store.
#include <algorithm>
#include <cstddef>

#include "host/commands.h"
#include "host/display.h"
#include "host/edit_help.h"
#include "host/edit_preview.h"
#include "host/edit_store.h"
#include "host/function_texts.h"
#include "host/store.h"
#include "host/value_listing.h"
#include "orli11/windows.h"

namespace {

constexpr char kSaveCaption[] = "Formula Save";
constexpr size_t kShownText = 300;  // bytes of a formula's text in a question

// The start of a text, truncated after a whole character.
std::string Beginning(const std::string &text) {
  size_t end = std::min(text.size(), kShownText);
  while (end > 0 && end < text.size() && (static_cast<unsigned char>(text[end]) & 0xC0) == 0x80) {
    --end;
  }
  return end == text.size() ? text : text.substr(0, end) + " ...";
}

// Asks whether to replace what another program has stored.
bool AskForeign(EditedStore &store, OrlWindow dialog, const Foreign &foreign) {
  const std::string question = "Another program has stored " + DisplayName(foreign.name) +
                               " meanwhile:\n\n" + Beginning(foreign.text) + "\n\nReplace it?";
  const int32_t answer =
      ORLGetWindowSystem()->MessageBox(dialog, question.c_str(), kSaveCaption,
                                       ORL_MB_YESNO | ORL_MB_ICONQUESTION | ORL_MB_DEFBUTTON2);
  if (answer == ORL_IDYES) {
    store.replaced[foreign.name] = foreign.text;
  }
  return answer == ORL_IDYES;
}

void ShowMessage(OrlWindow dialog, const std::string &message) {
  ORLGetWindowSystem()->MessageBox(dialog, message.c_str(), kSaveCaption,
                                   ORL_MB_OK | ORL_MB_ICONSTOP);
}

// The state of the host routines.
struct Beside {
  EditedStore *store;
  RowPreview preview;
  bool sql = false;  // the functions for databases are listed too
};

int32_t MaySave(void *user, OrlWindow dialog, HEXP exp, const char *text, const char *name) {
  EditedStore &store = *static_cast<Beside *>(user)->store;
  std::string error;
  Foreign foreign;
  while (!EditedStoreAccepts(store, exp, text, name, error, foreign)) {
    if (!error.empty()) {
      ShowMessage(dialog, "Not stored.\n\n" + error);
      return 0;
    }
    if (!AskForeign(store, dialog, foreign)) {
      return 0;
    }
  }
  return 1;
}

void WriteChanges(void *user, OrlWindow dialog) {
  Beside &beside = *static_cast<Beside *>(user);
  EditedStore &store = *beside.store;
  PreviewFormulas(beside.preview, FormulasOf(store.ec));
  std::string error;
  Foreign foreign;
  while (!EditedStoreWrite(store, error, foreign)) {
    if (!error.empty()) {
      ShowMessage(dialog, "Not stored yet.\n\n" + error);
      return;
    }
    if (!AskForeign(store, dialog, foreign)) {
      return;
    }
  }
}

void ShowHelp(void * /*user*/, const OrlHelp *help) {
  const OrlWindowSystem *windows = ORLGetWindowSystem();
  if (windows->size > offsetof(OrlWindowSystem, ShowPage) && windows->ShowPage != nullptr) {
    const HelpPage page = HelpPageFor(*help);
    windows->ShowPage(help->dialog, page.title.c_str(), page.text.c_str());
  }
}

int32_t ShowsFunction(void *user, const char *name) {
  const FunctionText *function = FindFunctionText(name);
  return static_cast<Beside *>(user)->sql || function == nullptr || !function->forDatabases ? 1 : 0;
}

void ShowValues(void *user, const char *text, OrlWindow list) {
  for (const std::string &line : PreviewOf(static_cast<Beside *>(user)->preview, text)) {
    ORLGetWindowSystem()->SendMessage(list, ORL_LB_ADDSTRING, 0,
                                      reinterpret_cast<intptr_t>(line.c_str()));
  }
}

OrlEditorHost HostOf(Beside &beside) {
  OrlEditorHost host = {};
  host.size = sizeof host;
  host.user = &beside;
  host.MaySave = MaySave;
  host.Changed = WriteChanges;
  host.Help = ShowHelp;
  host.DescribeFunction = [](void * /*user*/, const char *name, char *buffer, int32_t size) {
    return DescribeFunction(name, buffer, size);
  };
  host.ShowsFunction = ShowsFunction;
  host.Preview = ShowValues;
  return host;
}

// Sets these routines for editors during its lifetime.
class HostInUse {
 public:
  explicit HostInUse(const OrlEditorHost *host) { Set(host); }
  ~HostInUse() { Set(nullptr); }
  HostInUse(const HostInUse &) = delete;
  HostInUse &operator=(const HostInUse &) = delete;

 private:
  static void Set(const OrlEditorHost *host) {
    const OrlWindowSystem *windows = ORLGetWindowSystem();
    if (windows != nullptr && windows->size > offsetof(OrlWindowSystem, SetEditorHost) &&
        windows->SetEditorHost != nullptr) {
      windows->SetEditorHost(host);
    }
  }
};

int32_t EditorType(const std::string &kind) {
  constexpr int32_t kSet = 1;
  constexpr int32_t kRange = 2;
  return kind == "set" ? kSet : kind == "range" ? kRange : 0;
}

// Runs the editor in the context.
void RunEditor(const EditOptions &options, Session &session, const Store &store,
               const char *valuesItem, EditedStore &edited) {
  EC ec = store.ec.get();
  ValueListing listing;
  listing.session = &session;
  ORLSetUserLong(ec, reinterpret_cast<intptr_t>(&listing));
  ORLSetListValuesCallback(ec, ListValues);
  ORLSetDelPermissionCallback(ec, [](EC, HEXP, void *) { return 1; });
  Beside beside = {&edited, {}, options.sql};
  PreviewOpen(beside.preview, session);
  const OrlEditorHost host = HostOf(beside);
  const HostInUse inUse(&host);
  const Formula *formula = options.name.empty() ? nullptr : StoreFormula(store, options.name);
  HEXP exp = formula != nullptr ? formula->exp : nullptr;
  const std::string kind =
      options.mode.empty() && exp != nullptr ? FormulaKind(ec, exp) : options.mode;
  ORLBuildExpressionOfType(nullptr, ec, exp, 0, EditorType(kind), valuesItem);
}

// Reports the result of a session that began with the formulas `first`. Tries once more to write
// what could not be written.
int Finish(EditedStore &store, const StoreFile &file, const std::vector<Formula> &first) {
  std::string error;
  Foreign foreign;
  if (!EditedStoreWrite(store, error, foreign)) {
    Complain(error.empty() ? file.path + ": another program has stored " +
                                 DisplayName(foreign.name) + " meanwhile"
                           : error,
             kExitWrong);
    StoreReport(ChangesBetween(store.known, FormulasOf(store.ec)).stored, kExitWrong);
    return kExitWrong;
  }
  const std::string summary = ChangesSummary(ChangesBetween(first, store.known));
  return Complain(file.path + ": " + (summary.empty() ? "nothing changed" : summary), kExitGood);
}

// Edits the formulas over the columns of the file, for which they must be valid.
int Edit(const EditOptions &options, Session &session, const Store &old, const StoreFile &file) {
  std::vector<Formula> before = FormulasMerged(old.formulas, {});
  std::string error;
  Store edited;
  if (!StoreDefine(old, file, {}, session, before, error) ||
      !StoreRead(StoredForm(session.ec.get(), before), edited, error)) {
    return Complain(error, kExitWrong);
  }
  const Column *column = options.values.empty() ? nullptr : StoreColumn(edited, options.values);
  if (column == nullptr && !options.values.empty()) {
    return Complain(session.csv.Path() + ": has no column " + DisplayName(options.values) +
                        ColumnHint(edited.columns, options.values),
                    kExitWrong);
  }
  EditedStore store = {options.store, edited.ec.get(), file.bytes, FormulasOf(edited.ec.get()), {}};
  const std::vector<Formula> first = store.known;
  RunEditor(options, session, edited, column != nullptr ? column->name.c_str() : nullptr, store);
  return Finish(store, file, first);
}

}  // namespace

int RunEdit(const EditOptions &options) {
  if (options.data.paths[0] == "-") {
    return Complain("edit needs a file of columns that has a name", kExitUsage);
  }
  StoreFile file;
  Store old;
  std::string error;
  const bool good = StoreOpen(options.store, kStoreLook, file, old, error);
  StoreFileClose(file);
  if (!good) {
    return Complain(error, kExitWrong);
  }
  if (!options.name.empty() && StoreFormula(old, options.name) == nullptr) {
    return Refuse(file, "has no formula " + DisplayName(options.name) +
                            FormulaHint(old.formulas, options.name));
  }
  const char *problem = ORLWindowSystemProblem();
  if (problem != nullptr) {
    return Complain(problem, kExitWrong);
  }
  return WithSession(options.data,
                     [&](Session &session) { return Edit(options, session, old, file); });
}
