#include <gmock/gmock.h>
#include <gtest/gtest.h>
#include <sys/stat.h>

#include <fstream>
#include <iterator>

#include "tests/support/temporarydirectory.h"
#include "virtualcharger/scenario/daemonlog.h"

namespace {

TEST(ALogLine, IsTakenApart) {
  const auto line =
      ParseLogLine("12:52:07.652 warning  lightsensor     (src/x:206) [Connector 1] Text");
  ASSERT_TRUE(line);
  EXPECT_EQ(line->level, Log::ELogLevel::EWarning);
  EXPECT_EQ(line->thread, "lightsensor");
  EXPECT_EQ(line->text, "(src/x:206) [Connector 1] Text");
  for (const auto* other : {"", "text", "12:52:07 warning x y", "12:52:07.652 loud x y",
                            "12:52:07.65x info x y", "12:52:07.652"}) {
    EXPECT_FALSE(ParseLogLine(other)) << other;
  }
}

TEST(TheDaemonsLog, IsTakenInAsItGrows) {
  const TemporaryDirectory directory;
  const auto path = directory.Path() / "log";
  CDaemonLog log(path);
  log.Read(false);
  std::ofstream file(path);
  const auto texts = [&] {
    file.flush();
    log.Read(false);
    std::vector<std::string> all;
    for (const auto& line : log.Lines()) all.push_back(line.text);
    return all;
  };
  file << "begun\n12:00:00.000 info     main            one\n  and more\n12:00:00.000 err";
  EXPECT_THAT(texts(), testing::ElementsAre("one\n  and more"));
  file << "or    main            two\n";
  EXPECT_THAT(texts(), testing::ElementsAre("one\n  and more", "two"));
  log.Forget(0);
  EXPECT_THAT(texts(), testing::ElementsAre("two"));
  log.ForgetAll();
  EXPECT_THAT(texts(), testing::IsEmpty());
}

TEST(TheDaemonsLog, TakesNoMoreSpaceThanItsNewestPart) {
  const TemporaryDirectory directory;
  const auto path = directory.Path() / "log";
  std::ofstream file(path, std::ios::app);
  CDaemonLog log(path);
  const std::string line = "12:00:00.000 info     main            " + std::string(980, 'x') + '\n';
  for (std::uint64_t size = 0; size < 4 * CDaemonLog::kKept; size += line.size()) file << line;
  const auto space = [&] {
    file.flush();
    struct stat status {};
    EXPECT_EQ(stat(path.c_str(), &status), 0);
    return static_cast<std::uint64_t>(status.st_blocks) * 512;
  };
  const auto before = space();
  log.Read(false);
  log.ForgetAll();
  log.GiveBack();
  if (space() == before) GTEST_SKIP() << "this file system has no holes";
  EXPECT_LT(space(), 2 * CDaemonLog::kKept);
  std::ifstream newest(path, std::ios::ate);
  newest.seekg(-static_cast<std::streamoff>(line.size()), std::ios::end);
  EXPECT_EQ(std::string(std::istreambuf_iterator<char>(newest), {}), line);
  file << "12:00:00.000 info     main            one" << std::string(1024UL * 1024, 'x') << '\n'
       << std::flush;
  log.Read(false);
  ASSERT_EQ(log.Lines().size(), 1U);
  EXPECT_LT(log.Lines().back().text.size(), 100U * 1024);
}

}  // namespace
