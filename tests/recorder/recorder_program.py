"""kora-recorder as a process on the simulated installation: read while it writes, killed, exported, and what it says."""

import glob
import os
import random
import shutil
import signal
import socket
import subprocess
import sys
import tempfile
import time
import unittest

try:
    import h5py
    import numpy as np
except ImportError:
    print("h5py is not here")
    sys.exit(77)

RECORDER = os.environ["KORA_RECORDER"]
KILLS = int(os.environ.get("KORA_KILLS", "6"))
DEADLINE = 30


def wait_for(condition):
    """Until something holds, or the test has waited long enough for any machine."""
    end = time.monotonic() + DEADLINE
    while not condition():
        if time.monotonic() > end:
            raise AssertionError("waited in vain")
        time.sleep(0.02)


class RecorderTest(unittest.TestCase):
    def setUp(self):
        self.folder = tempfile.mkdtemp()
        self.process = None

    def tearDown(self):
        if self.process and self.process.poll() is None:
            self.process.kill()
        if self.process:
            self.process.communicate()
        shutil.rmtree(self.folder, ignore_errors=True)

    def start(self, *options, **more):
        command = [RECORDER, "--folder", self.folder, "--settings", os.environ["KORA_SETTINGS"], *options]
        self.process = subprocess.Popen(command, stdout=subprocess.PIPE, stderr=subprocess.PIPE, text=True, **more)
        return self.process

    def end(self, number=signal.SIGTERM):
        self.process.send_signal(number)
        output = self.process.communicate(timeout=DEADLINE)
        return self.process.returncode, *output

    def run_command(self, *words):
        run = subprocess.run([RECORDER, "--folder", self.folder, *words], capture_output=True, text=True,
                             timeout=DEADLINE)
        return run.returncode, run.stdout, run.stderr

    def segments(self):
        return sorted(glob.glob(self.folder + "/kora_*.h5"))

    def recorded(self):
        """Samples that a reader sees now."""
        total = 0
        for path in self.segments():
            try:
                with h5py.File(path, "r", libver="latest", swmr=True) as file:
                    total += len(file["entry/stream/time"])
            except OSError:
                pass  # the ring has taken it, or it is being repaired
        return total

    def tell_simulation(self, *words):
        subprocess.run([os.environ["KORA_SIM"], "--pid", str(self.process.pid), *words], check=True,
                       capture_output=True, timeout=DEADLINE)


class Recording(RecorderTest):
    def test_others_read_it_while_it_is_written(self):
        self.start("--segment", "1h")
        wait_for(lambda: self.recorded() > 1500)
        path = self.segments()[-1]
        with h5py.File(path, "r", libver="latest", swmr=True) as file:
            before = len(file["entry/stream/time"])
            wait_for(lambda: (file["entry/stream/time"].refresh(), len(file["entry/stream/time"]) > before + 500)[1])
            self.assertFalse(np.isnan(file["entry/stream/pos1X"][:before]).any())
        status, _, errors = self.end()
        self.assertEqual((status, errors), (0, ""))
        with h5py.File(path, "r") as file:
            self.assertEqual(file["entry/events/kind"][-1], b"stop")

    def test_a_terminal_signal_closes_the_file_whole(self):
        for number in (signal.SIGTERM, signal.SIGINT, signal.SIGHUP):
            known = self.recorded()
            self.start()
            wait_for(lambda: self.recorded() > known + 100)
            self.assertEqual(self.end(number)[0], 0)
            for path in self.segments():
                h5py.File(path, "r").close()
        self.assertEqual(self.run_command("verify")[0], 0)

    def test_seconds_end_it(self):
        self.start("--seconds", "2")
        output, _ = self.process.communicate(timeout=DEADLINE)
        self.assertEqual(self.process.returncode, 0)
        self.assertRegex(output, r"rate=1000 samples=\d+ megabytes=[\d.]+ gaps=0 free=\d+\n")
        self.assertGreater(self.recorded(), 1000)

    def test_after_a_kill_all_but_the_last_second_is_there_and_opens_plainly(self):
        dice = random.Random(1)
        for _ in range(KILLS):
            known = self.recorded()
            self.start("--segment", "2s")
            wait_for(lambda: self.recorded() > known)
            time.sleep(dice.uniform(0, 2.5))
            seen = self.recorded()
            self.process.kill()
            self.process.communicate()
            self.assertGreaterEqual(self.recorded(), seen)
        known = self.recorded()
        self.start()
        wait_for(lambda: self.recorded() > known)
        self.assertEqual(self.end()[0], 0)
        for path in self.segments():
            h5py.File(path, "r").close()
        status, output, _ = self.run_command("verify")
        self.assertEqual(status, 0, output)
        # Each start tells how long nothing was recorded.
        gaps = [gap for path in self.segments() for gap in h5py.File(path, "r")["entry/gaps/seconds"][:]]
        self.assertGreaterEqual(len(gaps), KILLS)

    def test_a_lost_beam_is_an_event_and_is_kept_for_good(self):
        self.start("--post-mortem", "3s")
        wait_for(lambda: self.recorded() > 100)
        self.tell_simulation("beam", "off")
        wait_for(lambda: "beam lost at BPM1" in self.run_command("list")[1])
        self.tell_simulation("beam", "on")
        wait_for(lambda: "beam back at BPM1" in self.run_command("list")[1])
        self.end()
        status, listed, _ = self.run_command("list")
        self.assertEqual(status, 0)
        self.assertRegex(listed, r"kept for good: .* \+- 3 s  beam: beam lost at BPM1")
        found = False
        for path in self.segments():
            with h5py.File(path, "r") as file:
                kinds = file["entry/events/kind"][:]
                texts = file["entry/events/text"][:]
                for index in np.flatnonzero((kinds == b"beam") & (texts == b"beam lost at BPM1")):
                    when = file["entry/events/time"][index]
                    times = file["entry/stream/time"][:]
                    intensity = file["entry/stream/int1"][:]
                    sample = int(np.argmin(np.abs(times - when)))
                    self.assertLess(intensity[sample], 0.5e-6)
                    self.assertGreaterEqual(intensity[sample - 1], 0.5e-6)
                    found = True
        self.assertTrue(found)
        self.assertEqual(self.run_command("forget", "all")[1], "1 forgotten\n")

    def test_a_mark_becomes_an_event_and_protects_from_the_ring(self):
        self.start("--segment", "1s", "--keep", "1s")
        wait_for(lambda: self.recorded() > 500)
        self.assertEqual(self.run_command("--post-mortem", "1s", "mark", "mirror touched")[0], 0)
        wait_for(lambda: "mirror touched" in self.run_command("list")[1])
        marked = [line for line in self.run_command("list")[1].splitlines() if line.endswith("kept")]
        self.assertTrue(marked)
        seen = set()
        wait_for(lambda: len(seen.update(self.segments()) or seen) >= 8)
        self.end()
        still = [line for line in self.run_command("list")[1].splitlines() if line.endswith("kept")]
        self.assertTrue(set(line.split("  ")[0] for line in marked) <= set(line.split("  ")[0] for line in still))
        # What nobody keeps is gone: of eight segments and more only the kept and the newest are left.
        self.assertLess(len(self.segments()) - len(still), 5)

    def test_what_changes_is_an_event(self):
        self.start("--segment", "1h")
        wait_for(lambda: self.recorded() > 500)
        self.tell_simulation("fail", "getBPMStats", "always")
        wait_for(lambda: "statistics cannot be read" in self.run_command("list")[1])
        self.tell_simulation("repair")
        wait_for(lambda: "statistics can be read again" in self.run_command("list")[1])
        self.tell_simulation("unplug", "B")
        wait_for(lambda: "port B 2101 -> nothing" in self.run_command("list")[1])
        self.assertEqual(self.end()[0], 0)

    def test_a_second_recorder_is_refused(self):
        self.start()
        wait_for(lambda: self.recorded() > 0)
        second = subprocess.run([RECORDER, "--folder", self.folder], capture_output=True, text=True, timeout=DEADLINE)
        self.assertEqual((second.returncode, second.stderr),
                         (1, "kora-recorder: another one records into %s\n" % self.folder))

    def test_a_folder_that_goes_is_made_again(self):
        self.start("--segment", "1h")
        wait_for(lambda: self.recorded() > 100)
        shutil.rmtree(self.folder)
        wait_for(lambda: self.recorded() > 100)
        self.assertEqual(self.end()[0], 0)
        self.assertIn("its file is gone", self.run_command("list")[1])

    def test_the_service_manager_is_told(self):
        path = self.folder + "/notify"
        with socket.socket(socket.AF_UNIX, socket.SOCK_DGRAM) as manager:
            manager.bind(path)
            manager.settimeout(DEADLINE)
            self.start(env=dict(os.environ, NOTIFY_SOCKET=path, WATCHDOG_USEC="300000"))
            self.assertEqual(manager.recv(100), b"READY=1")
            self.assertEqual(manager.recv(100), b"WATCHDOG=1")
            self.process.terminate()
            told = manager.recv(100)
            while told == b"WATCHDOG=1":
                told = manager.recv(100)
            self.assertEqual(told, b"STOPPING=1")


class Commands(RecorderTest):
    def record(self):
        self.start("--segment", "2s", "--seconds", "5")
        self.process.communicate(timeout=DEADLINE)

    def test_export_writes_what_was_recorded(self):
        self.record()
        recorded = np.concatenate([h5py.File(path, "r")["entry/stream/pos1Y"][:] for path in self.segments()])
        csv = self.folder + "/part.csv"
        hdf = self.folder + "/part.h5"
        for path in (csv, hdf):
            status, output, errors = self.run_command("export", "--from", "-3600s", "--to", "-0.001s", "--signals",
                                                      "pos1Y,int1", path)
            self.assertEqual((status, output, errors), (0, "%d rows\n" % len(recorded), ""))
        with open(csv, encoding="utf-8") as file:
            self.assertEqual(file.readline(), "time,pos1Y,int1\n")
            rows = np.loadtxt(file, delimiter=",")
        self.assertEqual(rows[:, 1].tobytes(), recorded.tobytes())
        np.testing.assert_allclose(np.diff(rows[:, 0]), 0.001, atol=1e-4)
        with h5py.File(hdf, "r") as file:
            self.assertEqual(file["entry/stream/pos1Y"][:].tobytes(), recorded.tobytes())
            self.assertEqual(file["entry/stream"].attrs["signal"], "pos1Y")

    def test_export_of_an_overview(self):
        self.record()
        csv = self.folder + "/part.csv"
        status, _, errors = self.run_command("export", "--from", "-3600s", "--to", "-0.001s", "--signals", "int1",
                                             "--rate", "128", csv)
        self.assertEqual((status, errors), (0, ""))
        with open(csv, encoding="utf-8") as file:
            self.assertEqual(file.readline(), "time,int1_mean,int1_min,int1_max,int1_std\n")
            rows = np.loadtxt(file, delimiter=",")
        self.assertTrue((rows[:, 2] <= rows[:, 1]).all() and (rows[:, 1] <= rows[:, 3]).all())

    def test_export_of_a_time_without_recording_says_so(self):
        self.assertEqual(self.run_command("export", "--from", "-20s", "--to", "-10s", self.folder + "/x.csv"),
                         (1, "", "kora-recorder: nothing was recorded in this time\n"))

    def test_info_tells_of_a_file(self):
        self.record()
        status, output, _ = self.run_command("info", self.segments()[0])
        self.assertEqual(status, 0)
        self.assertIn("rate      1000 Hz", output)
        self.assertIn("start          recording starts", output)

    def test_wrong_options_end_with_status_2_and_one_line(self):
        for words in (["--keep"], ["--keep", "soon"], ["--limit", "-3G"], ["--segment", "0.5s"], ["--frobnicate"],
                      ["dance"], ["list", "x"], ["info"], ["mark"], ["export", "--from", "-5s", "x.csv"],
                      ["export", "--from", "-1s", "--to", "-5s", "x.csv"],
                      ["export", "--from", "-5s", "--to", "-1s", "x.txt"],
                      ["export", "--from", "-5s", "--to", "-1s", "--signals", "pos3", "x.csv"],
                      ["export", "--from", "-5s", "--to", "-1s", "--rate", "7", "x.csv"],
                      ["--seconds", "1e400"], ["forget", "yesterday"]):
            status, output, errors = self.run_command(*words)
            self.assertEqual((status, output, errors.count("\n")), (2, "", 1), words)

    def test_version_and_help(self):
        self.assertEqual(self.run_command("--version")[:2], (0, "kora-recorder %s\n" % os.environ["KORA_VERSION"]))
        self.assertTrue(self.run_command("--help")[1].startswith("usage: kora-recorder "))


if __name__ == "__main__":
    unittest.main()
