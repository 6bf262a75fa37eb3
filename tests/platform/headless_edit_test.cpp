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

// One random action of the program or the user at a time, on the edit and on its model.
class RandomActions {
 public:
  RandomActions(OrlWindow dialog, std::mt19937 &random)
      : dialog_(dialog), random_(random), edit_(sys.GetDlgItem(dialog, session->id)) {}

  void Next() {
    switch (Any(16)) {
      case 0:
        return SetText();
      case 1:
        return SetLimit();
      case 2:
        return SelectByProgram();
      case 3:
        return SelectByUser();
      case 4:
        return UseClipboard(true);
      case 5:
        return UseClipboard(false);
      case 6:
        return Erase(ORL_VK_BACK);
      case 7:
        return Erase(ORL_VK_DELETE);
      case 8:
      case 9:
      case 10:
        return MoveCaret();
      case 11:
        return BreakLine();
      default:
        return Type();
    }
  }

 private:
  size_t Any(size_t count) { return random_() % count; }
  int32_t Length() const { return static_cast<int32_t>(Joined(model_.characters).size()); }
  int32_t Place() { return static_cast<int32_t>(Any(static_cast<size_t>(Length()) + 3)); }

  void SetText() {
    model_.characters.clear();
    for (size_t i = Any(20); i > 0; --i) {
      const size_t pick = Any(session->alphabet.size());
      const bool breaks = model_.lines || !kOnWidgets;
      model_.characters.push_back(session->alphabet[breaks ? pick : std::max<size_t>(1, pick)]);
    }
    sys.SetWindowText(edit_, Joined(model_.characters).c_str());
    model_.anchor = model_.caret = 0;
    model_.modified = false;
    model_.changes += model_.lines ? 0 : 1;
  }

  void SetLimit() {
    model_.limit = Any(3) == 0 ? 0 : Any(30);
    sys.SendMessage(edit_, ORL_EM_LIMITTEXT, model_.limit, 0);
  }

  void SelectByProgram() {
    const int32_t start = Place(), end = Place();
    sys.SendMessage(edit_, ORL_EM_SETSEL, static_cast<uintptr_t>(start), end);
    model_.anchor = kOnWidgets ? model_.At(model_.Index(start)) : std::min(start, Length());
    model_.caret = kOnWidgets ? model_.At(model_.Index(end)) : std::min(end, Length());
  }

  void SelectByUser() {
    const int32_t start = Place(), end = Place();
    if (ORLHeadlessSelect(dialog_, session->id, start, end) == 0) {
      EXPECT_TRUE(kOnWidgets && !model_.lines) << "a place out of view";
      return;
    }
    model_.Select(model_.Index(start), model_.Index(end));
  }

  void UseClipboard(bool byProgram) {
    constexpr uint32_t kMessages[] = {ORL_WM_CUT, ORL_WM_COPY, ORL_WM_PASTE, ORL_WM_CLEAR};
    constexpr const char *kKeys[] = {"\x18", "\x03", "\x16"};
    const size_t which = Any(byProgram ? std::size(kMessages) : std::size(kKeys));
    if (byProgram) {
      sys.SendMessage(edit_, kMessages[which], 0, 0);
    } else {
      ORLHeadlessType(dialog_, session->id, kKeys[which]);
    }
    if (which < 2) model_.Copy();
    if (which == 0 || (which == 3 && model_.From() != model_.To())) model_.Replace({}, false);
    if (which == 2) model_.Paste();
  }

  void Erase(uint32_t key) {
    const size_t here = model_.Index(model_.caret);
    const size_t up = model_.Index(model_.caret, true);
    EXPECT_EQ(1, ORLHeadlessKey(dialog_, session->id, key, 0));
    if (key == ORL_VK_BACK) model_.Erase(up > here ? here : here - (here > 0 ? 1 : 0), up);
    if (key == ORL_VK_DELETE) model_.Erase(here, std::min(here + 1, model_.characters.size()));
  }

  void MoveCaret() {
    auto key = static_cast<uint32_t>(ORL_VK_END + Any(6));
    auto held = static_cast<uint32_t>(Any(4));
    if (kOnWidgets && (key == ORL_VK_UP || key == ORL_VK_DOWN)) --key;
    if (kOnWidgets && (key > ORL_VK_HOME || !model_.lines)) held &= ORL_HEADLESS_SHIFT;
    EXPECT_EQ(1, ORLHeadlessKey(dialog_, session->id, key, held));
    const size_t to = model_.Moved(key, held);
    if (to != SIZE_MAX) model_.caret = model_.At(to);
    if ((held & ORL_HEADLESS_SHIFT) == 0) model_.anchor = model_.caret;
  }

  void BreakLine() {
    EXPECT_EQ(1, ORLHeadlessKey(dialog_, session->id, ORL_VK_RETURN, ORL_HEADLESS_CONTROL));
    if (model_.lines) model_.Replace({"\n"}, true);
  }

  void Type() {
    const std::string &typed = session->alphabet[1 + Any(session->alphabet.size() - 1)];
    EXPECT_EQ(1, ORLHeadlessType(dialog_, session->id, typed.c_str()));
    model_.Replace({typed}, true);
  }

  OrlWindow dialog_;
  std::mt19937 &random_;
  OrlWindow edit_;
  Model &model_ = session->model;
};

int32_t Play(void *, OrlWindow dialog) {
  std::mt19937 random(session->seed);
  RandomActions actions(dialog, random);
  const Model &model = session->model;
  for (int32_t step = 0; step < 1500; ++step) {
    actions.Next();
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
