#include "virtualcharger/desk/inbox.h"

#include <sys/eventfd.h>
#include <unistd.h>

#include <cerrno>
#include <system_error>
#include <utility>

namespace {

int MakeEvent() {
  const int event = eventfd(0, EFD_CLOEXEC | EFD_NONBLOCK);
  if (event < 0) throw std::system_error(errno, std::generic_category(), "no eventfd");
  return event;
}

}  // namespace

CInbox::CInbox() : mWake(MakeEvent()) {}

void CInbox::Wake() {
  // A full counter wakes as well.
  [[maybe_unused]] const int written = eventfd_write(mWake.Get(), 1);
}

std::vector<CInbox::SLetter> CInbox::Take() {
  eventfd_t count = 0;
  [[maybe_unused]] const int read = eventfd_read(mWake.Get(), &count);
  const std::lock_guard lock(mMutex);
  return std::exchange(mLetters, {});
}

void CInbox::OnHello(ClientId client, bool mayWrite) {
  Add({client, true, mayWrite, {}});
}

void CInbox::OnMessage(ClientId client, const Json::Value& message) {
  Add({client, false, true, message});
}

void CInbox::Add(SLetter letter) {
  {
    const std::lock_guard lock(mMutex);
    mLetters.push_back(std::move(letter));
  }
  Wake();
}
