#include <gmock/gmock.h>
#include <gtest/gtest.h>
#include <poll.h>
#include <sys/socket.h>
#include <unistd.h>

#include <thread>

#include "platform/rpc/interfaces/diagnostics.h"
#include "tests/platform/rpc/hosts.h"
#include "virtualcharger/peers/linebuffer.h"
#include "virtualcharger/peers/peerprocess.h"

namespace {

using testing::Optional;

// Runs on a thread of the test instead of in a process.
class APeerProcess : public testing::Test {
 protected:
  APeerProcess() {
    int ends[2];
    EXPECT_EQ(socketpair(AF_UNIX, SOCK_STREAM, 0, ends), 0);
    mControl = ends[0];
    mPeerEnd = ends[1];
  }

  ~APeerProcess() override {
    End();
    close(mPeerEnd);
  }

  void Run(const std::string& name) {
    mThread = std::thread([this, name] {
      mStatus = RunPeer({name, mDirectory.Store(), 6}, mPeerEnd);
    });
  }

  void End() {
    if (mControl >= 0) close(mControl);
    mControl = -1;
    if (mThread.joinable()) mThread.join();
  }

  void Write(const std::string& text) {
    ASSERT_EQ(write(mControl, text.data(), text.size()), static_cast<ssize_t>(text.size()));
  }

  std::string Line() {
    pollfd input{mControl, POLLIN, 0};
    for (;;) {
      if (const auto line = mLines.Next()) return *line;
      constexpr int limit = std::chrono::milliseconds(kGenerous).count();
      if (poll(&input, 1, limit) <= 0 || !mLines.ReadFrom(mControl)) return "no line";
    }
  }

  const SocketDirectory mDirectory;
  int mControl = -1;
  int mPeerEnd = -1;
  CLineBuffer mLines;
  std::thread mThread;
  int mStatus = -1;
};

TEST_F(APeerProcess, ServesUntilItsControlEnds) {
  Run("session-manager");
  EXPECT_EQ(Line(), "serving");
  EXPECT_EQ(access(mDirectory.Socket("SessionManager").c_str(), F_OK), 0);
  End();
  EXPECT_EQ(mStatus, 0);
  EXPECT_NE(access(mDirectory.Socket("SessionManager").c_str(), F_OK), 0);
}

TEST_F(APeerProcess, RepliesToEachCommandUnderItsNumber) {
  Run("session-manager");
  EXPECT_EQ(Line(), "serving");
  Write("7 connector 5\n\n8 error 1004 on\n9 conn");
  EXPECT_EQ(Line(), "connector 5");
  EXPECT_EQ(Line(), "reply 7 nobody");
  EXPECT_EQ(Line(), "reply 8 unknown");
  Write("ector 6\n");
  EXPECT_EQ(Line(), "connector 6");
  EXPECT_EQ(Line(), "reply 9 nobody");
}

TEST_F(APeerProcess, ReportsWhatItsServiceHears) {
  Run("diagnostics");
  EXPECT_EQ(Line(), "serving");
  RunningHost client(mDirectory);
  ipc::MDiagnosticsSignal signal;
  signal.set_identifier(ipc::ESignalIdentifierLedState);
  signal.add_data()->set_string_value("Green/On");
  client.Client<IDiagnostics>("Diagnostics")->SendSignal(signal);
  EXPECT_EQ(Line(), "signal " + std::to_string(ipc::ESignalIdentifierLedState) + " Green/On");
  Write("1 error 1004 on\n");
  EXPECT_EQ(Line(), "signal 1004 true");
  EXPECT_EQ(Line(), "reply 1 nobody");
}

TEST_F(APeerProcess, HandsTheRequestsOnToADaemon) {
  Run("board-controller");
  EXPECT_EQ(Line(), "serving");
  for (const auto* command : {"enable", "disable", "event 2"}) {
    Write("1 " + std::string(command) + '\n');
    EXPECT_THAT(Line(), testing::StartsWith("reply 1 unreachable ")) << command;
  }
}

TEST_F(APeerProcess, MakesTheMeterRefuse) {
  Run("meter");
  EXPECT_EQ(Line(), "serving");
  Write("1 refuse\n2 perhaps\n");
  EXPECT_EQ(Line(), "accepts 0");
  EXPECT_EQ(Line(), "reply 1 ok");
  EXPECT_EQ(Line(), "reply 2 unknown");
}

TEST_F(APeerProcess, FailsWhereAnotherOneServesAlready) {
  Run("diagnostics");
  EXPECT_EQ(Line(), "serving");
  EXPECT_EQ(RunPeer({"diagnostics", mDirectory.Store(), 0}, mPeerEnd), 1);
  EXPECT_EQ(RunPeer({"nobody", mDirectory.Store(), 0}, mPeerEnd), 2);
}

}  // namespace
