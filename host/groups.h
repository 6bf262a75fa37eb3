// The groups of a report, found by the bytes of their keys, stored compactly.
#ifndef ORLI11_HOST_GROUPS_H
#define ORLI11_HOST_GROUPS_H

#include <cstdint>
#include <deque>
#include <memory>
#include <string_view>
#include <vector>

#include "host/figures.h"

class Groups {
 public:
  // `figures`: entries of each group.
  explicit Groups(size_t figures = 0) : figures_(figures) {}

  // The number of a key's group, which is created when there is none; the first one has 0.
  size_t Find(std::string_view key);
  size_t Count() const { return keys_.size(); }
  std::string_view Key(size_t group) const { return keys_[group]; }
  Entry &Figure(size_t group, size_t figure) { return entries_[group * figures_ + figure]; }
  const Entry &Figure(size_t group, size_t figure) const {
    return entries_[group * figures_ + figure];
  }

 private:
  std::string_view Keep(std::string_view key);
  void Grow();

  size_t figures_;
  std::deque<std::string_view> keys_;  // in `blocks_`
  std::deque<Entry> entries_;
  std::vector<uint32_t> slots_;  // numbers of groups plus 1, by the hashes of their keys; 0: free
  std::vector<std::unique_ptr<char[]>> blocks_;
  size_t used_ = 0, left_ = 0;  // bytes of the last block
};

#endif
