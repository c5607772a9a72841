// What the daemon told since the mark: its state, one report after the other, and its log.
#include <fmt/format.h>

#include <algorithm>

#include "virtualcharger/scenario/charger.h"
#include "virtualcharger/scenario/names.h"

namespace {

bool Contains(const SLogLine& line, std::string_view text) {
  return line.text.find(text) != std::string::npos;
}

std::string Describe(const SLogLine& line) {
  return fmt::format("{} \"{}\"", LogLevelName(line.level), line.text);
}

}  // namespace

void CCharger::ExpectReport(int state) {
  const auto& reports = mBench.Processes().StateReports();
  const auto expected = "the report " + DaemonStateName(state);
  const auto seen = [&]() -> std::string {
    const auto next = reports.Since(mReportMark);
    if (!next.empty()) return ReportWords(next.front());
    const auto last = reports.Last();
    return last ? "none behind " + ReportWords(*last) : "no report";
  };
  const bool came = Await(
      expected, seen, [&] { return reports.End() > mReportMark; }, kLimit);
  if (!came || reports.Since(mReportMark).front().value != state) Fail(expected, seen());
  ++mReportMark;
}

void CCharger::ExpectNoReport() {
  Await(mBench.Settle());
  const auto reports = mBench.Processes().StateReports().Since(mReportMark);
  if (!reports.empty()) Fail("no report", ReportWords(reports.front()));
}

std::string CCharger::ReportWords(const SLast<int>& report) const {
  return fmt::format("{} at {}", DaemonStateName(report.value), When(report.time));
}

void CCharger::ExpectLog(std::optional<Log::ELogLevel> level, const std::string& text,
                         Limit within) {
  auto& log = mBench.Processes().DaemonLog();
  const auto& lines = log.Lines();
  const auto find = [&] {
    return std::ranges::find_if(lines, [&](const SLogLine& line) {
      return (!level || line.level == *level) && Contains(line, text);
    });
  };
  const auto limit = LimitOf(within);
  const auto expected = fmt::format("{} \"{}\"{}", level ? LogLevelName(*level) : "the log's line",
                                    text, limit.words);
  const auto seen = [&] {
    if (find() != lines.end()) return "it at " + When(find()->time);
    return lines.empty() ? "no line"
                         : fmt::format("{} others, at last {} at {}", lines.size(),
                                       Describe(lines.back()), When(lines.back().time));
  };
  Await(
      expected, seen, [&] { return find() != lines.end(); }, limit.Rest());
  const auto found = find();
  if (found == lines.end() || found->time > limit.latest) Fail(expected, seen());
  log.Forget(static_cast<std::size_t>(found - lines.begin()));
}

void CCharger::ExpectNoLog(Log::ELogLevel level, const std::string& text) {
  Await(mBench.Settle());
  auto& log = mBench.Processes().DaemonLog();
  log.Read(false);
  for (const auto& line : log.Lines()) {
    if (line.level < level || !Contains(line, text) || IsOfSettling(line.text)) continue;
    Fail(fmt::format("no {}{}", LogLevelName(level),
                     text.empty() ? " or worse" : fmt::format(" or worse with \"{}\"", text)),
         fmt::format("{} at {}", Describe(line), When(line.time)));
  }
}
