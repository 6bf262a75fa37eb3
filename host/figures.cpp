#include "host/figures.h"

#include <algorithm>
#include <array>
#include <cstring>

#include "host/columns.h"
#include "host/display.h"
#include "host/values.h"

namespace {

NumberValue NumberOf(const void *block) {
  NumberValue value = {};
  if (block != nullptr) {
    std::memcpy(&value, block, sizeof value);
  }
  return value;
}

void AddNumber(ReportFigure figure, int32_t type, const NumberValue &value, Entry &entry) {
  const int order = entry.values == 0 ? 0 : CompareValues(type, value, entry.number);
  if (entry.values++ == 0 || (figure == kReportLeast && order < 0) ||
      (figure == kReportGreatest && order > 0)) {
    entry.number = value;
  } else if (figure == kReportSum || figure == kReportMean) {
    WRENNumAdd(&entry.number, &entry.number, &value);
  }
}

// The median: the value in the middle, or the mean of the two in the middle.
NumberValue Median(std::vector<NumberValue> &all) {
  const auto less = [](const NumberValue &left, const NumberValue &right) {
    return WRENNumCompare(&left, &right) < 0;
  };
  const auto middle = all.begin() + static_cast<std::ptrdiff_t>(all.size() / 2);
  std::nth_element(all.begin(), middle, all.end(), less);
  NumberValue value = *middle;
  if (all.size() % 2 == 0) {
    NumberValue two;
    WRENNumFromInt(&two, 2);
    WRENNumAdd(&value, &value, &*std::max_element(all.begin(), middle, less));
    WRENNumDiv(&value, &value, &two);
  }
  return value;
}

}  // namespace

const char *FigureName(ReportFigure figure) {
  constexpr std::array<const char *, 8> kNames = {"by",     "count", "sum",      "mean",
                                                  "median", "least", "greatest", "count-distinct"};
  return kNames.at(static_cast<size_t>(figure));
}

bool FigureAccepts(ReportFigure figure, int32_t type, const std::string &title,
                   std::string &error) {
  const bool ordered = figure == kReportLeast || figure == kReportGreatest;
  const bool added = figure == kReportSum || figure == kReportMean || figure == kReportMedian;
  if ((ordered && type == ORL_TYPE_STRING) || (added && type != ORL_TYPE_NUMBER)) {
    error = std::string("--") + FigureName(figure) + " needs a Number" +
            (ordered ? " or a Date" : "") + ", but " + DisplayName(title) + " is a " +
            TypeName(type);
  }
  return error.empty();
}

int32_t FigureType(ReportFigure figure, int32_t type) {
  return figure == kReportCount || figure == kReportDistinct ? ORL_TYPE_NUMBER : type;
}

void FigureAdd(ReportFigure figure, int32_t type, const void *block, Entry &entry) {
  if (figure == kReportCount) {
    ++entry.values;
    return;
  }
  if (figure == kReportDistinct) {
    std::string key;
    AppendKey(type, block, key);
    if (block != nullptr && key.size() > 1) {
      if (entry.distinct == nullptr) {
        entry.distinct = std::make_unique<std::unordered_set<std::string>>();
      }
      entry.distinct->insert(std::move(key));
    }
    return;
  }
  const NumberValue value = NumberOf(block);
  if (value.length == 0) {
    return;
  }
  if (figure == kReportMedian) {
    if (entry.all == nullptr) {
      entry.all = std::make_unique<std::vector<NumberValue>>();
    }
    entry.all->push_back(value);
    ++entry.values;
  } else {
    AddNumber(figure, type, value, entry);
  }
}

NumberValue FigureValue(ReportFigure figure, Entry &entry) {
  NumberValue value = entry.number;
  NumberValue count;
  WRENNumFromLong(&count, entry.values);
  if (figure == kReportCount) {
    value = count;
  } else if (figure == kReportMean && entry.values != 0) {
    WRENNumDiv(&value, &value, &count);
  } else if (figure == kReportMedian && entry.values != 0) {
    value = Median(*entry.all);
  } else if (figure == kReportDistinct) {
    const size_t distinct = entry.distinct == nullptr ? 0 : entry.distinct->size();
    WRENNumFromLong(&value, static_cast<int64_t>(distinct));
  }
  return value;
}

void AppendKey(int32_t type, const void *block, std::string &key) {
  if (type == ORL_TYPE_STRING) {
    key += block != nullptr ? static_cast<const char *>(block) : "";
    key += '\0';
  } else {
    const NumberValue value = NumberOf(block);
    key += static_cast<char>(value.length);
    key.append(reinterpret_cast<const char *>(value.payload), value.length);
  }
}

const char *TakeKey(int32_t type, std::string_view &key, NumberValue &number) {
  const char *bytes = key.data();
  number = {};
  if (type == ORL_TYPE_STRING) {
    key.remove_prefix(std::strlen(bytes) + 1);
    return bytes;
  }
  number.length = static_cast<uint8_t>(bytes[0]);
  std::memcpy(number.payload, bytes + 1, number.length);
  key.remove_prefix(size_t{1} + number.length);
  return "";
}
