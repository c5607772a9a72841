"""The daemon as a process: its command line, its sockets, its end."""

import os
import resource
import signal
import socket
import subprocess
import unittest

import grpc
from ipc import common_pb2, feedback_pb2, feedback_pb2_grpc, genericcontrol_pb2, logconfig_pb2_grpc
from processes import EMPTY, GENEROUS, Charger, interrupt

USAGE = (
    "usage: {program} [OPTION]\n"
    "  -v, --verbose    increase verbosity  -q, --quiet      disable logging to console\n"
    "  -r, --root=PATH  set the root directory;\n"
    "                   defaults to '{root}'\n"
    "  -h, --help       show this help message and exit\n\n")


class TheDaemon(unittest.TestCase):
    def setUp(self):
        self.charger = Charger()
        self.addCleanup(self.charger.close)

    def answers(self, limit=GENEROUS):
        """Whether its log service answers, to a new connection each time it is asked."""
        with self.charger.channel("FeedbackLog") as channel:
            log = logconfig_pb2_grpc.LogConfigStub(channel)
            log.GetLogConfig(EMPTY, timeout=limit, wait_for_ready=True)
        return True

    def connections(self, count):
        opened = []
        for _ in range(count):
            opened.append(socket.socket(socket.AF_UNIX))
            opened[-1].connect(str(self.charger.socket("FeedbackLog")))
        return opened

    def test_explains_itself_and_stops(self):
        program = os.environ["FEEDBACK"]
        for options, root in ([["-h"], "/"], [["--help"], "/"], [["-s"], "/"], [["-x"], "/"],
                              [["-r"], "/"], [["-r", "/x", "-h"], "/x"],
                              [["-v", "-q", "--root=/y", "--nonsense"], "/y"]):
            with self.subTest(options=options):
                run = subprocess.run([program, *options], capture_output=True, text=True,
                                     timeout=GENEROUS)
                self.assertEqual(run.returncode, 1)
                self.assertEqual(run.stdout, USAGE.format(program=program, root=root))

    def test_ends_with_status_0_and_leaves_no_socket(self):
        daemon = self.charger.daemon()
        self.answers()
        status, _ = interrupt(daemon)
        self.assertEqual(status, 0)
        self.assertEqual(os.listdir(self.charger.sockets), [])

    def test_lives_the_life_that_the_board_controller_steers(self):
        daemon = self.charger.daemon()
        channel, control = self.charger.control()
        self.addCleanup(channel.close)
        reported = control.WatchState(EMPTY, timeout=GENEROUS, wait_for_ready=True)
        self.assertEqual(next(reported).state, genericcontrol_pb2.EStateUninitialized)
        self.assertEqual(control.Enable(EMPTY).result, common_pb2.EResultIllegal)
        self.assertEqual(control.Disable(EMPTY).result, common_pb2.EResultOk)
        self.assertEqual(next(reported).state, genericcontrol_pb2.EStateDisabled)
        for _ in range(2):
            self.assertEqual(control.Enable(EMPTY).result, common_pb2.EResultOk)
            self.assertEqual(next(reported).state, genericcontrol_pb2.EStateEnabled)
        alive = control.WatchAlive(EMPTY, timeout=GENEROUS)
        self.assertGreater(next(alive).sequence, 0)
        self.assertEqual(control.Disable(EMPTY).result, common_pb2.EResultOk)
        self.assertEqual(next(reported).state, genericcontrol_pb2.EStateDisabled)
        self.assertEqual(interrupt(daemon)[0], 0)

    def test_takes_feedback_events_only_while_it_is_enabled(self):
        self.charger.daemon()
        channel = self.charger.channel("Feedback")
        self.addCleanup(channel.close)
        feedback = feedback_pb2_grpc.FeedbackStub(channel)

        def trigger(number, instance=0):
            return feedback.TriggerFeedbackEvent(feedback_pb2.MFeedbackEvent(
                type=feedback_pb2.MFbEventType(event=number),
                instance=common_pb2.MInstanceType(instance=instance)),
                timeout=GENEROUS, wait_for_ready=True).result

        self.assertEqual(trigger(feedback_pb2.EFbEventTypeIdentify), common_pb2.EResultIllegal)
        self.charger.initialise_and_enable()
        for number in (*feedback_pb2.EFbEventType.values(), 42):
            self.assertEqual(trigger(number), common_pb2.EResultOk)
        for instance in (2, -1, 1000):
            with self.assertRaises(grpc.RpcError) as refused:
                trigger(feedback_pb2.EFbEventTypeIdentify, instance)
            self.assertEqual(refused.exception.code(), grpc.StatusCode.INVALID_ARGUMENT)

    def test_reports_a_fatal_error_where_its_store_is_no_store(self):
        self.charger.store.write_text('{"communication": {"SocketDirectory": "%s"}, "settings": 5}'
                                      % self.charger.sockets)
        daemon = self.charger.daemon()
        channel, control = self.charger.control()
        self.addCleanup(channel.close)
        reported = control.WatchState(EMPTY, timeout=GENEROUS, wait_for_ready=True)
        next(state for state in reported if state.state == genericcontrol_pb2.EStateFatalError)
        self.assertEqual(control.Enable(EMPTY).result, common_pb2.EResultOk)
        self.assertEqual(next(reported).state, genericcontrol_pb2.EStateFatalError)
        status, output = interrupt(daemon)
        self.assertEqual(status, 0)
        self.assertIn("(src/feedback:105) Config error occurred: ", output)

    def test_refuses_to_be_a_second_one_and_names_the_first(self):
        first = self.charger.daemon()
        self.answers()
        second = self.charger.daemon()
        output, _ = second.communicate(timeout=GENEROUS)
        self.assertNotEqual(second.returncode, 0)
        self.assertIn(f"served already by process {first.pid} (feedback)", output)
        self.assertNotIn("Failed to setup LEDs", output, "it left the lamp alone")
        self.assertTrue(self.answers())
        self.assertEqual(interrupt(first)[0], 0)

    def test_starts_again_after_it_was_killed(self):
        first = self.charger.daemon()
        self.answers()
        first.kill()
        first.wait()
        self.charger.daemon()
        self.assertTrue(self.answers())

    def test_answers_again_after_connections_took_all_its_descriptors(self):
        def few_descriptors():
            resource.setrlimit(resource.RLIMIT_NOFILE, (64, 64))

        self.charger.daemon(preexec_fn=few_descriptors)
        self.answers()
        opened = self.connections(200)
        self.assertTrue(self.answers(), "silent connections do not keep others out")
        for each in opened:
            each.close()
        self.assertTrue(self.answers(limit=2))

    def test_goes_on_when_nobody_reads_its_console_any_more(self):
        daemon = self.charger.daemon("-v", "-v")
        self.answers()
        daemon.stdout.close()
        with self.connections(1)[0] as connection:
            connection.send(b"not the protocol, so that it logs a line")
        self.answers()
        daemon.send_signal(signal.SIGINT)
        self.assertEqual(daemon.wait(GENEROUS), 0)

    def test_goes_on_while_its_console_takes_no_more_lines(self):
        daemon = self.charger.daemon("-v", "-v")
        self.charger.initialise_and_enable()
        channel, control = self.charger.control()
        self.addCleanup(channel.close)
        for _ in range(1000):  # more lines than the unread pipe holds
            self.assertEqual(control.Enable(EMPTY, timeout=GENEROUS).result, common_pb2.EResultOk)
        self.assertEqual(interrupt(daemon)[0], 0)

    def test_logs_to_the_console_unless_told_to_be_quiet(self):
        for options, speaks in ([[], True], [["-q"], False], [["--quiet"], False]):
            daemon = self.charger.daemon(*options)
            self.answers()
            status, output = interrupt(daemon)
            self.assertEqual(status, 0)
            self.assertEqual("Serving" in output, speaks, output)


if __name__ == "__main__":
    unittest.main()
