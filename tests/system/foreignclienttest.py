"""A client that is not ours, with stubs generated from the .proto files."""

import unittest

import grpc
from ipc import common_pb2, diagnostics_pb2, diagnostics_pb2_grpc, logconfig_pb2
from ipc import logconfig_pb2_grpc, signalidentifier_pb2
from processes import GENEROUS, Charger, wait_until


class AForeignClient(unittest.TestCase):
    def setUp(self):
        self.charger = Charger()
        self.addCleanup(self.charger.close)
        self.charger.peer("diagnostics")
        self.charger.peer("session-manager")
        self.charger.daemon()
        self.charger.initialise_and_enable()

    def diagnostics(self):
        channel = self.charger.channel("Diagnostics")
        self.addCleanup(channel.close)
        return diagnostics_pb2_grpc.DiagnosticsStub(channel)

    def led_state(self, diagnostics):
        request = diagnostics_pb2.MDiagnosticsRequest(
            identifier=signalidentifier_pb2.ESignalIdentifierLedState)
        try:
            signal = diagnostics.ReceiveSignal(request, timeout=GENEROUS, wait_for_ready=True)
        except grpc.RpcError as error:
            self.assertEqual(error.code(), grpc.StatusCode.NOT_FOUND)
            return None
        return signal.data[0].string_value

    def test_raises_an_error_and_reads_what_the_lamp_shows(self):
        diagnostics = self.diagnostics()
        error = diagnostics_pb2.MDiagnosticsSignal(
            identifier=1004, data=[diagnostics_pb2.MDiagnosticsData(bool_value=True)])
        reply = diagnostics.SendSignal(error, timeout=GENEROUS, wait_for_ready=True)
        self.assertEqual(reply.result, common_pb2.EResultOk)
        wait_until(lambda: self.led_state(diagnostics) == "Red/Blink3", "the lamp's report")

        error.data[0].bool_value = False
        diagnostics.SendSignal(error, timeout=GENEROUS)
        wait_until(lambda: self.led_state(diagnostics) not in (None, "Red/Blink3"),
                   "the end of the error")

    def test_changes_the_daemons_logging(self):
        channel = self.charger.channel("FeedbackLog")
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


if __name__ == "__main__":
    unittest.main()
