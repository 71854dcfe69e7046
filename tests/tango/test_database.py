"""The device server with a real TANGO database: registration, properties, events, restart, the database gone and back."""

import os
import signal
import subprocess
import tempfile
import unittest

import tango

import KoraServer
from KoraServer import DEVICE, until

LIBRARY = os.environ["KORA_SCRIPTED_LIBRARY"]
SCRIPT = os.path.join(os.environ["KORA_SOURCE_FOLDER"], "tango", "private-database")


class PrivateDatabase:
    def __init__(self, folder):
        self.folder = folder
        self.port = KoraServer.free_port()
        self.process = None

    def start(self):
        self.process = subprocess.Popen([SCRIPT, self.folder, str(self.port)], stdout=subprocess.PIPE, text=True)
        line = self.process.stdout.readline().strip()
        if line != "TANGO_HOST=127.0.0.1:%d" % self.port:
            raise RuntimeError("the database did not start: " + line)
        return self

    def stop(self):
        self.process.send_signal(signal.SIGTERM)
        self.process.wait(60)
        self.process.stdout.close()


class RegisteredServer(KoraServer.KoraServer):
    """The server as a database knows it."""

    def __init__(self, database):
        super().__init__(LIBRARY)
        self.database = database

    def arguments(self):
        return []

    def start(self):
        self.environment["TANGO_HOST"] = "127.0.0.1:%d" % self.database.port
        return super().start()

    def device(self):
        return tango.DeviceProxy("tango://127.0.0.1:%d/%s" % (self.database.port, DEVICE))


class DatabaseTest(unittest.TestCase):
    @classmethod
    def setUpClass(cls):
        cls.folder = tempfile.TemporaryDirectory(prefix="kora-tango-database-")
        cls.addClassCleanup(cls.folder.cleanup)
        cls.database = PrivateDatabase(cls.folder.name).start()
        cls.addClassCleanup(cls.database.stop)
        cls.client = tango.Database("127.0.0.1", cls.database.port)
        info = tango.DbDevInfo()
        info.server, info._class, info.name = "KoraInstallation/test", "KoraInstallation", DEVICE
        cls.client.add_device(info)
        cls.client.put_device_property(DEVICE, {"PollPeriod": ["100"]})

    def setUp(self):
        self.server = RegisteredServer(self.database).start()
        self.device = self.server.device()

    def tearDown(self):
        self.assertEqual(self.server.stop(), 0)

    def test_a_registered_device_is_exported_and_found_by_name(self):
        self.assertTrue(self.client.get_device_info(DEVICE).exported)
        self.assertEqual(self.device.info().dev_class, "KoraInstallation")
        self.assertTrue(until(lambda: self.device.state() == tango.DevState.STANDBY))

    def test_properties_come_from_the_database(self):
        with self.assertRaises(tango.DevFailed):
            self.device.EnableFeedback()
        self.client.put_device_property(DEVICE, {"AllowCommands": ["true"]})
        self.device.Init()
        self.device.EnableFeedback()
        self.client.delete_device_property(DEVICE, ["AllowCommands"])
        self.device.Init()
        with self.assertRaises(tango.DevFailed):
            self.device.EnableFeedback()

    def test_thresholds_of_events_are_attribute_properties(self):
        config = self.device.get_attribute_config("Bpm1XMean")
        self.assertEqual(config.events.ch_event.abs_change, "0.1")
        config.events.ch_event.abs_change = "5"
        self.device.set_attribute_config(config)
        self.assertEqual(self.client.get_device_attribute_property(DEVICE, "Bpm1XMean")["Bpm1XMean"]["abs_change"][-1], "5")
        self.client.delete_device_attribute_property(DEVICE, {"Bpm1XMean": ["abs_change"]})

    def test_events_arrive_by_the_name_in_the_database(self):
        seen = []
        self.device.subscribe_event("DisplayRate", tango.EventType.CHANGE_EVENT, seen.append)
        self.server.script("rate 7000\n")
        self.assertTrue(until(lambda: any(event.attr_value and event.attr_value.value == 7000 for event in list(seen))))

    def test_a_second_server_for_the_device_is_refused(self):
        second = RegisteredServer(self.database)
        with self.assertRaises(RuntimeError):
            second.start()
        self.assertTrue(until(lambda: self.device.state() == tango.DevState.STANDBY))

    def test_a_client_finds_the_server_again_after_a_restart(self):
        self.assertEqual(self.server.stop(), 0)
        self.server = RegisteredServer(self.database).start()
        self.assertTrue(until(lambda: self.state() == tango.DevState.STANDBY))

    def test_a_server_that_was_killed_starts_again(self):
        os.kill(self.server.pid(), signal.SIGKILL)
        self.server.process.wait(30)
        self.server.folder.cleanup()
        self.server = RegisteredServer(self.database).start()
        self.assertTrue(until(lambda: self.state() == tango.DevState.STANDBY))

    def test_clients_go_on_while_the_database_is_gone(self):
        self.assertTrue(until(lambda: self.device.state() == tango.DevState.STANDBY))
        self.database.stop()
        self.server.script("rate 6000\n")
        self.assertTrue(until(lambda: self.device.read_attribute("DisplayRate").value == 6000))
        self.database.start()
        again = tango.Database("127.0.0.1", self.database.port)
        self.assertTrue(until(lambda: again.get_device_info(DEVICE).exported))
        self.assertTrue(until(lambda: self.server.device().read_attribute("DisplayRate").value == 6000))

    def state(self):
        try:
            return self.device.state()
        except tango.DevFailed:
            return None


if __name__ == "__main__":
    KoraServer.run("__main__")
