#include "host/value_listing.h"

#include <algorithm>

#include "host/errors.h"
#include "host/field.h"
#include "host/values.h"
#include "orli11/windows.h"

namespace {

constexpr int64_t kPageRows = 1000000;
constexpr size_t kLongestValue = 1000;

// The value as a formula writes it; empty for one that is not listed. Numbers and dates are written
// like results: a file may have forms that formulas do not accept, such as 2e3.
std::string ListedValue(const FieldRules &rules, int16_t type, const char *field) {
  std::string text = FieldIsEmpty(rules, field) ? "" : field;
  if (text.empty() || type == ORL_TYPE_STRING) {
    return text.size() <= kLongestValue ? text : std::string();
  }
  NumberValue value;
  const bool known = type == ORL_TYPE_DATE ? DateFromField(rules, field, &value)
                                           : NumberFromField(rules, field, &value);
  const bool good = known && CellFromValue(type, &value, text) &&
                    (type == ORL_TYPE_DATE || text.find('e') == std::string::npos);
  return good ? text : std::string();
}

bool ListRow(const CsvRow &row, void *user, std::string &error) {
  ValueListing &listing = *static_cast<ValueListing *>(user);
  const Session &session = *listing.session;
  // The file was read before, but it may have changed since.
  if (!ColumnsFit(session.csv, session.table, row, error)) {
    return false;
  }
  ++listing.rows;
  std::string value = ListedValue(session.options.rules, session.table.columns[listing.column].type,
                                  CsvField(row, listing.column));
  if (!value.empty() && listing.seen.insert(value).second) {
    listing.waiting.push_back(std::move(value));
  }
  return listing.seen.size() < kMostValues;
}

void ClearList(const OrlWindowSystem &windows, OrlWindow list) {
  for (intptr_t row = windows.SendMessage(list, ORL_LB_GETCOUNT, 0, 0) - 1; row >= 0; --row) {
    windows.SendMessage(list, ORL_LB_DELETESTRING, static_cast<uintptr_t>(row), 0);
  }
}

// The list sorts by text, which is right also for dates; numbers are inserted by value.
void AddToList(const OrlWindowSystem &windows, OrlWindow list, bool isNumber,
               const std::string &value, std::vector<NumberValue> &shown) {
  const auto text = reinterpret_cast<intptr_t>(value.c_str());
  if (!isNumber) {
    windows.SendMessage(list, ORL_LB_ADDSTRING, 0, text);
    return;
  }
  NumberValue number;
  WRENNumFromText(&number, value.c_str());
  const auto place = std::upper_bound(shown.begin(), shown.end(), number,
                                      [](const NumberValue &left, const NumberValue &right) {
                                        return WRENNumCompare(&left, &right) < 0;
                                      });
  windows.SendMessage(list, ORL_LB_INSERTSTRING, static_cast<uintptr_t>(place - shown.begin()),
                      text);
  shown.insert(place, number);
}

}  // namespace

void ListingBegin(ValueListing &listing, const std::string &name) {
  Session &session = *listing.session;
  const Column *column = SessionColumn(session, name);
  listing.reading.reset();
  listing.rows = 0;
  listing.seen.clear();
  listing.waiting.clear();
  listing.shown.clear();
  listing.error.clear();
  if (column != nullptr) {
    listing.column = static_cast<size_t>(column - session.table.columns.data());
    listing.reading = CsvBegin(session.csv, ListRow, &listing, listing.error);
  }
}

std::vector<std::string> ListingPage(ValueListing &listing, size_t most, bool &more) {
  const int64_t lastRow = listing.rows + kPageRows;
  // One value beyond the page shows that there is another page.
  while (listing.reading != nullptr && listing.waiting.size() <= most && listing.rows < lastRow) {
    if (!CsvReadOn(*listing.reading)) {
      listing.reading.reset();
    }
  }
  std::vector<std::string> page;
  for (; page.size() < most && !listing.waiting.empty(); listing.waiting.pop_front()) {
    page.push_back(std::move(listing.waiting.front()));
  }
  more = listing.reading != nullptr || !listing.waiting.empty();
  return page;
}

void ListValues(EC ec, const char *name, void *list, int32_t first, int32_t *more) {
  const OrlWindowSystem &windows = *ORLGetWindowSystem();
  ValueListing &listing = *reinterpret_cast<ValueListing *>(ORLGetUserLong(ec));
  const std::vector<Column> &columns = listing.session->table.columns;
  if (first != 0 || columns[listing.column].name != name) {
    ClearList(windows, list);
    ListingBegin(listing, name);
  }
  bool isMore = false;
  // The editor requests more only once, so all the rest must be added then.
  const size_t most = first != 0 ? kFirstValues : kMostValues;
  for (const std::string &value : ListingPage(listing, most, isMore)) {
    AddToList(windows, list, columns[listing.column].type == ORL_TYPE_NUMBER, value, listing.shown);
  }
  if (!listing.error.empty()) {
    Complain(listing.error, kExitWrong);
    listing.error.clear();
  }
  *more = isMore ? 1 : 0;
}
