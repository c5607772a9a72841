// The connection to one named service, and how calls behave when the service is down or hangs.
//
// A service that is down fails a call within milliseconds; from then on a request waits for it, so
// that the connection is there again soon after the service is. A service that hangs costs one call
// its whole time limit; from then on calls fail at once, until a probe on the same connection has
// been answered. So a hung peer slows its callers down once, not each time.
//
// Only for platform/rpc: includes gRPC.
#pragma once

#include <grpcpp/channel.h>
#include <grpcpp/client_context.h>
#include <grpcpp/generic/generic_stub.h>

#include <atomic>
#include <chrono>
#include <condition_variable>
#include <functional>
#include <memory>
#include <mutex>
#include <set>
#include <string>

#include "platform/rpc/callbackcount.h"

namespace Rpc {

// Threads: everything may be called from any thread; Stop not from one of gRPC's own.
class CServiceChannel {
 public:
  CServiceChannel(std::string name, const std::string& socketPath);
  ~CServiceChannel();

  const std::string& Name() const { return mName; }
  const std::shared_ptr<grpc::Channel>& Channel() const { return mChannel; }

  void SetTimeLimit(std::chrono::milliseconds limit) { mTimeLimit = limit; }

  // Runs one call under the time limit. Throws CommunicationException where it fails, naming the
  // service, the operation and the reason.
  void Call(const char* operation, const std::function<grpc::Status(grpc::ClientContext&)>& call);

  // Ends the calls under way and gives later ones little time.
  void PrepareStop();

  // Ends the calls under way and fails all later ones.
  void Stop();

  // For those who let gRPC call back. Awaited when everything that calls back has been stopped.
  const std::shared_ptr<CCallbackCount>& Callbacks() const { return mCallbacks; }

 private:
  void Probe(bool hangs);
  void StartProbe();
  void OnProbed(const grpc::Status& status);
  void CancelCalls();

  const std::string mName;
  const std::shared_ptr<grpc::Channel> mChannel;
  const std::shared_ptr<CCallbackCount> mCallbacks = std::make_shared<CCallbackCount>();
  grpc::GenericStub mProbeStub;
  std::atomic<std::chrono::milliseconds> mTimeLimit{std::chrono::seconds(2)};

  std::mutex mMutex;
  std::condition_variable mProbeEnded;
  std::set<grpc::ClientContext*> mCalls;               // guarded by mMutex
  std::unique_ptr<grpc::ClientContext> mProbeContext;  // guarded by mMutex; set while probing
  bool mHangs = false;                                 // guarded by mMutex
  grpc::ByteBuffer mProbeRequest;
  grpc::ByteBuffer mProbeResponse;
  bool mStopped = false;  // guarded by mMutex
};

}  // namespace Rpc
