// What picks, buttons and keys put into the text, where the selection goes, and what rows show.
#include <gtest/gtest.h>

#include <cstdio>
#include <cstring>

#include "closed/wren/memory.h"
#include "editor/editor.h"
#include "editor/session.h"
#include "engine/context.h"
#include "engine/items.h"
#include "platform/text.h"
#include "support/context.h"

namespace {

void ListNothing(EC, const char *, void *, int32_t, int32_t *) {}

struct TemplateRow {
  int16_t count;
  uint16_t first, optional, flags;
  std::vector<uint16_t> types;
  std::string text, selected;  // behind the name
};

// clang-format off
const std::vector<TemplateRow> kTemplates = {
    {-1, 0, 0, 0, {0}, "{}", ""},
    {0, 0, 0, 0, {}, "(){}", ""},
    {3, 0, 0, 0, {2, 0, 1}, "( {String} , Number , DateTime )", ""},
    {2, 1, 2, 0, {0, 2}, "( {Number} [, String [, String ]])", ""},
    {2, 1, 0, 0, {4, 5}, "( {Any} , Any [,Any...] )", ""},
    {2, 0, 2, 0, {300, 3}, "([ {Keyword} , Keyword ] )", ""},
    {1, 0, 0, 16, {0}, "(DISTINCT  {Number} )", ""},
    {1, 0, 1, 16, {0}, "(DISTINCT [ {Number} ] )", ""},
    {4, 1, 0, 0, {0, 0, 0, 0}, "( {Number} , Number , Number , Number [,Any,Any,Any...] )", ""},
    {3, 2, 1, 0, {0, 1, 2}, "( {Number} , DateTime [, String ])", ""},
    // The optional group begins behind the last declared parameter, or there is none at all.
    {1, 1, 2, 0, {1}, "( {DateTime} [, DateTime [, DateTime ]])", ""},
    {0, 0, 2, 0, {}, "([ {Any} , Any ] )", ""},
    {1, 5, 0, 0, {0}, "( {Number} , Number , Number , Number , Number [...] )", ""},
    {-1, 0, 1, 0, {2}, "[ {String} ] ", ""},
};
// clang-format on

void AddTemplate(EC ec, const TemplateRow &row, const char *name) {
  ORL_EXPR_ITEM_WITH(200) full = {};
  std::snprintf(full.item.name, sizeof full.item.name, "%s", name);
  full.item.paramCount = row.count;
  full.item.firstOptional = row.first;
  full.item.optionalCount = row.optional;
  full.item.itemFlags = row.flags;
  for (size_t i = 0; i < row.types.size(); i++) full.parameters[i].dataType = row.types[i];
  ORLAddExpressionItem(ec, &full.item);
}

TEST(EditorInsertion, WritesTemplatesOfFunctions) {
  for (const TemplateRow &row : kTemplates) {
    const OwnedContext ec(ORLCreateEC(nullptr, nullptr, nullptr, 0));
    AddTemplate(ec.get(), row, "Fn");
    Edit(ec.get(), {}, [&](OrlWindow d) {
      Act(d, "double 107 Fn");
      EXPECT_EQ(Marked(d), "Fn" + row.text);
      Act(d, "select 100 0 -1; type 100 (; double 107 Fn");
      EXPECT_EQ(Marked(d), "(Fn" + row.text) << "behind another text";
    });
  }
}

TEST(EditorInsertion, KeepsTemplatesInTheirRoom) {
  const OwnedContext ec(ORLCreateEC(nullptr, nullptr, nullptr, 0));
  const std::string name(64, 'n');
  AddTemplate(ec.get(), {100, 50, 60, 16, std::vector<uint16_t>(100, 300), "", ""}, name.c_str());
  const ExprItem *item = ItemFind(&ec->functions, name.c_str());
  const int32_t length = OrlTemplateLength(item);
  for (const int32_t room : {1, length / 2, length, length + 1}) {
    std::vector<char> buffer(static_cast<size_t>(room));  // of just that size, for the sanitizer
    EXPECT_EQ(OrlBuildTemplate(buffer.data(), room, item), room > length) << room;
    EXPECT_EQ(std::strlen(buffer.data()), room > length ? static_cast<size_t>(length) : 0u);
  }
  AddTemplate(ec.get(), {0, 65535, 65535, 0, {}, "", ""}, "Huge");
  Edit(ec.get(), {}, [&](OrlWindow d) {
    Act(d, "double 107 " + name);
    EXPECT_EQ(Text(d, 100).size(), name.size() + static_cast<size_t>(length));
    Act(d, "select 100 0 -1; double 107 Huge");
    EXPECT_GT(Text(d, 100).size(), 900000u);
  });
}

struct PickRow {
  int32_t type;  // as the editor is opened: 1 set, 2 range
  std::string acts, marked;
};

// clang-format off
const std::vector<PickRow> kPicks = {
    // Buttons.
    {0, "click 108; click 109; click 110; click 111; click 112", " +  -  *  /  || {}"},
    {0, "click 120; click 121; click 122; click 123; click 124; click 125; click 126; click 127; "
        "click 128; click 129; click 130", "0123456789.{}"},
    {0, "type 100 abc; select 100 1 2; click 108", "a + {}c"},
    {0, "type 100 abc; select 100 2 1; click 129", "a9{}c"},
    // Items and formulas; a text cannot name itself, a range or a set.
    {0, "double 106 Amount; click 110; double 106 Tax", "Amount * Tax{}"},
    {0, "double 114 [ New Formula ]; double 114 Span; double 114 Some; double 114 Price", "Price(){}"},
    {0, "row 114 Price; click 117; double 114 Price", "{}Amount * 2"},
    {0, "row 114 Price; click 117; double 114 Total", "Total(){}Amount * 2"},
    {0, "row 106 Tax; key 106 32; row 114 Price; key 114 32; row 107 Zero; key 107 32", "TaxPrice()Zero(){}"},
    // The next placeholder: labels in every mode and case, whole words only, not in quotes.
    {0, "double 107 Half", "Half( {Number} )"},
    {0, "double 107 Text; double 106 Name", "Text( Name{} )"},
    {0, "double 107 Tail; click 121", "Tail( 1 , {String} [,Any...] )"},
    {0, "double 107 Tail; click 121; click 122", "Tail( 1 , 2 {[,Any...]} )"},
    {0, "double 107 Tail; click 121; click 122; click 123", "Tail( 1 , 2 ,3{} )"},
    {0, "type 100 \"a Number b\" number+1; key 100 35; click 120",
     "\"a Number b\" {number}+10"},
    {0, "type 100 'Any' x; key 100 35; click 120", "'Any' x0{}"},
    {0, "type 100 Numbers x_String DATETIME; key 100 35; click 112", "Numbers x_String {DATETIME} || "},
    {0, "type 100 Expression x; key 100 35; click 120", "Expression x0{}"},
    {0, "type 100 [,Expression...]; key 100 35; click 120", "[,Expression...]0{}"},
    {0, "type 100 [,ANY...]; key 100 35; click 120", "[,ANY...]0{}"},
    {0, "type 100 a[,aNy...]b; select 100 1 10; click 120", "a,0{}b"},
    // The starting texts of ranges and sets, and lists that grow.
    {2, "double 106 Amount", "Amount AND {Expression}"},
    {2, "double 106 Amount; double 107 Half", "Amount AND Half( {Number} )"},
    {2, "click 108", " +  AND {Expression}"},
    {2, "type 100 [,Expression...]; select 100 0 16; click 120", "0 AND {Expression}"},
    {1, "double 106 Amount", "Amount, {Expression} [,Expression...]"},
    {1, "double 106 Amount; double 106 Tax", "Amount, Tax {[,Expression...]}"},
    {1, "double 106 Amount; double 106 Tax; double 114 Price", "Amount, Tax ,Price() {[,Expression...]}"},
    {1, "click 121; click 122; double 107 Half", "1, 2 ,Half( {Number} ) [,Expression...]"},
    {1, "select 100 0 -1; type 100 [,eXpression...]; select 100 0 -1; click 121", ",1 {[,Expression...]}"},
    {1, "select 100 0 -1; type 100 [,eXpression...]x; key 100 35; click 121", "[,eXpression...]x1{}"},
    // Brackets; the selection and the words of brackets stay as they are.
    {0, "type 100 a Number; select 100 0 1; click 105", "(a) Number{}"},
};
// clang-format on

HostedContext Formulas() {
  HostedContext context(ORL_FLAG_RANGES);
  ORLSetListValuesCallback(context, &ListNothing);
  Make(context, "Amount * 2", "Price");
  Make(context, "Price() + 1", "Total");
  Make(context, "1 AND 2", "Span");
  Make(context, "1, 2", "Some");
  return context;
}

TEST(EditorInsertion, GoesOnToTheNextPlaceholder) {
  for (const PickRow &row : kPicks) {
    SCOPED_TRACE(row.acts);
    const HostedContext ec = Formulas();
    Edit(ec, {nullptr, row.type}, [&](OrlWindow d) {
      Act(d, row.acts);
      EXPECT_EQ(Marked(d), row.marked);
      const OrlHeadlessState edit = Look(d, 100);
      EXPECT_EQ(edit.modified, row.marked == "{}Amount * 2" ? 0 : 1);
      EXPECT_EQ(Look(d, 1).enabled, 1);
      EXPECT_EQ(Look(d, 105).enabled, edit.selectionStart != edit.selectionEnd ? 1 : 0);
    });
  }
}

struct PageRow {
  int32_t page;
  std::string before, selected, behind;
};

// Places are bytes, and nothing begins inside a character.
void CheckPage(const PageRow &row) {
  ASSERT_EQ(WRENSetCodePage(row.page), 1);
  const std::string name = row.before + row.behind;
  HostedContext ec;
  AddInput(ec, name.c_str(), 0);
  Edit(ec, {}, [&](OrlWindow d) {
    const auto start = static_cast<int32_t>(row.before.size());
    const auto end = start + static_cast<int32_t>(row.selected.size());
    ORLHeadlessType(d, 100, (row.before + row.selected + row.behind + " Any").c_str());
    ORLHeadlessSelect(d, 100, start, end);
    Act(d, "click 105");
    EXPECT_EQ(Marked(d), row.before + "(" + row.selected + ")" + row.behind + " Any{}");
    ORLHeadlessSelect(d, 100, start, end + 2);
    Act(d, "double 106 " + name);
    EXPECT_EQ(Marked(d), row.before + name + row.behind + " {Any}");
    Act(d, "select 100 0 -1; type 100 " + row.before + "[,Any...]; key 100 36; double 106 " + name);
    EXPECT_EQ(Marked(d), name + row.before + "{[,Any...]}");
    // In 932 this bracket is the second byte of a character.
    if (row.page != 65001) Act(d, "select 100 0 -1; type 100 \x83[,Any...]; key 100 36; click 120");
    EXPECT_EQ(Look(d, 100).selectionEnd - Look(d, 100).selectionStart, row.page == 932 ? 0 : 9);
  });
}

TEST(EditorInsertion, CountsBytesInEveryCodePage) {
  for (const PageRow &row : {PageRow{932, "\x83\x5b\x95\x5c", "\x94\x5c\x83\x7c", "\x83\x5c"},
                             PageRow{65001, "\xc3\xa4\xe2\x82\xac", "\xf0\x9f\x98\x80", "\xc3\xa9"},
                             PageRow{1252, "\xe4", "\xf6\xff", "\xfc"}}) {
    CheckPage(row);
  }
  WRENSetCodePage(1252);
}

TEST(EditorInsertion, LeavesTheTextWhenMemoryEnds) {
  const HostedContext ec = Formulas();
  Edit(ec, {nullptr, 1}, [&](OrlWindow d) {
    const std::string before = Marked(d);
    for (int64_t count = 0; count < 2; count++) {
      TEST_FailAllocationsAfter(count);
      OrlInsertText(*OpenEditor(), "abc", 3);
      OrlWrapSelection(*OpenEditor());
      TEST_FailAllocationsAfter(-1);
      EXPECT_EQ(Marked(d), before) << count;
    }
  });
}

TEST(EditorInsertion, KeepsTheStatusOutOfReach) {
  const HostedContext ec = Formulas();
  Edit(ec, {}, [&](OrlWindow d) {
    const std::string status = Text(d, 139);
    for (const int32_t id : {101, 106, 2}) {
      ORLHeadlessFocus(d, id);
      ORLHeadlessFocus(d, 139);
      EXPECT_EQ(Look(d, id).focused, 1) << id;
      ORLHeadlessType(d, 139, "x");
      ORLHeadlessSelect(d, 139, 0, 5);
      ORLHeadlessClick(d, 139);
    }
    EXPECT_EQ(Text(d, 139), status);
    EXPECT_EQ(Look(d, 139).selectionEnd, 0);
    OrlWindow edit = ORLHeadlessSystem()->GetDlgItem(d, 139);
    for (const uint32_t message : {256u, 258u, 512u, 513u, 514u, 515u, 32u}) {
      EXPECT_EQ(StatusSubProc(edit, message, 'x', 0), 0);
    }
    EXPECT_EQ(Text(d, 139), status);
    StatusSubProc(edit, ORL_WM_SETFOCUS, 0, 0);
    EXPECT_EQ(Look(d, 100).focused, 1);
  });
}

struct DrawRow {
  bool values;
  const char *row, *bitmap;
  uint32_t action, state;
  bool drawn, inverted, focus;
};

// clang-format off
const std::vector<DrawRow> kDrawings = {
    {true, "[ New Set ]", "SETL", 1, 0, true, false, false}, {true, "Price", "FORMULAL", 1, 0, true, false, false},
    {true, "Span", "RANGEL", 1, 1, true, true, false}, {true, "Some", "SETL", 1, 17, true, true, true},
    {true, "Price", "FORMULAL", 3, 1, true, true, false}, {true, "Price", "FORMULAL", 3, 0, true, false, false},
    {true, "Price", "FORMULAL", 5, 16, true, false, true}, {true, "Price", "FORMULAL", 5, 0, true, false, false},
    {true, "Price", "FORMULAL", 7, 17, true, true, true},
    {true, "Price", "", 2, 0, false, true, false}, {true, "Price", "", 2, 1, false, true, false},
    {true, "Price", "", 4, 0, false, false, true}, {true, "Price", "", 6, 17, false, true, true},
    {false, "Span", "", 1, 17, true, true, true}, {false, "", "", 1, 0, false, false, false},
};
// clang-format on

TEST(EditorInsertion, DrawsRows) {
  for (const DrawRow &row : kDrawings) {
    const HostedContext ec = Formulas();
    if (!row.values) ORLSetListValuesCallback(ec, nullptr);
    Edit(ec, {nullptr, 1}, [&](OrlWindow d) {
      const std::vector<std::string> rows = Rows(d, 114);
      int32_t at = -1;
      for (size_t i = 0; i < rows.size(); i++) {
        if (rows[i] == row.row || rows[i] == std::string("*") + row.row)
          at = static_cast<int32_t>(i);
      }
      OrlHeadlessRowShown shown = {};
      ORLHeadlessDrawRow(d, 114, at, row.action, row.state, &shown);
      SCOPED_TRACE(std::string(row.row) + " " + std::to_string(row.action) + " " +
                   std::to_string(row.state));
      EXPECT_STREQ(shown.bitmap, row.bitmap);
      EXPECT_STREQ(shown.text, row.drawn ? row.row : "");
      EXPECT_EQ(shown.inverted, row.inverted ? 1 : 0);
      EXPECT_EQ(shown.focusRect, row.focus ? 1 : 0);
      OrlTextMetrics metrics = {};
      ORLHeadlessSystem()->GetTextMetrics(d, &metrics);
      const int32_t left = row.values ? 14 + metrics.averageWidth : 0;  // behind the bitmap
      const int32_t text = shown.textRect.left - shown.rowRect.left;
      const int32_t inverted = shown.invertedRect.left - shown.rowRect.left;
      EXPECT_EQ(text, row.drawn ? left : text);
      EXPECT_EQ(inverted, row.inverted ? left : inverted);
      const int32_t down = (shown.rowRect.bottom - shown.rowRect.top - 10 + 1) / 2;  // the middle
      EXPECT_EQ(shown.bitmapY, *row.bitmap == 0 ? 0 : shown.rowRect.top + down);
    });
  }
}

}  // namespace
