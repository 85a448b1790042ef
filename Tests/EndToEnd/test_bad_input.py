"""Damage and shortage: each has its outcome, none crashes, none loses anything."""

import os
import plistlib
import subprocess
import unittest

from desktop import APP, Desktop, wait_for


class Preferences(unittest.TestCase):
    def setUp(self):
        self.desktop = self.enterContext(Desktop(window_manager=True))
        self.desktop.config.mkdir(parents=True)

    def kept_aside(self):
        return sorted(path.name for path in self.desktop.config.iterdir() if "damaged" in path.name)

    def finish_first_run(self, **options):
        self.desktop.start(**options)
        self.desktop.welcome_window()
        self.desktop.xdotool("key", "Return")
        self.desktop.cup_geometry()

    def test_a_damaged_file_reads_as_empty_and_is_kept_aside(self):
        for content in (b"not a property list", b"", b"bplist00\xff\xff", b"<?xml version='1.0'?><plist><dict><key>a",
                        plistlib.dumps(["no", "dictionary"])):
            with self.subTest(content[:12]):
                self.desktop.defaults_file.write_bytes(content)
                self.finish_first_run()
                self.assertEqual(wait_for(self.desktop.stored)["appLanguage"], "en")
                last = self.kept_aside()
                self.assertIn(content, [(self.desktop.config / name).read_bytes() for name in last])
                self.assertEqual(self.desktop.end(), 0)

    def test_values_of_wrong_types_read_as_their_defaults(self):
        self.desktop.store({"appLanguage": "en", "scheduleEnabled": ["x"], "scheduleOnMinutes": {"a": 1},
                            "scheduleOffMinutes": b"bytes", "updateAttempts": 7, "autoUpdate": "maybe"})
        before = self.desktop.defaults_file.read_bytes()
        self.desktop.start()
        self.desktop.click_cup()
        wait_for(self.desktop.cup_is_filled)
        self.assertEqual(self.desktop.end(), 0)
        self.assertEqual(self.desktop.defaults_file.read_bytes(), before)

    def test_a_language_that_is_no_text_shows_the_welcome_window(self):
        self.desktop.store({"appLanguage": ["en"], "kept": "yes"})
        self.finish_first_run()
        stored = wait_for(lambda: self.desktop.stored().get("appLanguage") == "en" and self.desktop.stored())
        self.assertEqual(stored["kept"], "yes")

    def test_an_unreadable_file_is_kept_aside(self):
        self.desktop.defaults_file.mkdir()  # root reads everything but a folder
        (self.desktop.defaults_file / "precious").write_text("data")
        self.finish_first_run()
        wait_for(self.desktop.defaults_file.is_file)
        [name] = self.kept_aside()
        self.assertEqual((self.desktop.config / name / "precious").read_text(), "data")

    def test_a_read_only_folder_is_no_hindrance(self):
        read_only = self.desktop.folder / "read-only"
        read_only.mkdir()
        subprocess.run(["mount", "-t", "tmpfs", "-o", "ro,size=64k", "tmpfs", read_only], check=True)
        self.addCleanup(subprocess.run, ["umount", "-l", read_only], check=True)
        self.desktop.environment["XDG_CONFIG_HOME"] = str(read_only)
        self.finish_first_run(expects_log="LoginItem: register failed: ")
        self.desktop.click_cup()
        wait_for(self.desktop.cup_is_filled)
        self.assertEqual(self.desktop.end(), 0)

    def test_on_a_full_disk_the_old_file_stays_and_the_change_is_stored_once_there_is_room(self):
        subprocess.run(["mount", "-t", "tmpfs", "-o", "size=64k", "tmpfs", self.desktop.config], check=True)
        self.addCleanup(subprocess.run, ["umount", "-l", self.desktop.config], check=True)
        self.desktop.store({"kept": "yes"})
        before = self.desktop.defaults_file.read_bytes()
        filler = self.desktop.config / "filler"
        with self.assertRaises(OSError), open(filler, "wb", buffering=0) as file:
            while True:
                file.write(bytes(4096))
        self.finish_first_run(expects_log="LoginItem: register failed: ")
        self.assertEqual(self.desktop.defaults_file.read_bytes(), before)
        filler.unlink()
        self.assertEqual(self.desktop.end(), 0)
        stored = self.desktop.stored()
        self.assertEqual(stored["kept"], "yes")
        self.assertEqual(stored["appLanguage"], "en")


class Session(unittest.TestCase):
    def test_without_a_display_it_says_so_and_ends(self):
        environment = {name: value for name, value in os.environ.items()
                       if name not in ("DISPLAY", "WAYLAND_DISPLAY", "QT_QPA_PLATFORM")}
        result = subprocess.run([APP / "Contents/MacOS/Vantorel"], env=environment, capture_output=True, text=True,
                                timeout=20)
        self.assertEqual(result.returncode, 1)
        self.assertIn("no display", result.stderr)
        self.assertEqual(len(result.stderr.splitlines()), 1)

    def test_a_display_that_does_not_answer_is_none(self):
        with Desktop() as desktop:
            desktop.environment["DISPLAY"] = ":9999"
            desktop.start(expects_status=1, expects_log="no display: ").wait(20)
            self.assertEqual(len(desktop.log().splitlines()), 1)

    def test_where_nothing_shows_the_cup_it_says_so_once(self):
        with Desktop(tray=False) as desktop:
            desktop.start_as_returning_user(expects_log="nothing here shows the cup: ")
            wait_for(desktop.log, 20)
            self.assertEqual(len(desktop.log().splitlines()), 1)

    def test_arguments_are_ignored(self):
        with Desktop() as desktop:
            desktop.store({"appLanguage": "en"})
            desktop.start(command=[APP / "Contents/MacOS/Vantorel", "-platform", "nonsense", "--help"])
            desktop.click_cup()
            wait_for(desktop.cup_is_filled)

    def test_a_tray_that_comes_later_shows_the_cup(self):
        with Desktop(tray=False) as desktop:
            session = desktop.bus("session")
            there = set(session.list_names())
            desktop.start_as_returning_user()
            wait_for(lambda: set(session.list_names()) - there, what="the program to look for a panel")
            self.assertIsNone(desktop.cup_window())
            desktop.start_tray()
            desktop.click_cup()
            wait_for(desktop.cup_is_filled)

    def test_a_tray_that_is_restarted_shows_the_cup_again(self):
        with Desktop() as desktop:
            desktop.start_as_returning_user()
            desktop.click_cup()
            wait_for(desktop.cup_is_filled)
            desktop.tray.kill()
            desktop.tray.wait()
            wait_for(lambda: not desktop.cup_window())
            desktop.start_tray()
            wait_for(desktop.cup_is_filled)

    def test_without_session_bus_the_tray_serves(self):
        with Desktop(session_bus=False, system_bus=False) as desktop:
            desktop.start_as_returning_user()
            desktop.click_cup()
            wait_for(desktop.cup_is_filled)
            self.assertEqual(desktop.end(), 0)

    def test_when_the_display_dies_nothing_stays_held(self):
        with Desktop() as desktop:
            desktop.start_as_returning_user(expects_status=1, expects_log="The X11 connection broke")
            desktop.click_cup()
            wait_for(desktop.logind_inhibitors)
            desktop.x_server.kill()
            desktop.app_process.wait(5)
            wait_for(lambda: not desktop.logind_inhibitors(), 1)


if __name__ == "__main__":
    unittest.main(verbosity=2)
