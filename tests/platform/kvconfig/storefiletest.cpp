#include <gmock/gmock.h>
#include <gtest/gtest.h>
#include <sys/resource.h>
#include <sys/stat.h>

#include <csignal>
#include <optional>
#include <stdexcept>
#include <string>

#include "platform/kvconfig/storefile.h"
#include "tests/platform/kvconfig/storefixture.h"

namespace {

using testing::HasSubstr;
using testing::ThrowsMessage;
using namespace std::string_literals;

class AStoreFile : public StoreFixture {
 protected:
  KvConfig::StoreContent Read(const std::string& text) const {
    return KvConfig::ReadStore(mDirectory.WriteFile("etc/ovra.json", text));
  }
};

TEST_F(AStoreFile, IsNoneWhereverItIsCut) {
  const std::string whole =
      R"({"s": {"a": -1.5e3, "b": [true, null], "c": "\u00e9 \"x"}, "t": {}})";
  for (size_t size = 0; size < whole.size(); ++size) {
    const auto content = Read(whole.substr(0, size));
    EXPECT_FALSE(content.root) << size;
    EXPECT_THAT(content.error, HasSubstr(mStore.string() + ": not a valid store: ")) << size;
  }
  EXPECT_TRUE(Read(whole).root);
}

TEST_F(AStoreFile, IsRefusedWithTheReason) {
  const std::string limit(1024 * 1024 - 8, 'x');
  const auto nested = [](size_t depth) {
    return R"({"a":)" + std::string(depth - 1, '[') + std::string(depth - 1, ']') + "}";
  };
  const struct {
    std::string text;
    const char* reason;  // none: it is taken
  } cases[] = {
      {R"({"a":")" + limit + R"("})", nullptr},
      {R"({"a":")" + limit + R"(x"})", "larger than 1048576 bytes"},
      {std::string(10UL * 1024 * 1024, '['), "larger than"},
      {nested(32), nullptr},
      {nested(33), "stackLimit"},
      {std::string(100'000, '['), "stackLimit"},
      {R"({"a": 1, "a": 1})", "Duplicate key: 'a'"},
      {R"({"a": 1,})", "Missing '}'"},
      {"{} // why", "Extra"},
      {"{}\0"s, "control character"},
      {"{\"a\": \"\0\"}"s, "control character"},
      {"\xEF\xBB\xBF{}", "Line 1"},
      {"[]", "not an object"},
  };
  for (const auto& each : cases) {
    const auto content = Read(each.text);
    EXPECT_EQ(static_cast<bool>(content.root), each.reason == nullptr) << content.error;
    EXPECT_THAT(content.error, HasSubstr(each.reason ? each.reason : ""));
    EXPECT_EQ(content.error.find('\n'), std::string::npos) << content.error;
    EXPECT_LT(content.error.size(), 400U);
  }
}

TEST_F(AStoreFile, ThatCannotBeReadSaysWhy) {
  Shell("mkdir -p etc");
  const std::pair<const char*, const char*> places[] = {
      {"true", "cannot open the store: No such file or directory"},
      {"mkdir etc/ovra.json", "it is not a regular file but a directory"},
      {"mkfifo etc/ovra.json", "but a FIFO"},
      {"ln -s /dev/null etc/ovra.json", "but a device"},
      {"python3 -c 'import socket; socket.socket(socket.AF_UNIX).bind(\"etc/ovra.json\")'",
       "but a socket"},
      {"ln -s nowhere etc/ovra.json", "No such file or directory, where the link leads"},
  };
  for (const auto& [command, reason] : places) {
    Shell(command);
    EXPECT_THAT(KvConfig::ReadStore(mStore).error, HasSubstr(reason));
    Shell("rm -rf etc/ovra.json");
  }
}

// The kernel writes up to the limit and then refuses, as it does on a disk that is full.
void LimitFileSize(rlim_t size) {
  std::signal(SIGXFSZ, SIG_IGN);
  const rlimit limit{size, RLIM_INFINITY};
  setrlimit(RLIMIT_FSIZE, &limit);
}

class AWrittenStore : public StoreFixture {
 protected:
  AWrittenStore() { mDirectory.WriteFile("etc/ovra.json", mBefore); }

  const std::string mBefore = R"({"s": {"a": "é"}, "t": {"x": [0.5, {}]}, "u": 5})";
};

TEST_F(AWrittenStore, DiffersInTheOneKeyAndIsCreatedWhereThereIsNone) {
  Shell("chmod 604 etc/ovra.json; ln -s etc/ovra.json link.json");
  KvConfig::SetStore(mDirectory.Path() / "link.json");
  const auto after = [&](const char* section, const char* key, const Json::Value& value) {
    KvConfig::Write(section, key, value);
    std::string text = KvConfig::ReadStore(mStore).text;
    std::erase_if(text, [](char each) { return each == ' ' || each == '\n'; });
    return text;
  };
  EXPECT_EQ(after("s", "b", true), R"({"s":{"a":"é","b":true},"t":{"x":[0.5,{}]},"u":5})");
  EXPECT_EQ(after("s", "a", 1), R"({"s":{"a":1,"b":true},"t":{"x":[0.5,{}]},"u":5})");
  EXPECT_EQ(after("t", "x", {}), R"({"s":{"a":1,"b":true},"t":{},"u":5})");
  EXPECT_EQ(after("v", "x", {}), R"({"s":{"a":1,"b":true},"t":{},"u":5})");
  Shell("test -L link.json; test $(stat -c %a etc/ovra.json) = 604; rm etc/ovra.json");
  EXPECT_EQ(after("v", "x", 1), R"({"v":{"x":1}})");
}

TEST_F(AWrittenStore, StaysWholeAndAloneWhereTheWriteFails) {
  const struct {
    const char* section;
    Json::Value value;
    const char* reason;
  } cases[] = {
      {"s", 2, "File too large"},
      {"s", 2, "Permission denied"},
      {"s", 2, "not a valid store"},
      {"u", 2, "section \"u\" is not an object"},
      {"s", std::string(1024UL * 1024, 'x'), "larger than"},
  };
  for (const auto& each : cases) {
    const std::string reason = each.reason;
    const std::string before = reason == "not a valid store" ? "{" : mBefore;
    mDirectory.WriteFile("etc/ovra.json", before);
    std::optional<AsNobody> nobody;
    if (reason == "Permission denied") {
      Shell("chmod 0 etc");
      nobody.emplace();
    } else if (reason == "File too large") {
      LimitFileSize(16);
    }
    EXPECT_THAT([&] { KvConfig::Write(each.section, "a", each.value); },
                ThrowsMessage<std::runtime_error>(HasSubstr(reason)));
    nobody.reset();
    LimitFileSize(RLIM_INFINITY);
    Shell("chmod 755 etc; test $(ls -A etc) = ovra.json");
    EXPECT_EQ(KvConfig::ReadStore(mStore).text, before) << reason;
  }
}

}  // namespace
