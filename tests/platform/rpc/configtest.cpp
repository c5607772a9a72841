#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <mutex>

#include "platform/rpc/communicationconfig.h"
#include "platform/rpc/log.h"
#include "tests/support/temporarydirectory.h"

namespace {

using testing::ElementsAre;
using testing::HasSubstr;
using testing::IsEmpty;

class CollectingLogger : public Rpc::ILogger {
 public:
  void Critical(const std::string& message) override { mErrors.push_back(message); }
  void Error(const std::string& message) override { mErrors.push_back(message); }
  void Warning(const std::string&) override {}
  void Info(const std::string&) override {}
  void Debug(const std::string&) override {}
  void Trace(const std::string&) override {}

  std::vector<std::string> mErrors;
};

class TheCommunicationSection : public testing::Test {
 protected:
  TheCommunicationSection() { Rpc::SetLogger(mLogger); }
  ~TheCommunicationSection() override { Rpc::SetLogger(nullptr); }

  Rpc::CommunicationConfig Read(const std::string& text) {
    mLogger->mErrors.clear();
    return Rpc::ReadCommunicationConfig(mDirectory.WriteFile("ovra.json", text));
  }

  const TemporaryDirectory mDirectory;
  const std::shared_ptr<CollectingLogger> mLogger = std::make_shared<CollectingLogger>();
};

TEST_F(TheCommunicationSection, IsReadKeyByKey) {
  const auto config = Read(R"({"settings": {}, "communication": {
      "SocketDirectory": "/tmp/sockets", "AllowedUsers": ["root", "4711"], "MaxConnections": 7}})");
  EXPECT_EQ(config.socketDirectory, "/tmp/sockets");
  EXPECT_THAT(config.allowedUsers, ElementsAre(0, 4711));
  EXPECT_EQ(config.maxConnections, 7);
  EXPECT_THAT(mLogger->mErrors, IsEmpty());
}

TEST_F(TheCommunicationSection, HasDefaultsWithoutAWordWhereItIsMissing) {
  for (const char* text : {"{}", R"({"communication": {}})", R"({"communication": null})"}) {
    EXPECT_EQ(Read(text).socketDirectory, "/run/ovra");
    EXPECT_THAT(mLogger->mErrors, IsEmpty()) << text;
  }
  EXPECT_EQ(Rpc::ReadCommunicationConfig("/nowhere").socketDirectory, "/run/ovra");
}

TEST_F(TheCommunicationSection, NamesWhatDoesNotFitAndUsesTheDefault) {
  const struct {
    const char* text;
    std::vector<const char*> named;
  } cases[] = {
      {R"({"communication": 5})", {"\"communication\"", "found 5", "an object"}},
      {R"({"communication": {"SocketDirectory": 5}})", {"\"SocketDirectory\"", "found 5"}},
      {R"({"communication": {"SocketDirectory": "run"}})", {"found \"run\"", "absolute"}},
      {R"({"communication": {"AllowedUsers": "root"}})", {"\"AllowedUsers\"", "a list"}},
      {R"({"communication": {"AllowedUsers": ["no such user"]}})", {"found \"no such user\""}},
      {R"({"communication": {"AllowedUsers": [0]}})", {"found 0", "as text"}},
      {R"({"communication": {"MaxConnections": 0}})", {"\"MaxConnections\"", "found 0", "1 to"}},
      {R"({"communication": {"MaxConnections": 1025}})", {"found 1025"}},
      {R"({"communication": {"MaxConnections": "7"}})", {"found \"7\""}},
      {R"({"communication": {}, })", {"not a valid store"}},
      {"", {"not a valid store"}},
      {"[]", {"not a valid store"}},
  };
  for (const auto& each : cases) {
    const auto config = Read(each.text);
    EXPECT_EQ(config.socketDirectory, "/run/ovra") << each.text;
    EXPECT_THAT(config.allowedUsers, IsEmpty()) << each.text;
    EXPECT_EQ(config.maxConnections, Rpc::CommunicationConfig().maxConnections) << each.text;
    ASSERT_EQ(mLogger->mErrors.size(), 1U) << each.text;
    EXPECT_THAT(mLogger->mErrors[0], HasSubstr("ovra.json"));
    for (const char* part : each.named) {
      EXPECT_THAT(mLogger->mErrors[0], HasSubstr(part)) << each.text;
    }
  }
}

}  // namespace
