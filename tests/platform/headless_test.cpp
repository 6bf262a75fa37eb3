// The window system without a screen, by a small dialog and its user.
#include "windows/headless/headless.h"

#include <gtest/gtest.h>

#include <string_view>

#include "closed/wren/memory.h"
#include "support/cases.h"
#include "support/pattern.h"
#include "tests/platform/headless_dialog.h"

namespace {

// With `drawing` also when dialogs and rows are drawn, which each window system has its own way of.
void Check(const char *section, bool drawing = false) {
  const Pattern drawn("m15 |d-?[0-9]+[.][0-9]+[.][0-9]+ ");
  const int64_t blocks = TEST_LiveBlocks();
  for (const Case &row : CasesOf("platform/headless_cases.txt", section)) {
    std::string noted = Play(row[0], row.Ints(2));
    for (auto found = drawn.Find(noted); !drawing && !found.empty(); found = drawn.Find(noted)) {
      noted.erase(static_cast<size_t>(found[0].data() - noted.data()), found[0].size());
    }
    EXPECT_EQ(row[1] + " |2", noted) << row.where;
    EXPECT_EQ(blocks, TEST_LiveBlocks()) << row.where;
  }
}

TEST(Headless, KeysAndPressesComeAsOnThePlatform) {
  Check("keys");
}

// Where the contract leaves it open.
TEST(Headless, BehaviourBeyondTheContract) {
  Check("own");
}

TEST(Headless, ListsKeepRowsAndNotifyOfTheUser) {
  Check("lists");
}

TEST(Headless, RowsAreDrawnByTheDialog) {
  Check("drawing", true);
}

TEST(Headless, DialogsWaitForThoseOnTop) {
  Check("dialogs");
}

}  // namespace
