#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <utility>

#include "virtualcharger/scenario/sections.h"

namespace {

using testing::HasSubstr;

TEST(XmlsText, HasNothingThatXmlForbids) {
  const std::vector<std::pair<std::string, std::string>> cases{
      {"a\n\tb", "a\n\tb"},
      {R"(<a b="c">&</a>)", "&lt;a b=&quot;c&quot;&gt;&amp;&lt;/a&gt;"},
      {std::string("\0\x1b[K\r\x7f", 6), R"(\x00\x1b[K\x0d\x7f)"},
      {"ü…😀", "ü…😀"},
      {"\xc3", R"(\xc3)"},                          // cut off
      {"\xc3(", R"(\xc3()"},                        // not continued
      {"\x80", R"(\x80)"},                          // continues nothing
      {"\xc0\xaf", R"(\xc0\xaf)"},                  // longer than need be
      {"\xe0\x80\xaf", R"(\xe0\x80\xaf)"},          // the same
      {"\xed\xa0\x80", R"(\xed\xa0\x80)"},          // half of a pair
      {"\xef\xbf\xbf", R"(\xef\xbf\xbf)"},          // no character
      {"\xf4\x90\x80\x80", R"(\xf4\x90\x80\x80)"},  // behind the last one
  };
  for (const auto& [text, xml] : cases) EXPECT_EQ(XmlText(text), xml);
}

// The name and the verdict of each case.
std::vector<std::string> Verdicts(const STestSuite& suite) {
  std::vector<std::string> verdicts;
  for (const auto& test : suite.cases) {
    verdicts.push_back(test.name + " " + "pfbs"[static_cast<int>(test.verdict)] + " " + test.text);
  }
  return verdicts;
}

class Sections : public testing::Test {
 protected:
  const SScenario mScenario =
      ParseScenario("x", "mark\nsay one\nrepeat 2\nsay two\nmark\nend\nsay three\nmark");
  CSections mSections{"a/x.scenario", mScenario};

  void EnterUpTo(std::size_t step) {
    for (std::size_t place = 0; place <= step; ++place) mSections.Enter(&mScenario.steps[place]);
  }
};

TEST_F(Sections, AreBegunByEachSaying) {
  EnterUpTo(7);
  mSections.Enter(nullptr);
  EXPECT_THAT(Verdicts(mSections.Suite()),
              testing::ElementsAre("the charger starts p ", "one p ", "two p ", "three p ",
                                   "the charger ends p "));
}

TEST_F(Sections, AreSkippedBehindTheOneThatFailed) {
  EnterUpTo(4);
  mSections.Enter(&mScenario.steps[3]);
  mSections.Break(EVerdict::Failed, "x:5: mark\nexpected: <a>", "last & lines");
  const auto suite = mSections.Suite();
  EXPECT_THAT(
      Verdicts(suite),
      testing::ElementsAre("the charger starts p ", "one p ", "two f x:5: mark\nexpected: <a>",
                           "three s not reached", "the charger ends s not reached"));
  const auto xml = SuiteXml(suite);
  for (const auto* part :
       {R"(<testsuite name="x" file="a/x.scenario" tests="5" failures="1" errors="0" skipped="2")",
        R"(<testcase classname="x" name="two" file="a/x.scenario" line="4" time=")",
        "<failure message=\"x:5: mark\">x:5: mark\nexpected: &lt;a&gt;</failure>",
        "<system-out>last &amp; lines</system-out>"}) {
    EXPECT_THAT(xml, HasSubstr(part));
  }
}

TEST_F(Sections, AreAllSkippedWhereNothingCanBePlayed) {
  mSections.SkipAll("no FUSE");
  EXPECT_THAT(Verdicts(mSections.Suite()), testing::Each(testing::EndsWith(" s no FUSE")));
}

}  // namespace
