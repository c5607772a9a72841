#include "tools/feedbackctl/watchview.h"

#include <fmt/format.h>

#include <algorithm>
#include <functional>
#include <utility>

#include "tools/feedbackctl/settingtext.h"
#include "tools/feedbackctl/swatch.h"

namespace {

// Moves to the line's begin that many lines up and clears from there on.
constexpr auto kBack = "\x1b[{}F\x1b[J";

std::string Line(const SChange& change, bool hasColours) {
  return fmt::format("{}  {:<6}  {}{}\n", change.time, change.kind,
                     Swatch(ShownText(change.value), hasColours), ShownText(change.value));
}

class CJsonLines : public IWatchView {
 public:
  explicit CJsonLines(std::ostream& out) : mOut(out) {}

  void Show(const SChange& change, const SWatched& /*now*/) override {
    Json::Value line;
    line["time"] = change.time;
    line["kind"] = change.kind;
    line["value"] = change.value;
    mOut << JsonText(line) << std::endl;
  }

 private:
  std::ostream& mOut;
};

class CPlainLines : public IWatchView {
 public:
  explicit CPlainLines(std::ostream& out) : mOut(out) {}

  void Show(const SChange& change, const SWatched& /*now*/) override {
    if (change.kind != "alive") {
      mOut << Line(change, false) << std::flush;
    }
  }

 private:
  std::ostream& mOut;
};

// The block stays at the end; lines that are to stay are written where it was, and it below them.
class CLiveView : public IWatchView {
 public:
  explicit CLiveView(const CTool& tool)
      : mOut(tool.out), mColumns(tool.columns), mHasColours(tool.hasColours) {}

  void Show(const SChange& change, const SWatched& now) override {
    std::string text = mShownLines == 0 ? "" : fmt::format(kBack, mShownLines);
    if (change.kind != "alive" && change.kind != "light") {
      text += Line(change, mHasColours);
    }
    const std::string lamp = Value(now, "lamp");
    mShownLines = 0;
    text += Cut(std::string(Width(), '-'));
    text += Cut(fmt::format("daemon  {:<14}  alive  {}", State(now), now.alive));
    text += Swatched("lamp    ", lamp);
    text +=
        Cut(fmt::format("buzzer  {:<14}  light  {}", Value(now, "buzzer"), Value(now, "light")));
    text += Cut(
        fmt::format("last    {} {} {}", now.last.time, now.last.kind, ShownText(now.last.value)));
    mOut << text << std::flush;
  }

 private:
  static std::string Value(const SWatched& now, const std::string& kind) {
    const auto found = now.values.find(kind);
    return found == now.values.end() ? "unknown" : ShownText(found->second);
  }

  static std::string State(const SWatched& now) {
    const auto daemon = now.values.find("daemon");
    return daemon == now.values.end() || daemon->second == "answers" ? Value(now, "state")
                                                                     : "not there";
  }

  // Some terminals go on to the next line when the last column is written.
  std::size_t Width() const { return static_cast<std::size_t>(std::max(mColumns() - 1, 1)); }

  // A line that the terminal broke would be one more than is taken back.
  std::string Cut(const std::string& line) {
    ++mShownLines;
    return line.substr(0, Width()) + '\n';
  }

  // The swatch takes cells, but fewer than it has letters.
  std::string Swatched(const std::string& name, const std::string& ledState) {
    const auto swatch = Swatch(ledState, mHasColours);
    constexpr std::size_t kSwatchCells = 5;
    const bool hasRoom = name.size() + kSwatchCells + ledState.size() <= Width();
    if (!hasRoom) {
      return Cut(name + ledState);
    }
    ++mShownLines;
    return name + swatch + ledState + '\n';
  }

  std::ostream& mOut;
  const std::function<int()> mColumns;
  const bool mHasColours;
  int mShownLines = 0;
};

}  // namespace

std::unique_ptr<IWatchView> MakeWatchView(const CInvocation& invocation, const CTool& tool) {
  if (invocation.Has("--json")) {
    return std::make_unique<CJsonLines>(tool.out);
  }
  if (tool.columns() > 0) {
    return std::make_unique<CLiveView>(tool);
  }
  return std::make_unique<CPlainLines>(tool.out);
}
