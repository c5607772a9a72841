#include "utils/signaltext.h"

#include "utils/texttable.h"

namespace {

using Row = CTextRow<ipc::ESignalIdentifier>;

// clang-format off

constexpr auto kPersistentIds = std::to_array<Row>({
    {ipc::ESignalIdentifierChargeControlPluginCounter,     "PluginCounter"},                  // 33
    {ipc::ESignalIdentifierSafetyMcuRelay1Count,           "Relay1Counter"},                  // 92
    {ipc::ESignalIdentifierSafetyMcuRelay2Count,           "Relay2Counter"},                  // 93
    {ipc::ESignalIdentifierSafetyMcuTemperatureViolations, "TemperatureThresholdViolation"},  // 94
});

constexpr auto kEvents = std::to_array<Row>({
    {ipc::ESignalIdentifierFirmwareUpdated,                 "FirmwareUpdated"},                      // 20000
    {ipc::ESignalIdentifierSystemTimeChanged,               "SettingSystemTime"},                    // 20001
    {ipc::ESignalIdentifierDeviceStarted,                   "StartupOfTheDevice"},                   // 20002
    {ipc::ESignalIdentifierDeviceReset,                     "ResetOrReboot"},                        // 20003
    {ipc::ESignalIdentifierSecurityLogCleared,              "SecurityLogWasCleared"},                // 20004
    {ipc::ESignalIdentifierDeviceMemoryLow,                 "MemoryExhaustion"},                     // 20005
    {ipc::ESignalIdentifierTamperDetected,                  "TamperDetectionActivated"},             // 20006
    {ipc::ESignalIdentifierDeviceRecommissioned,            "Recommissioned"},                       // 20007
    {ipc::ESignalIdentifierAuthenticationFailed,            "CentralSystemFailedToAuthenticate"},    // 20300
    {ipc::ESignalIdentifierSecurityParametersChanged,       "ReconfigurationOfSecurityParameters"},  // 20301
    {ipc::ESignalIdentifierInvalidOcppMessages,             "InvalidMessages"},                      // 20302
    {ipc::ESignalIdentifierInvalidCentralSystemCertificate, "InvalidCentralSystemCertificate"},      // 20303
    {ipc::ESignalIdentifierInvalidTlsVersion,               "InvalidTLSVersion"},                    // 20304
    {ipc::ESignalIdentifierFactoryReset,                    "FactoryReset"},                         // 20305
    {ipc::ESignalIdentifierParametersReconfigured,          "ReconfigurationOfParameter"},           // 20500
    {ipc::ESignalIdentifierSessionStatusChanged,            "SessionStatusChanged"},                 // 20501
    {ipc::ESignalIdentifierUserInteraction,                 "UserActionPerformed"},                  // 20502
    {ipc::ESignalIdentifierConnectivityChanged,             "ConnectivityChanged"},                  // 20503
});

constexpr auto kStatusNotifications = std::to_array<Row>({
    {ipc::ESignalIdentifierChargeControlSocketError,              "LockErr"},                // 1000
    {ipc::ESignalIdentifierChargeControlRelayError,               "RelayOpErr"},             // 1001
    {ipc::ESignalIdentifierChargeControlCpShort,                  "StateE"},                 // 1002
    {ipc::ESignalIdentifierChargeControlPpError,                  "PpErr"},                  // 1003
    {ipc::ESignalIdentifierChargeControlCpLowError,               "CpLowErr"},               // 1004
    {ipc::ESignalIdentifierChargeControlEvTimeoutError,           "EvCd1Timeout"},           // 1005
    {ipc::ESignalIdentifierChargeControlCpOutOfSyncError,         "EvCpSyncErr"},            // 1006
    {ipc::ESignalIdentifierSafetyMcuCommFastReadStartError,       "FastReadStartErr"},       // 1050
    {ipc::ESignalIdentifierSafetyMcuCommSlowReadStartError,       "SlowReadStartErr"},       // 1051
    {ipc::ESignalIdentifierSafetyMcuCommRelayCloseError,          "RelayCloseErr"},          // 1052
    {ipc::ESignalIdentifierSafetyMcuCommRelayOpenError,           "RelayOpenErr"},           // 1053
    {ipc::ESignalIdentifierSafetyMcuCommModbusInitError,          "SmcuCommInitErr"},        // 1054
    {ipc::ESignalIdentifierSafetyMcuCommModbusTerminationError,   "SmcuCommTermErr"},        // 1055
    {ipc::ESignalIdentifierSafetyMcuCommIdReadError,              "CommIDErr"},              // 1056
    {ipc::ESignalIdentifierSafetyMcuEldError,                     "EldErr"},                 // 1057
    {ipc::ESignalIdentifierSafetyMcuRelayError,                   "RelayErr"},               // 1058
    {ipc::ESignalIdentifierSafetyMcuTemperatureError,             "HighTemp"},               // 1059
    {ipc::ESignalIdentifierSafetyMcuWatchdogReset,                "SmcuWdg"},                // 1060
    {ipc::ESignalIdentifierSafetyMcuGroundMonitorError,           "GndErr"},                 // 1061
    {ipc::ESignalIdentifierSafetyMcuTimeout,                      "SmcuTimeout"},            // 1062
    {ipc::ESignalIdentifierSafetyMcuLinkTimeout,                  "SmcuLinkTimeout"},        // 1063
    {ipc::ESignalIdentifierSafetyMcuCommUnreachable,              "SmcuLostComm"},           // 1064
    {ipc::ESignalIdentifierSafetyMcuPfdError,                     "PfdErr"},                 // 1065
    {ipc::ESignalIdentifierBoardControlInitializationError,       "ProcInitFail"},           // 1100
    {ipc::ESignalIdentifierBoardControlProcessCrash,              "ProcCrash"},              // 1102
    {ipc::ESignalIdentifierBoardControlChargeGroupEnableError,    "ChargeGroupEnFail"},      // 1103
    {ipc::ESignalIdentifierBoardControlFatalError,                "SysFatalErr"},            // 1104
    {ipc::ESignalIdentifierInvalidConfigValueError,               "SysConfValueErr"},        // 1105
    {ipc::ESignalIdentifierCableRatingExceeded,                   "CableRatingExceeded"},    // 1252
    {ipc::ESignalIdentifierInstallationLimitExceeded,             "InstallLimExceeded"},     // 1254
    {ipc::ESignalIdentifierPhysicalCurrentLimitExceeded,          "PhysLimExceeded"},        // 1255
    {ipc::ESignalIdentifierPhaseImbalanceExceeded,                "VDEARN4100LimExceeded"},  // 1256
    {ipc::ESignalIdentifierBackofficeCommunicationLost,           "CpoCommLost"},            // 10000
    {ipc::ESignalIdentifierBackofficeMessageStorageFull,          "OcppMsgStorFull"},        // 10001
    {ipc::ESignalIdentifierBackofficeDnsQueryFailed,              "CpoDnsQueryFail"},        // 10002
    {ipc::ESignalIdentifierIncompleteCommissioning,               "NotCommissioned"},        // 10100
    {ipc::ESignalIdentifierNandMemoryLow,                         "NandLow"},                // 10101
    {ipc::ESignalIdentifierSecondaryFirmwareRunning,              "ScndFwBooted"},           // 10102
    {ipc::ESignalIdentifierSecondaryBootloaderRunning,            "ScndBLBooted"},           // 10103
    {ipc::ESignalIdentifierRecoveryBootloaderRunning,             "RcvyBLBooted"},           // 10104
    {ipc::ESignalIdentifierThermalDeratingLimitReached,           "ThermalDeratingLim"},     // 10250
    {ipc::ESignalIdentifierLoadBalancingCommunicationFailure,     "LoadBalCommFail"},        // 10251
    {ipc::ESignalIdentifierImplausibleCtSignalL1,                 "CTL1Implausible"},        // 10260
    {ipc::ESignalIdentifierImplausibleCtSignalL2,                 "CTL2Implausible"},        // 10261
    {ipc::ESignalIdentifierImplausibleCtSignalL3,                 "CTL3Implausible"},        // 10262
    {ipc::ESignalIdentifierHomeWizardNotReachable,                "HomeWizardUnavail"},      // 10263
    {ipc::ESignalIdentifierDynamicLoadBalancingSourceUnusable,    "DLBSrcUnusable"},         // 10264
    {ipc::ESignalIdentifierAccessoryInstallationFailed,           "AccInstallFail"},         // 10265
    {ipc::ESignalIdentifierUnderVoltageL1,                        "UVL1"},                   // 10266
    {ipc::ESignalIdentifierUnderVoltageL2,                        "UVL2"},                   // 10267
    {ipc::ESignalIdentifierUnderVoltageL3,                        "UVL3"},                   // 10268
    {ipc::ESignalIdentifierOverVoltageL1,                         "OVL1"},                   // 10269
    {ipc::ESignalIdentifierOverVoltageL2,                         "OVL2"},                   // 10270
    {ipc::ESignalIdentifierOverVoltageL3,                         "OVL3"},                   // 10271
    {ipc::ESignalIdentifierCurrentControlModbusConnectionFailure, "ModbusConnFail"},         // 10272
    {ipc::ESignalIdentifierCurrentControlModbusReadWriteFailure,  "ModbusRwFail"},           // 10273
    {ipc::ESignalIdentifierBlackoutProtectionFallback,            "BopFallbackUsed"},        // 10274
    {ipc::ESignalIdentifierBlackoutProtectionInvalidConfig,       "BopInvalidCfg"},          // 10275
    {ipc::ESignalIdentifierSolarChargingNotSupported,             "SolarNotSupported"},      // 10276
    {ipc::ESignalIdentifierSolarChargingSourceUnusable,           "SolarSrcUnusable"},       // 10277
    {ipc::ESignalIdentifierGroupLoadBalancingTooManyFollowers,    "LoadBalFollowOverflow"},  // 10278
    {ipc::ESignalIdentifierBlackoutProtectionMeterFailure,        "BopMeterFail"},           // 10280
    {ipc::ESignalIdentifierLteRoamingDisabled,                    "LTERoamDisabled"},        // 10300
    {ipc::ESignalIdentifierSystemTimeNotSynchronized,             "TimeNotSync"},            // 10301
    {ipc::ESignalIdentifierNtpDnsQueryFailed,                     "NtpDnsFail"},             // 10302
    {ipc::ESignalIdentifierModemInitializationFailed,             "ModemInitFail"},          // 10303
    {ipc::ESignalIdentifierSimReadFailed,                         "SimReadFail"},            // 10304
    {ipc::ESignalIdentifierSimPinIncorrect,                       "SimPinFail"},             // 10305
    {ipc::ESignalIdentifierModemFatalError,                       "ModemFatalErr"},          // 10306
    {ipc::ESignalIdentifierNbIotActive,                           "NBIoTActive"},            // 10307
    {ipc::ESignalIdentifierRelayFilterBlockingCharging,           "RelayFilterTripped"},     // 10400
    {ipc::ESignalIdentifierRelayFilterDisabled,                   "RelayFilterOff"},         // 10401
});

// clang-format on

}  // namespace

std::string PersistentIdToString(ipc::ESignalIdentifier identifier) {
  return TextOf(kPersistentIds, identifier, "Unknown ID");
}

std::string EventToString(ipc::ESignalIdentifier identifier) {
  return TextOf(kEvents, identifier, "UnknownStatus");
}

std::string StatusNotificationIdentifierToInfo(ipc::ESignalIdentifier identifier) {
  return TextOf(kStatusNotifications, identifier, "Unspecified");
}

std::ostream& ipc::operator<<(std::ostream& stream, const MDiagnosticsData& data) {
  switch (data.value_case()) {
    case MDiagnosticsData::kBoolValue:
      return stream << (data.bool_value() ? 1 : 0);
    case MDiagnosticsData::kInt32Value:
      return stream << data.int32_value();
    case MDiagnosticsData::kUint32Value:
      return stream << data.uint32_value();
    case MDiagnosticsData::kFloatValue:
      return stream << data.float_value();
    case MDiagnosticsData::kStringValue:
      return stream << data.string_value();
    default:
      return stream;
  }
}

std::ostream& ipc::operator<<(std::ostream& stream, const MDiagnosticsSignal& signal) {
  stream << '[';
  const char* separator = "";
  for (const MDiagnosticsData& data : signal.data()) {
    stream << separator << data;
    separator = ", ";
  }
  return stream << ']';
}
