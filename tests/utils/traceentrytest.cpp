#include <gmock/gmock.h>

#include "tests/support/logcapture.h"
#include "utils/traceentry.h"

class CTracedKettle {};
class CTracedPot {};

namespace {

using Line = LogCapture::Line;

TEST(ATraceEntry, NamesTheClassAndTheOperationBehindThePrefix) {
  const LogCapture log;
  TraceEntry<CTracedKettle>("Boil");
  TraceEntry<CTracedPot>("Pour", "[Pot 1] ");
  EXPECT_THAT(log.Lines(),
              testing::ElementsAre(Line{Log::ELogLevel::ETrace, "CTracedKettle::Boil"},
                                   Line{Log::ELogLevel::ETrace, "[Pot 1] CTracedPot::Pour"}));
}

}  // namespace
