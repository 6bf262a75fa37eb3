#include "editor/session.h"

#include <gtest/gtest.h>

#include <numeric>
#include <sstream>

namespace {

struct User {
  Steps steps;
  std::vector<int32_t> answers;
  size_t answered = 0;
};
User user;
std::vector<std::string> messages;
std::function<void()> atBoxes;

std::string NameOf(OrlWindow dialog) {
  char name[32] = "";
  ORLHeadlessName(dialog, name, sizeof name);
  return name;
}

std::string Joined(const std::vector<std::string> &parts, const char *separator) {
  std::string all;
  for (const std::string &part : parts) all += (&part == &parts[0] ? "" : separator) + part;
  return all;
}

void AnswerBox(OrlWindow window) {
  OrlHeadlessBox box = {};
  ORLHeadlessBoxAt(ORLHeadlessBoxCount() - 1, &box);
  messages.push_back(std::string(box.caption) + "|" + box.text);
  if (atBoxes) atBoxes();
  const bool last = user.answered == user.answers.size();
  if (last || ORLHeadlessAnswer(window, user.answers[user.answered++]) == 0) {
    if (ORLHeadlessClose(window) == 0) ORLHeadlessAnswer(window, ORL_IDNO);
  }
}

int32_t PlayUser(void *, OrlWindow window) {
  if (Look(window).kind == ORL_HEADLESS_BOX) {
    AnswerBox(window);
  } else if (NameOf(window) == "EXPBILD") {
    user.steps(window);
    ORLHeadlessClose(window);
  } else {
    messages.push_back("!" + Text(window, kErrorMessage) + "|" + Marked(window, kErrorText));
    if (atBoxes) atBoxes();
    ORLHeadlessClick(window, kErrorOk);
  }
  return 1;
}

int32_t RowOf(OrlWindow dialog, int32_t list, const std::string &text) {
  const int32_t count = Look(dialog, list).rowCount;
  for (int32_t row = 0; row < count; ++row) {
    char name[200];
    ORLHeadlessRow(dialog, list, row, name, sizeof name);
    if (name == text) return row;
  }
  return -1;
}

int32_t ActOnce(OrlWindow dialog, const std::string &verb, int32_t id, const std::string &rest) {
  if (verb == "click") return ORLHeadlessClick(dialog, id);
  if (verb == "double") return ORLHeadlessDoubleClickRow(dialog, id, RowOf(dialog, id, rest));
  if (verb == "right") return ORLHeadlessRightDoubleClickRow(dialog, id, RowOf(dialog, id, rest));
  if (verb == "row") return ORLHeadlessClickRow(dialog, id, RowOf(dialog, id, rest));
  if (verb == "type") return ORLHeadlessType(dialog, id, rest.c_str());
  if (verb == "key") return ORLHeadlessKey(dialog, id, static_cast<uint32_t>(std::stoi(rest)), 0);
  if (verb == "wait") return ORLHeadlessWait(static_cast<uint32_t>(id));
  if (verb == "focus") return ORLHeadlessFocus(dialog, id);
  if (verb == "close") return ORLHeadlessClose(dialog);
  if (verb == "select") {
    const size_t blank = rest.find(' ');
    return ORLHeadlessSelect(dialog, id, std::stoi(rest), std::stoi(rest.substr(blank)));
  }
  ADD_FAILURE() << "no such act: " << verb;
  return 0;
}

std::vector<int32_t> Those(OrlWindow dialog, const std::vector<int32_t> &ids,
                           int32_t OrlHeadlessState::*mark) {
  std::vector<int32_t> result;
  for (const int32_t id : ids) {
    if (Look(dialog, id).*mark != 0) result.push_back(id);
  }
  return result;
}

}  // namespace

void WithUser(const Steps &steps, const std::vector<int32_t> &answers,
              const std::function<void()> &action) {
  user = {steps, answers, 0};
  messages.clear();
  ASSERT_EQ(ORLHeadlessStart(&PlayUser, nullptr), 1);
  action();
  ORLHeadlessEnd();
  atBoxes = nullptr;
}

void AtBoxes(const std::function<void()> &host) {
  atBoxes = host;
}

HEXP Edit(EC ec, const Opening &opening, const Steps &steps, const std::vector<int32_t> &answers) {
  HEXP result = nullptr;
  WithUser(steps, answers, [&] {
    result = ORLBuildExpressionOfType(nullptr, ec, opening.exp, opening.limit, opening.type,
                                      opening.item);
    EXPECT_EQ(ORLHeadlessBitmapCount(), 0) << "after the editor";
  });
  return result;
}

const std::vector<std::string> &Messages() {
  return messages;
}

std::string AllMessages() {
  return Joined(messages, " / ");
}

void Act(OrlWindow dialog, const std::string &acts) {
  std::istringstream all(acts);
  for (std::string act; std::getline(all, act, ';');) {
    std::istringstream words(act);
    std::string verb, id, rest;
    words >> verb;
    const bool refused = verb == "no";
    if (refused) words >> verb;
    words >> id;
    std::getline(words >> std::ws, rest);
    const int32_t done = ActOnce(dialog, verb, id.empty() ? 0 : std::stoi(id), rest);
    EXPECT_EQ(done, refused ? 0 : 1) << act;
  }
}

OrlHeadlessState Look(OrlWindow dialog, int32_t id) {
  OrlHeadlessState state = {};
  ORLHeadlessLook(dialog, id, &state);
  return state;
}

std::string Text(OrlWindow dialog, int32_t id) {
  const int32_t length = ORLHeadlessText(dialog, id, nullptr, 0);
  if (length < 0) return "";
  std::string text(static_cast<size_t>(length) + 1, '#');
  ORLHeadlessText(dialog, id, text.data(), length + 1);
  text.pop_back();
  return text;
}

std::string Marked(OrlWindow dialog, int32_t id) {
  const OrlHeadlessState state = Look(dialog, id);
  std::string text = Text(dialog, id);
  text.insert(static_cast<size_t>(state.selectionEnd), "}");
  text.insert(static_cast<size_t>(state.selectionStart), "{");
  return text;
}

std::vector<std::string> Rows(OrlWindow dialog, int32_t list, bool data) {
  const OrlHeadlessState state = Look(dialog, list);
  std::vector<std::string> rows;
  for (int32_t row = 0; row < state.rowCount; ++row) {
    std::string text(static_cast<size_t>(ORLHeadlessRow(dialog, list, row, nullptr, 0)) + 1, '#');
    ORLHeadlessRow(dialog, list, row, text.data(), static_cast<int32_t>(text.size()));
    text.pop_back();
    if (data) text += ":" + std::to_string(ORLHeadlessRowData(dialog, list, row));
    rows.push_back((row == state.currentRow ? "*" : "") + text);
  }
  return rows;
}

std::string RowList(OrlWindow dialog, int32_t list, bool data) {
  return Joined(Rows(dialog, list, data), ", ");
}

std::vector<int32_t> Enabled(OrlWindow dialog, const std::vector<int32_t> &ids) {
  return Those(dialog, ids, &OrlHeadlessState::enabled);
}

std::vector<int32_t> Visible(OrlWindow dialog, const std::vector<int32_t> &ids) {
  return Those(dialog, ids, &OrlHeadlessState::visible);
}
