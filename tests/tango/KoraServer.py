"""Starts and ends the device server for the tests, with a control library and a settings folder of its own."""

import os
import signal
import socket
import subprocess
import sys
import tempfile
import time

import tango

SERVER = os.environ["KORA_TANGO_SERVER"]
DEVICE = "test/kora/1"
START_SECONDS = 30


def free_port():
    with socket.socket() as probe:
        probe.bind(("127.0.0.1", 0))
        return probe.getsockname()[1]


def namespaces_are_refused():
    """bwrap gives the server a settings folder of its own; where it may not, nothing can be said of the server."""
    return subprocess.run(["bwrap", "--dev-bind", "/", "/", "true"], capture_output=True).returncode != 0


SETTINGS = """[BPM1]
Scale_X=1000
Scale_Y=2000
[BPM2]
Scale_X=3000
Scale_Y=5000
[ROCandROI]
RoiX=40
RoiY=20
Roc=50
[ROCandROI2]
RoiX=11
RoiY=12
Roc=50
"""


class KoraServer:
    """The server as a process, without a database. Properties come from a file."""

    def __init__(self, library, properties=None, settings=SETTINGS, environment=None):
        self.folder = tempfile.TemporaryDirectory(prefix="kora-tango-")
        self.library = library
        self.port = free_port()
        self.properties = properties or {}
        self.environment = dict(environment or {})
        self.settings_folder = self.path("settings")
        os.mkdir(self.settings_folder)
        if settings is not None:
            self.write_settings(settings)
        self.process = None
        self.script("")

    def path(self, name):
        return os.path.join(self.folder.name, name)

    def write_settings(self, text):
        with open(os.path.join(self.settings_folder, "config_koralink.ini"), "w") as file:
            file.write(text)

    def remove_settings(self):
        os.remove(os.path.join(self.settings_folder, "config_koralink.ini"))

    def script(self, text):
        """What the scripted library answers from now on. The file is replaced at once, never half written."""
        with open(self.path("script.new"), "w") as file:
            file.write(text)
        os.replace(self.path("script.new"), self.path("script"))

    def calls(self):
        with open(self.path("calls")) as file:
            return file.read().splitlines()

    def output(self):
        with open(self.path("output")) as file:
            return file.read()

    def arguments(self):
        if not self.properties:
            return ["-nodb", "-dlist", DEVICE]
        # The file takes the place of the database's properties.
        with open(self.path("properties"), "w") as file:
            file.write("KoraInstallation/test/DEVICE/KoraInstallation: \"%s\"\n" % DEVICE)
            for name, value in self.properties.items():
                file.write("%s->%s: %s\n" % (DEVICE, name, value))
        return ["-file=" + self.path("properties")]

    def start(self):
        environment = dict(os.environ, LD_LIBRARY_PATH=self.library, KORA_SCRIPT=self.path("script"),
                           KORA_CALLS=self.path("calls"))
        environment.pop("TANGO_HOST", None)
        environment.update(self.environment)
        command = ["bwrap", "--dev-bind", "/", "/", "--tmpfs", "/opt", "--bind", self.settings_folder,
                   "/opt/Zenthic/KORALINK", "--die-with-parent", SERVER, "test", *self.arguments(),
                   "-ORBendPoint", "giop:tcp:127.0.0.1:%d" % self.port]
        with open(self.path("output"), "a") as output:
            self.process = subprocess.Popen(command, env=environment, stdout=output, stderr=subprocess.STDOUT)
        deadline = time.monotonic() + START_SECONDS
        while "Ready to accept request" not in self.output():
            if self.process.poll() is not None or time.monotonic() > deadline:
                words = self.output()
                self.stop()
                raise RuntimeError("the server did not start: " + words)
            time.sleep(0.02)
        return self

    def device(self):
        return tango.DeviceProxy("tango://127.0.0.1:%d/%s#dbase=no" % (self.port, DEVICE))

    def pid(self):
        """The server behind its launcher, which has a first process of its own in the namespace."""
        pid = self.process.pid
        for _ in range(2):
            with open("/proc/%d/task/%d/children" % (pid, pid)) as file:
                children = file.read().split()
            if not children:
                break
            pid = int(children[0])
        return pid

    def stop(self):
        if self.process and self.process.poll() is None:
            os.kill(self.pid(), signal.SIGTERM)
            try:
                self.process.wait(START_SECONDS)
            except subprocess.TimeoutExpired:
                self.process.kill()
                self.process.wait()
        status = self.process.returncode if self.process else None
        self.process = None
        self.folder.cleanup()
        return status


def until(condition, seconds=20):
    """Waits for a condition of another process. Returns its last value; false once the time is over."""
    deadline = time.monotonic() + seconds
    while True:
        value = condition()
        if value or time.monotonic() > deadline:
            return value
        time.sleep(0.02)


def run(module):
    """Runs the tests of a module, or tells that they cannot run here."""
    import unittest
    if namespaces_are_refused():
        print("user namespaces are refused here: no settings folder of its own for the server")
        sys.exit(0)
    unittest.main(module=module, verbosity=2)
