// Edits under random input of user and program, against texts kept as lists of characters.
#include <gtest/gtest.h>

#include <algorithm>
#include <numeric>
#include <random>

#include "tests/platform/headless_dialog.h"

namespace {

using Characters = std::vector<std::string>;

std::string Joined(const Characters &characters, size_t count = SIZE_MAX) {
  count = std::min(count, characters.size());
  return std::accumulate(characters.begin(), characters.begin() + static_cast<long>(count),
                         std::string());
}

// Where the contract leaves it open, edits on widgets behave like their toolkit: positions are
// those of whole characters, a change that leaves the text unchanged is not reported, and keys are
// the toolkit's.
#ifdef ORLI_ON_WIDGETS
constexpr bool kOnWidgets = true;
#else
constexpr bool kOnWidgets = false;
#endif

struct Model {
  bool lines = false, modified = false, hasClip = false;
  Characters characters, clip;
  int32_t anchor = 0, caret = 0, changes = 0;
  size_t limit = 0;

  // Characters that end at or before a byte; with `up` also the one that it lies in.
  size_t Index(int32_t byte, bool up = false) const {
    size_t index = 0;
    while (index < characters.size() && At(index + 1) <= byte) ++index;
    return index + (up && At(index) < byte ? 1 : 0);
  }
  int32_t At(size_t index) const { return static_cast<int32_t>(Joined(characters, index).size()); }
  size_t From() const { return Index(std::min(anchor, caret)); }
  size_t To() const { return anchor == caret ? From() : Index(std::max(anchor, caret), true); }
  void Select(size_t first, size_t last) { anchor = At(first), caret = At(last); }

  void Replace(Characters with, bool whole) {
    Characters rest = characters;
    rest.erase(rest.begin() + static_cast<long>(From()), rest.begin() + static_cast<long>(To()));
    const size_t spare = limit - std::min(limit, Joined(rest).size());
    if (limit > 0 && Joined(with).size() > spare && whole) return;
    const bool erases = with.empty();
    while (limit > 0 && Joined(with).size() > spare && !with.empty()) with.pop_back();
    if (with.empty() && (From() == To() || !erases)) return;
    const size_t from = From();
    rest.insert(rest.begin() + static_cast<long>(from), with.begin(), with.end());
    const bool changed = !kOnWidgets || rest != characters;
    characters = rest;
    Select(from + with.size(), from + with.size());
    modified = modified || changed;
    changes += changed ? 1 : 0;
  }
  void Erase(size_t first, size_t last) {
    if (anchor == caret) Select(first, last);
    Replace({}, false);
  }
  void Copy() {
    if (From() == To()) return;
    hasClip = true;
    clip.assign(characters.begin() + static_cast<long>(From()),
                characters.begin() + static_cast<long>(To()));
  }
  void Paste() {
    const auto end = lines ? clip.end() : std::find(clip.begin(), clip.end(), "\n");
    if (hasClip && end != clip.begin()) Replace(Characters(clip.begin(), end), false);
  }
  size_t LineStart(size_t index) const {
    while (lines && index > 0 && characters[index - 1] != "\n") --index;
    return lines ? index : 0;
  }
  size_t LineEnd(size_t index) const {
    while (index < characters.size() && (!lines || characters[index] != "\n")) ++index;
    return index;
  }
  size_t Moved(uint32_t key, uint32_t held) const {
    const bool far = (held & ORL_HEADLESS_CONTROL) != 0;
    const bool leaves = kOnWidgets && lines && (held & ORL_HEADLESS_SHIFT) == 0 && anchor != caret;
    if (leaves && key == ORL_VK_LEFT) return From();
    if (leaves && key == ORL_VK_RIGHT) return To();
    const size_t here = Index(caret), start = LineStart(here), end = LineEnd(here);
    const size_t left = caret > At(here) ? here : here - (here > 0 ? 1 : 0);
    const size_t right = std::min(here + 1, characters.size());
    if (key == ORL_VK_HOME) return far ? 0 : start;
    if (key == ORL_VK_END) return far ? characters.size() : end;
    if (key == ORL_VK_LEFT || (key == ORL_VK_UP && !lines)) return left;
    if (key == ORL_VK_RIGHT || (key == ORL_VK_DOWN && !lines)) return right;
    if (key == ORL_VK_UP ? start == 0 : end == characters.size()) return SIZE_MAX;
    const size_t line = key == ORL_VK_UP ? LineStart(start - 1) : end + 1;
    return std::min(LineEnd(line), Index(At(line) + caret - At(start)));
  }
};

struct Session {
  Model model;
  int32_t id = 10, changes = 0;
  uint32_t seed = 0;
  Characters alphabet;
} * session;

intptr_t Count(OrlWindow, uint32_t message, uintptr_t wParam, intptr_t) {
  if (message == ORL_WM_INITDIALOG) session->changes = 0;
  if (message == ORL_WM_COMMAND && wParam >> 16 == ORL_EN_CHANGE) ++session->changes;
  return 0;
}

void Work(OrlWindow dialog, Model &model, std::mt19937 &random) {
  const auto any = [&random](size_t count) { return random() % count; };
  const auto length = [&model] { return static_cast<int32_t>(Joined(model.characters).size()); };
  const auto place = [&] { return static_cast<int32_t>(any(static_cast<size_t>(length()) + 3)); };
  const int32_t id = session->id;
  OrlWindow edit = sys.GetDlgItem(dialog, id);
  const uint32_t messages[] = {ORL_WM_CUT, ORL_WM_COPY, ORL_WM_PASTE, ORL_WM_CLEAR};
  const char *keys[] = {"\x18", "\x03", "\x16"};
  switch (const size_t act = any(16); act) {
    case 0: {  // the program sets the text
      model.characters.clear();
      for (size_t i = any(20); i > 0; --i) {
        const size_t pick = any(session->alphabet.size());
        const bool breaks = model.lines || !kOnWidgets;
        model.characters.push_back(session->alphabet[breaks ? pick : std::max<size_t>(1, pick)]);
      }
      sys.SetWindowText(edit, Joined(model.characters).c_str());
      model.anchor = model.caret = 0;
      model.modified = false;
      model.changes += model.lines ? 0 : 1;
      break;
    }
    case 1:
      model.limit = any(3) == 0 ? 0 : any(30);
      sys.SendMessage(edit, ORL_EM_LIMITTEXT, model.limit, 0);
      break;
    case 2: {
      const int32_t start = place(), end = place();
      sys.SendMessage(edit, ORL_EM_SETSEL, static_cast<uintptr_t>(start), end);
      model.anchor = kOnWidgets ? model.At(model.Index(start)) : std::min(start, length());
      model.caret = kOnWidgets ? model.At(model.Index(end)) : std::min(end, length());
      break;
    }
    case 3: {
      const int32_t start = place(), end = place();
      if (ORLHeadlessSelect(dialog, id, start, end) == 0) {
        EXPECT_TRUE(kOnWidgets && !model.lines) << "a place out of view";
        return;
      }
      model.Select(model.Index(start), model.Index(end));
      break;
    }
    case 4:
    case 5: {
      const size_t which = any(act == 4 ? 4 : 3);
      if (act == 4) sys.SendMessage(edit, messages[which], 0, 0);
      if (act == 5) ORLHeadlessType(dialog, id, keys[which]);
      if (which < 2) model.Copy();
      if (which == 0 || (which == 3 && model.From() != model.To())) model.Replace({}, false);
      if (which == 2) model.Paste();
      break;
    }
    case 6:
    case 7: {
      const size_t here = model.Index(model.caret);
      const size_t up = model.Index(model.caret, true);
      const uint32_t key = act == 6 ? ORL_VK_BACK : ORL_VK_DELETE;
      EXPECT_EQ(1, ORLHeadlessKey(dialog, id, key, 0));
      if (key == ORL_VK_BACK) model.Erase(up > here ? here : here - (here > 0 ? 1 : 0), up);
      if (key == ORL_VK_DELETE) model.Erase(here, std::min(here + 1, model.characters.size()));
      break;
    }
    case 8:
    case 9:
    case 10: {
      auto key = static_cast<uint32_t>(ORL_VK_END + any(6));
      auto held = static_cast<uint32_t>(any(4));
      if (kOnWidgets && (key == ORL_VK_UP || key == ORL_VK_DOWN)) --key;
      if (kOnWidgets && (key > ORL_VK_HOME || !model.lines)) held &= ORL_HEADLESS_SHIFT;
      EXPECT_EQ(1, ORLHeadlessKey(dialog, id, key, held));
      const size_t to = model.Moved(key, held);
      if (to != SIZE_MAX) model.caret = model.At(to);
      if ((held & ORL_HEADLESS_SHIFT) == 0) model.anchor = model.caret;
      break;
    }
    case 11:
      EXPECT_EQ(1, ORLHeadlessKey(dialog, id, ORL_VK_RETURN, ORL_HEADLESS_CONTROL));
      if (model.lines) model.Replace({"\n"}, true);
      break;
    default: {
      const std::string &typed = session->alphabet[1 + any(session->alphabet.size() - 1)];
      EXPECT_EQ(1, ORLHeadlessType(dialog, id, typed.c_str()));
      model.Replace({typed}, true);
      break;
    }
  }
}

int32_t Play(void *, OrlWindow dialog) {
  std::mt19937 random(session->seed);
  Model &model = session->model;
  for (int32_t step = 0; step < 1500; ++step) {
    Work(dialog, model, random);
    OrlHeadlessState state = {};
    char text[1000];
    ORLHeadlessLook(dialog, session->id, &state);
    ORLHeadlessText(dialog, session->id, text, sizeof(text));
    const std::vector<int32_t> expected = {std::min(model.anchor, model.caret),
                                           std::max(model.anchor, model.caret), model.caret,
                                           model.modified ? 1 : 0, model.changes};
    EXPECT_EQ(Joined(model.characters), text);
    EXPECT_EQ(expected, (std::vector<int32_t>{state.selectionStart, state.selectionEnd, state.caret,
                                              state.modified, session->changes}));
    if (testing::Test::HasFailure()) {
      ADD_FAILURE() << "seed " << session->seed << ", step " << step;
      break;
    }
  }
  return 0;
}

TEST(HeadlessEdit, AgreesWithAListOfCharactersUnderRandomInput) {
  const struct {
    int32_t codePage;
    Characters alphabet;  // the line break first
  } pages[] = {{1252, {"\n", "a", " ", "\xE9", "9"}},
               {932, {"\n", "a", " ", "\x83\x5C", "\x82\xA0", "\xB1"}},
               {65001, {"\n", "a", " ", "\xC3\xA9", "\xE2\x82\xAC", "\xF0\x9F\x98\x80"}}};
  for (const auto &[codePage, alphabet] : pages) {
    ASSERT_EQ(1, WRENSetCodePage(codePage));
    for (uint32_t seed = 0; seed < 6 && !HasFailure(); ++seed) {
      Session state;
      state.id = seed % 2 == 0 ? 10 : 11;
      state.model.lines = state.id == 10;
      state.model.characters = state.id == 10 ? Characters{} : Characters{"o", "n", "e"};
      state.seed = seed + static_cast<uint32_t>(codePage);
      state.alphabet = alphabet;
      session = &state;
      ASSERT_EQ(1, ORLHeadlessStart(Play, nullptr));
      sys.DialogBoxParam(&kSmallDialog, nullptr, Count, 0);
      ORLHeadlessEnd();
    }
  }
  WRENSetCodePage(1252);
}

}  // namespace
