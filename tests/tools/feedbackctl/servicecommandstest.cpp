#include <json/json.h>
#include <sys/socket.h>
#include <sys/un.h>

#include <algorithm>
#include <filesystem>
#include <utility>
#include <vector>

#include "platform/os/descriptor.h"
#include "platform/rpc/interfaces/genericcontrol.h"
#include "platform/rpc/interfaces/logconfig.h"
#include "tests/support/fakediagnostics.h"
#include "tests/tools/feedbackctl/toolfixture.h"
#include "tools/feedbackctl/watchview.h"
#include "utils/signalcatalogue.h"

namespace {

using testing::HasSubstr;
using testing::MatchesRegex;

ipc::MResult Refused(const std::string& text) {
  ipc::MResult result;
  result.set_result(ipc::EResultIllegal);
  result.set_text(text);
  return result;
}

// A daemon that refuses to be enabled.
class Control : public IGenericControl {
 public:
  ipc::MResult Enable() override { return Refused("not yet"); }
  ipc::MResult Disable() override { return {}; }
  void ReportState(const ipc::MState& state) override { mStateReporter(state); }
  void SendAlive() override { mAliveReporter(); }

  void Report(ipc::EState state) {
    ipc::MState report;
    report.set_state(state);
    ReportState(report);
  }
};

class LogConfig : public ILogConfig {
 public:
  ipc::MResult SetLogConfig(const ipc::MLogConfig& config) override {
    mConfig.MergeFrom(config);
    return {};
  }
  ipc::MLogConfig GetLogConfig() override { return mConfig; }

 private:
  ipc::MLogConfig mConfig;
};

// What the tool prints, line by line, on whichever thread: kind and value.
class LineSink : public std::stringbuf {
 public:
  std::vector<std::string> Seen() const {
    const std::lock_guard lock(mMutex);
    return mSeen;
  }

  bool HasSeen(const std::string& line) const { return std::ranges::count(Seen(), line) > 0; }

 protected:
  int sync() override {
    if (str().empty()) return 0;
    Json::Value line;
    std::istringstream(str()) >> line;
    str("");
    const std::lock_guard lock(mMutex);
    const auto seen = line["kind"].asString() + " " + line["value"].asString();
    if (seen != "alive " || std::ranges::count(mSeen, seen) == 0) mSeen.push_back(seen);
    return 0;
  }

 private:
  mutable std::mutex mMutex;
  std::vector<std::string> mSeen;  // guarded by mMutex
};

class TheTool : public ToolFixture {
 protected:
  TheTool() {
    WriteStore("{\"communication\": {\"SocketDirectory\": \"" + mSockets.Path() + "\"}}");
  }

  std::unique_ptr<RunningHost> StartDaemon() {
    auto host = std::make_unique<RunningHost>(mSockets, [&](Host& services) {
      services.AddService<IGenericControl>("FeedbackGenCtrl", mControl);
      services.AddService<ILogConfig>("FeedbackLog", std::make_shared<LogConfig>());
      services.AddService<IFeedback>(
          "Feedback", std::make_shared<ServedFeedback>([](const auto& event, const auto& instance) {
            return Refused("event " + std::to_string(event.event()) + " at " +
                           std::to_string(instance.instance()));
          }));
      services.AddService<IDiagnostics>("Diagnostics", mDiagnostics);
    });
    mControl->Report(ipc::EStateEnabled);
    return host;
  }

  void ShowLamp(const std::string& text) {
    ipc::MDiagnosticsSignal signal;
    signal.set_identifier(Signals::LedState.identifier);
    signal.add_data()->set_string_value(text);
    mDiagnostics->Hold(signal);
  }

  const std::shared_ptr<Control> mControl = std::make_shared<Control>();
  const std::shared_ptr<CFakeDiagnostics> mDiagnostics = std::make_shared<CFakeDiagnostics>();
};

TEST_F(TheTool, ShowsTheStatusOfTheDaemonAndItsPeers) {
  const auto daemon = StartDaemon();
  ShowLamp("Green/On");
  EXPECT_EQ(Run({"log-level", "debug"}).status, kDone);
  const auto outcome = Run({"status"});
  EXPECT_EQ(outcome.status, kDone);
  EXPECT_THAT(outcome.out, MatchesRegex("state      Enabled\n"
                                        "log level  debug, console off\n"
                                        "lamp       Green/On\n"
                                        "services in [^\n]*:\n"
                                        "  FeedbackGenCtrl  answers\n"
                                        "  FeedbackLog      answers\n"
                                        "  Feedback         answers\n"
                                        "  Diagnostics      answers\n"
                                        "  SessionManager   no socket [^\n]*/SessionManager\n"
                                        "  Meter1           no socket [^\n]*/Meter1\n"));
  Json::Value json;
  std::istringstream(Run({"status", "--json"}).out) >> json;
  EXPECT_EQ(json["state"].asString() + ' ' + json["lamp"].asString(), "Enabled Green/On");
  EXPECT_TRUE(json["services"]["Feedback"]["answers"].asBool());
  EXPECT_THAT(json["services"]["Meter1"]["reason"].asString(), HasSubstr("no socket"));
}

TEST_F(TheTool, PassesTheVerdictOn) {
  const auto daemon = StartDaemon();
  const struct {
    std::vector<std::string> words;
    int status;
    const char* text;
  } kCases[] = {
      {{"disable"}, kDone, "taken"},
      {{"enable"}, kFailed, "refused: Illegal: not yet"},
      {{"trigger", "auth-failure"}, kFailed, "refused: Illegal: event 1 at 0"},
      {{"trigger", "identify", "--instance", "1"}, kFailed, "refused: Illegal: event 3 at 1"},
  };
  for (const auto& [words, status, text] : kCases) {
    const auto outcome = Run(words);
    EXPECT_EQ(outcome.status, status) << text;
    EXPECT_THAT(outcome.out + outcome.err, HasSubstr(text));
  }
}

TEST_F(TheTool, SaysWhatToDoWhenTheDaemonIsNotThere) {
  const std::vector<std::vector<std::string>> commands{
      {"status"}, {"enable"}, {"disable"}, {"trigger", "identify"}, {"log-level"}};
  for (const auto& words : commands) {
    const auto outcome = Run(words);
    EXPECT_EQ(outcome.status, kFailed) << words[0];
    EXPECT_THAT(outcome.err, MatchesRegex("feedbackctl: the daemon is not running: no socket .*; "
                                          "start it, or say with --root or --charger .*\n"));
  }
  std::filesystem::remove(mRoot.Path() / "etc/ovra.json");
  EXPECT_THAT(Run({"disable"}).err, HasSubstr("no store " + mRoot.Path().string()));
}

TEST_F(TheTool, TellsADaemonThatHangsFromOneThatIsNotThere) {
  std::filesystem::create_directories(mSockets.Path());
  sockaddr_un address{};
  address.sun_family = AF_UNIX;
  mSockets.Socket("FeedbackGenCtrl").copy(address.sun_path, sizeof address.sun_path - 1);
  CDescriptor listener(socket(AF_UNIX, SOCK_STREAM | SOCK_CLOEXEC, 0));
  ASSERT_EQ(bind(listener.Get(), reinterpret_cast<sockaddr*>(&address), sizeof address), 0);
  ASSERT_EQ(listen(listener.Get(), 1), 0);
  EXPECT_THAT(Run({"enable"}).err, HasSubstr("/FeedbackGenCtrl does not answer"));
  listener.Reset();
  EXPECT_THAT(Run({"enable"}).err, HasSubstr("not running: nobody listens on"));
}

TEST_F(TheTool, WatchesFromBeforeTheDaemonIsThereToAfterItsEnd) {
  const auto gone =
      "daemon not there: no socket " + mSockets.Socket("FeedbackLog") + "; waiting for it";
  std::unique_ptr<RunningHost> daemon;
  ShowLamp("Green/On");
  LineSink sink;
  std::ostream out(&sink);
  std::ostringstream err;
  const auto limit = std::chrono::steady_clock::now() + kGenerous;
  // Goes on until everything was seen: each step comes when the one before it was.
  const auto isInterrupted = [&](auto) {
    if (!sink.HasSeen("state Enabled")) {
      if (!daemon && sink.HasSeen(gone)) daemon = StartDaemon();
    } else if (daemon) {
      mControl->SendAlive();
      if (sink.HasSeen("lamp Green/On")) ShowLamp("Red/Blink4");
      if (sink.HasSeen("lamp Red/Blink4")) mControl->Report(ipc::EStateDisabled);
      if (sink.HasSeen("alive ") && sink.HasSeen("state Disabled")) daemon.reset();
    }
    return std::ranges::count(sink.Seen(), gone) == 2 || std::chrono::steady_clock::now() > limit;
  };
  EXPECT_EQ(
      RunTool({"watch", "--json", "--root", mRoot.Path().string()}, {out, err, isInterrupted}),
      kDone);
  EXPECT_THAT(sink.Seen(), testing::UnorderedElementsAre(
                               gone, "daemon answers", "state Enabled", "alive ", "lamp Green/On",
                               "lamp Red/Blink4", "state Disabled", gone));
  EXPECT_EQ(err.str(), "");
}

TEST_F(TheTool, ShowsWhatItWatchesInABlockAtTheEndOfATerminal) {
  std::ostringstream out;
  std::ostringstream err;
  const auto view = MakeWatchView({}, {out, err, {}, [] { return 31; }, true});
  SWatched now;
  const auto change = [&](const char* kind, const char* value) {
    now.values[kind] = value;
    now.last = {"12:00", kind, value};
    view->Show(now.last, now);
    return std::exchange(out, std::ostringstream()).str();
  };
  change("state", "Enabled");
  EXPECT_EQ(change("lamp", "Red/Blink4"),
            "\x1b[5F\x1b[J"
            "12:00  lamp    \x1b[48;2;255;0;0m    \x1b[0m Red/Blink4\n"
            "------------------------------\n"
            "daemon  Enabled         alive \n"
            "lamp    \x1b[48;2;255;0;0m    \x1b[0m Red/Blink4\n"
            "buzzer  unknown         light \n"
            "last    12:00 lamp Red/Blink4\n");
  EXPECT_THAT(change("daemon", "not there"), HasSubstr("\ndaemon  not there "));
}

}  // namespace
