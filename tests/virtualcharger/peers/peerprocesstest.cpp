#include <gmock/gmock.h>
#include <gtest/gtest.h>
#include <json/json.h>
#include <poll.h>
#include <sys/socket.h>
#include <unistd.h>

#include <sstream>
#include <thread>

#include "platform/rpc/interfaces/diagnostics.h"
#include "tests/platform/rpc/hosts.h"
#include "tests/virtualcharger/peers/events.h"
#include "virtualcharger/peers/linebuffer.h"
#include "virtualcharger/peers/peerprocess.h"

namespace {

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

  // What crosses the wire is put aside.
  std::string Line() {
    pollfd input{mControl, POLLIN, 0};
    for (;;) {
      const auto line = mLines.Next();
      if (line && !IsMessage(*line)) return *line;
      if (line) {
        mMessages.push_back(*line);
        continue;
      }
      constexpr int limit = std::chrono::milliseconds(kGenerous).count();
      if (poll(&input, 1, limit) <= 0 || !mLines.ReadFrom(mControl)) return "no line";
    }
  }

  const SocketDirectory mDirectory;
  int mControl = -1;
  int mPeerEnd = -1;
  CLineBuffer mLines;
  std::vector<std::string> mMessages;
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

TEST_F(APeerProcess, TellsEachMessageWhenItBeginsAndWhenItHasEnded) {
  Run("diagnostics");
  EXPECT_EQ(Line(), "serving");
  RunningHost host(mDirectory);
  const auto client = host.Client<IDiagnostics>("Diagnostics");
  ipc::MDiagnosticsSignal signal;
  signal.set_identifier(ipc::ESignalIdentifierLedState);
  signal.add_data()->set_string_value("Gr\u00e9n/\n\"On\"");
  client->SendSignal(signal);
  ipc::MDiagnosticsRequest request;
  request.set_identifier(ipc::ESignalIdentifierBuzzerState);
  EXPECT_ANY_THROW(client->ReceiveSignal(request));
  Write("1 error 1004 on\n");
  while (Line() != "reply 1 nobody") {
  }

  std::vector<std::string> told;
  for (const auto& each : mMessages) {
    Json::Value message;
    std::istringstream(each.substr(each.find('{'))) >> message;
    const auto number = each.substr(0, each.find(" {"));
    told.push_back(message.isMember("from")
                       ? number + ' ' + message["from"].asString() + '>' +
                             message["to"].asString() + ' ' + message["method"].asString() + ' ' +
                             message["kind"].asString() + ": " + message["text"].asString()
                       : number + (message["ok"].asBool() ? " ok " : " bad ") +
                             message["verdict"].asString());
  }
  EXPECT_THAT(
      told, testing::ElementsAre(
                "message 1 daemon>diagnostics SendSignal call: LED state = Gr\u00e9n/?\"On\"",
                "message 1 ok Ok", "message 2 daemon>diagnostics ReceiveSignal call: Buzzer state",
                "message 2 bad not sent yet",
                "message 3 diagnostics>daemon Notifications notification: "
                "1004 ChargeControl Cp Low Error = true",
                "message 3 bad nobody is subscribed"));
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
