#include <fmt/chrono.h>
#include <fmt/format.h>
#include <json/json.h>

#include <mutex>

#include "platform/rpc/interfaces/diagnostics.h"
#include "platform/rpc/interfaces/genericcontrol.h"
#include "tools/feedbackctl/commands.h"
#include "tools/feedbackctl/services.h"
#include "tools/feedbackctl/settingtext.h"
#include "utils/controltext.h"

namespace {

// Diagnostics keeps the lamp's state but tells nobody when it changes.
constexpr auto kLampInterval = std::chrono::milliseconds(250);

std::string Now() {
  const auto now = std::chrono::floor<std::chrono::milliseconds>(std::chrono::system_clock::now());
  return fmt::format("{:%FT%T}.{:03}Z", fmt::gmtime(std::chrono::system_clock::to_time_t(now)),
                     now.time_since_epoch().count() % 1000);
}

// Threads: any.
class CLines {
 public:
  CLines(std::ostream& out, bool json) : mOut(out), mJson(json) {}

  // An empty value has nothing to say, such as an alive message.
  void Write(const std::string& kind, const std::optional<std::string>& value) {
    const std::lock_guard lock(mMutex);
    if (mJson) {
      Json::Value line;
      line["time"] = Now();
      line["kind"] = kind;
      line["value"] = value ? Json::Value(*value) : Json::Value();
      mOut << JsonText(line) << std::endl;
    } else {
      mOut << Now() << "  " << kind << (value ? "  " + *value : "") << std::endl;
    }
  }

  bool HaveReader() const {
    const std::lock_guard lock(mMutex);
    return mOut.good();
  }

 private:
  mutable std::mutex mMutex;
  std::ostream& mOut;  // guarded by mMutex
  const bool mJson;
};

}  // namespace

int RunWatch(const CInvocation& invocation, const CTool& tool) {
  if (tool.isInterrupted({})) {
    return kDone;
  }
  CLines lines(tool.out, invocation.Has("--json"));
  CServices services(invocation);
  if (const auto why = services.WhyNoAnswer(kControlService); !why.empty()) {
    tool.err << fmt::format("feedbackctl: waiting for the daemon: {}\n", why);
  }
  const auto control = services.Client<IGenericControl>(kControlService);
  control->ConnectReporters(
      [&](const ipc::MState& state) { lines.Write("state", StateToString(state)); },
      [&] { lines.Write("alive", std::nullopt); });

  const auto diagnostics = services.Client<IDiagnostics>(kDiagnosticsService);
  std::optional<std::string> shown;
  do {
    // What diagnostics cannot say for a moment has not changed.
    if (const auto lamp = LampState(*diagnostics); lamp && lamp != shown) {
      lines.Write("lamp", lamp);
      shown = lamp;
    }
  } while (!tool.isInterrupted(kLampInterval) && lines.HaveReader());
  return kDone;
}
