"""On a Wayland compositor: its idleness comes while the cup is off and not while it is on; windows without an X server."""

import json
import time
import unittest

from desktop import APP, IDENTIFIER, Desktop, wait_for
from statusnotifier_host import StatusNotifierHost


class Sway(unittest.TestCase):
    def open_desktop(self, **options):
        """Without a login manager and a screen saver service, so that it is not they who help."""
        self.desktop = self.enterContext(Desktop(screensaver=False, system_bus=False, sway=True, **options))

    def swaymsg(self, *arguments):
        return self.desktop.run("swaymsg", *arguments)


class Idleness(Sway):
    def setUp(self):
        self.open_desktop(session_bus=False)
        self.idle = self.desktop.folder / "idle"

    def comes(self):
        """Whether the session becomes idle: after two seconds it would."""
        self.idle.unlink(missing_ok=True)
        watcher = self.desktop.spawn(["swayidle", "timeout", "2", f"touch {self.idle}"])
        end = time.monotonic() + 5
        while time.monotonic() < end and not self.idle.exists():
            time.sleep(0.1)
        watcher.terminate()
        watcher.wait()
        return self.idle.exists()

    def switch(self, on):
        self.desktop.click_cup()
        wait_for(lambda: self.desktop.cup_is_filled() == on)

    def test_it_comes_while_the_cup_is_off_and_not_while_it_is_on(self):
        self.desktop.start_as_returning_user()
        self.desktop.cup_geometry()
        self.assertTrue(self.comes(), "not even without the cup")
        self.switch(on=True)
        self.assertFalse(self.comes())
        self.switch(on=False)
        self.assertTrue(self.comes())
        self.switch(on=True)
        self.assertEqual(self.desktop.end(), 0)
        self.assertTrue(self.comes(), "the inhibitor outlives the program")


class Windows(Sway):
    def setUp(self):
        self.open_desktop(tray=False)
        self.desktop.environment["DISPLAY"] = ":9999"  # which does not answer
        self.host = self.enterContext(StatusNotifierHost(env=self.desktop.environment))
        self.desktop.start_as_returning_user()
        self.host.wait_for_items()

    def windows(self):
        """What sway calls the windows that there are, and how it shows them."""
        return [node for node in self.nodes(json.loads(self.swaymsg("-t", "get_tree"))) if node.get("app_id")]

    def nodes(self, node):
        yield node
        for child in node["nodes"] + node["floating_nodes"]:
            yield from self.nodes(child)

    def test_a_second_start_shows_settings_under_the_desktop_entrys_name(self):
        self.assertEqual(self.desktop.spawn([APP / "Contents/MacOS/Vantorel"]).wait(10), 0)
        [window] = wait_for(self.windows)
        self.assertEqual((window["app_id"], window["name"]), (IDENTIFIER, "Vantorel Settings"))
        self.assertEqual(window["type"], "floating_con")

    def test_a_panel_without_menus_of_its_own_gets_a_small_one(self):
        self.host.call("context_menu", x=700, y=20)
        [menu] = wait_for(self.windows)
        self.assertEqual(menu["type"], "floating_con")
        self.assertLess(menu["rect"]["width"], 400)
        self.assertLess(menu["rect"]["height"], 200)


if __name__ == "__main__":
    unittest.main(verbosity=2)
