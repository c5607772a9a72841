"""A client that is not ours, with stubs generated from the .proto files."""

import random
import socket
import unittest

import grpc
from ipc import common_pb2, diagnostics_pb2, feedback_pb2, logconfig_pb2
from ipc import logconfig_pb2_grpc, sessionmanager_pb2
from processes import EMPTY, GENEROUS, Charger, interrupt, raw_service, wait_until


class AForeignClient(unittest.TestCase):
    def test_changes_the_daemons_logging(self):
        charger = Charger()
        self.addCleanup(charger.close)
        charger.daemon()
        channel = charger.channel("FeedbackLog")
        self.addCleanup(channel.close)
        log = logconfig_pb2_grpc.LogConfigStub(channel)
        config = logconfig_pb2.MLogConfig(level=logconfig_pb2.ELogLevelTrace)
        self.assertEqual(
            log.SetLogConfig(config, timeout=GENEROUS, wait_for_ready=True).result,
            common_pb2.EResultOk)
        self.assertEqual(log.GetLogConfig(common_pb2.MEmpty(), timeout=GENEROUS).level,
                         logconfig_pb2.ELogLevelTrace)
        with self.assertRaises(grpc.RpcError) as refused:
            log.SetLogConfig(logconfig_pb2.MLogConfig(level=17), timeout=GENEROUS)
        self.assertEqual(refused.exception.code(), grpc.StatusCode.INVALID_ARGUMENT)
        self.assertIn("level: 17", refused.exception.details())


def event(number=0, instance=0):
    return feedback_pb2.MFeedbackEvent(type=feedback_pb2.MFbEventType(event=number),
                                       instance=common_pb2.MInstanceType(instance=instance))


def error(kind=0, identifier=1004, instance=1, value={"bool_value": True}):
    return diagnostics_pb2.MDiagnosticsNotification(
        type=diagnostics_pb2.MDiagnosticsNotificationType(type=kind),
        signal=diagnostics_pb2.MDiagnosticsSignal(
            identifier=identifier, instance=common_pb2.MInstanceType(instance=instance),
            data=[] if value is None else [diagnostics_pb2.MDiagnosticsData(**value)]))


def state(number):
    return sessionmanager_pb2.MConnectorStateNotification(
        state=sessionmanager_pb2.MConnectorState(state=number))


class AHostilePeer(unittest.TestCase):
    """Whatever it sends, the daemon lives, and hears who comes after it."""

    LIMIT = 64 * 1024

    def setUp(self):
        self.random = random.Random(20)
        self.charger = Charger()
        self.addCleanup(self.charger.close)

    def noise(self, *messages):
        """Random bytes, the messages cut and with a byte changed, and one that is too long."""
        yield from (self.random.randbytes(size) for size in (1, 2, 5, 17, 300, 5000))
        for message in messages:
            text = bytearray(message.SerializeToString())
            for _ in range(4):
                yield bytes(text[:self.random.randrange(len(text))])
                text[self.random.randrange(len(text))] = self.random.randrange(256)
                yield bytes(text)
        yield bytes(self.LIMIT + 1)

    def start_daemon(self):
        self.log = self.charger.root / "log"
        return self.charger.daemon("-v", "-v", stdout=self.log.open("w"))

    def test_may_call_with_any_bytes(self):
        daemon = self.start_daemon()
        self.charger.initialise_and_enable()
        with self.charger.channel("Feedback") as channel:
            codes = set()
            for method in ("ipc.Feedback/TriggerFeedbackEvent", "ipc.LogConfig/SetLogConfig",
                           "ipc.LogConfig/GetLogConfig", "ipc.GenericControl/Enable",
                           "ipc.GenericControl/Disable", "ipc.GenericControl/WatchState",
                           "ipc.GenericControl/WatchAlive", "grpc.health.v1.Health/Check",
                           "grpc.health.v1.Health/Watch", "ipc.No/Such"):
                for message in self.noise(event(3, 1), event(1 << 30, -1)):
                    call = channel.unary_stream(f"/{method}")(message, timeout=GENEROUS)
                    call.initial_metadata()  # comes with the first reply, or with the refusal
                    if "Watch" in method:
                        call.cancel()
                    try:
                        list(call)
                    except grpc.RpcError:
                        codes.add(call.code())
            self.assertLessEqual({grpc.StatusCode.INVALID_ARGUMENT, grpc.StatusCode.UNIMPLEMENTED,
                                  grpc.StatusCode.RESOURCE_EXHAUSTED}, codes)
        for _ in range(50):
            with socket.socket(socket.AF_UNIX) as garbage:
                garbage.connect(str(self.charger.socket("Feedback")))
                preface = b"PRI * HTTP/2.0\r\n\r\nSM\r\n\r\n"[:self.random.choice((0, 12, 24, 24))]
                garbage.send(preface + self.random.randbytes(self.random.randrange(200)))
        self.end(daemon)

    def test_may_notify_and_reply_with_any_bytes(self):
        daemon = self.start_daemon()
        self.charger.initialise_and_enable()
        good = {"Diagnostics": error(identifier=1002), "SessionManager": state(6)}
        streams = {
            "Diagnostics": [error(instance=instance) for instance in (2, -1, 1 << 30)] +
                           [error(value=None), error(kind=77), error(identifier=-5),
                            error(value={"string_value": "x" * 9000}), error(value={}), EMPTY],
            "SessionManager": [state(number) for number in (13, -1, 1 << 30)] + [EMPTY]}
        methods = {"Diagnostics": ("Notifications", "SendSignal"),
                   "SessionManager": ("ConnectorStates", "GetConnectorInfo"),
                   "Meter1": (None, "SetDisplayBrightness")}
        for name, (stream, reply) in methods.items():
            # What cannot be read ends a stream, and costs a second until the next one.
            messages = [each.SerializeToString() for each in streams.get(name, [])]
            messages += [self.random.randbytes(40), bytes(self.LIMIT + 1)]
            if name in good:
                messages.append(good[name].SerializeToString())
            service = raw_service(self.charger, name, {stream: messages} if stream else {},
                                  {reply: list(self.noise(common_pb2.MResult(result=1, text="no")))})
            self.addCleanup(service.stop, None)
        for text in ("SessionManager notified state: 6", "Unspecified(-5)", "StateE(1002)",
                     'Refused a notification of "Diagnostics": signal.instance: 2 is not'):
            wait_until(lambda: text in self.log.read_text(), text)
        with self.charger.channel("Feedback") as channel:
            for _ in range(10):  # each lets the daemon send a signal, and hear a reply to it
                for number in range(4):
                    channel.unary_unary("/ipc.Feedback/TriggerFeedbackEvent")(
                        event(number).SerializeToString(), timeout=GENEROUS)
        self.end(daemon)

    def end(self, daemon):
        with self.charger.channel("FeedbackLog") as channel:
            logconfig_pb2_grpc.LogConfigStub(channel).GetLogConfig(
                EMPTY, timeout=GENEROUS, wait_for_ready=True)
        self.assertEqual(interrupt(daemon)[0], 0, self.log.read_text()[-2000:])


if __name__ == "__main__":
    unittest.main()
