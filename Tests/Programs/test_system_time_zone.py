#!/usr/bin/env python3
"""Checks which time zone is in force for the calendar, on a made-up /etc in a mount namespace of our own."""

import os
import select
import shutil
import subprocess
import sys
import unittest
from datetime import datetime
from pathlib import Path
from zoneinfo import ZoneInfo

DATABASE = Path("/usr/share/zoneinfo")
ETC = Path("/etc")
WINTER, SUMMER = 1736942400, 1752580800
ODD_NAMES = ["", "Nowhere", "Nowhere/City", "Europe", "Europe/", "zone.tab", "../../../etc/passwd", "Nowhere/City5", "A/" * 5000]


def reading(zone):
    return [f"{local.hour}:{local.minute}"
            for local in (datetime.fromtimestamp(instant, ZoneInfo(zone)) for instant in (WINTER, SUMMER))]


class Program:
    """The program that answers for the calendar, in one environment."""

    def __init__(self, environment=None):
        variables = {name: value for name, value in os.environ.items() if name != "TZ"}
        if environment is not None:
            variables["TZ"] = environment
        self.process = subprocess.Popen([ANSWERS], stdin=subprocess.PIPE, stdout=subprocess.PIPE, env=variables)

    def reading(self):
        self.process.stdin.write(f"zone current\ntime {WINTER}\ntime {SUMMER}\nzone current\n".encode())
        self.process.stdin.flush()
        return [self.line(), self.line()]

    def line(self):
        line = b""
        while not line.endswith(b"\n"):
            if not select.select([self.process.stdout], [], [], 10)[0]:
                raise TimeoutError("no answer")
            byte = os.read(self.process.stdout.fileno(), 1)
            if not byte:
                raise EOFError("the program ended")
            line += byte
        return line.decode().strip()

    def __enter__(self):
        return self

    def __exit__(self, *_):
        self.process.stdin.close()
        self.process.stdout.close()
        self.process.wait(10)


class SystemTimeZoneTest(unittest.TestCase):
    def setUp(self):
        for entry in ETC.iterdir():
            entry.unlink()

    def link(self, target, name="localtime"):
        (ETC / "new").symlink_to(target)
        (ETC / "new").rename(ETC / name)

    def name(self, text):
        (ETC / "timezone").write_bytes(text)

    def assert_zone(self, zone, environment=None):
        with Program(environment) as program:
            self.assertEqual(program.reading(), reading(zone), environment)

    def test_the_environment_comes_first(self):
        self.link(DATABASE / "Asia/Kathmandu")
        for zone in ("Asia/Tokyo", "Europe/Berlin", "UTC", "EST5EDT"):
            for environment in (zone, f":{zone}", str(DATABASE / zone), f":{DATABASE / 'posix' / zone}"):
                self.assert_zone(zone, environment)

    def test_the_environment_may_hold_a_rule(self):
        self.link(DATABASE / "Asia/Kathmandu")
        self.assert_zone("Europe/Berlin", "CET-1CEST,M3.5.0,M10.5.0/3")
        self.assert_zone("Europe/London", "GMT0BST,M3.5.0/1,M10.5.0")
        self.assert_zone("America/New_York", "<-05>5<-04>,M3.2.0,M11.1.0")
        self.assert_zone("Etc/GMT+7", "MST7")

    def test_rules_of_utc_and_gmt_count_westward_as_others_do(self):
        self.link(DATABASE / "Asia/Kathmandu")
        self.assert_zone("Etc/GMT-5", "UTC-5")
        self.assert_zone("Etc/GMT+5", "UTC5")
        self.assert_zone("Etc/GMT+3", "GMT+3")

    def test_what_the_environment_makes_up_is_utc(self):
        self.link(DATABASE / "Asia/Kathmandu")
        for name in ODD_NAMES:
            for environment in (name, f":{name}", f"{DATABASE}/{name}"):
                self.assert_zone("UTC", environment)

    def test_the_environment_may_name_a_file(self):
        self.link(DATABASE / "Asia/Kathmandu")
        for environment in ("/etc/localtime", ":/etc/localtime"):
            self.assert_zone("Asia/Kathmandu", environment)

    def test_the_link_names_the_zone(self):
        self.name(b"Asia/Tokyo\n")
        for target in ("/usr/share/zoneinfo/Asia/Kathmandu", "../usr/share/zoneinfo/Asia/Kathmandu"):
            self.link(target)
            self.assert_zone("Asia/Kathmandu")

    def test_a_link_may_lead_over_another(self):
        self.link(DATABASE / "Asia/Kathmandu", "chosen")
        self.link("chosen")
        self.name(b"Asia/Tokyo\n")
        self.assert_zone("Asia/Kathmandu")

    def test_a_link_into_nothing_still_names_the_zone(self):
        self.link("/nowhere/zoneinfo/Asia/Tokyo")
        with Program() as program:
            self.assertEqual(program.reading(), reading("Asia/Tokyo"))
            self.link("/nowhere/zoneinfo/Asia/Kathmandu")
            self.assertEqual(program.reading(), reading("Asia/Kathmandu"))

    def test_an_odd_link_is_utc(self):
        self.name(b"Asia/Kathmandu\n")
        short_names = [name for name in ODD_NAMES if len(name) < 100]
        for target in ("nowhere", "localtime", "/", f"{DATABASE}/localtime", *(f"{DATABASE}/{name}" for name in short_names)):
            self.link(target)
            self.assert_zone("UTC")

    def test_a_copied_zone_counts_and_a_stale_name_does_not(self):
        shutil.copyfile(DATABASE / "Asia/Tokyo", ETC / "localtime")
        for text in (b"Asia/Kathmandu\n", b"Europe/Berlin"):
            self.name(text)
            self.assert_zone("Asia/Tokyo")

    def test_a_copied_zone_that_changes_is_seen_at_once(self):
        shutil.copyfile(DATABASE / "Asia/Tokyo", ETC / "localtime")
        with Program() as program:
            self.assertEqual(program.reading(), reading("Asia/Tokyo"))
            for zone in ("Asia/Kathmandu", "Europe/Berlin", "Asia/Tokyo"):
                shutil.copyfile(DATABASE / zone, ETC / "new")
                (ETC / "new").rename(ETC / "localtime")
                self.assertEqual(program.reading(), reading(zone))
            for zone in ("America/New_York", "Asia/Kathmandu"):
                (ETC / "localtime").write_bytes((DATABASE / zone).read_bytes())
                self.assertEqual(program.reading(), reading(zone))

    def test_a_copied_zone_without_a_name_counts_itself(self):
        shutil.copyfile(DATABASE / "Asia/Kathmandu", ETC / "localtime")
        self.assert_zone("Asia/Kathmandu")

    def test_without_anything_it_is_utc(self):
        self.assert_zone("UTC")
        for text in (b"", b"Asia/Kathmandu\n"):
            self.name(text)
            self.assert_zone("UTC")

    def test_a_pipe_in_the_files_place_is_not_waited_for(self):
        os.mkfifo(ETC / "localtime")
        self.assert_zone("UTC")

    def test_a_change_is_seen_at_once(self):
        self.link(DATABASE / "Asia/Kathmandu")
        with Program() as program:
            for zone in ("Asia/Tokyo", "Europe/Berlin", "America/Nuuk", "Asia/Tokyo"):
                self.link(DATABASE / zone)
                self.assertEqual(program.reading(), reading(zone))
            (ETC / "localtime").unlink()
            self.assertEqual(program.reading(), reading("UTC"))
            self.link(DATABASE / "Asia/Tokyo")
            self.assertEqual(program.reading(), reading("Asia/Tokyo"))


if __name__ == "__main__":
    if len(sys.argv) == 2:
        os.execvp("unshare", ["unshare", "-rm", sys.executable, __file__, sys.argv[1], "inside"])
    ANSWERS = os.path.abspath(sys.argv[1])
    subprocess.run(["mount", "-t", "tmpfs", "none", ETC], check=True)
    unittest.main(argv=sys.argv[:1])
