"""Every text that the daemon logs: exactly as written here and at its level, in the runs below or,
where nothing outside leads to it, in the unit test that is named."""

import pathlib
import re
import unittest

from ipc import diagnostics_pb2, diagnostics_pb2_grpc
from processes import GENEROUS, Charger, Stage, interrupt, raw_service, wait_until

ROOT = pathlib.Path(__file__).resolve().parents[2]

TEXTS = """
critical Uncaught exception of type 'Rpc::CommunicationException' with message: '{}'
critical Uncaught exception of unknown type.            # TheTerminateHandlerDeathTest.SaysSoWhereThereIsNothingToName
critical Aborting process.
critical [RPC] {}                                       # TheRpcLogger.WritesEachMessageAtItsLevel
error    [RPC] {}                                       # TheRpcLogger.WritesEachMessageAtItsLevel
warning  [RPC] {}
info     [RPC] {}
debug    [RPC] {}                                       # TheRpcLogger.WritesEachMessageAtItsLevel
trace    [RPC] {}                                       # TheRpcLogger.WritesEachMessageAtItsLevel
trace    State {}: init
trace    State {}: entry
trace    State {}: exit
trace    State {}: event recv {}
trace    State {}: event hndl {}
trace    State {}: event unhn {}
trace    (../statemachines/utils/statemachinesutility:28) IEnableCall
trace    (../statemachines/utils/statemachinesutility:32) IDisableCall
trace    (../statemachines/utils/statemachinesutility:38) ExtUninitializedRsp
trace    (../statemachines/utils/statemachinesutility:42) ExtDisabledRsp
trace    (../statemachines/utils/statemachinesutility:47) ExtEnabledRsp
trace    (../statemachines/utils/statemachinesutility:51) ExtErrorRsp  # nobody posts the error: ABridge.TurnsRequestsIntoEventsAndEnteredStatesIntoReports
trace    (../statemachines/utils/statemachinesutility:55) ExtFatalErrorRsp
trace    (../statemachines/utils/statemachinesutility:59) ExtSendAlive
error    (src/feedback:105) Config error occurred: {}
error    (src/feedback:118) Failed to send diagnostics data. Error: '{}'.
debug    (src/feedback:175) DiagnosticsNotification EWarning or ECriticalSecurityEvent received and ignored. (only listens to EError)
warning  (src/feedback:180) DiagnosticsNotification unexpected notification type received.
info     (src/feedback:226) Starting state machine
info     (src/feedback:230) State machine stopped
debug    (src/components/brightnesscontrol:50) Target brightness: {}
debug    (src/components/brightnesscontrol:58) Brightness setpoint: {}, lower: {}, upper: {}, mPrevious: {}
debug    (src/components/connector:66) [Connector 1] Change LED for Event: 0
debug    (src/components/connector:121) [Connector 1] SessionManager notified state: {}
debug    (src/components/connector:131) [Connector 1] Active event reset, updating led...
debug    (src/components/connector:142) [Connector 1] Connector is already showing event, skip update connector LED
debug    (src/components/connector:147) [Connector 1] Change LED for Signal: 1004
debug    (src/components/connector:152) [Connector 1] Connector is not yet enabled, show disabled LED
debug    (src/components/connector:158) [Connector 1] Change LED for State: {}
warning  (src/components/connector:206) [Connector 1] Unexpected connector state received: {}
warning  (src/components/connector:233) [Connector 1] Unexpected HMI state received: {}  # every state is mapped before
warning  (src/components/connector:321) [Connector 1] Unexpected active event: {}  # an unknown one is refused before: AConnector.HoldsTheLampForAnUnknownEventToo
warning  (src/components/feedbackconfig:33) Unknown brightness mode "{}", using Fixed
info     (src/components/feedbackhsmactionhandler:96) No led and no meter display available on the hardware. Brightness timer will not be started
info     (src/components/feedbackhsmactionhandler:117) Diagnostics notified error change: {}({})[{}] -> {}
info     (src/components/feedbackhsmactionhandler:152) Feedback event triggered: {}[{}]
warning  (src/components/feedbackhsmactionhandler:195) Unknown feedback event type received: {}
debug    (src/components/feedbackhsmactionhandler:229) BrightnessControlTimerHandler -> mAutoBrightness
debug    (src/components/feedbackhsmactionhandler:232) Illum value: {}
debug    (src/components/feedbackhsmactionhandler:237) Brightness value: {}
debug    (src/components/feedbackhsmactionhandler:275) Brightness is now: {} | {}
warning  (src/components/feedbackhsmactionhandler:287) Failed to set display brightness, result: Illegal
warning  (src/components/feedbackhsmactionhandler:293) MeterClient communication failure: {}
error    (src/components/feedbackhsmactionhandler:308) Unexpected type 4 for HmiBuzzerVolume, expected int
error    (../feedback/src/components/ledcontrol:33) Failed to setup LEDs
debug    (../feedback/src/components/ledcontrol:58) LED set to [{} | {}]
debug    (../feedback/src/components/ledcontrol:62) LED type and mode identical, skipping SetMainLed
debug    (../feedback/src/components/ledcontrol:69) Forcing all LEDs off
warning  (../feedback/src/components/ledcontrol:128) Unsupported led mode {}    # its name is looked up before
error    (../feedback/src/components/ledcontrol:145) Failed to send diagnostics data. Error: '{}'.
warning  (../feedback/src/components/ledcontrol:208) Unsupported led color: {}  # its name is looked up before
warning  (../feedback/src/components/ledcontrol:228) Unsupported led color: {}  # its name is looked up before
warning  (../feedback/src/components/ledcontrol:251) Unsupported led color: {}  # its name is looked up before
warning  (../feedback/src/components/ledcontrol:302) Unsupported led color: {}  # its name is looked up before
error    (../feedback/src/components/ledcontrol:271) Error coding {} exceeds the number of slots {}.  # no mode has so many: ABlinkCode.HasNoMorePulsesThanSlots
error    (../feedback/src/hal/led:26) Failed to set pattern trigger
error    (../feedback/src/hal/led:32) Udev failed to set correct user permissions after trigger
warning  (../feedback/src/hal/led:45) Failed to read minBrightness value
warning  (../feedback/src/hal/led:50) Max brightness (0) cannot be smaller than min brightness (3)
warning  (../feedback/src/hal/led:64) Failed to read maxBrightness value
warning  (../feedback/src/hal/led:69) Min brightness (3) cannot be greater than max brightness (1)
debug    (../feedback/src/hal/led:96) Pattern: 1000 2500 0 2500 {}
debug    (../feedback/src/hal/led:114) Pattern: 1000 {} {}
error    (src/hal/buzzer:58) Disabling buzzer failed. Exception: {}  # ABuzzer.ReportsNoToneThatTheDeviceDidNotTake
error    (src/hal/buzzer:77) Failed to read buzzer volume level      # nobody reads it: ABuzzer.ReadsAVolumeOfDigitsOnlyAndWritesPlainDecimal
error    (src/hal/buzzer:85) Output '{}' contains unexpected non-numeric value.  # ABuzzer.ReadsAVolumeOfDigitsOnlyAndWritesPlainDecimal
error    (src/hal/buzzer:111) Could not open tty device /dev/tty0, error: -1
error    (src/hal/buzzer:117) Could not write buzzer value {} to fd {}, error: -1
error    (src/hal/buzzer:135) Failed to send diagnostics data. Error: '{}'.
debug    Cannot {} the tone device: {}
error    (src/hal/lightsensor:32) Invalid light sensor device path: /var/sysfs-links/light
error    (src/hal/lightsensor:45) No light sensor device found!      # here the folder goes with the device: ALightSensor.UsesTheFirstOfItsTenDevices
warning  (src/hal/opt3001:55) Opt3001 is already enabled!
trace    (src/hal/opt3001:69) Opt3001 is not enabled!
error    (src/hal/opt3001:109) Failed to get input value for Opt3001
error    (src/hal/opt3001:132) Failed to write opt3001 integration time: 0.8
trace    (src/hal/opt3001:136) Setting delay between measurements: 1100ms
error    (src/hal/opt3001:140) Unsupported integration time enum: {}  # it is fixed: ALightSensor.SleepsForWhatItsIntegrationTimeLeavesOfThePeriod
error    (src/hal/vcnl4001:60) Failed to get input value for Vcnl4001  # not fitted: ALightSensor.UsesTheFirstOfItsTenDevices
warning  The orderly end takes too long, as when a device does not answer; ending without it  # seen in interrupttest, where the end hangs
"""

# The operations that say so as they begin.
TRACES = {
    "[Connector 1] CConnector": "Enable Disable ShowEvent AddError RemoveError "
                                "HandleSessionStateChanged MapEventToLedState MapErrorToLedState",
    "CLedControl": "SetMainLed",
    "CLed": "SetupTrigger SetMaxBrightness SetMinBrightness SetBrightness SetSmoothPattern "
            "SetInstantPattern",
    "COpt3001": "COpt3001 Enable Disable GetIlluminancePercentage ReadIlluminance PollIlluminance "
                "SetIntegrationTime",
    "CBuzzer": "CBuzzer Beep WriteVolume BuzzerEnable ~CBuzzer",
    "CBrightnessControl": "CBrightnessControl",
    "CFeedbackHsmActionHandler": "IntInitialize IntStartMonitoring IntStopMonitoring "
                                 "IntEnableConnectors IntDisableConnectors IntUpdateErrorState "
                                 "IntTriggerFeedbackEvent OnHmiLedIntensityChange "
                                 "OnBuzzerVolumeChange UpdateBrightnessSettings",
}

LIFE = """
enable rejected
disable
connector reserved
enable
connector charging
expect log debug "SessionManager notified state: 6"
expect log debug "Change LED for State: 3"
connector 42
card accepted
connector available
expect lamp green on
mark
card swiped
expect written nothing
error 1004 on
error 1004 off
meter refuses
set HmiLedIntensityManual 50
expect log warning "287)"
connector charging
kill meter
set HmiLedIntensityManual 0
expect log warning "293)"
connector authorized
fault blue min_pattern_brightness EIO
connector charging
fault blue min_pattern_brightness garbage "0"
fault blue max_pattern_brightness EIO
connector authorized
fault blue max_pattern_brightness garbage "1"
connector charging
heal
set HmiBuzzerVolume loud
expect log error "308)"
fault tone all EACCES
card swiped
expect log error "111)"
fault tone all EIO
card swiped
expect log error "117)"
say send a warning
expect log debug "175)"
set HmiLedIntensityMode AUTO
expect log warning "33)"
fault sensor in_illuminance_integration_time EIO
set HmiLedIntensityMode Auto
expect log error "132)"
set HmiLedIntensityMin 2
expect log warning "55)"
expect log debug "Illum value"
fault sensor in_illuminance_input EIO
expect log error "109)"
heal
kill diagnostics
connector available
expect log error "145)"
card swiped
expect log error "135)"
set HmiLedIntensityManual bright
set HmiLedIntensityMode fixed
expect state fatal-error
expect log error "118)"
disable
stop daemon
start diagnostics
""".strip().splitlines()

# Starts with what is missing or fails.
STARTS = """
fault red trigger EIO
kill daemon
start daemon
expect log error "led:26)"
fault red trigger slow 1ms
fault red max_pattern_brightness EACCES
kill daemon
start daemon
expect log error "led:32)"
heal
set HwHasLed false
set HwHasMeterDisplay false
kill daemon
start daemon
disable
enable
""".strip().splitlines()


def rows():
    """Level, text, and why it is not in the runs or None."""
    for line in TEXTS.strip().splitlines():
        level, rest = line.split(maxsplit=1)
        text, _, reason = rest.partition(" # ")
        yield level, text.rstrip(), reason or None


def pattern(text):
    return re.compile(".*".join(map(re.escape, text.split("{}"))))


def logged(output):
    """Level and text of each line."""
    return {(line[13:21].rstrip(), line[38:]) for line in output.splitlines()
            if re.match(r"\d\d:\d\d:\d\d\.\d{3} ", line)}


def written():
    """Level and text as they stand in the sources."""
    call = re.compile(r'LOG\(\s*(\w+),\s*((?:"(?:[^"\\]|\\.)*"\s*)+)')
    for folder in ("src", "statemachines", "utils"):
        for path in (ROOT / folder).rglob("*"):
            for level, literals in call.findall(path.read_text() if path.is_file() else ""):
                text = "".join(re.findall(r'"((?:[^"\\]|\\.)*)"', literals)).replace('\\"', '"')
                yield level.lower(), text


class EveryLogText(unittest.TestCase):
    def stage(self, steps):
        stage = Stage(*steps)
        self.addCleanup(stage.close)
        return stage

    def life(self):
        stage = self.stage(LIFE)
        stage.until("send a warning")
        with stage.channel("Diagnostics") as channel:
            warning = diagnostics_pb2.MDiagnosticsSignal(
                identifier=10250, data=[diagnostics_pb2.MDiagnosticsData(bool_value=True)])
            diagnostics_pb2_grpc.DiagnosticsStub(channel).SendSignal(warning, timeout=GENEROUS)
        return stage.finish()

    def charger_without_devices(self):
        """No sensor's folder, a diagnostics service with a newer kind of notification, and a second
        daemon that is refused."""
        charger = Charger()
        self.addCleanup(charger.close)
        notification = diagnostics_pb2.MDiagnosticsNotification(
            type=diagnostics_pb2.MDiagnosticsNotificationType(type=42))
        service = raw_service(charger, "Diagnostics",
                              streams={"Notifications": [notification.SerializeToString()]})
        self.addCleanup(service.stop, None)
        first = charger.daemon("-v", "-v", stdout=open(charger.root / "log", "w"))
        wait_until(lambda: "180)" in (charger.root / "log").read_text(), "the notification")
        refused, _ = charger.daemon("-v", "-v").communicate(timeout=GENEROUS)
        interrupt(first)
        return (charger.root / "log").read_text() + refused

    def test_appears_exactly_and_at_its_level(self):
        seen = logged(self.life() + self.stage(STARTS).finish() + self.charger_without_devices())
        for level, text, reason in rows():
            levels = {seen_level for seen_level, line in seen if pattern(text).fullmatch(line)}
            with self.subTest(text=text):
                if text.startswith("[RPC]"):
                    self.assertEqual(level in levels, reason is None)
                elif text.startswith("The orderly end"):  # on a busy machine here, too
                    self.assertLessEqual(levels, {level})
                else:
                    self.assertEqual(levels, set() if reason else {level})
        for name, operations in TRACES.items():
            for operation in operations.split():
                self.assertIn(("trace", f"{name}::{operation}"), seen)
        known = [(level, pattern(text)) for level, text, _ in rows()]
        for level, line in seen:
            if line.startswith("("):
                self.assertTrue(any(level == each and text.fullmatch(line) for each, text in known),
                                f"{level} {line}")

    def test_is_in_the_table_and_in_the_sources(self):
        sources = {(level, text): pattern(text) for level, text in written()}
        unused = set(sources)
        for level, text, reason in rows():
            found = {(each, source) for (each, source), like in sources.items()
                     if each == level and like.fullmatch(text.replace("[Connector 1] ", "{}"))}
            self.assertTrue(found, f"not in the sources: {level} {text}")
            unused -= found
            for suite, test in re.findall(r"(\w+)\.(\w+)", reason or ""):
                self.assertTrue(any(re.search(rf"TEST(_F)?\({suite}, {test}\)", path.read_text())
                                    for path in (ROOT / "tests").rglob("*.cpp")), reason)
        self.assertEqual(unused, set(), "not in the table")


if __name__ == "__main__":
    unittest.main()
