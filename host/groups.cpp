#include "host/groups.h"

#include <algorithm>
#include <cstring>
#include <functional>
#include <new>

namespace {

constexpr size_t kKeyBlock = size_t{256} << 10;
constexpr size_t kFirstSlots = 1024;  // a power of two, as all slot counts

size_t HashOf(std::string_view key) {
  return std::hash<std::string_view>()(key);
}

}  // namespace

std::string_view Groups::Keep(std::string_view key) {
  if (key.empty()) {
    return {};
  }
  if (key.size() > left_) {
    left_ = std::max(key.size(), kKeyBlock);
    blocks_.emplace_back(new char[left_]);
    used_ = 0;
  }
  char *bytes = blocks_.back().get() + used_;
  std::memcpy(bytes, key.data(), key.size());
  used_ += key.size();
  left_ -= key.size();
  return {bytes, key.size()};
}

// Doubles the slots.
void Groups::Grow() {
  std::vector<uint32_t> slots(std::max(slots_.size() * 2, kFirstSlots));
  const size_t mask = slots.size() - 1;
  for (size_t group = 0; group < keys_.size(); ++group) {
    size_t place = HashOf(keys_[group]) & mask;
    while (slots[place] != 0) {
      place = (place + 1) & mask;
    }
    slots[place] = static_cast<uint32_t>(group + 1);
  }
  slots_ = std::move(slots);
}

size_t Groups::Find(std::string_view key) {
  if (keys_.size() * 2 >= slots_.size()) {
    Grow();
  }
  const size_t mask = slots_.size() - 1;
  size_t place = HashOf(key) & mask;
  for (; slots_[place] != 0; place = (place + 1) & mask) {
    if (keys_[slots_[place] - 1] == key) {
      return slots_[place] - 1;
    }
  }
  if (keys_.size() >= UINT32_MAX - 1) {
    throw std::bad_alloc();
  }
  keys_.push_back(Keep(key));
  entries_.resize(entries_.size() + figures_);
  slots_[place] = static_cast<uint32_t>(keys_.size());
  return keys_.size() - 1;
}
