#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include "tests/support/logcapture.h"
#include "utils/traceentry.h"

class CTracedKettle {
 public:
  void Boil() { TraceEntry<CTracedKettle>("Boil"); }
  void Pour() { TraceEntry<CTracedKettle>("Pour", "[Kettle 1] "); }
};

class CTracedPot {
 public:
  void Boil() { TraceEntry<CTracedPot>("Boil"); }
};

namespace {

using Line = LogCapture::Line;

TEST(ATraceEntry, NamesTheClassAndTheOperationBehindThePrefix) {
  const LogCapture log;
  CTracedKettle().Boil();
  CTracedPot().Boil();
  CTracedKettle().Pour();
  EXPECT_THAT(log.Lines(),
              testing::ElementsAre(Line{Log::ELogLevel::ETrace, "CTracedKettle::Boil"},
                                   Line{Log::ELogLevel::ETrace, "CTracedPot::Boil"},
                                   Line{Log::ELogLevel::ETrace, "[Kettle 1] CTracedKettle::Pour"}));
}

}  // namespace
