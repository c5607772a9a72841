#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <atomic>
#include <future>
#include <stdexcept>
#include <thread>

#include "platform/kvconfig/store.h"
#include "tests/platform/kvconfig/storefixture.h"

namespace {

namespace fs = std::filesystem;
using testing::ElementsAre;
using testing::IsEmpty;

class AFollowedStore : public StoreFixture {
 protected:
  AFollowedStore() { mDirectory.WriteFile("etc/ovra.json", TextWith("start")); }

  static std::string TextWith(const std::string& value) {
    return R"({"s": {"k": ")" + value + R"("}})";
  }

  fs::path At(const std::string& name) const { return mDirectory.Path() / name; }
};

TEST_F(AFollowedStore, DeliversTheDifferenceKeyByKey) {
  auto config = Create(OnChange());
  Heard beginning;
  Heard whole;
  const auto add = [](Heard& heard) {
    return [&heard](const Json::Value& value) { heard.Add(value.toStyledString()); };
  };
  int calls = 0;
  KvConfig::Subscription once;
  once = config->Subscribe("once", "le", [&](const Json::Value&) {
    once.reset();
    ++calls;
  });
  const auto bad = config->Subscribe(
      "bad", "Led", [](const Json::Value&) { throw std::runtime_error("no bulb"); });
  const auto first = config->Subscribe("test", "Led", add(beginning));
  const auto second = config->Subscribe("test", "Led", add(whole), KvConfig::EMatch::EWhole);
  Replace(R"({"s": {"Led": 1, "LedMax": 2, "le": 3}, "t": {"Led": 9}})");
  EXPECT_THAT(mChanges.Until("le="), ElementsAre("Led=1", "LedMax=2", "k=null", "le=3"));
  Replace(R"({"s": {"Led": "1", "LedMax": 2, "le": 4}, "t": {}})");
  mChanges.Until("le=4");
  Replace(R"({"s": {"LedMax": 2, "le": 5}})");
  mChanges.Until("le=5");
  config.reset();  // by then each of them has heard it
  EXPECT_THAT(beginning.Texts(), ElementsAre("1\n", "2\n", "\"1\"\n", "null\n"));
  EXPECT_THAT(whole.Texts(), ElementsAre("1\n", "\"1\"\n", "null\n"));
  EXPECT_EQ(calls, 1);
  EXPECT_EQ(mLog.Count(Log::ELogLevel::EError, "\"bad\" failed: no bulb"), 4U);
  EXPECT_THAT(mErrors.Texts(), IsEmpty());
}

TEST_F(AFollowedStore, IsHeardHoweverItChanges) {
  Shell("mkdir a b; ln -s a current");
  const std::pair<const char*, const char*> ways[] = {
      {"written in place", "cp text etc/ovra.json"},
      {"replaced", "mv text etc/ovra.json"},
      {"hard link", "ln -f text etc/ovra.json"},
      {"directory removed and back", "rm -r etc; mkdir etc; cp text etc/ovra.json"},
      {"directory replaced", "mkdir new; cp text new/ovra.json; mv etc old; mv new etc; rm -r old"},
      {"link", "cp text a/real.json; ln -sfn ../current/real.json etc/ovra.json"},
      {"written behind the link", "cp text a/real.json"},
      {"another directory behind the link", "cp text b/real.json; ln -s b c; mv -T c current"},
  };
  const auto config = Create(OnChange());
  for (const auto& [way, commands] : ways) {
    mDirectory.WriteFile("text", TextWith(way));
    Shell(commands);
    EXPECT_EQ(mChanges.Until(way).back(), std::string("k=") + way);
    EXPECT_EQ(config->GetString("k", ""), way);
  }
}

TEST_F(AFollowedStore, KeepsItsLastGoodValuesWhileItIsBroken) {
  const auto config = Create(OnChange());
  Replace("{");
  EXPECT_EQ(mErrors.Until("not a valid store").size(), 1U);
  EXPECT_EQ(config->GetString("k", ""), "start");
  Replace(R"({"s": []})");
  EXPECT_EQ(mErrors.Until("found [], expected an object").size(), 2U);
  EXPECT_THAT(mChanges.Texts(), ElementsAre("k=null"));
}

TEST_F(AFollowedStore, IsNotBrokenWhileItIsBeingWritten) {
  KvConfig::CStore store(mStore, std::chrono::hours(1));
  const auto listener = std::make_shared<KvConfig::CListener>(KvConfig::ListenerOptions{
      .name = "test", .section = "s", .key = "", .onChange = OnChange(), .onError = OnError()});
  store.Add(listener);
  Replace(TextWith("before"));
  mChanges.Until("k=before");
  for (const char* text : {"", "{", R"({"s": )"}) {
    Replace(text);
  }
  Replace(TextWith("after"));
  mChanges.Until("k=after");
  EXPECT_THAT(mErrors.Texts(), IsEmpty());
}

// The neighbour's events overflow the queue of the watch, so that the store's own are lost.
TEST_F(AFollowedStore, EndsInExactlyOneFinalValueAfterTenThousandRenames) {
  std::promise<void> burstIsOver;
  const auto config = Create([over = burstIsOver.get_future().share(), record = OnChange()](
                                 const std::string& key, const Json::Value& value) {
    record(key, value);
    over.wait();
  });
  Replace(TextWith("first"));
  mChanges.Until("k=first");
  Shell("echo x > etc/0");
  for (int i = 0; i < 10'000; ++i) {
    fs::rename(At("etc") / std::to_string(i % 2), At("etc") / std::to_string((i + 1) % 2));
  }
  mDirectory.WriteFile("other", TextWith("other"));
  for (int i = 0; i < 10'000; ++i) {
    fs::create_hard_link(i % 2 ? At("other") : At("etc/0"), At("next"));
    fs::rename(At("next"), mStore);
  }
  Replace(TextWith("final"));
  burstIsOver.set_value();
  mChanges.Until("k=final");
  Replace(TextWith("sentinel"));
  EXPECT_THAT(mChanges.Until("k=sentinel"), ElementsAre("k=first", "k=final", "k=sentinel"));
  EXPECT_THAT(mErrors.Texts(), IsEmpty());
}

TEST_F(AFollowedStore, BearsSubscribersThatComeAndGoWhileItChanges) {
  const auto config = Create(OnChange());
  std::atomic<bool> stop = false;
  const auto comeAndGo = [&] {
    while (!stop) {
      // Not guarded: the handler is over when its subscription is, which goes first.
      std::string heard;
      const auto subscription = config->Subscribe(
          "test", "k", [&](const Json::Value& value) { heard = value.asString(); });
      config->GetString("k", "");
    }
  };
  std::thread one(comeAndGo);
  std::thread two(comeAndGo);
  for (int i = 0; i < 300; ++i) {
    Replace(TextWith(std::to_string(i)));
  }
  mChanges.Until("k=299");
  stop = true;
  one.join();
  two.join();
}

TEST_F(AFollowedStore, IsWatchedOnceAndLeavesNothingOpen) {
  const auto open = [] {
    const fs::directory_iterator files("/proc/self/fd");
    return std::distance(begin(files), end(files));
  };
  const auto before = open();
  {
    const auto config = Create(OnChange());
    const auto another = Create();
    EXPECT_EQ(open(), before + 2);
    Shell("rm -r etc; mkdir etc");
    Replace(TextWith("new"));
    mChanges.Until("k=new");
  }
  EXPECT_EQ(open(), before);
}

}  // namespace
