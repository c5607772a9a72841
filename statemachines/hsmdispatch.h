// Which row of a machine's table an event meets in which leaf: worked out when the machine is
// compiled, so that an event costs one look-up however many rows there are.
#pragma once

#include <algorithm>
#include <array>
#include <cstddef>

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
    const Row* row = kTable[leaf][event.number];
    return row != nullptr && row->event == &event ? row : nullptr;
  }

 private:
  static constexpr std::size_t kEvents =
      std::ranges::max_element(Definition::kRows, {},
                               [](const Row& row) { return row.event->number; })
          ->event->number +
      1;
  static constexpr std::size_t kLeaves = Definition::kLeaves.size();

  using Table = std::array<std::array<const Row*, kEvents>, kLeaves + 1>;

  static constexpr Table Build() {
    for (std::size_t i = 0; i < kLeaves; ++i) {
      if (Definition::kLeaves[i].number != i + 1) {
        throw "leaves are listed in the order of their numbers";
      }
    }
    if (Definition::kInitial < 1 || Definition::kInitial > kLeaves) {
      throw "the initial leaf does not exist";
    }
    Table table{};
    std::array<const CHsmEventType*, kEvents> types{};
    for (const Row& row : Definition::kRows) {
      const std::size_t number = row.event->number;
      if (row.level > kLeaves || row.target > kLeaves) {
        throw "a row names a leaf that does not exist";
      }
      if (table[row.level][number] != nullptr) {
        throw "two rows of a level take the same event";
      }
      if (types[number] != nullptr && types[number] != row.event) {
        throw "two event types have the same number";
      }
      types[number] = row.event;
      table[row.level][number] = &row;
    }
    for (auto& leaf : table) {
      for (std::size_t number = 0; number < kEvents; ++number) {
        if (leaf[number] == nullptr) {
          leaf[number] = table[Definition::kAnyLeaf][number];
        }
      }
    }
    return table;
  }

  static constexpr Table kTable = Build();
};
