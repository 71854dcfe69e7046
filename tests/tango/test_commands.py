"""Who may command, and what then reaches the control library."""

import getpass
import os
import unittest

import tango

import KoraServer
from KoraServer import until

LIBRARY = os.environ["KORA_SCRIPTED_LIBRARY"]
READING = ("getPIDconf", "getPIDstatus", "getSetpoint", "getBPMselector", "getPIDoutSel", "getDisplayFreq", "getBPMStats",
           "getSystemVersion", "getSFPinfo", "getBuffer", "open", "ioctl(/dev/kora_ionbar", "close")


class CommandsTest(unittest.TestCase):
    properties = {"PollPeriod": 100, "AllowCommands": "true"}

    def setUp(self):
        self.server = KoraServer.KoraServer(LIBRARY, self.properties).start()
        self.device = self.server.device()

    def tearDown(self):
        self.assertEqual(self.server.stop(), 0)

    def commands(self):
        return [call for call in self.server.calls() if not call.startswith(READING)]

    def wait_for_poll(self):
        polls = lambda: self.server.calls().count("getBPMStats()")
        before = polls()
        self.assertTrue(until(lambda: polls() > before))

    def configure(self, script):
        self.server.script(script)
        self.wait_for_poll()

    def refused(self, reason, action, *arguments):
        with self.assertRaises(tango.DevFailed) as failure:
            action(*arguments)
        self.assertIn(reason, [error.reason for error in failure.exception.args])
        self.assertTrue(all(error.desc for error in failure.exception.args))


class AllowedTest(CommandsTest):
    def test_commands_reach_the_library(self):
        self.device.EnableFeedback()
        self.device.DisableFeedback()
        self.device.ResetController()
        self.assertEqual(self.commands(), ["setFBenable(1)", "setFBenable(0)", "setCtrlReset()"])

    def test_an_accepted_command_is_a_line_with_host_and_user(self):
        self.device.EnableFeedback()
        line = [text for text in self.server.output().splitlines() if "EnableFeedback" in text]
        self.assertEqual(len(line), 1)
        self.assertIn(" by %s at " % getpass.getuser(), line[0])
        self.assertIn("process %d" % os.getpid(), line[0])

    def test_a_set_point_goes_to_the_loops_of_its_axis(self):
        self.configure("conf 7\n")
        self.device.SetpointX = 12.5
        self.device.SetpointY = -20
        self.assertEqual(self.commands(), ["setSetpoint(0, 12.5)", "setSetpoint(1, 0)", "setSetpoint(2, -20)",
                                           "setSetpoint(3, 0)"])
        self.assertTrue(until(lambda: (self.device.SetpointX, self.device.SetpointY) == (12.5, -20)))

    def test_a_high_frequency_loop_that_another_monitor_feeds_is_left_alone(self):
        self.configure("conf 1\nsource 1 1\n")
        self.device.SetpointX = 1
        self.assertEqual(self.commands(), ["setSetpoint(0, 1)"])

    def test_the_limit_is_that_of_the_monitor_which_feeds_the_loop(self):
        self.configure("conf 2\n")
        self.device.SetpointX = 40
        self.refused("KORA_OutsideRegionOfInterest", self.device.write_attribute, "SetpointX", 40.001)
        self.refused("KORA_OutsideRegionOfInterest", self.device.write_attribute, "SetpointY", -20.001)
        self.configure("conf 2\nsource 0 1\nsource 2 1\n")
        self.refused("KORA_OutsideRegionOfInterest", self.device.write_attribute, "SetpointX", 11.5)
        self.device.SetpointX = -11
        self.device.SetpointY = 12
        self.assertEqual(self.commands(), ["setSetpoint(0, 40)", "setSetpoint(0, -11)", "setSetpoint(2, 12)"])

    def test_what_is_no_number_is_refused(self):
        self.configure("conf 2\n")
        for value in (float("nan"), float("inf"), float("-inf")):
            with self.assertRaises(tango.DevFailed):
                self.device.write_attribute("SetpointX", value)
        self.assertEqual(self.commands(), [])

    def test_a_set_point_of_an_axis_that_does_not_regulate_is_refused(self):
        for configuration, attribute in ((15, "SetpointX"), (12, "SetpointX"), (0, "SetpointY"), (8, "SetpointX")):
            self.configure("conf %d\n" % configuration)
            self.refused("KORA_NoLoop", self.device.write_attribute, attribute, 0.0)
        self.assertEqual(self.commands(), [])

    def test_without_the_settings_file_every_set_point_but_zero_is_refused(self):
        self.configure("conf 2\n")
        self.server.remove_settings()
        self.refused("KORA_OutsideRegionOfInterest", self.device.write_attribute, "SetpointX", 0.1)

    def test_a_call_that_fails_is_told(self):
        self.server.script("fail setFBenable\n")
        self.refused("KORA_CallFailed", self.device.EnableFeedback)
        self.assertNotIn("EnableFeedback", self.server.output())

    def test_a_call_that_hangs_is_told_and_the_device_goes_on(self):
        self.server.script("hang setFBenable\n")
        self.device.set_timeout_millis(10000)
        self.refused("KORA_CallHangs", self.device.EnableFeedback)
        self.refused("KORA_CallHangs", self.device.EnableFeedback)
        self.server.script("rate 3000\n")
        self.assertTrue(until(lambda: self.device.DisplayRate == 3000))
        self.assertTrue(until(lambda: "setFBenable(1)" in self.commands()))


class NotAllowedTest(CommandsTest):
    properties = {"PollPeriod": 100}

    def test_nothing_that_a_client_does_commands(self):
        self.configure("conf 7\nstatus 3\n")
        for command in ("EnableFeedback", "DisableFeedback", "ResetController"):
            self.refused("KORA_CommandsNotAllowed", self.device.command_inout, command)
        for attribute in ("SetpointX", "SetpointY"):
            self.refused("KORA_CommandsNotAllowed", self.device.write_attribute, attribute, 0.0)
        self.device.Init()
        self.refused("KORA_CommandsNotAllowed", self.device.command_inout, "EnableFeedback")
        for attribute in self.device.get_attribute_list():
            self.device.read_attribute(attribute)
        self.device.Snapshot()
        self.assertEqual(self.commands(), [])


del CommandsTest

if __name__ == "__main__":
    KoraServer.run("__main__")
