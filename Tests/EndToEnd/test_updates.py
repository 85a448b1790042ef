"""The self-updater in the program as it ships, with the system's tools at their places and a server that misbehaves.

Each case has a machine of its own and pays the twelve seconds until the first check; so they run all at once."""

import hashlib
import json
import os
import pathlib
import re
import signal
import stat
import subprocess
import tempfile
import time

from desktop import APP, ROOT, wait_for
from faked_clock import FakedClock
from server import Server, Silence, answer, cut, in_drops
from updates import (CHECKSUM_LINE, FIRST_CHECK, HELPER_LINE, IMAGE, MANIFEST, TOOLS, Machine, UpdateTest, helper_script,
                     manifest, put_small_bundle, run_in_parallel, tree, write_info)

UUID = "[0-9A-F]{8}(-[0-9A-F]{4}){3}-[0-9A-F]{12}"
MOUNTED = ["hdiutil attach", "hdiutil detach"]
STAGED = ["hdiutil attach", "ditto", "hdiutil detach"]
SWAPPED = [*STAGED, "ditto", "xattr", "open"]
HELPER = TOOLS.parent / "helper"
OTHER_STATUSES = (201, 204, 206, 304, 404, 500)


class Updates(UpdateTest):
    # The road as it should be

    def test_the_real_road_from_one_version_to_the_next(self):
        server_root = self.folder / "server root"
        new = self.folder / "new" / "Vantorel.app"
        Machine.put_bundle(new, "1.1.0")
        subprocess.run([ROOT / "Packaging/make-update", new, server_root], check=True, capture_output=True)
        published = json.loads((server_root / MANIFEST[1:]).read_bytes())["latest"]
        image = "/" + published["file"]
        self.server.answers[MANIFEST] = answer(200, (server_root / MANIFEST[1:]).read_bytes())
        self.server.answers[image] = answer(200, (server_root / image[1:]).read_bytes())

        machine = self.install(bundle="My Café 100%41 #1?.app", over=[HELPER])
        machine.hook("sh", 'cp -p "$1" "$MACHINE/script"')
        self.check()
        self.assertGreater(self.seconds_until_check, FIRST_CHECK)
        self.assertLess(self.seconds_until_check, FIRST_CHECK + 6)
        self.assertEqual(machine.process.wait(10), 0)
        [new_process] = wait_for(machine.opened, 30, "the new version to start")
        program = pathlib.Path(f"/proc/{new_process}/exe")
        wait_for(lambda: str(program.readlink()) == str(machine.target / "Contents/MacOS/Vantorel"))
        wait_for(lambda: not machine.left(), 10, "the script to clean up")
        self.assertEqual(machine.version_installed(), "1.1.0")
        self.assertEqual(os.listdir(machine.applications), [machine.target.name])
        self.assertEqual(tree(machine.target), tree(new))
        self.assertEqual(machine.attempts(), {"1.1.0": 1})
        self.expect_calls(machine)
        for path in (machine.target, *machine.target.rglob("*")):
            self.assertNotIn("user.com.apple.quarantine", os.listxattr(path, follow_symlinks=False))

        # The new version looks too, and finds nothing newer than itself.
        self.assertEqual(self.server.requests, [MANIFEST, image])
        wait_for(lambda: len(self.server.requests) > 2, FIRST_CHECK + 10, "the new version's own check")
        time.sleep(1)
        self.assertEqual(self.server.requests, [MANIFEST, image, MANIFEST])
        self.assertEqual(machine.opened(), [new_process])
        self.assertEqual(str(program.readlink()), str(machine.target / "Contents/MacOS/Vantorel"))
        self.assertEqual(machine.log(), [])
        self.assertEqual(machine.left(), [])

    def expect_calls(self, machine):
        """Each tool, with every argument."""
        temporary = re.escape(str(machine.temporary))
        target = re.escape(str(machine.target))
        staged = f"{temporary}/Vantorel-staged-1\\.1\\.0/Vantorel\\.app"
        mount = f"{temporary}/Vantorel-mount-{UUID}"
        update = f"{temporary}/Vantorel-update-{UUID}"
        expected = [
            ["hdiutil", "attach", f"{temporary}/Vantorel-1\\.1\\.0\\.dmg", "-nobrowse", "-readonly", "-mountpoint", mount],
            ["ditto", f"{mount}/Vantorel\\.app", staged],
            ["hdiutil", "detach", mount, "-force"],
            ["sh", f"{update}\\.sh", target, staged, str(machine.process.pid), f"{update}\\.started"],
            ["ditto", staged, target],
            ["xattr", "-dr", "com\\.apple\\.quarantine", target],
            ["open", target],
        ]
        calls = machine.record()
        self.assertEqual([call[0] for call in calls], [call[0] for call in expected])
        for call, patterns in zip(calls, expected):
            self.assertEqual(len(call), len(patterns))
            for word, pattern in zip(call[1:], patterns[1:]):
                self.assertRegex(word, f"^{pattern}$")
        self.assertEqual(calls[0][6], calls[2][2])
        self.assertNotEqual(calls[3][1].removesuffix(".sh"), calls[3][5].removesuffix(".started"))
        script = machine.folder / "script"
        self.assertEqual(script.read_bytes(), helper_script())
        self.assertEqual(stat.S_IMODE(script.stat().st_mode), 0o755)

    def test_two_attempts_leave_a_third(self):
        self.install(updateAttempts={"1.1.0": 2})
        self.offer(sha256=hashlib.sha256(self.image).hexdigest().upper(), size=1, notes={"en": "x"})
        self.check()
        self.expect_swapped()
        self.assertEqual(self.machine.attempts(), {"1.1.0": 3})

    def test_leftovers_of_an_earlier_attempt_are_replaced(self):
        machine = self.install()
        self.offer()
        stale = machine.temporary / "Vantorel-staged-1.1.0/Vantorel.app"
        stale.mkdir(parents=True)
        (stale / "stale").touch()
        (machine.temporary / "Vantorel-1.1.0.dmg").write_bytes(b"stale")
        self.check()
        self.expect_swapped()
        self.assertFalse((machine.target / "stale").exists())

    def test_an_image_that_cannot_be_detached_does_no_harm(self):
        machine = self.install()
        machine.hook("hdiutil-detach", "exit 1")
        self.offer()
        self.check()
        wait_for(machine.versions_started, 30, "the new version to start")
        wait_for(lambda: machine.left() == ["Vantorel-mount-*"], 10, "the script to clean up")
        self.assertEqual(machine.version_installed(), "1.1.0")

    def test_a_slow_server_is_waited_for(self):
        self.install()
        self.offer()
        self.server.answers[MANIFEST] = in_drops(manifest("1.1.0", self.image), 12, 1.6)  # seconds: longer than the time-out
        self.check()
        self.expect_swapped()

    def test_a_slow_image_is_waited_for(self):
        self.install()
        self.offer(image_answer=in_drops(self.image, 10, 1))
        self.check()
        self.expect_swapped()

    def test_the_built_in_server_speaks_for_itself(self):
        process = os.getpid()  # an address of this machine that nobody else listens on
        address = f"127.{process >> 16 & 255}.{process >> 8 & 255}.{process & 255 or 1}"
        server = self.enterContext(Server(self.certificate, (address, 443)))
        server.on_request = self.note_request
        server.answers[MANIFEST] = answer(200, manifest("1.1.0", self.image))
        server.answers[IMAGE] = answer(200, self.image)
        hosts = self.folder / "hosts"
        hosts.write_text(f"{address} korvex.example\n")
        machine = self.install(before=f"{self.trust}; mount --bind '{hosts}' /etc/hosts")
        del machine.environment["KORVEX_UPDATE_BASE"]
        self.check()
        self.expect_swapped()
        self.assertEqual(server.requests, [MANIFEST, IMAGE])

    # Reasons not to look or not to install

    def expect_no_look(self):
        self.offer()
        self.machine.start()
        time.sleep(FIRST_CHECK + 2)
        self.expect_kept(requests=[])

    def test_updates_are_off(self):
        self.install(autoUpdate=False)
        self.expect_no_look()

    def test_the_version_is_no_newer(self):
        self.install()
        self.offer(version="1.0")
        self.check()
        self.expect_kept([MANIFEST])

    def test_three_attempts_are_recorded(self):
        self.install(updateAttempts={"1.1.0": 3})
        self.offer()
        self.check()
        self.assertEqual(self.machine.attempts(), {"1.1.0": 3})
        self.machine.attempts = lambda: None
        self.expect_kept([MANIFEST])

    def test_the_guard_is_active(self):
        self.install(scheduleEnabled=True, scheduleOnMinutes=0, scheduleOffMinutes=1439)
        self.offer()
        self.check(TZ=self.zone_at_noon())
        self.expect_kept([MANIFEST])

    @staticmethod
    def zone_at_noon():
        """A zone in which it is near noon now, far from the schedule's times."""
        return f"XXX{(time.gmtime().tm_hour - 12):+d}"

    def test_the_bundle_is_no_app(self):
        self.install(bundle="Vantorel.App", preferences="Vantorel")  # no bundle, no identifier
        self.offer()
        self.check()
        self.expect_kept([MANIFEST])

    def test_the_folder_is_not_writable(self):
        self.install(after='mount --bind "$APPLICATIONS" "$APPLICATIONS" && mount -o remount,bind,ro "$APPLICATIONS"')
        self.offer()
        self.check()
        self.expect_kept([MANIFEST])

    def test_a_version_leads_nowhere_else(self):
        self.install()
        self.offer(version="1.1/../../x")
        self.check()
        self.expect_kept([MANIFEST])

    # The manifest

    def expect_nothing_of(self, manifest_answer, seconds=60, requests=(MANIFEST,)):
        self.install()
        self.server.answers[MANIFEST] = manifest_answer
        self.server.answers[IMAGE] = answer(200, self.image)
        self.check(seconds=seconds)
        self.expect_kept(list(requests))

    def test_the_server_is_down(self):
        self.install(base="http://127.0.0.1:1")
        self.expect_no_look()

    def expect_idle_time_out(self, silence):
        self.expect_nothing_of(silence)
        wait_for(lambda: silence.ended)
        self.assertGreater(silence.ended - silence.began, 13)  # seconds, as this side sees them
        self.assertLess(silence.ended - silence.began, 20)

    def test_the_server_is_silent(self):
        self.expect_idle_time_out(Silence())

    def test_the_server_falls_silent(self):
        self.expect_idle_time_out(Silence(b"HTTP/1.1 200 OK\r\nContent-Length: 1000\r\n\r\n{"))

    def test_the_manifest_is_cut(self):
        self.expect_nothing_of(cut(manifest("1.1.0", self.image) + b" " * 1000))

    def test_a_huge_manifest_is_read_all_the_same(self):
        padding = b'"padding": [' + b'{"version": "1.1.0"},' * 5000000 + b"{}]}"  # a hundred megabytes
        self.install()
        self.offer()
        self.server.answers[MANIFEST] = answer(200, manifest("1.1.0", self.image)[:-1] + b"," + padding)
        self.check()
        self.expect_swapped()

    def test_the_manifest_is_deep(self):
        self.expect_nothing_of(answer(200, b"[" * 1000000))

    def test_the_manifest_is_deep_where_nobody_looks(self):
        whole = manifest("1.1.0", self.image)
        self.expect_nothing_of(answer(200, b'{"x":' * 500000 + b"1" + b"}" * 499999 + b"," + whole[1:]))

    def test_the_manifest_is_no_utf_8(self):
        self.expect_nothing_of(answer(200, manifest("1.1.0", self.image)[:-1] + b', "caf\xe9": 1}'))

    def test_the_manifest_is_empty(self):
        self.expect_nothing_of(answer(200))

    def test_the_manifest_is_of_other_kinds(self):
        self.expect_nothing_of(answer(200, b'[{"latest": {"version": "1.1.0", "file": "x", "sha256": "y"}}]'))

    def test_the_server_redirects_for_ever(self):
        self.expect_nothing_of(answer(302, Location=MANIFEST), requests=[MANIFEST] * 21)

    # Encryption

    def expect_nothing_encrypted(self, server, requests, trust):
        server.on_request = self.note_request
        self.install(base=server.base, before=trust)
        self.offer()
        self.check()
        self.assertEqual(server.requests, requests)
        self.expect_kept([])

    def test_a_redirect_to_plain_http(self):
        server = self.enterContext(Server(self.certificate))
        server.answers[MANIFEST] = answer(302, Location=self.server.base + MANIFEST)
        self.expect_nothing_encrypted(server, [MANIFEST], self.trust)

    def test_a_redirect_of_the_image_to_plain_http(self):
        server = self.enterContext(Server(self.certificate))
        server.answers[MANIFEST] = answer(200, manifest("1.1.0", self.image))
        server.answers[IMAGE] = answer(302, Location=self.server.base + IMAGE)
        self.expect_nothing_encrypted(server, [MANIFEST, IMAGE], self.trust)

    def test_a_redirect_to_a_file(self):
        file = self.folder / "manifest"
        file.write_bytes(manifest("1.1.0", self.image))
        self.expect_nothing_of(answer(302, Location=f"file://{file}"))

    def test_a_certificate_of_nobody(self):
        server = self.enterContext(Server(self.certificate))
        server.answers[MANIFEST] = answer(200, manifest("1.1.0", self.image))
        self.install(base=server.base)
        self.machine.start()
        wait_for(lambda: server.connections, FIRST_CHECK + 10, "the program to call")
        time.sleep(2)
        self.assertEqual((server.connections, server.requests), (1, []))
        self.expect_kept([])

    # The download

    def expect_download_fails(self, left=(), log=(), seconds=60):
        self.check(seconds=seconds)
        self.expect_kept([MANIFEST, IMAGE], left=left, log=log)

    def test_a_wrong_checksum(self):
        self.install()
        self.offer(sha256="0" * 64)
        self.expect_download_fails(log=[CHECKSUM_LINE])

    def test_a_short_checksum(self):
        self.install()
        self.offer(sha256=hashlib.sha256(self.image).hexdigest()[:-1])
        self.expect_download_fails(log=[CHECKSUM_LINE])

    def test_an_image_that_was_changed(self):
        self.install()
        self.offer(image_answer=answer(200, self.image[:-1] + b"x"))
        self.expect_download_fails(log=[CHECKSUM_LINE])

    def test_an_image_that_is_cut(self):
        self.install()
        self.offer(image_answer=cut(self.image))
        self.expect_download_fails()

    def test_an_image_that_never_comes(self):
        """Its time-out is 300 seconds; the program's clocks are put forward meanwhile."""
        machine = self.install()
        clock = FakedClock(machine.folder)
        silence = Silence(b"HTTP/1.1 200 OK\r\nContent-Length: 1000\r\n\r\nx")
        self.offer(image_answer=silence)
        machine.start(**clock.environment())
        wait_for(lambda: silence.began, FIRST_CHECK + 20, "the request for the image")
        time.sleep(1)  # for the last byte to arrive before the clock is put forward
        clock.put_forward(290)
        time.sleep(2)
        self.assertIsNone(silence.ended)
        clock.put_forward(301)
        wait_for(lambda: silence.ended, 5, "the end of patience")
        time.sleep(0.5)
        self.expect_kept([MANIFEST, IMAGE])

    # Staging

    def expect_staging_fails(self, image=None, tools=MOUNTED, left=(), **changes):
        self.offer(image, **changes)
        self.check()
        self.expect_kept([MANIFEST, IMAGE], tools=tools, left=left)

    def expect_image_refused(self, put, *arguments, **options):
        self.install()
        self.expect_staging_fails(self.image_of(put, *arguments, **options))

    def test_an_image_with_another_application(self):
        self.expect_image_refused(put_small_bundle, CFBundleIdentifier="com.example.other")

    def test_an_image_with_an_application_without_identifier(self):
        self.expect_image_refused(put_small_bundle, CFBundleIdentifier=None)

    def test_an_image_with_another_version(self):
        self.expect_image_refused(put_small_bundle, "1.1")

    def test_an_image_with_a_number_for_a_version(self):
        self.install()
        image = self.image_of(lambda folder: put_small_bundle(folder) or
                              write_info(folder / "Vantorel.app", CFBundleShortVersionString=2))
        self.expect_staging_fails(image, version="2")

    def test_an_image_with_no_application(self):
        self.expect_image_refused(put_small_bundle, name="Other.app")

    def test_an_image_with_no_property_list(self):
        def put(folder):
            put_small_bundle(folder)
            (folder / "Vantorel.app/Contents/Info.plist").unlink()
        self.expect_image_refused(put)

    def test_an_image_with_a_property_list_of_junk(self):
        def put(folder):
            put_small_bundle(folder)
            (folder / "Vantorel.app/Contents/Info.plist").write_bytes(b"bplist00" + bytes(range(256)))
        self.expect_image_refused(put)

    def test_an_image_with_a_link_in_the_applications_place(self):
        def put(folder):
            put_small_bundle(folder, name="Elsewhere.app")
            (folder / "Vantorel.app").symlink_to("Elsewhere.app")
        self.install()
        self.offer(self.image_of(put))
        self.check()
        self.expect_swapped()
        self.assertFalse(self.machine.seen(self.machine.target).is_symlink())

    def test_an_image_with_a_link_out_of_it(self):
        put_small_bundle(self.folder, name="Outside.app")
        self.expect_image_refused(
            lambda folder: (folder / "Vantorel.app").symlink_to(self.folder / "Outside.app"))

    def test_an_image_that_is_none(self):
        self.install()
        self.expect_staging_fails(b"no image at all" * 1000, tools=["hdiutil attach"])

    def test_an_image_that_cannot_be_attached(self):
        self.install().hook("hdiutil-attach", "kill -KILL $$")
        self.expect_staging_fails(tools=["hdiutil attach"])

    def test_no_copy_can_be_made(self):
        self.install().hook("ditto", 'mkdir -p "$2"; exit 1')
        self.expect_staging_fails(tools=STAGED, left=["Vantorel-staged-1.1.0"])

    def test_no_tools(self):
        self.install(after="mount --bind /dev/null /usr/bin/hdiutil")
        self.expect_staging_fails(tools=[])

    # The disk fills

    SMALL = 'mount -t tmpfs -o mode=700,size={} small "{}"'

    def test_the_disk_fills_during_the_download(self):
        self.install(before=self.SMALL.format(len(self.image) // 2, "$TEMPORARY"))
        self.offer()
        self.expect_download_fails()

    def test_the_disk_fills_during_the_copy(self):
        self.install(before=self.SMALL.format(len(self.image) + 200000, "$TEMPORARY"))
        self.expect_staging_fails(tools=STAGED, left=["Vantorel-staged-1.1.0"])

    def test_the_disk_is_full_when_the_script_is_written(self):
        machine = self.install(before=self.SMALL.format("20m", "$TEMPORARY"))
        machine.hook("ditto-after", 'cat /dev/zero > "$TMPDIR/filler"; true')
        self.expect_staging_fails(tools=STAGED, left=["Vantorel-staged-1.1.0", "filler"])

    def test_the_disk_has_no_room_for_the_marker(self):
        machine = self.install(over=[HELPER], before='mount -t tmpfs -o mode=700,nr_inodes=100 small "$TEMPORARY"')
        machine.expected_lines = ["cannot create"]  # the shell's own word
        machine.hook("sh", 'mkdir "$TMPDIR/filler"; i=0; while touch "$TMPDIR/filler/$i"; do i=$((i+1)); done 2>/dev/null')
        self.offer()
        self.check()
        log = self.machine.log()
        self.assertRegex(log.pop(0), "cannot create .*started")
        self.machine.log = lambda: log
        self.expect_kept([MANIFEST, IMAGE], tools=[*STAGED, "sh"], left=["filler"], log=[HELPER_LINE])

    def test_the_disk_has_no_room_for_the_count_of_attempts(self):
        machine = self.install(over=[HELPER], before=self.SMALL.format("1m", "$CONFIG"))
        machine.hook("sh", 'cat /dev/zero > "$XDG_CONFIG_HOME/filler" 2>/dev/null')
        self.offer()
        self.check()
        self.expect_swapped()
        self.assertIsNone(machine.attempts())

    def test_the_disk_fills_during_the_swap(self):
        size = sum(path.stat().st_size for path in APP.rglob("*")) + 200000
        machine = self.install(before=self.SMALL.format(size, "$APPLICATIONS"))
        machine.expected_lines = ["No space left on device"]  # the copying tool's own word
        self.offer()
        self.check()
        self.assertEqual(machine.process.wait(10), 0)
        [reopened] = wait_for(machine.opened, 30, "the old version to start again")
        wait_for(lambda: not machine.left(), 10, "the script to clean up")
        self.assertEqual(tree(machine.seen(machine.applications)), machine.before)
        self.assertEqual(machine.attempts(), {"1.1.0": 1})
        wait_for(lambda: os.readlink(f"/proc/{reopened}/exe") == str(machine.target / "Contents/MacOS/Vantorel"))

    # The helper

    def test_the_helper_never_starts(self):
        machine = self.install(over=[HELPER])
        machine.hook("sh", 'echo $$ >> "$MACHINE/opened"; exec sleep 1000')
        self.offer()
        self.check()
        self.expect_kept([MANIFEST, IMAGE], tools=[*STAGED, "sh"], log=[HELPER_LINE])
        [helper] = machine.opened()
        os.kill(helper, 0)  # it is left alone

    def test_the_shell_cannot_be_started(self):
        unusable = pathlib.Path(tempfile.mkdtemp(dir=self.folder))
        (unusable / "sh").touch()
        self.install(over=[unusable])
        self.expect_staging_fails(tools=STAGED, left=["Vantorel-staged-1.1.0", "Vantorel-update-*.sh"])

    # Quitting meanwhile

    def expect_to_quit(self):
        self.machine.process.send_signal(signal.SIGTERM)
        self.assertEqual(self.machine.process.wait(12), 0)

    def test_quitting_while_the_server_is_silent(self):
        self.install()
        silence = Silence(b"HTTP/1.1 200 OK\r\nContent-Length: 1000\r\n\r\nx")
        self.offer(image_answer=silence)
        self.machine.start()
        wait_for(lambda: silence.began, FIRST_CHECK + 20)
        self.expect_to_quit()
        self.assertEqual(self.machine.left(), [])

    def test_quitting_while_a_tool_hangs(self):
        machine = self.install()
        machine.hook("hdiutil-attach", 'echo $$ >> "$MACHINE/opened"; exec sleep 1000')
        self.offer()
        machine.start()
        wait_for(machine.opened, FIRST_CHECK + 20)
        self.expect_to_quit()


def manifest_status(status):
    return lambda self: self.expect_nothing_of(lambda handler: answer(status, manifest("1.1.0", self.image))(handler))


def image_status(status):
    def test(self):
        self.install()
        self.offer(image_answer=answer(status, self.image))
        self.expect_download_fails(left=["download-*"])
        [kept] = self.machine.temporary.iterdir()
        self.assertEqual(kept.read_bytes(), b"" if status in (204, 304) else self.image)
    return test


for status in OTHER_STATUSES:
    setattr(Updates, f"test_the_manifest_comes_with_status_{status}", manifest_status(status))
    setattr(Updates, f"test_the_image_comes_with_status_{status}", image_status(status))


if __name__ == "__main__":
    os.nice(5)  # so many at once, beside tests that may be in a hurry
    run_in_parallel(64)
