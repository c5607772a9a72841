// Which row of a machine's table an event meets in which leaf: worked out when the machine is
// compiled, so that an event costs one look-up however many rows there are.
#pragma once

#include <algorithm>
#include <array>
#include <cstddef>
#include <limits>

#include "statemachines/hsmtable.h"

template <typename Definition>
class CHsmDispatch {
 public:
  using Row = typename Definition::RowData;

  // The row of the leaf or, where it has none, of the level around it; null where nobody reacts.
  static const Row* Find(unsigned leaf, const CHsmEventType& event) {
    if (event.number >= kEvents) {
      return nullptr;
    }
    const unsigned entry = kTable[leaf][event.number];
    if (entry == kNone) {
      return nullptr;
    }
    const Row& row = Definition::kRows[entry - 1];
    return row.event == &event ? &row : nullptr;
  }

 private:
  static constexpr std::size_t kEvents =
      std::ranges::max_element(Definition::kRows, {},
                               [](const Row& row) { return row.event->number; })
          ->event->number +
      1;
  static constexpr std::size_t kLeaves = Definition::kLeaves.size();

  // A row's place in the table of rows, from 1. Not a pointer to it: with the undefined-behaviour
  // sanitizer GCC takes no comparison of an address with null for constant.
  using Entry = unsigned char;
  static constexpr Entry kNone = 0;
  using Table = std::array<std::array<Entry, kEvents>, kLeaves + 1>;

  static constexpr Table Build() {
    static_assert(Definition::kRows.size() <= std::numeric_limits<Entry>::max());
    for (std::size_t i = 0; i < kLeaves; ++i) {
      if (Definition::kLeaves[i].number != i + 1) {
        throw "leaves are listed in the order of their numbers";
      }
    }
    if (Definition::kInitial < 1 || Definition::kInitial > kLeaves) {
      throw "the initial leaf does not exist";
    }
    Table table{};
    std::array<Entry, kEvents> seen{};
    Entry entry = kNone;
    for (const Row& row : Definition::kRows) {
      const std::size_t number = row.event->number;
      if (row.level > kLeaves || row.target > kLeaves) {
        throw "a row names a leaf that does not exist";
      }
      if (table[row.level][number] != kNone) {
        throw "two rows of a level take the same event";
      }
      if (seen[number] != kNone && Definition::kRows[seen[number] - 1U].event != row.event) {
        throw "two event types have the same number";
      }
      table[row.level][number] = seen[number] = ++entry;
    }
    for (auto& leaf : table) {
      for (std::size_t number = 0; number < kEvents; ++number) {
        if (leaf[number] == kNone) {
          leaf[number] = table[Definition::kAnyLeaf][number];
        }
      }
    }
    return table;
  }

  static constexpr Table kTable = Build();
};
