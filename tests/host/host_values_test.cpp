// The values of a file's columns that the host program lists in the editor.
#include "host/value_listing.h"

#include <gtest/gtest.h>
#include <unistd.h>

#include "editor/session.h"
#include "host/commands.h"

namespace {

// A file, a context with its columns, and the listing that the context's callback works on.
struct ListedFile {
  std::string path;
  Session session;
  Progress progress;
  ValueListing listing;

  explicit ListedFile(const std::string &content) {
    path = testing::TempDir() + "/orli-values-" + std::to_string(getpid()) + ".csv";
    Write(content);
    std::string error;
    DataOptions options;
    options.paths = {path};
    EXPECT_TRUE(SessionOpen(options, session, progress, error)) << error;
    listing.session = &session;
    ORLSetUserLong(session.ec.get(), reinterpret_cast<intptr_t>(&listing));
    ORLSetListValuesCallback(session.ec.get(), ListValues);
  }
  ListedFile(const ListedFile &) = delete;
  ListedFile &operator=(const ListedFile &) = delete;
  ~ListedFile() {
    listing.reading.reset();
    unlink(path.c_str());
  }
  void Write(const std::string &content) const {
    FILE *file = std::fopen(path.c_str(), "wb");
    std::fwrite(content.data(), 1, content.size(), file);
    std::fclose(file);
  }
};

// "s" and as many values, each twice; each tenth row is empty.
std::string Values(int count) {
  std::string content = "s,t\n";
  for (int i = 0; i < 2 * count; ++i) {
    content += "v" + std::to_string(i / 2) + ",\n" + (i % 10 == 0 ? ",\n" : "");
  }
  return content;
}

TEST(HostValues, AreListedInOrderAndInsertedAsLiterals) {
  ListedFile file(
      "n,d,s\n10,2024-02-01T10:30:15.5,O'Brien\n9,12 Jan 2012,\n2e3,2024-02-01,a\n10.00,,b\n-.5,"
      "2012-01-12,a\n,," +
      std::string(1001, 'x') + "\n");
  const struct {
    const char *item, *rows, *value, *saved;
  } rows[] = {
      {"n", "-0.5, 9, 10, 2000", "2000", "n + 2000"},
      {"d", "2012-01-12, 2024-02-01, 2024-02-01 10:30:15.5", "2024-02-01 10:30:15.5",
       "d - 2024-02-01 10:30:15.5"},
      {"s", "a, b, O'Brien", "O'Brien", "s || 'O''Brien'"},
  };
  for (const auto &row : rows) {
    const std::string text(row.saved, 4 + (row.item[0] == 's' ? 1 : 0));
    HEXP exp = Edit(file.session.ec.get(), {nullptr, 0, "n"}, [&](OrlWindow d) {
      Act(d, std::string("row 106 ") + row.item + "; select 100 0 0; type 100 " + text);
      OrlWindow list = ORLHeadlessFind("LISTVALUES");
      EXPECT_EQ(RowList(list, kListValues), row.rows) << row.item;
      Act(list, std::string("double 100 ") + row.value);
      Act(d, "click 1");
    });
    ASSERT_NE(exp, nullptr) << row.item << AllMessages();
    std::string saved(100, '\0');
    saved.resize(
        static_cast<size_t>(ORLGetExpressionText(file.session.ec.get(), exp, 100, saved.data())));
    EXPECT_EQ(saved, row.saved);
  }
}

TEST(HostValues, AreListedInPages) {
  const struct {
    int values;
    std::vector<size_t> pages;
  } rows[] = {{0, {0}}, {200, {200}}, {450, {200, 200, 50}}, {10050, std::vector<size_t>(50, 200)}};
  for (const auto &row : rows) {
    SCOPED_TRACE(row.values);
    ListedFile file(Values(row.values));
    ListingBegin(file.listing, "s");
    std::vector<size_t> pages;
    bool more = true;
    for (size_t i = 0; more && i <= row.pages.size(); ++i) {
      const std::vector<std::string> page = ListingPage(file.listing, kFirstValues, more);
      EXPECT_TRUE(page.empty() || page[0] == "v" + std::to_string(200 * i)) << page[0];
      pages.push_back(page.size());
    }
    EXPECT_EQ(pages, row.pages);
  }
}

TEST(HostValues, RareValuesAreListedOnTheSecondRequest) {
  std::string content = "s,t\n";
  for (int i = 0; i < 1100000; ++i) content += "a,\n";
  ListedFile file(content + "b,\n");
  ListingBegin(file.listing, "s");
  bool more = false;
  EXPECT_EQ(ListingPage(file.listing, kFirstValues, more), std::vector<std::string>{"a"});
  EXPECT_TRUE(more);
  EXPECT_EQ(ListingPage(file.listing, kFirstValues, more), std::vector<std::string>{"b"});
  EXPECT_FALSE(more);
}

TEST(HostValues, ListingContinuesAndRestarts) {
  ListedFile file(Values(650));
  Edit(file.session.ec.get(), {nullptr, 0, "s"}, [&](OrlWindow d) {
    OrlWindow list = ORLHeadlessFind("LISTVALUES");
    EXPECT_EQ(Rows(list, kListValues).size(), 200U);
    Act(d, "click 133");
    EXPECT_EQ(Rows(list, kListValues).size(), 650U);
    Act(d, "row 106 t");
    EXPECT_EQ(RowList(list, kListValues), "");
    Act(d, "row 106 s");
    EXPECT_EQ(Rows(list, kListValues).size(), 200U);
    // A file that has changed while the editor is open ends each listing with a line about it.
    file.Write("s,t\na,\nb\n");
    testing::internal::CaptureStderr();
    Act(d, "row 106 t; row 106 s");
    const std::string errors = testing::internal::GetCapturedStderr();
    EXPECT_EQ(RowList(list, kListValues), "a");
    const std::string line = "orli: " + file.path + ": line 3: 1 field, but the header has 2\n";
    EXPECT_EQ(errors, line + line);
  });
}

}  // namespace
