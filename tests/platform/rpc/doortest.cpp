// Who gets in: socket files, locks, hostile and too many connections.
#include <gmock/gmock.h>
#include <gtest/gtest.h>
#include <poll.h>
#include <sys/resource.h>
#include <sys/socket.h>
#include <sys/un.h>
#include <unistd.h>

#include <filesystem>
#include <vector>

#include "platform/os/descriptor.h"
#include "platform/rpc/communicationexception.h"
#include "platform/rpc/peercheck.h"
#include "platform/rpc/servicesocket.h"
#include "tests/platform/rpc/hosts.h"
#include "tests/support/eventually.h"

namespace {

using Rpc::CServiceSocket;
using testing::AllOf;
using testing::HasSubstr;

sockaddr_un Address(const std::string& path) {
  sockaddr_un address{};
  address.sun_family = AF_UNIX;
  path.copy(address.sun_path, sizeof(address.sun_path) - 1);
  return address;
}

CDescriptor Connected(const std::string& path) {
  CDescriptor descriptor(socket(AF_UNIX, SOCK_STREAM | SOCK_CLOEXEC, 0));
  const auto address = Address(path);
  if (connect(descriptor.Get(), reinterpret_cast<const sockaddr*>(&address), sizeof(address)) !=
      0) {
    descriptor.Reset();
  }
  return descriptor;
}

CDescriptor Listening(const std::string& path) {
  CDescriptor descriptor(socket(AF_UNIX, SOCK_STREAM | SOCK_CLOEXEC, 0));
  const auto address = Address(path);
  EXPECT_EQ(bind(descriptor.Get(), reinterpret_cast<const sockaddr*>(&address), sizeof(address)),
            0);
  EXPECT_EQ(listen(descriptor.Get(), 1), 0);
  return descriptor;
}

// Whether the other end closes the connection; limited by a time that only a fault reaches.
bool IsClosedByPeer(const CDescriptor& descriptor) {
  pollfd poll{descriptor.Get(), POLLIN, 0};
  char byte = 0;
  return ::poll(&poll, 1, 20'000) == 1 && recv(descriptor.Get(), &byte, 1, 0) <= 0;
}

std::string RefusalOf(const std::string& directory, const std::string& name) {
  try {
    CServiceSocket(directory, name).Listen();
  } catch (const Rpc::CommunicationException& exception) {
    return exception.what();
  }
  return "not refused";
}

class AServiceSocket : public testing::Test {
 protected:
  const TemporaryDirectory mTemporary;
  const std::string mDirectory = (mTemporary.Path() / "new" / "run").string();
  const std::string mPath = mDirectory + "/Feedback";
};

TEST_F(AServiceSocket, IsThereWhileItListensAndLeavesNothingBehind) {
  {
    CServiceSocket socket(mDirectory, "Feedback");
    EXPECT_FALSE(Connected(mPath)) << "reserved, not yet served";
    socket.Listen();
    EXPECT_TRUE(Connected(mPath));
  }
  EXPECT_TRUE(std::filesystem::is_empty(mDirectory));
}

TEST_F(AServiceSocket, IsRefusedToASecondHolderWithTheFirstOnesName) {
  const CServiceSocket first(mDirectory, "Feedback");
  const std::string refusal = RefusalOf(mDirectory, "Feedback");
  EXPECT_THAT(refusal, AllOf(HasSubstr(mPath), HasSubstr(std::to_string(getpid())),
                             HasSubstr("SocketDirectory")));
  EXPECT_EQ(RefusalOf(mDirectory, "Another"), "not refused");
}

TEST_F(AServiceSocket, ReplacesAStaleFileButNeverALivingListener) {
  std::filesystem::create_directories(mDirectory);
  auto foreign = Listening(mPath);
  EXPECT_THAT(RefusalOf(mDirectory, "Feedback"),
              AllOf(HasSubstr("served already"), HasSubstr(std::to_string(getpid()))));
  EXPECT_TRUE(Connected(mPath));
  foreign.Reset();
  ASSERT_FALSE(Connected(mPath)) << "the file of a dead listener";
  EXPECT_EQ(RefusalOf(mDirectory, "Feedback"), "not refused");
}

TEST_F(AServiceSocket, LeavesAFileAloneThatIsNoSocketAndOneThatReplacedItsOwn) {
  const std::string file = mTemporary.WriteFile("new/run/Feedback", "precious");
  EXPECT_THAT(RefusalOf(mDirectory, "Feedback"), HasSubstr("not a socket"));
  EXPECT_TRUE(std::filesystem::exists(file));
  std::filesystem::remove(file);

  CDescriptor replacement;
  {
    CServiceSocket socket(mDirectory, "Feedback");
    socket.Listen();
    std::filesystem::remove(mPath);
    replacement = Listening(mPath);
  }
  EXPECT_TRUE(Connected(mPath));
}

TEST_F(AServiceSocket, RefusesNamesAndPathsThatCannotBe) {
  for (const char* name : {"", ".", "..", "a/b", ".hidden"}) {
    EXPECT_THAT(RefusalOf(mDirectory, name), HasSubstr("file name")) << name;
  }
  EXPECT_THAT(RefusalOf(mDirectory + "/" + std::string(120, 'x'), "Feedback"),
              HasSubstr("too long"));
  const std::string file = mTemporary.WriteFile("file", "");
  EXPECT_THAT(RefusalOf(file, "Feedback"), HasSubstr("cannot create"));
}

TEST(APeer, IsAllowedAsRootAsOwnUserByNameAndByGroup) {
  const uid_t stranger = geteuid() + 1000;
  const struct {
    const char* who;
    Rpc::Peer peer;
    bool allowed;
  } cases[] = {
      {"root", {1, 0, {0}}, true},
      {"own user", {1, geteuid(), {7}}, true},
      {"listed user", {1, 4711, {7}}, true},
      {"group as primary", {1, stranger, {99}}, true},
      {"group as supplementary", {1, stranger, {7, 8, 99}}, true},
      {"stranger", {1, stranger, {7, 8}}, false},
  };
  for (const auto& each : cases) {
    EXPECT_EQ(Rpc::IsAllowed(each.peer, {4711}, 99), each.allowed) << each.who;
  }
}

TEST(APeer, IsKnownByItsSocket) {
  int ends[2];
  ASSERT_EQ(socketpair(AF_UNIX, SOCK_STREAM | SOCK_CLOEXEC, 0, ends), 0);
  const CDescriptor one(ends[0]);
  const CDescriptor other(ends[1]);
  Rpc::Peer peer;
  ASSERT_TRUE(Rpc::IdentifyPeer(one.Get(), peer));
  EXPECT_EQ(peer.pid, getpid());
  EXPECT_EQ(peer.user, geteuid());
  EXPECT_EQ(peer.groups.at(0), getegid());
  EXPECT_FALSE(Rpc::IdentifyPeer(STDIN_FILENO, peer));
}

class TheDoor : public testing::Test {
 protected:
  bool Answers() {
    RunningHost client(mDirectory);
    const auto feedback = client.Client<IFeedback>("Feedback");
    return Eventually([&] {
      try {
        return feedback->TriggerFeedbackEvent({}, {}).text() == "served";
      } catch (const Rpc::CommunicationException&) {
        return false;
      }
    });
  }

  SocketDirectory mDirectory;
  RunningHost mServer{mDirectory, [](Host& host) {
                        host.AddService<IFeedback>("Feedback", std::make_shared<ServedFeedback>(
                                                                   [](const auto&, const auto&) {
                                                                     ipc::MResult result;
                                                                     result.set_text("served");
                                                                     return result;
                                                                   }));
                      }};
  const std::string mPath = mDirectory.Socket("Feedback");
};

TEST_F(TheDoor, ClosesConnectionsThatDoNotSpeakTheProtocol) {
  const std::string halfPreface = "PRI * HTTP/2";
  for (const std::string& greeting :
       {std::string("GET / HTTP/1.1\r\nHost: charger\r\n\r\n"), halfPreface,
        std::string(1000, '\xff'), std::string("\0", 1)}) {
    const auto connection = Connected(mPath);
    ASSERT_EQ(send(connection.Get(), greeting.data(), greeting.size(), MSG_NOSIGNAL),
              static_cast<ssize_t>(greeting.size()));
    EXPECT_TRUE(IsClosedByPeer(connection));
  }
  const std::string prefaceAndRubbish = "PRI * HTTP/2.0\r\n\r\nSM\r\n\r\n" + std::string(500, 'x');
  const auto connection = Connected(mPath);
  send(connection.Get(), prefaceAndRubbish.data(), prefaceAndRubbish.size(), MSG_NOSIGNAL);
  EXPECT_TRUE(Answers());
}

TEST_F(TheDoor, ServesOthersAgainAfterIdleConnectionsTookAllPlaces) {
  // The preface and an empty SETTINGS frame (RFC 9113, section 6.5), and then nothing.
  const std::string greeting("PRI * HTTP/2.0\r\n\r\nSM\r\n\r\n\0\0\0\4\0\0\0\0\0", 33);
  std::vector<CDescriptor> idle;
  for (int i = 0; i < 80; ++i) {
    idle.push_back(Connected(mPath));
    send(idle.back().Get(), greeting.data(), greeting.size(), MSG_NOSIGNAL);
  }
  EXPECT_TRUE(Answers());
}

TEST_F(TheDoor, IsBackWhenItsSocketWasRemoved) {
  std::filesystem::remove(mPath);
  EXPECT_TRUE(Answers());
  std::filesystem::rename(mPath, mPath + ".moved");
  EXPECT_TRUE(Answers());
}

TEST_F(TheDoor, OpensAgainAfterTheProcessRanOutOfDescriptors) {
  ASSERT_TRUE(Answers());
  std::vector<CDescriptor> clients;
  for (int i = 0; i < 8; ++i) {
    clients.emplace_back(socket(AF_UNIX, SOCK_STREAM | SOCK_CLOEXEC, 0));
  }
  std::vector<CDescriptor> taken;
  rlimit old{};
  ASSERT_EQ(getrlimit(RLIMIT_NOFILE, &old), 0);
  rlimit low = old;
  low.rlim_cur = 128;
  ASSERT_EQ(setrlimit(RLIMIT_NOFILE, &low), 0);
  for (CDescriptor next(dup(0)); next; next = CDescriptor(dup(0))) {
    taken.push_back(std::move(next));
  }
  const auto address = Address(mPath);
  for (const auto& client : clients) {
    EXPECT_EQ(connect(client.Get(), reinterpret_cast<const sockaddr*>(&address), sizeof(address)),
              0);
  }
  taken.clear();
  setrlimit(RLIMIT_NOFILE, &old);
  EXPECT_TRUE(Answers());
}

}  // namespace
