// The window system without a screen, by a small dialog and its user.
#include "windows/headless/headless.h"

#include <gtest/gtest.h>

#include <string_view>

#include "closed/wren/memory.h"
#include "support/pattern.h"
#include "tests/platform/headless_dialog.h"

namespace {

struct Row {
  const char *acts, *expected;
  std::vector<int32_t> answers;
};

// With `drawing` also when dialogs and rows are drawn, which each window system has its own way of.
void Check(const std::vector<Row> &rows, bool drawing = false) {
  const Pattern drawn("m15 |d-?[0-9]+[.][0-9]+[.][0-9]+ ");
  const int64_t blocks = TEST_LiveBlocks();
  for (const auto &[acts, expected, answers] : rows) {
    std::string told = Play(acts, answers);
    for (auto found = drawn.Find(told); !drawing && !found.empty(); found = drawn.Find(told)) {
      told.erase(static_cast<size_t>(found[0].data() - told.data()), found[0].size());
    }
    EXPECT_EQ(std::string(expected) + " |2", told) << acts;
    EXPECT_EQ(blocks, TEST_LiveBlocks()) << acts;
  }
}

TEST(Headless, KeysAndPressesComeAsOnThePlatform) {
  Check({
      {"key 11 65; ? 11; @", "11:768 a{}one+ @11 2:0 m2", {}},
      {"key 10 9; @; ? 11; key 11 9 1; @; key 12 9; @", "@11 {one} @10 @13 2:0 m2", {}},
      {"select 11 0 1; send 11 512 0; ? 11", "0 {o}ne 2:0 m2", {}},
      {"hide 1; key 11 13", "2:0 m2", {}},
      {"key 14 9; @; key 19 9; @; key 10 9 1; @", "@1 @10 @19 2:0 m2", {}},
      {"key 10 13 2; ? 10", "10:768 \n{}+ 2:0 m2", {}},
      {"key 2 13; click 11", "2:0 - m2", {}},
      {"key 12 27; click 11", "2:0 - m2", {}},
      {"close", "2:0 m2", {}},
      {"key 16 32; key 16 13", "16:0 =6 16:0 =7 2:0 m2", {ORL_IDNO, ORL_IDYES}},
      {"click 16; click 11", "16:0 =7 2:0 m2", {}},
      {"click 14; ? 14; key 14 39; ? 14; ? 15; @", "14:0 A+ 15:0 A B+ @15 2:0 m2", {}},
      {"key 15 40; @; disable 15; key 14 38; @", "14:0 @14 @14 2:0 m2", {}},
      {"type 18 97; ? 18", "!7 !256 !258 18:768 !257 !256 !258 !257 a{}+ 2:0 m2", {}},
      {"select 11 1 2; ? 11; select 11 -1 1; ? 11; twice 11; ? 11", "o{n}e o{ne} {one} 2:0 m2", {}},
      {"disable 11; type 11 65; click 11; focus 11; ? 11", "- - - {}one 2:0 m2", {}},
      {"hide 12; row 12 1; click 9; focus -1; disable 1; key 11 13", "- - 2:0 m2", {}},
  });
}

// Where the contract leaves it open.
TEST(Headless, GoesItsOwnWay) {
  Check({
      {"@; key 10 9 2; key 11 9 1; ? 10", "@ 10:768 \t{}+ 2:0 m2", {}},
      {"key 10 9 2; key 11 9 2; ? 10; ? 11", "10:768 \t{}+ {}one 2:0 m2", {}},
      {"click 18", "!32 !512 !513 !7 !514 2:0 m2", {}},
      {"select 18 0 -1", "!32 !512 !513 !7 !512 !514 2:0 m2", {}},
      {"twice 18", "!32 !512 !513 !7 !514 !515 !514 2:0 m2", {}},
      {"focus 11; disable 11; @; type 11 65; click 11; focus 11; ? 11; key -1 9; @",
       "@ - - - {}one @10 2:0 m2",
       {}},
  });
}

TEST(Headless, ListsKeepTheirRowsAndTellOfTheUser) {
  Check({
      {"? 12; ? 13", "Apple,apricot,fig,pear apricot,fig,Apple,pear 2:0 m2", {}},
      {"row 12 2; row 12 2; ? 12; row 12 4", "12:1 Apple,apricot,*fig,pear - 2:0 m2", {}},
      {"key 12 38; key 12 40; key 12 35; key 12 40; key 12 36; ? 12",
       "12:1 12:1 12:1 12:1 *Apple,apricot,fig,pear 2:0 m2",
       {}},
      {"double 12 1; double 12 1; right 12 0; ? 12",
       "12:1 12:2 12:2 Apple,*apricot,fig,pear 2:0 m2",
       {}},
      {"send 12 399 -1; send 12 399 0; send 12 399 1; send 13 399 1", "0 1 0 2 2:0 m2", {}},
      {"send 12 390 2; send 12 385 0; ? 12; send 12 386 3; send 12 392",
       "2 0 AP,Apple,apricot,*fig,pear 4 -1 2:0 m2",
       {}},
      {"send 12 390 2; send 12 386 1; ? 12", "2 3 Apple,*fig,pear 2:0 m2", {}},
      {"send 12 386 3; send 12 386 2; send 12 386 1; twice 12; click 12", "3 2 1 2:0 m2", {}},
      {"send 12 384; send 13 323; send 12 395; ? 12; send 12 385 -1",
       "0 4 5 AP,Apple,apricot,fig,pear 5 2:0 m2",
       {}},
      {"send 12 386 4; send 12 390 -2; send 12 393 4; send 12 394 3; send 12 385 9; send 12 409 9",
       "-1 -1 -1 4 -1 -1 2:0 m2",
       {}},
  });
}

TEST(Headless, RowsAreDrawnByTheDialog) {
  Check(
      {
          {"row 13 1; shows 13 1; row 13 0; shows 13 0; shows 13 1",
           "d1.2.17 d1.4.17 13:1 text inverted focus d1.4.0 d1.2.0 d0.2.17 d0.4.17 13:1 "
           "text inverted focus text 2:0 m2",
           {}},
          {"send 13 390 0; focus 13; focus 12; focus 13; disable 13",
           "d0.2.1 0 d0.4.17 d0.4.1 d0.4.17 d0.4.1 2:0 m2",
           {}},
          {"shows 13 3; row 13 3; shows 13 3; shows 13 4",
           "d3.1.0 text 13:1 d2.1.0 d3.1.17 text nothing 2:0 m2",
           {}},
          {"send 13 407 3; repaint; send 13 386 3; repaint",
           "0 m15 d2.1.0 d3.1.0 3 m15 d1.1.0 d2.1.0 2:0 m2",
           {}},
          {"send 13 386 0; send 13 386 0; repaint; move 13 60; repaint",
           "3 2 m15 d0.1.0 d1.1.0 m15 d0.1.0 d1.1.0 2:0 m2",
           {}},
          {"click 17", "17:0 m48 m44 m272 m15 d0.1.0 d1.1.0 2:0 m2 =2 2:0 m2", {}},
      },
      true);
}

TEST(Headless, DialogsWaitForThoseOnTop) {
  Check({
      {"click 17/ click 14; click 1; click 14/ click 15",
       "17:0 m48 m44 m272 14:0 1:0 - m2 =1 15:0 2:0 m2",
       {}},
      {"click 17", "17:0 m48 m44 m272 2:0 m2 =2 2:0 m2", {}},
      {"click 19; @; beside 15; beside 1; away; @; beside 14",
       "19:0 m48 m44 m272 @ 15:0 1:0 m2 m16 @19 - 2:0 m2",
       {}},
      {"click 19; click 17/ beside 14; close/ beside 14",
       "19:0 m48 m44 m272 17:0 m48 m44 m272 - 2:0 m2 =2 "
       "14:0 2:0 m2 m2",
       {}},
      {"timer 1 30; timer 2 50; wait 29; wait 1; wait 45; wait 0",
       "m275 m1001 m275 m1002 m275 m1001 2:0 m2",
       {}},
      {"timer 2 30; timer 1 30; wait 30", "m275 m1002 m275 m1001 2:0 m2", {}},
      {"timer 1 30; timer 1 40; wait 30; wait 10", "m275 m1001 2:0 m2", {}},
  });
}

}  // namespace
