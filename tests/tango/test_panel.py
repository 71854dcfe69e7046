"""The ready panel, opened by Taurus on a virtual display, shows the live values of the device."""

import os
import subprocess
import unittest

import KoraServer

PANEL = os.path.join(os.environ["KORA_SOURCE_FOLDER"], "tango", "kora-panel")


class PanelTest(unittest.TestCase):
    def test_the_panel_shows_the_values_of_the_device(self):
        server = KoraServer.KoraServer(os.environ["KORA_SCRIPTED_LIBRARY"], {"PollPeriod": 100})
        server.script("".join("figure %d %d %g\n" % (bpm, figure, (10 * bpm + figure + 1) * 1e-3)
                              for bpm in range(2) for figure in range(9)))
        server.start()
        picture = server.path("panel.png")
        name = "tango://127.0.0.1:%d/%s#dbase=no" % (server.port, KoraServer.DEVICE)
        panel = subprocess.run(["xvfb-run", "-a", "-s", "-screen 0 1920x1080x24 -nolisten tcp", PANEL, name,
                                "--screenshot", picture], capture_output=True, text=True)
        self.assertEqual(panel.returncode, 0, panel.stderr)
        shown = [line for line in panel.stdout.splitlines() if line[:1] in "-0123456789"]
        # Means and deviations with the factors of the settings file, intensities as they are.
        expected = ["1.000000", "2.000000", "8.000000", "10.000000", "7.000000e-03",
                    "33.000000", "36.000000", "70.000000", "75.000000", "1.700000e-02"]
        self.assertEqual(shown, expected)
        self.assertGreater(os.path.getsize(picture), 10000)
        self.assertEqual(server.stop(), 0)


if __name__ == "__main__":
    KoraServer.run("__main__")
