"""The waveforms and spectra of the device server, on a scripted control library whose records tell their number."""

import os
import unittest

import numpy
import tango
from tango import AttrQuality

import KoraServer
from KoraServer import until

LIBRARY = os.environ["KORA_SCRIPTED_LIBRARY"]
RECORDS = 14336
# Name of the attribute, slot of the record, factor of the settings file.
SIGNALS = [("Pos1X", 0, 1000), ("Pos1Y", 1, 2000), ("Int1", 2, 1), ("Pos2X", 4, 3000), ("Pos2Y", 5, 5000),
           ("Int2", 6, 1), ("Dac0", 8, 1), ("Dac1", 9, 1), ("Dac2", 10, 1), ("Dac3", 11, 1), ("XLf", 12, 1000),
           ("XHf", 13, 1000), ("YLf", 14, 2000), ("YHf", 15, 2000), ("Cur1_0", 24, 1), ("Cur1_1", 25, 1),
           ("Cur1_2", 26, 1), ("Cur1_3", 27, 1), ("Cur2_0", 28, 1), ("Cur2_1", 29, 1), ("Cur2_2", 30, 1),
           ("Cur2_3", 31, 1)]


def slot_values(slot):
    """What the scripted library puts into a slot, computed in the same order of operations."""
    return numpy.float64(1e-6) * (slot + 1) + numpy.float64(1e-9) * numpy.arange(RECORDS)


class ArraysTest(unittest.TestCase):
    def setUp(self):
        self.server = KoraServer.KoraServer(LIBRARY, {"PollPeriod": 100}).start()
        self.device = self.server.device()

    def tearDown(self):
        self.assertEqual(self.server.stop(), 0)

    def test_every_signal_is_a_waveform_bit_for_bit(self):
        for name, slot, factor in SIGNALS:
            waveform = self.device.read_attribute("Waveform" + name)
            self.assertEqual(waveform.quality, AttrQuality.ATTR_VALID, name)
            self.assertTrue(numpy.array_equal(waveform.value, factor * slot_values(slot)), name)
        self.assertTrue(numpy.array_equal(self.device.WaveformFuncGenRefA, numpy.arange(RECORDS)))
        self.assertTrue(numpy.array_equal(self.device.WaveformFuncGenRefB, -numpy.arange(RECORDS)))

    def test_there_is_an_attribute_for_each_signal_and_no_other(self):
        names = [name for name in self.device.get_attribute_list() if name.startswith("Waveform")]
        expected = ["Waveform" + name for name, _, _ in SIGNALS]
        expected += ["WaveformTime", "WaveformFuncGenRefA", "WaveformFuncGenRefB"]
        self.assertEqual(sorted(names), sorted(expected))

    def test_time_and_frequency_follow_the_rate(self):
        self.server.script("rate 5000\n")
        self.assertTrue(until(lambda: len(self.device.WaveformTime) == RECORDS and self.device.WaveformTime[5] == 0.001))
        self.assertEqual(len(self.device.SpectrumFrequency), 4097)
        self.assertEqual(self.device.SpectrumFrequency[4096], 2500)

    def test_spectrum_is_the_amplitude_of_the_newest_records_without_their_mean(self):
        for attribute, slot, factor in [("Bpm1X", 0, 1000), ("Bpm1Y", 1, 2000), ("Bpm1I0", 2, 1), ("Bpm2X", 4, 3000),
                                        ("Bpm2Y", 5, 5000), ("Bpm2I0", 6, 1)]:
            newest = factor * slot_values(slot)[-8192:]
            reference = numpy.abs(numpy.fft.rfft(newest - newest.mean())) / 8192
            found = getattr(self.device, "Spectrum" + attribute)
            self.assertTrue(numpy.allclose(found, reference, rtol=1e-6, atol=1e-15 * factor), attribute)
            self.assertGreater(found[1], found[100])

    def test_arrays_of_one_request_come_from_one_window(self):
        before = len([call for call in self.server.calls() if call.startswith("getBuffer")])
        self.device.read_attributes(["Waveform" + name for name, _, _ in SIGNALS] + ["SpectrumBpm1X"])
        after = len([call for call in self.server.calls() if call.startswith("getBuffer")])
        self.assertEqual(after - before, 1)

    def test_nothing_is_fetched_while_nobody_asks(self):
        until(lambda: self.server.calls().count("getBPMStats()") > 5)
        self.assertFalse([call for call in self.server.calls() if call.startswith("getBuffer")])

    def test_a_stream_that_comes_short_is_not_valid(self):
        self.server.script("short 14335\n")
        waveform = lambda: self.device.read_attribute("WaveformPos1X").quality
        self.assertTrue(until(lambda: waveform() == AttrQuality.ATTR_INVALID))
        self.assertEqual(self.device.read_attribute("SpectrumBpm1X").quality, AttrQuality.ATTR_INVALID)
        self.server.script("")
        self.assertTrue(until(lambda: waveform() == AttrQuality.ATTR_VALID))

    def test_without_the_settings_file_positions_have_no_waveform(self):
        self.server.remove_settings()
        quality = lambda name: self.device.read_attribute(name).quality
        self.assertTrue(until(lambda: quality("WaveformPos1X") == AttrQuality.ATTR_INVALID))
        self.assertEqual(quality("WaveformInt1"), AttrQuality.ATTR_VALID)

    def test_a_stream_that_hangs_leaves_the_scalars_alone(self):
        self.server.script("hang getBuffer\n")
        self.device.set_timeout_millis(10000)
        self.assertEqual(self.device.read_attribute("WaveformPos1X").quality, AttrQuality.ATTR_INVALID)
        self.server.script("hang getBuffer\nrate 4000\n")
        self.assertTrue(until(lambda: self.device.DisplayRate == 4000))
        self.server.script("")
        quality = lambda: self.device.read_attribute("WaveformPos1X").quality
        self.assertTrue(until(lambda: quality() == AttrQuality.ATTR_VALID))

    def test_a_subscriber_gets_a_waveform_with_each_poll(self):
        seen = []
        subscription = self.device.subscribe_event("WaveformInt1", tango.EventType.CHANGE_EVENT, seen.append)
        self.assertTrue(until(lambda: len(seen) > 3))
        self.assertTrue(numpy.array_equal(seen[-1].attr_value.value, slot_values(2)))
        self.device.unsubscribe_event(subscription)


class ShortWindowTest(unittest.TestCase):
    def test_window_of_a_few_records_has_no_spectrum(self):
        server = KoraServer.KoraServer(LIBRARY, {"WindowRecords": 1024}).start()
        device = server.device()
        self.assertEqual(len(device.WaveformPos1X), 1024)
        self.assertEqual(device.read_attribute("SpectrumBpm1X").quality, AttrQuality.ATTR_INVALID)
        self.assertEqual(server.stop(), 0)


if __name__ == "__main__":
    KoraServer.run("__main__")
