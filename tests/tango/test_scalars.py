"""The scalars, the state and the faults of the device server, on a scripted control library."""

import json
import os
import unittest

import tango
from tango import AttrQuality, DevState

import KoraServer
from KoraServer import until

LIBRARY = os.environ["KORA_SCRIPTED_LIBRARY"]
READ_FUNCTIONS = ["getPIDconf", "getSetpoint", "getBPMselector", "getPIDoutSel", "getDisplayFreq", "getBPMStats",
                  "getSystemVersion", "getSFPinfo"]
FIGURES = ["XMean", "XStd", "XStd1kHz", "YMean", "YStd", "YStd1kHz", "I0Mean", "I0Std", "I0Std1kHz"]


def value(device, name):
    """The value of an attribute, or None where it is not valid."""
    reading = device.read_attribute(name)
    return reading.value if reading.quality == AttrQuality.ATTR_VALID else None


class ScalarsTest(unittest.TestCase):
    def setUp(self):
        self.server = KoraServer.KoraServer(LIBRARY, {"PollPeriod": 100}).start()
        self.device = self.server.device()

    def tearDown(self):
        self.assertEqual(self.server.stop(), 0)

    def becomes(self, name, expected):
        self.assertTrue(until(lambda: value(self.device, name) == expected),
                        "%s is %r, not %r" % (name, value(self.device, name), expected))

    def test_statistics_are_in_the_units_of_the_screens(self):
        script = "".join("figure %d %d %g\n" % (bpm, i, (i + 1) * (bpm + 1) * 1e-3)
                         for bpm in range(2) for i in range(9))
        self.server.script(script)
        scales = {(0, "X"): 1000, (0, "Y"): 2000, (1, "X"): 3000, (1, "Y"): 5000}
        for bpm in range(2):
            for i, figure in enumerate(FIGURES):
                expected = (i + 1) * (bpm + 1) * 1e-3 * scales.get((bpm, figure[0]), 1)
                name = "Bpm%d%s" % (bpm + 1, figure)
                self.assertTrue(until(lambda: abs((value(self.device, name) or 0) - expected) < 1e-9 * expected), name)
                unit = self.device.get_attribute_config(name).unit
                self.assertEqual(unit, "A" if figure.startswith("I0") else "um")

    def test_loops_sources_and_outputs_are_those_of_the_library(self):
        self.server.script("conf 9\nsource 2 1\noutput 0 3\noutput 3 0\nrate 5000\n")
        self.becomes("Configuration", 9)
        self.becomes("DisplayRate", 5000)
        loops = [value(self.device, "Loop" + loop) for loop in ("Xlf", "Xhf", "Ylf", "Yhf")]
        self.assertEqual(loops, [False, True, True, False])
        sources = [value(self.device, "Source" + loop) for loop in ("Xlf", "Xhf", "Ylf", "Yhf")]
        self.assertEqual(sources, [0, 0, 1, 0])
        outputs = [value(self.device, "Output" + loop) for loop in ("Xlf", "Xhf", "Ylf", "Yhf")]
        self.assertEqual(outputs, [3, 1, 2, 0])
        self.assertEqual(list(self.device.get_attribute_config("SourceXlf").enum_labels), ["BPM1", "BPM2"])
        self.assertEqual(list(self.device.get_attribute_config("OutputXlf").enum_labels), ["CH1", "CH2", "CH3", "CH4"])

    def test_no_loop_regulates_with_the_code_15(self):
        self.server.script("conf 15\n")
        self.becomes("Configuration", 15)
        self.assertEqual([value(self.device, "Loop" + loop) for loop in ("Xlf", "Xhf", "Ylf", "Yhf")], [False] * 4)

    def test_state_and_status_follow_the_feedback(self):
        states = [(0, DevState.STANDBY, "off"), (1, DevState.FAULT, "region of confidence"),
                  (2, DevState.ALARM, "beam is off"), (3, DevState.RUNNING, "regulates with Xlf, Ylf")]
        texts = ["Feedback OFF", "FAULT: Out of ROC", "Beam OFF", "Feedback ON"]
        self.assertEqual(list(self.device.get_attribute_config("FeedbackStatus").enum_labels), texts)
        for code, state, words in states:
            self.server.script("status %d\nconf 2\n" % code)
            self.assertTrue(until(lambda: self.device.state() == state), code)
            self.assertTrue(until(lambda: words in self.device.status()), self.device.status())
            self.assertEqual(value(self.device, "FeedbackStatus"), code)

    def test_a_status_that_does_not_exist_is_not_valid(self):
        self.server.script("status 7\n")
        self.assertTrue(until(lambda: value(self.device, "FeedbackStatus") is None))
        self.assertEqual(self.device.state(), DevState.UNKNOWN)

    def test_ports_and_versions_are_told_as_text(self):
        self.server.script("port 0 %d 4711\nport 2 %d 12\n" % (0x2101, 0x2300))
        self.assertTrue(until(lambda: "4711" in (value(self.device, "PortA") or "")))
        self.assertIn("current amplifier", value(self.device, "PortA"))
        self.assertEqual(value(self.device, "PortB"), "empty")
        self.assertIn("encoder box", value(self.device, "PortC"))
        self.assertEqual(value(self.device, "SoftwareVersion"), "1.0.03")

    def test_every_function_that_fails_makes_its_values_invalid_and_the_state_unknown(self):
        affected = {"getPIDconf": ["Configuration", "LoopXlf", "FeedbackStatus"], "getSetpoint": ["SetpointX", "SetpointY"],
                    "getBPMselector": ["SourceXlf"], "getPIDoutSel": ["OutputYhf"], "getDisplayFreq": ["DisplayRate"],
                    "getBPMStats": ["Bpm1XMean", "Bpm2I0Std1kHz"], "getSystemVersion": ["SoftwareVersion", "PidVersion"],
                    "getSFPinfo": ["PortA", "PortD"]}
        self.assertEqual(sorted(affected), sorted(READ_FUNCTIONS))
        for function, names in affected.items():
            self.server.script("fail %s\n" % function)
            for name in names:
                self.assertTrue(until(lambda: value(self.device, name) is None), "%s with %s" % (name, function))
            self.assertEqual(self.device.state(), DevState.UNKNOWN)
            self.assertIn(function + "() failed", self.device.status())
            self.server.script("")
            for name in names:
                self.assertTrue(until(lambda: value(self.device, name) is not None), name)
            self.assertTrue(until(lambda: self.device.state() == DevState.STANDBY))

    def test_a_call_that_hangs_makes_the_state_unknown_and_the_rest_goes_on(self):
        self.server.script("hang getBPMStats\n")
        self.assertTrue(until(lambda: self.device.state() == DevState.UNKNOWN))
        self.assertIn("getBPMStats() does not return", self.device.status())
        self.assertIsNone(value(self.device, "Bpm1XMean"))
        self.server.script("hang getBPMStats\nrate 2000\n")
        self.becomes("DisplayRate", 2000)
        before = self.device.read_attribute("DisplayRate").time.totime()
        self.assertTrue(until(lambda: self.device.read_attribute("DisplayRate").time.totime() > before))
        self.server.script("rate 2000\n")
        self.assertTrue(until(lambda: self.device.state() == DevState.STANDBY))
        self.assertIsNotNone(value(self.device, "Bpm1XMean"))

    def test_a_library_that_hangs_as_a_whole_leaves_no_value_valid(self):
        self.server.script("".join("hang %s\n" % function for function in READ_FUNCTIONS + ["getPIDstatus"]))
        names = ["Bpm1XMean", "SetpointX", "FeedbackStatus", "Configuration", "PortA", "SoftwareVersion"]
        self.assertTrue(until(lambda: all(value(self.device, name) is None for name in names)))
        self.assertEqual(self.device.state(), DevState.UNKNOWN)
        self.server.script("")
        self.assertTrue(until(lambda: self.device.state() == DevState.STANDBY))

    def test_without_the_settings_file_positions_have_no_value(self):
        self.becomes("SettingsFile", 0)
        self.server.remove_settings()
        self.becomes("SettingsFile", 1)
        self.assertIsNone(value(self.device, "Bpm1XMean"))
        self.assertIsNotNone(value(self.device, "Bpm1I0Mean"))
        self.assertEqual(self.device.state(), DevState.STANDBY)
        self.server.write_settings(KoraServer.SETTINGS)
        self.becomes("SettingsFile", 0)
        self.assertIsNotNone(value(self.device, "Bpm1XMean"))

    def test_snapshot_has_all_scalars_with_unit_and_quality(self):
        self.server.script("fail getBPMStats\nstatus 3\nconf 2\n")
        self.assertTrue(until(lambda: value(self.device, "Bpm1XMean") is None))
        snapshot = json.loads(self.device.command_inout("Snapshot"))
        scalars = [info.name for info in self.device.attribute_list_query()
                   if info.data_format == tango.AttrDataFormat.SCALAR and info.name not in ("State", "Status")]
        self.assertEqual(sorted(snapshot["attributes"]), sorted(scalars))
        self.assertEqual(snapshot["attributes"]["Bpm1XMean"], {"quality": "INVALID", "unit": "um", "value": None})
        self.assertEqual(snapshot["attributes"]["LoopXlf"], {"quality": "VALID", "value": True})
        self.assertEqual(snapshot["attributes"]["FeedbackStatus"]["value"], "Feedback ON")
        self.assertEqual(snapshot["state"], "UNKNOWN")

    def test_a_change_reaches_a_subscriber_without_polling(self):
        seen = []
        subscription = self.device.subscribe_event("Bpm1XMean", tango.EventType.CHANGE_EVENT, seen.append)
        self.server.script("figure 0 0 0.25\n")
        self.assertTrue(until(lambda: any(not event.err and abs(event.attr_value.value - 250) < 1e-9
                                          for event in list(seen) if event.attr_value)))
        self.server.script("fail getBPMStats\n")
        self.assertTrue(until(lambda: seen[-1].attr_value.quality == AttrQuality.ATTR_INVALID))
        self.device.unsubscribe_event(subscription)

    def test_a_change_below_the_threshold_is_not_told(self):
        self.server.script("figure 0 0 0.001\nstatus 0\n")
        self.assertTrue(until(lambda: value(self.device, "Bpm1XMean") == 1.0))
        seen = []
        self.device.subscribe_event("Bpm1XMean", tango.EventType.CHANGE_EVENT, seen.append)
        states = []
        self.device.subscribe_event("FeedbackStatus", tango.EventType.CHANGE_EVENT, states.append)
        # The value at the subscription, and that of the first poll after it, which all later ones are compared with.
        self.assertTrue(until(lambda: len(seen) > 1 and len(states) > 1))
        told = len(seen)
        # Half of the threshold of 0.1 um, beside a change that is told: what comes with it would come too.
        self.server.script("figure 0 0 0.00105\nstatus 3\n")
        self.assertTrue(until(lambda: states[-1].attr_value and states[-1].attr_value.value == 3))
        self.assertTrue(until(lambda: value(self.device, "Bpm1XMean") == 1.05))
        self.assertEqual(len(seen), told)


if __name__ == "__main__":
    KoraServer.run("__main__")
