// Text inserted by picks, buttons and keys, the selection afterwards, and the drawing of rows.
#include <gtest/gtest.h>

#include <cstdio>
#include <cstring>

#include "closed/wren/memory.h"
#include "editor/editor.h"
#include "editor/session.h"
#include "engine/context.h"
#include "engine/items.h"
#include "platform/text.h"
#include "support/cases.h"
#include "support/context.h"

namespace {

// A function with parameters of these types, of which some are optional.
void AddTemplate(EC ec, const char *name, int32_t count, int32_t first, int32_t optional,
                 int32_t flags, const std::vector<int32_t> &types) {
  ORL_EXPR_ITEM_WITH(200) full = {};
  std::snprintf(full.item.name, sizeof full.item.name, "%s", name);
  full.item.paramCount = static_cast<int16_t>(count);
  full.item.firstOptional = static_cast<uint16_t>(first);
  full.item.optionalCount = static_cast<uint16_t>(optional);
  full.item.itemFlags = static_cast<uint16_t>(flags);
  for (size_t i = 0; i < types.size(); ++i) {
    full.parameters[i].dataType = static_cast<uint16_t>(types[i]);
  }
  ORLAddExpressionItem(ec, &full.item);
}

TEST(EditorInsertion, WritesTemplatesOfFunctions) {
  for (const Case &row : CasesOf("editor/insertion_cases.txt", "templates")) {
    SCOPED_TRACE(row.where);
    const OwnedContext ec(ORLCreateEC(nullptr, nullptr, nullptr, 0));
    AddTemplate(ec.get(), "Fn", row.Int(0), row.Int(1), row.Int(2), row.Int(3), row.Ints(4));
    Edit(ec.get(), {}, [&](OrlWindow d) {
      Act(d, "double 107 Fn");
      EXPECT_EQ(Marked(d), "Fn" + row[5]);
      Act(d, "select 100 0 -1; type 100 (; double 107 Fn");
      EXPECT_EQ(Marked(d), "(Fn" + row[5]) << "after other text";
    });
  }
}

TEST(EditorInsertion, KeepsTemplatesWithinTheirBuffer) {
  const OwnedContext ec(ORLCreateEC(nullptr, nullptr, nullptr, 0));
  const std::string name(64, 'n');
  AddTemplate(ec.get(), name.c_str(), 100, 50, 60, 16, std::vector<int32_t>(100, 300));
  const ExprItem *item = ItemFind(&ec->functions, name.c_str());
  const int32_t length = OrlTemplateLength(item);
  for (const int32_t size : {1, length / 2, length, length + 1}) {
    std::vector<char> buffer(static_cast<size_t>(size));  // of just that size, for the sanitizer
    EXPECT_EQ(OrlBuildTemplate(buffer.data(), size, item), size > length) << size;
    EXPECT_EQ(std::strlen(buffer.data()), size > length ? static_cast<size_t>(length) : 0u);
  }
  AddTemplate(ec.get(), "Huge", 0, 65535, 65535, 0, {});
  Edit(ec.get(), {}, [&](OrlWindow d) {
    Act(d, "double 107 " + name);
    EXPECT_EQ(Text(d, kEditText).size(), name.size() + static_cast<size_t>(length));
    Act(d, "select 100 0 -1; double 107 Huge");
    EXPECT_GT(Text(d, kEditText).size(), 900000u);
  });
}

HostedContext Formulas() {
  HostedContext context(ORL_FLAG_RANGES);
  ORLSetListValuesCallback(context, &ListNothing);
  Make(context, "Amount * 2", "Price");
  Make(context, "Price() + 1", "Total");
  Make(context, "1 AND 2", "Span");
  Make(context, "1, 2", "Some");
  return context;
}

TEST(EditorInsertion, SelectsTheNextPlaceholder) {
  for (const Case &row : CasesOf("editor/insertion_cases.txt", "picks")) {
    SCOPED_TRACE(row.where);
    const HostedContext ec = Formulas();
    Edit(ec, {nullptr, row.Int(0)}, [&](OrlWindow d) {
      Act(d, row[1]);
      EXPECT_EQ(Marked(d), row[2]);
      const OrlHeadlessState edit = Look(d, kEditText);
      EXPECT_EQ(edit.modified, row[2] == "{}Amount * 2" ? 0 : 1);
      EXPECT_EQ(Look(d, 1).enabled, 1);
      EXPECT_EQ(Look(d, kButtonWrap).enabled, edit.selectionStart != edit.selectionEnd ? 1 : 0);
    });
  }
}

struct PageRow {
  int32_t page;
  std::string before, selected, after;
};

// Positions are in bytes, and no match begins inside a character.
void CheckPage(const PageRow &row) {
  ASSERT_EQ(WRENSetCodePage(row.page), 1);
  const std::string name = row.before + row.after;
  HostedContext ec;
  AddInput(ec, name.c_str(), 0);
  Edit(ec, {}, [&](OrlWindow d) {
    const auto start = static_cast<int32_t>(row.before.size());
    const auto end = start + static_cast<int32_t>(row.selected.size());
    ORLHeadlessType(d, kEditText, (row.before + row.selected + row.after + " Any").c_str());
    ORLHeadlessSelect(d, kEditText, start, end);
    Act(d, "click 105");
    EXPECT_EQ(Marked(d), row.before + "(" + row.selected + ")" + row.after + " Any{}");
    ORLHeadlessSelect(d, kEditText, start, end + 2);
    Act(d, "double 106 " + name);
    EXPECT_EQ(Marked(d), row.before + name + row.after + " {Any}");
    Act(d, "select 100 0 -1; type 100 " + row.before + "[,Any...]; key 100 36; double 106 " + name);
    EXPECT_EQ(Marked(d), name + row.before + "{[,Any...]}");
    // In 932 this bracket is the second byte of a character.
    if (row.page != 65001) Act(d, "select 100 0 -1; type 100 \x83[,Any...]; key 100 36; click 120");
    EXPECT_EQ(Look(d, kEditText).selectionEnd - Look(d, kEditText).selectionStart,
              row.page == 932 ? 0 : 9);
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

TEST(EditorInsertion, OutOfMemoryLeavesTheText) {
  const HostedContext ec = Formulas();
  Edit(ec, {nullptr, 1}, [&](OrlWindow d) {
    const std::string before = Marked(d);
    for (int64_t count = 0; count < 2; ++count) {
      TEST_FailAllocationsAfter(count);
      OrlInsertText(*OpenEditor(), "abc", 3);
      OrlWrapSelection(*OpenEditor());
      TEST_FailAllocationsAfter(-1);
      EXPECT_EQ(Marked(d), before) << count;
    }
  });
}

TEST(EditorInsertion, StatusTextIgnoresTheUser) {
  const HostedContext ec = Formulas();
  Edit(ec, {}, [&](OrlWindow d) {
    const std::string status = Text(d, kEditStatus);
    for (const int32_t id : {kEditName, kListItems, kButtonCancel}) {
      ORLHeadlessFocus(d, id);
      ORLHeadlessFocus(d, kEditStatus);
      EXPECT_EQ(Look(d, id).focused, 1) << id;
      ORLHeadlessType(d, kEditStatus, "x");
      ORLHeadlessSelect(d, kEditStatus, 0, 5);
      ORLHeadlessClick(d, kEditStatus);
    }
    EXPECT_EQ(Text(d, kEditStatus), status);
    EXPECT_EQ(Look(d, kEditStatus).selectionEnd, 0);
    OrlWindow edit = ORLHeadlessSystem()->GetDlgItem(d, kEditStatus);
    for (const uint32_t message : {256u, 258u, 512u, 513u, 514u, 515u, 32u}) {
      EXPECT_EQ(StatusSubProc(edit, message, 'x', 0), 0);
    }
    EXPECT_EQ(Text(d, kEditStatus), status);
    StatusSubProc(edit, ORL_WM_SETFOCUS, 0, 0);
    EXPECT_EQ(Look(d, kEditText).focused, 1);
  });
}

TEST(EditorInsertion, DrawsRows) {
  for (const Case &row : CasesOf("editor/insertion_cases.txt", "drawings")) {
    SCOPED_TRACE(row.where);
    const bool drawn = row.Int(5) != 0, inverted = row.Int(6) != 0;
    const HostedContext ec = Formulas();
    if (row.Int(0) == 0) ORLSetListValuesCallback(ec, nullptr);
    Edit(ec, {nullptr, 1}, [&](OrlWindow d) {
      const std::vector<std::string> rows = Rows(d, kListFormulas);
      int32_t at = -1;
      for (size_t i = 0; i < rows.size(); ++i) {
        if (rows[i] == row[1] || rows[i] == "*" + row[1]) at = static_cast<int32_t>(i);
      }
      OrlHeadlessRowShown shown = {};
      ORLHeadlessDrawRow(d, kListFormulas, at, static_cast<uint32_t>(row.Int(3)),
                         static_cast<uint32_t>(row.Int(4)), &shown);
      EXPECT_EQ(shown.bitmap, row[2]);
      EXPECT_EQ(shown.text, drawn ? row[1] : "");
      EXPECT_EQ(shown.inverted, row.Int(6));
      EXPECT_EQ(shown.focusRect, row.Int(7));
      OrlTextMetrics metrics = {};
      ORLHeadlessSystem()->GetTextMetrics(d, &metrics);
      const int32_t left = row.Int(0) != 0 ? 14 + metrics.averageWidth : 0;  // after the bitmap
      const int32_t text = shown.textRect.left - shown.rowRect.left;
      const int32_t invertedFrom = shown.invertedRect.left - shown.rowRect.left;
      EXPECT_EQ(text, drawn ? left : text);
      EXPECT_EQ(invertedFrom, inverted ? left : invertedFrom);
      const int32_t down = (shown.rowRect.bottom - shown.rowRect.top - 10 + 1) / 2;  // the middle
      EXPECT_EQ(shown.bitmapY, row[2].empty() ? 0 : shown.rowRect.top + down);
    });
  }
}

}  // namespace
