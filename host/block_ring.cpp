#include "host/block_ring.h"

#include <sched.h>

#include <algorithm>
#include <condition_variable>
#include <exception>
#include <mutex>
#include <system_error>
#include <thread>
#include <vector>

namespace {

enum class Stage { Free, Filled, Computing, Computed };

struct Slot {
  CsvBlock block;
  Stage stage = Stage::Free;
};

class BlockRing {
 public:
  BlockRing(CsvFile &csv, size_t jobs, const BlockWork &work);
  ~BlockRing();
  BlockRing(const BlockRing &) = delete;
  BlockRing &operator=(const BlockRing &) = delete;

  bool Run(std::string &error);

 private:
  void Work(size_t worker);
  void Compute(size_t worker, size_t slot);
  void Submit();
  bool TakeOldest();
  bool Take(size_t slot);

  CsvFile &csv_;
  const BlockWork &work_;
  std::vector<Slot> slots_;
  size_t filling_ = 0;    // index of the block that is being read
  size_t oldest_ = 0;     // index of the one that is consumed next
  size_t submitted_ = 0;  // blocks between the two
  size_t next_ = 0;       // index that a thread checks next
  bool ended_ = false;
  std::string error_;
  std::exception_ptr failure_;
  std::mutex mutex_;
  std::condition_variable filled_, computed_;
  std::vector<std::thread> threads_;
};

BlockRing::BlockRing(CsvFile &csv, size_t jobs, const BlockWork &work)
    : csv_(csv), work_(work), slots_(BlockSlots(jobs)) {
  try {
    for (size_t i = 0; jobs > 1 && i < jobs; ++i) {
      threads_.emplace_back(&BlockRing::Work, this, i);
    }
  } catch (const std::system_error & /*noThread*/) {
    // The existing threads do the work, or the reading thread.
  }
}

BlockRing::~BlockRing() {
  {
    const std::lock_guard<std::mutex> lock(mutex_);
    ended_ = true;
  }
  filled_.notify_all();
  for (std::thread &thread : threads_) {
    thread.join();
  }
}

// Computes blocks until the ring is closed.
void BlockRing::Work(size_t worker) {
  std::unique_lock<std::mutex> lock(mutex_);
  for (;;) {
    filled_.wait(lock, [this] { return ended_ || slots_[next_].stage == Stage::Filled; });
    if (ended_) {
      return;
    }
    const size_t slot = next_;
    next_ = (next_ + 1) % slots_.size();
    slots_[slot].stage = Stage::Computing;
    lock.unlock();
    std::exception_ptr thrown;
    try {
      Compute(worker, slot);
    } catch (...) {
      thrown = std::current_exception();
    }
    lock.lock();
    failure_ = failure_ == nullptr ? thrown : failure_;
    slots_[slot].stage = Stage::Computed;
    computed_.notify_one();
  }
}

void BlockRing::Compute(size_t worker, size_t slot) {
  CsvSplit(csv_, slots_[slot].block);
  work_.compute(worker, slot, slots_[slot].block);
}

bool BlockRing::Take(size_t slot) {
  if (!work_.take(slot)) {
    return false;
  }
  error_ = slots_[slot].block.error;
  return error_.empty();
}

void BlockRing::Submit() {
  {
    const std::lock_guard<std::mutex> lock(mutex_);
    slots_[filling_].stage = Stage::Filled;
  }
  filled_.notify_one();
  filling_ = (filling_ + 1) % slots_.size();
  ++submitted_;
}

// False when the run should end.
bool BlockRing::TakeOldest() {
  const size_t slot = oldest_;
  {
    std::unique_lock<std::mutex> lock(mutex_);
    computed_.wait(lock, [&] { return slots_[slot].stage == Stage::Computed; });
    if (failure_ != nullptr) {
      std::rethrow_exception(failure_);
    }
    slots_[slot].stage = Stage::Free;
  }
  oldest_ = (oldest_ + 1) % slots_.size();
  --submitted_;
  return Take(slot);
}

bool BlockRing::Run(std::string &error) {
  CsvReader reader(csv_);
  bool more = true;
  while (more && reader.Read(slots_[filling_].block)) {
    if (threads_.empty()) {
      Compute(0, 0);
      more = Take(0);
    } else {
      Submit();
      more = submitted_ < slots_.size() || TakeOldest();
    }
  }
  while (more && submitted_ > 0) {
    more = TakeOldest();
  }
  error = error_;
  return error.empty();
}

}  // namespace

size_t BlockSlots(size_t jobs) {
  return jobs == 1 ? 1 : 3 * jobs + 2;
}

bool ReadInBlocks(CsvFile &csv, size_t jobs, const BlockWork &work, std::string &error) {
  BlockRing ring(csv, jobs, work);
  return ring.Run(error);
}

size_t ProcessorCount() {
  cpu_set_t set;
  CPU_ZERO(&set);
  const int count = sched_getaffinity(0, sizeof set, &set) == 0 ? CPU_COUNT(&set) : 1;
  return static_cast<size_t>(std::max(count, 1));
}
