// This charger's entry among the running ones (utils/runningchargers.h has the format).
#pragma once

#include <string>
#include <vector>

#include "platform/os/descriptor.h"
#include "utils/runningchargers.h"

// Threads: one at a time.
class CDeskRegistry {
 public:
  // Takes the first one of "charger", "charger-2", "charger-3" and so on that is free. Throws
  // std::runtime_error.
  CDeskRegistry();

  // Takes the name: letters, digits, '.', '_' and '-', at most 32, the first one a letter or digit.
  // Removes what killed chargers have left. Throws std::runtime_error where the name is another
  // one's or cannot be a name, with the way out.
  explicit CDeskRegistry(const std::string& name);
  CDeskRegistry(const CDeskRegistry&) = delete;
  CDeskRegistry& operator=(const CDeskRegistry&) = delete;

  // Removes the entry.
  ~CDeskRegistry();

  // From now on others see this charger. Its name and pid are known already. Throws
  // std::runtime_error.
  void Announce(const SRunningCharger& charger) { Write(charger); }

  const std::string& Name() const { return mName; }

  // As RunningChargers, without this one.
  std::vector<SRunningCharger> Others() const;

 private:
  bool Take(const std::string& name);
  void Write(const SRunningCharger& charger);

  // Constant after construction.
  std::string mName;
  std::string mPath;
  CDescriptor mFile;  // locked
};
