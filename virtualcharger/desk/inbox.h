// What the page's clients said, on its way from the server's thread to the desk's.
#pragma once

#include <deque>
#include <mutex>
#include <vector>

#include "platform/os/descriptor.h"
#include "virtualcharger/page/pageserver.h"

// Threads: Take from one; everything else from any.
class CInbox : public IPageHandler {
 public:
  struct SLetter {
    ClientId client;
    bool hello;     // wants the whole picture
    bool mayWrite;  // of a hello
    Json::Value message;
  };

  CInbox();

  // Readable when there is something to take, or Wake was called.
  int Descriptor() const { return mWake.Get(); }
  void Wake();

  std::vector<SLetter> Take();

  void OnHello(ClientId client, bool mayWrite) override;
  void OnMessage(ClientId client, const Json::Value& message) override;

 private:
  void Add(SLetter letter);

  const CDescriptor mWake;
  std::mutex mMutex;
  std::vector<SLetter> mLetters;  // guarded by mMutex
};
