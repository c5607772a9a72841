#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <fstream>

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

}  // namespace
