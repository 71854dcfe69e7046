"""The recorder's files as h5py and h5dump read them, bit for bit against the simulated stream."""

import glob
import os
import shutil
import subprocess
import sys
import tempfile
import unittest

try:
    import h5py
    import numpy as np
except ImportError:
    print("h5py is not here")
    sys.exit(77)

FIELDS = {
    "pos1X": 0, "pos1Y": 1, "int1": 2, "pos2X": 4, "pos2Y": 5, "int2": 6, "dac0": 8, "dac1": 9, "dac2": 10, "dac3": 11,
    "xLf": 12, "xHf": 13, "yLf": 14, "yHf": 15, "cur1_0": 24, "cur1_1": 25, "cur1_2": 26, "cur1_3": 27, "cur2_0": 28,
    "cur2_1": 29, "cur2_2": 30, "cur2_3": 31,
}
REFERENCES = {"funcGenRefA": 14, "funcGenRefB": 15}  # halves of slot 7


def columns_of(raw):
    """The columns of 256-byte records, by name, as the record's layout gives them."""
    doubles = raw.view("<f8").reshape(-1, 32)
    floats = raw.view("<f4").reshape(-1, 64)
    columns = {name: doubles[:, slot] for name, slot in FIELDS.items()}
    columns.update({name: floats[:, half] for name, half in REFERENCES.items()})
    return columns


def binned(values, factor, reduce):
    return np.array([reduce(values[start:start + factor].astype("f8")) for start in range(0, len(values), factor)])


class DrivenRecording(unittest.TestCase):
    options = []
    rate = 50000
    seconds = 11

    @classmethod
    def setUpClass(cls):
        cls.folder = tempfile.mkdtemp()
        raw = os.path.join(cls.folder, "stream.raw")
        command = [os.environ["KORA_RECORD_DRIVEN"], cls.folder, str(cls.rate), str(cls.seconds), raw]
        cls.told = subprocess.run(command + cls.options, check=True, capture_output=True, text=True).stdout
        cls.raw = columns_of(np.fromfile(raw, "u1"))
        cls.paths = sorted(glob.glob(cls.folder + "/kora_*.h5"))

    @classmethod
    def tearDownClass(cls):
        shutil.rmtree(cls.folder)

    def joined(self, name):
        parts = []
        for path in self.paths:
            with h5py.File(path, "r") as file:
                parts.append(file["entry/stream"][name][:])
        return np.concatenate(parts)

    def test_every_sample_is_there_once_bit_for_bit(self):
        self.assertIn(" 0 gaps", self.told)
        for name, expected in self.raw.items():
            recorded = self.joined(name)
            # The record of before the first step is the first one.
            self.assertEqual(len(recorded), len(expected) + 1, name)
            self.assertEqual(recorded.dtype, expected.dtype, name)
            self.assertEqual(recorded[1:].tobytes(), expected.tobytes(), name)

    def test_segments_begin_at_whole_multiples_of_their_length(self):
        names = [os.path.basename(path) for path in self.paths]
        self.assertEqual(names[:3], ["kora_2026-11-21T210458Z.h5", "kora_2026-11-21T210500Z.h5",
                                     "kora_2026-11-21T210505Z.h5"])

    def test_times_go_on_from_segment_to_segment(self):
        ends = []
        for path in self.paths:
            with h5py.File(path, "r") as file:
                time = file["entry/stream/time"][:]
                np.testing.assert_allclose(np.diff(time), 1 / self.rate, atol=1e-9)
                self.assertEqual(time[0], 0)
                start = np.datetime64(file["entry/start_time"][()].decode()[:-1], "us")
                ends.append((start, start + np.timedelta64(round((time[-1] + 1 / self.rate) * 1e6), "us")))
        for (_, end), (start, _) in zip(ends, ends[1:]):
            self.assertLessEqual(abs((start - end) / np.timedelta64(1, "us")), 2)

    def test_overviews_are_those_of_the_samples(self):
        with h5py.File(self.paths[1], "r") as file:
            for factor in (128, 16384):
                for name in ("pos1X", "cur2_3", "funcGenRefA"):
                    values = file["entry/stream"][name][:]
                    group = file["entry/overview_%d" % factor][name]
                    for field, reduce in (("min", np.min), ("max", np.max), ("mean", np.mean), ("std", np.std)):
                        np.testing.assert_allclose(group[field][:], binned(values, factor, reduce), rtol=1e-9,
                                                   atol=1e-18, err_msg="%s %s %d" % (name, field, factor))

    def test_nexus_defaults_lead_to_a_plot(self):
        with h5py.File(self.paths[0], "r") as file:
            self.assertEqual(file.attrs["NX_class"], "NXroot")
            entry = file[file.attrs["default"]]
            self.assertEqual((entry.attrs["NX_class"], entry["program_name"][()].decode()),
                             ("NXentry", "kora-recorder driven"))
            data = entry[entry.attrs["default"]]
            self.assertEqual((data.attrs["NX_class"], data.attrs["signal"], data.attrs["axes"]),
                             ("NXdata", "pos1X", "time"))
            self.assertEqual(len(data[data.attrs["signal"]]), len(data[data.attrs["axes"]]))
            self.assertEqual(data.attrs["rate"], self.rate)
            self.assertEqual(data["pos1X"].attrs["scale"], 500)
            self.assertEqual(data["int1"].attrs["units"], "A")
            self.assertNotIn("scale", data["int1"].attrs)
            self.assertEqual(entry["status"].attrs["NX_class"], "NXlog")
            with open(os.environ["KORA_SETTINGS"], encoding="utf-8") as settings:
                self.assertEqual(entry["settings"][0].decode(), settings.read())

    def test_status_holds_what_the_installation_tells(self):
        with h5py.File(self.paths[1], "r") as file:
            status = file["entry/status"]
            self.assertGreaterEqual(len(status["time"]), 4)
            self.assertEqual(status["configuration"][0], 2)
            self.assertEqual(list(status["output"][0]), [0, 1, 2, 3])
            self.assertEqual(status["rate"][0], self.rate)
            self.assertEqual(status["unreadable"][0], 0)
            self.assertEqual(status["port"][0, 0, :2].view("<u2")[0], 0x2101)
            # Mean intensity at BPM1: what four electrodes collect without a bias voltage.
            self.assertAlmostEqual(status["statistics"][0, 0, 6], 4e-6, delta=2e-7)

    def test_h5dump_opens_it(self):
        told = subprocess.run(["h5dump", "-d", "/entry/stream/pos1X", "-c", "1", self.paths[0]], check=True,
                              capture_output=True, text=True).stdout
        self.assertIn("H5T_IEEE_F64LE", told)

    def test_verify_finds_nothing(self):
        run = subprocess.run([os.environ["KORA_RECORDER"], "verify"] + self.paths, capture_output=True, text=True)
        self.assertEqual((run.returncode, run.stdout), (0, "%d segments, 0 damaged\n" % len(self.paths)))

    def test_verify_finds_a_single_changed_sample(self):
        damaged = os.path.join(self.folder, "damaged.h5")
        shutil.copy(self.paths[0], damaged)
        with h5py.File(damaged, "r+") as file:
            file["entry/stream/pos1Y"][1000] += 1
        run = subprocess.run([os.environ["KORA_RECORDER"], "verify", damaged], capture_output=True, text=True)
        self.assertEqual(run.returncode, 1)
        self.assertIn("overview_128/pos1Y is not that of the samples from value 7 on", run.stdout)


class CompressedRecording(DrivenRecording):
    options = ["compress"]
    rate = 10000

    def test_the_columns_are_compressed(self):
        with h5py.File(self.paths[1], "r") as file:
            self.assertEqual(file["entry/stream/pos1X"].compression, "gzip")
            self.assertTrue(file["entry/stream/pos1X"].shuffle)


if __name__ == "__main__":
    unittest.main()
