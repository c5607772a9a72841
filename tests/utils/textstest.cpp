#include <gtest/gtest.h>

#include <functional>
#include <map>
#include <optional>
#include <set>
#include <sstream>
#include <string>

#include "utils/chargertext.h"
#include "utils/connectortext.h"
#include "utils/controltext.h"
#include "utils/currentcontroltext.h"
#include "utils/instance.h"
#include "utils/servicenames.h"
#include "utils/signaltext.h"

namespace {

struct CTexts {
  const char* name;
  std::function<std::string(int)> text;
  std::string fallback;
  size_t named;  // how many values have a text of their own
  std::map<int, std::string> samples;
};

template <typename Enumeration>
std::function<std::string(int)> Of(std::string (*text)(Enumeration)) {
  return [text](int value) { return text(static_cast<Enumeration>(value)); };
}

// clang-format off
const CTexts kTexts[] = {
    {"state", Of<ipc::EState>(StateToString), "unknown state", 7, {{0, "Invalid"}, {5, "FatalError"}}},
    {"source", Of<ipc::ECurrentControlSource>(SourceToString), "Unknown source", 20,
     {{0, "Unknown source"}, {4, "ECurrentControlBop"}, {21, "ECurrentControlDynamicTariffCharging"}}},
    {"cp", Of<ipc::ECpState>(CpStateToString), "unknown state", 7, {{2, "State C"}}},
    {"pp", Of<ipc::EPpState>(PpStateToString), "unknown state", 7, {{4, "63/70A"}}},
    {"result", Of<ipc::EResult>(ResultToString), "unknown result", 2, {{1, "Illegal"}}},
    {"mcu", Of<ipc::EMcuControlState>(McuStatusToString), "unknown status", 6,
     {{5, "unknown status"}, {15, "Error"}}},
    {"relay", Of<ipc::ERelayState>(RelayStatusToString), "unknown status", 2, {{1, "Enabled"}}},
    {"mcu error", Of<ipc::EMcuControlError>(ErrorToString), "unknown status", 8,
     {{7, "unknown status"}, {9, "EMcuControlErrorPFD"}}},
    {"update", Of<ipc::EFwUpdateStatus>(FwUpdateStatusToString), "Unknown status", 11,
     {{0, "Success"}, {7, "Error: No space available for needed files"}}},
    {"persistent", Of<ipc::ESignalIdentifier>(PersistentIdToString), "Unknown ID", 4,
     {{33, "PluginCounter"}, {94, "TemperatureThresholdViolation"}}},
    {"event", Of<ipc::ESignalIdentifier>(EventToString), "UnknownStatus", 18,
     {{20000, "FirmwareUpdated"}, {20304, "InvalidTLSVersion"}, {20504, "UnknownStatus"}}},
    {"feedback", Of<ipc::EFbEventType>(FbEventTypeToString), "Unknown", 4, {{2, "TagSwipe"}}},
    {"notification", Of<ipc::ESignalIdentifier>(StatusNotificationIdentifierToInfo), "Unspecified", 72,
     {{1004, "CpLowErr"}, {1065, "PfdErr"}, {1101, "Unspecified"}, {1106, "Unspecified"},
      {1253, "Unspecified"}, {1400, "Unspecified"}, {2000, "Unspecified"}, {10100, "NotCommissioned"},
      {10271, "OVL3"}, {10279, "Unspecified"}, {10401, "RelayFilterOff"}, {11000, "Unspecified"}}},
};
// clang-format on

TEST(TheTextOfAnEnumeration, IsTheValuesOwnOrTheFallback) {
  for (const CTexts& texts : kTexts) {
    SCOPED_TRACE(texts.name);
    std::set<std::string> named;
    for (int value = -1; value < 21000; ++value) {
      if (const std::string text = texts.text(value); text != texts.fallback) {
        EXPECT_TRUE(named.insert(text).second) << value << " reads " << text << " as another does";
      }
    }
    EXPECT_EQ(named.size(), texts.named);
    for (const auto& [value, text] : texts.samples) {
      EXPECT_EQ(texts.text(value), text);
    }
  }
}

TEST(TheTextOfACurrentControlSource, HasAReadableFormForEachName) {
  std::set<std::optional<std::string>> readable;
  for (int source = 2; source <= 21; ++source) {
    readable.insert(SignalValueToHumanReadableString(
        SourceToString(static_cast<ipc::ECurrentControlSource>(source))));
  }
  EXPECT_EQ(readable.size(), 20U);
  EXPECT_EQ(SignalValueToHumanReadableString("ECurrentControlBop"), "Dynamic load balancing");
  EXPECT_EQ(SignalValueToHumanReadableString("Unknown source"), std::nullopt);
}

TEST(TheTextOfARecord, NamesItsFields) {
  ipc::MConnectorInfo info;
  info.mutable_state()->set_state(ipc::EConnectorStateCharging);
  info.mutable_session()->set_session_id("S1");
  info.mutable_session()->set_authorized(true);
  info.mutable_reservation()->set_reservation_id(4294967295);
  info.mutable_reservation()->set_expiration_date("tomorrow");
  info.mutable_reservation()->set_id_token("T1");
  EXPECT_EQ(ConnectorInfoToString(info),
            "State: EConnectorStateCharging, Session Info: (Session Id: S1, Authorized: true), "
            "Reservation Info: (Reservation Id: 4294967295, Expiration Date: tomorrow, Id Token: "
            "T1)");

  ipc::MFwUpdateStatus update;
  update.set_old_firmware("1.0");
  update.set_new_firmware("1.1");
  EXPECT_EQ(FwUpdateStatusToString(update), "Success, old FW: 1.0, new FW: 1.1");
  update.set_status(ipc::EFwUpdateStatusNotIdle);
  EXPECT_EQ(FwUpdateStatusToString(update), "Error: System is not idle");

  EXPECT_EQ(SmcuHashToString(0x1a2b, true), "1a2b - dirty");
  EXPECT_EQ(SmcuHashToString(0xFFFFFFFFFFFFFFFF, false), "ffffffffffffffff");
  EXPECT_EQ(GetMeterServiceName(1), "Meter1");
  EXPECT_EQ(GetConnectorSpecificServiceName("Socket", 255), "Socket255");
}

TEST(TheTextOfASignal, ListsItsValues) {
  ipc::MDiagnosticsSignal signal;
  signal.add_data()->set_bool_value(true);
  signal.add_data()->set_int32_value(-1);
  signal.add_data()->set_uint32_value(4294967295);
  signal.add_data()->set_int64_value(7);
  signal.add_data()->set_float_value(1.5F);
  signal.add_data()->set_string_value("abc");
  signal.add_data();
  std::ostringstream stream;
  stream << signal << ipc::MDiagnosticsSignal();
  EXPECT_EQ(stream.str(), "[1, -1, 4294967295, , 1.5, abc, ][]");
}

TEST(ARecord, EqualsAnotherWhenAllFieldsDo) {
  ipc::MAuthorizeRequest request;
  const ipc::MAuthorizeRequest empty;
  request.mutable_instance()->set_instance(ipc::EInstanceTypeConnector1);
  EXPECT_NE(request, empty);
  EXPECT_NE(request.instance(), empty.instance());
  request = empty;
  EXPECT_EQ(request, empty);
  request.set_id_token("T1");
  EXPECT_NE(request, empty);
}

}  // namespace
