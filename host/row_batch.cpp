#include "host/row_batch.h"

#include <sched.h>

#include <algorithm>
#include <condition_variable>
#include <exception>
#include <mutex>
#include <system_error>
#include <thread>

namespace {

constexpr size_t kBatchRows = 1024;
constexpr size_t kBatchBytes = size_t{256} << 10; /* a batch is full above it */

enum class Stage { Free, Filled, Computing, Computed };

struct Place {
  RowBatch batch;
  Stage stage = Stage::Free;
};

}  // namespace

struct BatchRing::State {
  BatchComputer compute;
  BatchTaker take;
  std::vector<Place> places;
  size_t filling = 0;   /* index of the batch that is being filled */
  size_t oldest = 0;    /* index of the one that is consumed next */
  size_t submitted = 0; /* batches between the two */
  size_t next = 0;      /* index that a thread checks next */
  bool ended = false;
  bool stopped = false; /* the consumer has stopped */

  bool Take(RowBatch &batch);
  std::exception_ptr failure;
  std::mutex mutex;
  std::condition_variable filled, computed;
  std::vector<std::thread> threads;

  void Work(size_t worker);
};

/* Consumes a batch and clears it. */
bool BatchRing::State::Take(RowBatch &batch) {
  stopped = !take(batch);
  batch.count = batch.bytes = 0;
  return !stopped;
}

/* Computes batches until the ring is closed. */
void BatchRing::State::Work(size_t worker) {
  std::unique_lock<std::mutex> lock(mutex);
  for (;;) {
    filled.wait(lock, [this] { return ended || places[next].stage == Stage::Filled; });
    if (ended) {
      return;
    }
    Place &place = places[next];
    next = (next + 1) % places.size();
    place.stage = Stage::Computing;
    lock.unlock();
    std::exception_ptr thrown;
    try {
      compute(worker, place.batch);
    } catch (...) {
      thrown = std::current_exception();
    }
    lock.lock();
    failure = failure == nullptr ? thrown : failure;
    place.stage = Stage::Computed;
    computed.notify_one();
  }
}

BatchRing::BatchRing(size_t jobs, BatchComputer compute, BatchTaker take) : state_(new State) {
  state_->compute = std::move(compute);
  state_->take = std::move(take);
  state_->places = std::vector<Place>(jobs == 1 ? 1 : jobs + 2);
  try {
    for (size_t i = 0; jobs > 1 && i < jobs; ++i) {
      state_->threads.emplace_back(&State::Work, state_.get(), i);
    }
  } catch (const std::system_error & /*noThread*/) {
    /* The existing threads do the work, or the reading thread. */
  }
}

BatchRing::~BatchRing() {
  {
    const std::lock_guard<std::mutex> lock(state_->mutex);
    state_->ended = true;
  }
  state_->filled.notify_all();
  for (std::thread &thread : state_->threads) {
    thread.join();
  }
}

bool BatchRing::Add(const CsvRow &row) {
  RowBatch &batch = state_->places[state_->filling].batch;
  if (batch.count == batch.rows.size()) {
    batch.rows.emplace_back();
  }
  batch.rows[batch.count++] = row;
  batch.bytes += row.bytes.size();
  return (batch.count < kBatchRows && batch.bytes < kBatchBytes) || Submit();
}

/* Publishes the batch and frees the next slot. */
bool BatchRing::Submit() {
  State &state = *state_;
  if (state.threads.empty()) {
    RowBatch &batch = state.places[0].batch;
    state.compute(0, batch);
    return state.Take(batch);
  }
  {
    const std::lock_guard<std::mutex> lock(state.mutex);
    state.places[state.filling].stage = Stage::Filled;
  }
  state.filled.notify_one();
  state.filling = (state.filling + 1) % state.places.size();
  return ++state.submitted < state.places.size() || TakeOldest();
}

bool BatchRing::TakeOldest() {
  State &state = *state_;
  Place &place = state.places[state.oldest];
  {
    std::unique_lock<std::mutex> lock(state.mutex);
    state.computed.wait(lock, [&place] { return place.stage == Stage::Computed; });
    if (state.failure != nullptr) {
      std::rethrow_exception(state.failure);
    }
    place.stage = Stage::Free;
  }
  state.oldest = (state.oldest + 1) % state.places.size();
  --state.submitted;
  return state.Take(place.batch);
}

bool BatchRing::Finish() {
  State &state = *state_;
  bool more = !state.stopped && (state.places[state.filling].batch.count == 0 || Submit());
  while (more && state.submitted > 0) {
    more = TakeOldest();
  }
  return more;
}

size_t ProcessorCount() {
  cpu_set_t set;
  CPU_ZERO(&set);
  const int count = sched_getaffinity(0, sizeof set, &set) == 0 ? CPU_COUNT(&set) : 1;
  return static_cast<size_t>(std::max(count, 1));
}
