#include "platform/rpc/servicechannel.h"

#include <fmt/core.h>
#include <grpcpp/create_channel.h>
#include <grpcpp/security/credentials.h>
#include <grpcpp/support/channel_arguments.h>

#include <algorithm>
#include <utility>

#include "platform/rpc/bordercheck.h"
#include "platform/rpc/communicationexception.h"
#include "platform/rpc/log.h"

namespace Rpc {
namespace {

using namespace std::chrono_literals;

// The standard health protocol; any answer, also "unimplemented", says that the peer lives.
constexpr const char* kProbeMethod = "/grpc.health.v1.Health/Check";
constexpr auto kProbeLimit = 30s;
constexpr std::chrono::milliseconds kTimeLimitAtStop = 200ms;

grpc::ChannelArguments Arguments() {
  grpc::ChannelArguments arguments;
  // A peer that comes back is found within a second: gRPC adds up to a fifth to each interval. The
  // minimum stays at gRPC's own value, which is also the limit of one connection attempt.
  arguments.SetInt(GRPC_ARG_INITIAL_RECONNECT_BACKOFF_MS, 100);
  arguments.SetInt(GRPC_ARG_MAX_RECONNECT_BACKOFF_MS, 700);
  arguments.SetInt(GRPC_ARG_KEEPALIVE_TIME_MS, 20'000);
  arguments.SetInt(GRPC_ARG_KEEPALIVE_TIMEOUT_MS, 20'000);
  arguments.SetInt(GRPC_ARG_USE_LOCAL_SUBCHANNEL_POOL, 1);
  arguments.SetInt(GRPC_ARG_ENABLE_HTTP_PROXY, 0);
  arguments.SetMaxReceiveMessageSize(kMessageLimit);
  return arguments;
}

}  // namespace

CServiceChannel::CServiceChannel(std::string name, const std::string& socketPath)
    : mName(std::move(name)),
      mChannel(grpc::CreateCustomChannel("unix:" + socketPath, grpc::InsecureChannelCredentials(),
                                         Arguments())),
      mProbeStub(mChannel) {}

CServiceChannel::~CServiceChannel() {
  Stop();
}

void CServiceChannel::Call(const char* operation,
                           const std::function<grpc::Status(grpc::ClientContext&)>& call) {
  const auto fail = [&](const std::string& reason) {
    throw CommunicationException(fmt::format("{} of \"{}\" failed: {}", operation, mName, reason));
  };

  grpc::ClientContext context;
  context.set_deadline(std::chrono::system_clock::now() + mTimeLimit.load());
  {
    const std::lock_guard lock(mMutex);
    if (mStopped) {
      fail("this process is stopping");
    }
    if (mHangs) {
      fail("the service does not answer");
    }
    mCalls.insert(&context);
  }
  const grpc::Status status = call(context);
  {
    const std::lock_guard lock(mMutex);
    mCalls.erase(&context);
  }
  if (status.ok()) {
    return;
  }
  if (status.error_code() == grpc::StatusCode::DEADLINE_EXCEEDED) {
    Probe(true);
    fail(fmt::format("no answer within {} ms", mTimeLimit.load().count()));
  }
  if (status.error_code() == grpc::StatusCode::UNAVAILABLE) {
    Probe(false);
    fail(fmt::format("the service is not there ({})", status.error_message()));
  }
  fail(status.error_message());
}

void CServiceChannel::Probe(bool hangs) {
  const std::lock_guard lock(mMutex);
  if (mStopped) {
    return;
  }
  if (hangs && !mHangs) {
    Write(&ILogger::Warning, "\"{}\" hangs: calls fail at once until it answers again", mName);
    mHangs = true;
  }
  if (!mProbeContext) {
    StartProbe();
  }
}

// gRPC never runs the callback inside the call that starts it, so the lock may be held.
void CServiceChannel::StartProbe() {
  mProbeContext = std::make_unique<grpc::ClientContext>();
  mProbeContext->set_deadline(std::chrono::system_clock::now() + kProbeLimit);
  mProbeContext->set_wait_for_ready(true);
  const grpc::Slice empty;
  mProbeRequest = grpc::ByteBuffer(&empty, 1);  // a HealthCheckRequest for the whole server
  mProbeStub.UnaryCall(mProbeContext.get(), kProbeMethod, grpc::StubOptions(), &mProbeRequest,
                       &mProbeResponse, [this](const grpc::Status& status) { OnProbed(status); });
}

void CServiceChannel::OnProbed(const grpc::Status& status) {
  const CCallbackCount::CInside inside(mCallbacks);
  std::unique_ptr<grpc::ClientContext> ended;  // outlives the lock: its end takes gRPC's own locks
  const std::lock_guard lock(mMutex);
  ended = std::move(mProbeContext);
  if (mStopped) {
    mProbeEnded.notify_all();
    return;
  }
  if (status.error_code() == grpc::StatusCode::DEADLINE_EXCEEDED) {
    StartProbe();
    return;
  }
  if (mHangs) {
    const bool gone = status.error_code() == grpc::StatusCode::UNAVAILABLE;
    Write(&ILogger::Info, "\"{}\" {}", mName, gone ? "is gone" : "answers again");
    mHangs = false;
  }
}

void CServiceChannel::PrepareStop() {
  const std::lock_guard lock(mMutex);
  mTimeLimit = std::min(mTimeLimit.load(), kTimeLimitAtStop);
  CancelCalls();
}

void CServiceChannel::CancelCalls() {
  for (grpc::ClientContext* call : mCalls) {
    call->TryCancel();
  }
}

void CServiceChannel::Stop() {
  std::unique_lock lock(mMutex);
  mStopped = true;
  CancelCalls();
  if (mProbeContext) {
    mProbeContext->TryCancel();
  }
  mProbeEnded.wait(lock, [this] { return !mProbeContext; });
}

}  // namespace Rpc
