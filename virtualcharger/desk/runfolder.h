// Notices when somebody takes the run's folder away while the charger lives.
#pragma once

#include <string>
#include <vector>

#include "platform/os/descriptor.h"
#include "virtualcharger/scenario/privateroot.h"

// Threads: one.
class CRunFolder {
 public:
  explicit CRunFolder(const CPrivateRoot& root);

  // What is gone or was replaced, and the way out; empty while all is there. What is not there yet
  // is not missed.
  std::string Trouble();

 private:
  struct SPlace {
    std::string name;
    std::string path;
    CDescriptor known;  // held, so that nothing new can be taken for it
  };

  std::vector<SPlace> mPlaces;
};
