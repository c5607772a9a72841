#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include "platform/rpc/interfaces/meter.h"
#include "tests/platform/rpc/hosts.h"
#include "tests/virtualcharger/peers/events.h"
#include "virtualcharger/peers/virtualmeter.h"

namespace {

using testing::Optional;

TEST(AVirtualMeter, ReportsEachBrightnessThatItTakes) {
  Arrivals<std::string> events;
  const auto meter = std::make_shared<CVirtualMeter>(Into(events));
  const SocketDirectory directory;
  const RunningHost server(directory,
                           [&](Host& host) { host.AddService<IMeter>("Meter1", meter); });
  RunningHost client(directory);
  const auto remote = client.Client<IMeter>("Meter1");
  const auto set = [&](std::uint32_t percentage) {
    ipc::MDisplayBrightness brightness;
    brightness.set_percentage(percentage);
    return remote->SetDisplayBrightness(brightness).result();
  };

  EXPECT_EQ(set(40), ipc::EResultOk);
  EXPECT_THAT(events.Next(), Optional(std::string("display 40")));
  meter->Refuse(true);
  EXPECT_NE(set(50), ipc::EResultOk);
  meter->Refuse(false);
  for (const auto* event : {"accepts 0", "accepts 1"}) {
    EXPECT_THAT(events.Next(), Optional(std::string(event)));
  }
  EXPECT_EQ(set(100), ipc::EResultOk);
  EXPECT_THAT(events.Next(), Optional(std::string("display 100")));
}

}  // namespace
