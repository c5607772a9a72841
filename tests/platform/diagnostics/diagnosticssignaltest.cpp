#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <memory>
#include <string>
#include <vector>

#include "platform/diagnostics/diagnosticscommclient.h"
#include "platform/diagnostics/diagnosticssignal.h"
#include "platform/rpc/communicationexception.h"
#include "tests/support/fakediagnostics.h"

namespace {

using namespace std::chrono_literals;

constexpr CSignalDefinition<float> kFloat{ipc::ESignalIdentifierLightIntensity, "a float", -1.0F,
                                          "nW", ESignalCategory::ECharger};
constexpr CSignalDefinition<std::string> kText{ipc::ESignalIdentifierLedState, "a text", "Unknown",
                                               "", ESignalCategory::EConnector};
constexpr CSignalDefinition<bool> kBool{ipc::ESignalIdentifierBuzzerState, "a bool", false, "",
                                        ESignalCategory::ECharger};
constexpr CSignalDefinition<std::vector<int32_t>> kVector{
    ipc::ESignalIdentifierBuzzerState, "a vector", {}, "", ESignalCategory::ECharger};

class ASignal : public testing::Test {
 protected:
  ASignal() { CDiagnosticsCommClient::Initialize(mService); }
  ~ASignal() override { CDiagnosticsCommClient::Terminate(); }

  const std::shared_ptr<CFakeDiagnostics> mService = std::make_shared<CFakeDiagnostics>();
};

TEST_F(ASignal, BeginsWithItsDefault) {
  CDiagnosticsSignal<float>(&kFloat, ipc::EInstanceTypeAll).Send();
  CDiagnosticsSignal<std::string>(&kText, ipc::EInstanceTypeAll).Send();
  const auto sent = mService->Sent();
  EXPECT_EQ(sent.at(0).data(0).float_value(), -1.0F);
  EXPECT_EQ(sent.at(1).data(0).string_value(), "Unknown");
}

TEST_F(ASignal, GoesOutWithValueTimeIdentifierAndInstance) {
  CDiagnosticsSignal<std::string> signal(&kText, ipc::EInstanceTypeConnector1);
  {
    const auto lock = signal.Lock();
    signal.SetValue("Green/On");
    signal.SetTimestamp(CDiagnosticsSignal<std::string>::TimePoint(5'000'000'007s + 42us));
  }
  signal.Send();
  const auto sent = mService->Sent().at(0);
  EXPECT_EQ(sent.identifier(), 111);
  EXPECT_EQ(sent.instance().instance(), ipc::EInstanceTypeConnector1);
  ASSERT_EQ(sent.data_size(), 1);
  EXPECT_EQ(sent.data(0).string_value(), "Green/On");
  EXPECT_EQ(sent.timestamp().seconds(), 5'000'000'007);
  EXPECT_EQ(sent.timestamp().microseconds(), 42U);
}

TEST_F(ASignal, SentByValueIsStampedWithNow) {
  const auto before = std::chrono::system_clock::now();
  CDiagnosticsSignal<bool>(&kBool, ipc::EInstanceTypeAll).Send(true);
  const auto sent = mService->Sent().at(0);
  EXPECT_TRUE(sent.data(0).bool_value());
  EXPECT_GE(sent.timestamp().seconds(), std::chrono::system_clock::to_time_t(before));
}

TEST_F(ASignal, OfAVectorHasAnEntryAnElement) {
  CDiagnosticsSignal<std::vector<int32_t>>(&kVector, ipc::EInstanceTypeAll).Send({3, -1});
  const auto sent = mService->Sent().at(0);
  ASSERT_EQ(sent.data_size(), 2);
  EXPECT_EQ(sent.data(1).int32_value(), -1);
}

TEST_F(ASignal, ReceivesWhatTheServiceHoldsAndNothingOfAnotherType) {
  ipc::MDiagnosticsSignal held;
  held.set_identifier(ipc::ESignalIdentifierLedState);
  held.add_data()->set_string_value("Red/Blink1");
  mService->Hold(held);
  const CDiagnosticsSignal<std::string> signal(&kText, ipc::EInstanceTypeAll);
  EXPECT_EQ(signal.Receive(), "Red/Blink1");

  held.mutable_data(0)->set_int32_value(1);
  mService->Hold(held);
  EXPECT_THROW(signal.Receive(), Rpc::CommunicationException);
}

TEST_F(ASignal, ThatCannotBeSentOrIsRefusedThrowsTheCommunicationException) {
  CDiagnosticsSignal<bool> signal(&kBool, ipc::EInstanceTypeAll);
  mService->Fail("unreachable");
  EXPECT_THROW(signal.Send(true), Rpc::CommunicationException);
  mService->Recover();
  ipc::MResult refusal;
  refusal.set_result(ipc::EResultIllegal);
  mService->Reply(refusal);
  EXPECT_THROW(signal.Send(true), Rpc::CommunicationException);
  CDiagnosticsCommClient::Terminate();
  EXPECT_FALSE(CDiagnosticsCommClient::IsInitialized());
  EXPECT_THROW(signal.Send(true), Rpc::CommunicationException);
}

}  // namespace
