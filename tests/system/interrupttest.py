"""SIGINT: the daemon ends in time, orderly, whatever it is doing and whatever stands still."""

import signal
import threading
import time
import unittest

import grpc
from ipc import diagnostics_pb2, diagnostics_pb2_grpc, feedback_pb2
from ipc import feedback_pb2_grpc, genericcontrol_pb2_grpc
from processes import EMPTY, GENEROUS, STOP_LIMIT, Charger, Stage, interrupt

POSTERS = 32

EVENTS = [feedback_pb2.MFeedbackEvent(type=feedback_pb2.MFbEventType(event=each))
          for each in feedback_pb2.EFbEventType.values()]
ERROR = diagnostics_pb2.MDiagnosticsSignal(
    identifier=1004, data=[diagnostics_pb2.MDiagnosticsData(bool_value=True)])


class AnInterrupt(unittest.TestCase):
    def setUp(self):
        self.charger = Charger()
        self.addCleanup(self.charger.close)

    def running_daemon(self):
        """One whose machine runs: before, SIGINT has its default action."""
        daemon = self.charger.daemon()
        channel, control = self.charger.control()
        with channel:
            next(control.WatchState(EMPTY, timeout=GENEROUS, wait_for_ready=True))
        return daemon

    def in_time(self, moments, end_at):
        """Each moment's end took no longer than the limit: a busy machine is given three tries, a
        daemon that waits for something uses them up."""
        for _ in range(3):
            moments = [each for each in moments if end_at(each) > STOP_LIMIT]
        self.assertEqual(moments, [], f"not within {STOP_LIMIT} s")

    def end(self, daemon, statuses=(0,)):
        begin = time.monotonic()
        status, output = interrupt(daemon)
        seconds = time.monotonic() - begin
        self.assertIn(status, statuses, output)
        if status == 0:
            self.assertEqual([], sorted(self.charger.sockets.glob("Feedback*")), output)
        return seconds

    def start_life(self):
        """Enabled, cards, a beep, an error, disabled, again and again until it is cut off."""
        def live():
            with self.charger.channel("Feedback") as own, self.charger.channel("Diagnostics") as other:
                control = genericcontrol_pb2_grpc.GenericControlStub(own)
                feedback = feedback_pb2_grpc.FeedbackStub(own)
                diagnostics = diagnostics_pb2_grpc.DiagnosticsStub(other)
                try:
                    control.Disable(EMPTY, timeout=GENEROUS)
                    while True:
                        control.Enable(EMPTY, timeout=GENEROUS)
                        diagnostics.SendSignal.future(ERROR, timeout=GENEROUS)
                        for event in EVENTS:
                            feedback.TriggerFeedbackEvent(event, timeout=GENEROUS)
                        control.Disable(EMPTY, timeout=GENEROUS)
                except grpc.RpcError:
                    pass
        life = threading.Thread(target=live)
        life.start()
        return life

    def test_ends_it_at_any_moment_also_while_its_peers_stand_still(self):
        peers = [self.charger.peer(name) for name in ("diagnostics", "session-manager", "meter")]
        self.charger.wait_for("Diagnostics")

        def end_at(moment):
            milliseconds, frozen = moment
            send_all(peers, signal.SIGSTOP if frozen == "before" else signal.SIGCONT)
            daemon = self.running_daemon()
            life = self.start_life()
            time.sleep(milliseconds / 1000)  # the moment is varied, not awaited
            send_all(peers, signal.SIGSTOP if frozen else signal.SIGCONT)
            seconds = self.end(daemon)
            send_all(peers, signal.SIGCONT)
            life.join()
            return seconds

        self.in_time([(each * 3, ("", "now", "before")[each % 3]) for each in range(45)], end_at)

    def test_releases_all_who_wait_for_a_verdict(self):
        peer = self.charger.peer("diagnostics")
        self.charger.wait_for("Diagnostics")

        def end_at(_):
            daemon = self.charger.daemon()
            self.charger.initialise_and_enable()
            peer.send_signal(signal.SIGSTOP)
            with self.charger.channel("Feedback") as channel:
                waiting = post_events(channel)
                waiting[0].result(GENEROUS)  # now the machine waits for the frozen peer
                seconds = self.end(daemon)
                for each in waiting:
                    self.assertTrue(each.exception(GENEROUS) or each.result() is not None)
            peer.send_signal(signal.SIGCONT)
            return seconds

        self.in_time([0], end_at)

    def test_releases_them_also_where_the_hardware_is_slow(self):
        def end_at(_):
            stage = Stage("disable", "enable", "fault all pattern slow 200ms", "say begin",
                          "wait 500ms", "interrupt daemon", "heal", "start daemon")
            self.addCleanup(stage.close)
            stage.until("begin")
            with stage.channel("Feedback") as channel:
                waiting = post_events(channel)
                self.assertRegex(stage.finish(), " warning .* The orderly end takes too long, ")
                for each in waiting:
                    each.exception(GENEROUS)
            return max(stage.durations("interrupt daemon"))

        self.in_time([0], end_at)

    def test_leaves_no_tone_at_any_moment_of_a_beep(self):
        def end_at(moments):
            steps = [step for wait in moments for step in
                     ("start daemon", "disable", "enable", "error 1004 on", "card accepted",
                      "card swiped", f"wait {wait}ms", "interrupt daemon")]
            stage = Stage(*steps[1:])
            self.addCleanup(stage.close)
            stage.finish()
            return max(stage.durations("interrupt daemon"))

        self.in_time([(0, 2, 50, 250, 295, 300, 305, 400)], end_at)

    # The reading itself cannot be cut off; nothing else is waited for then.
    def test_waits_for_a_reading_of_the_light_at_most(self):
        stage = Stage("set HmiLedIntensityMode Auto", "disable", "enable", "interrupt daemon")
        self.addCleanup(stage.close)
        stage.finish()

    def test_survives_a_storm_from_its_first_moment_on(self):
        def end_at(moment):
            milliseconds, pause = moment
            daemon = self.charger.daemon()
            time.sleep(milliseconds / 1000)  # the moment is varied, not awaited
            for _ in range(1000):
                daemon.send_signal(signal.SIGINT)
                time.sleep(pause)
            return self.end(daemon, (0, -signal.SIGINT))

        self.in_time([(milliseconds, pause) for pause in (0, 0.0002)
                      for milliseconds in (0, 5, 10, 20, 30, 40, 60, 80, 120, 200)], end_at)
        self.end(self.running_daemon())

    def test_ends_it_while_a_watcher_does_not_read(self):
        daemon = self.charger.daemon()
        watcher = self.charger.start_watcher()
        self.charger.initialise_and_enable()
        watcher.send_signal(signal.SIGSTOP)
        channel, control = self.charger.control()
        self.addCleanup(channel.close)
        for _ in range(3000):  # more reports than its socket holds
            control.Enable(EMPTY, timeout=GENEROUS)
        self.assertLess(self.end(daemon), GENEROUS)


def send_all(processes, number):
    for each in processes:
        each.send_signal(number)


def post_events(channel):
    feedback = feedback_pb2_grpc.FeedbackStub(channel)
    return [feedback.TriggerFeedbackEvent.future(event, timeout=GENEROUS, wait_for_ready=True)
            for event in (POSTERS // len(EVENTS)) * EVENTS]


if __name__ == "__main__":
    unittest.main()
