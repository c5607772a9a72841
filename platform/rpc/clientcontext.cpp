#include "platform/rpc/clientcontext.h"

#include <utility>

#include "platform/rpc/servicechannel.h"
#include "platform/rpc/servicesocket.h"

namespace Rpc {

CClientContext::CClientContext(std::string socketDirectory)
    : mSocketDirectory(std::move(socketDirectory)) {}

CClientContext::~CClientContext() {
  Stop();
}

std::shared_ptr<CServiceChannel> CClientContext::Channel(const std::string& name) {
  const std::lock_guard lock(mMutex);
  auto& channel = mChannels[name];
  if (!channel) {
    channel = std::make_shared<CServiceChannel>(name, ServiceSocketPath(mSocketDirectory, name));
    if (mStopped) {
      channel->Stop();
    }
  }
  return channel;
}

void CClientContext::OnStop(std::function<void()> stop) {
  {
    const std::lock_guard lock(mMutex);
    if (!mStopped) {
      mStops.push_back(std::move(stop));
      return;
    }
  }
  stop();
}

void CClientContext::PrepareStop() {
  const std::lock_guard lock(mMutex);
  for (const auto& [name, channel] : mChannels) {
    channel->PrepareStop();
  }
}

void CClientContext::Stop() {
  std::vector<std::function<void()>> stops;
  std::map<std::string, std::shared_ptr<CServiceChannel>> channels;
  {
    const std::lock_guard lock(mMutex);
    mStopped = true;
    stops.swap(mStops);
    channels = mChannels;
  }
  // Calls first: a notification that is being handled may be waiting for one.
  for (const auto& [name, channel] : channels) {
    channel->Stop();
  }
  mQueue->Stop();
  for (const auto& stop : stops) {
    stop();
  }
  for (const auto& [name, channel] : channels) {
    channel->Callbacks()->AwaitNone();
  }
}

}  // namespace Rpc
