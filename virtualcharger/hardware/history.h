// The newest of what goes on and on: older ones are dropped, the marks stay right.
#pragma once

#include <algorithm>
#include <cstddef>
#include <cstdint>
#include <deque>
#include <optional>
#include <utility>
#include <vector>

// Threads: one.
template <typename Entry>
class CHistory {
 public:
  // A place between two entries: the number of entries before it.
  using Mark = std::uint64_t;

  explicit CHistory(std::size_t limit) : mLimit(limit) {}

  void Add(Entry entry) {
    mEntries.push_back(std::move(entry));
    if (mEntries.size() <= mLimit) return;
    mEntries.pop_front();
    ++mDropped;
  }

  Mark End() const { return mDropped + mEntries.size(); }

  // From the mark on; those that have been dropped are missing at the front.
  std::vector<Entry> Since(Mark mark) const {
    const auto first = std::min<Mark>(mark - std::min(mark, mDropped), mEntries.size());
    return {mEntries.begin() + static_cast<std::ptrdiff_t>(first), mEntries.end()};
  }

  std::optional<Entry> Last() const {
    return mEntries.empty() ? std::nullopt : std::optional(mEntries.back());
  }

 private:
  const std::size_t mLimit;
  std::deque<Entry> mEntries;
  Mark mDropped = 0;
};
