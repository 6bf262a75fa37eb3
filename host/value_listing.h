// The values of a column that the editor lists: each once, page by page.
#ifndef ORLI11_HOST_VALUE_LISTING_H
#define ORLI11_HOST_VALUE_LISTING_H

#include <orli11.h>

#include <cstdint>
#include <deque>
#include <string>
#include <unordered_set>
#include <vector>

#include "host/csv_file.h"
#include "host/session.h"

// A reader of the file that pauses when a page is full.
struct ValueListing {
  Session *session = nullptr;
  size_t column = 0;
  CsvReadingOwner reading;               // null when the file has been read
  int64_t rows = 0;                      // read so far
  std::unordered_set<std::string> seen;  // bounded
  std::deque<std::string> waiting;       // found, but not returned yet
  std::vector<NumberValue> shown;        // the numbers in the list control, in its order
  std::string error;                     // why the reading has ended early
};

// Restarts with the column of that name. Without one there are no values.
void ListingBegin(ValueListing &listing, const std::string &name);

constexpr size_t kFirstValues = 200;   // shown at first
constexpr size_t kMostValues = 10000;  // of a listing

// The next values in the order of their first rows, as formulas write them but without the quotes
// of strings: no empty ones, and none of more than 1,000 bytes. At most `most` are returned, from
// at most another million rows; a listing has at most kMostValues. `more` receives whether there
// are more.
std::vector<std::string> ListingPage(ValueListing &listing, size_t most, bool &more);

// The routine for ORLSetListValuesCallback: lists kFirstValues at first, then all others. The user
// value of the context is its ValueListing.
void ListValues(EC ec, const char *name, void *list, int32_t first, int32_t *more);

#endif
