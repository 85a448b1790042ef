"""On a Wayland compositor: its idleness comes while the cup is off and not while it is on; windows without an X server."""

import json
import socket
import time
import unittest

import Xlib.X
from Xlib.protocol.event import ClientMessage

from desktop import APP, IDENTIFIER, Desktop, wait_for
from statusnotifier_host import StatusNotifierHost
from wayland import Client


class Sway(unittest.TestCase):
    def open_desktop(self, sway="headless", **options):
        """Without a login manager and a screen saver service, so that it is not they who help."""
        self.desktop = self.enterContext(Desktop(screensaver=False, system_bus=False, sway=sway, **options))

    def swaymsg(self, *arguments):
        return self.desktop.run("swaymsg", *arguments)

    def point(self):
        """Gives sway a pointer."""
        connection = self.enterContext(socket.socket(socket.AF_UNIX))
        connection.connect(self.desktop.environment["WAYLAND_DISPLAY"])
        self.pointer = Client(connection, 800, 600)

    def click(self, x=100, y=500):
        """There is nothing at that place, if none is told."""
        self.pointer.move(x, y)
        for pressed in (True, False):
            self.pointer.button("left", pressed)


class Idleness(Sway):
    def open_desktop(self, **options):
        super().open_desktop(session_bus=False, **options)
        self.idle = self.desktop.folder / "idle"
        self.desktop.start_as_returning_user()
        self.desktop.cup_geometry()

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
        self.open_desktop()
        self.assertTrue(self.comes(), "not even without the cup")
        self.switch(on=True)
        self.assertFalse(self.comes())
        self.switch(on=False)
        self.assertTrue(self.comes())
        self.switch(on=True)
        self.assertEqual(self.desktop.end(), 0)
        self.assertTrue(self.comes(), "the inhibitor outlives the program")

    def test_it_stays_away_whatever_screen_is_unplugged(self):
        self.open_desktop(sway="x11")
        screens = self.screens()
        self.assertEqual(len(screens), 2)
        self.switch(on=True)
        for name in screens:
            self.unplug(name)
            self.assertFalse(self.comes(), f"without {name}")
            self.swaymsg("create_output")
        for name in self.screens():
            self.unplug(name)
        self.swaymsg("create_output")
        self.assertFalse(self.comes(), "after a time without any")

    def screens(self):
        return [output["name"] for output in json.loads(self.swaymsg("-t", "get_outputs"))]

    def unplug(self, name):
        display = self.desktop.display
        [window] = [window for window in display.screen().root.query_tree().children if name in self.title(window)]
        request = display.get_atom("WM_PROTOCOLS"), [display.get_atom("WM_DELETE_WINDOW"), 0, 0, 0, 0]
        window.send_event(ClientMessage(window=window, client_type=request[0], data=(32, request[1])))
        display.sync()
        wait_for(lambda: name not in self.screens(), what=f"{name} to go")

    def title(self, window):
        text = window.get_full_property(self.desktop.display.get_atom("_NET_WM_NAME"), Xlib.X.AnyPropertyType)
        return text.value.decode() if text else ""


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

    def test_that_menu_closes_on_a_click_elsewhere(self):
        self.point()
        self.host.call("context_menu", x=700, y=20)
        wait_for(lambda: any(window["focused"] for window in self.windows()), what="the menu")
        self.click()
        wait_for(lambda: not self.windows(), what="the menu to close")


class MenuOnX(Sway):
    def setUp(self):
        self.open_desktop(tray=False)
        self.point()
        self.host = self.enterContext(StatusNotifierHost(env=self.desktop.environment))
        self.desktop.start_as_returning_user(environment={"WAYLAND_DEBUG": "1"}, expects_log="[")
        self.host.wait_for_items()

    def covers(self):
        """How often the pointer has entered what takes the clicks."""
        return self.desktop.log().count("enter(")

    def open_menu(self):
        self.host.call("context_menu", x=300, y=20)
        wait_for(self.desktop.windows, what="the menu")

    def wait_for_no_menu(self):
        wait_for(lambda: not self.desktop.windows(), what="the menu to close")

    def test_a_click_that_the_x_server_does_not_see_closes_it(self):
        for place in ((100, 500), (790, 590), (400, 1)):
            before = self.covers()
            self.open_menu()
            wait_for(lambda: self.covers() > before, what="what takes the click")
            self.click(*place)
            self.wait_for_no_menu()

    def test_it_closes_when_the_compositor_goes_and_opens_without_one(self):
        self.open_menu()
        self.desktop.sway.kill()
        self.desktop.sway.wait()
        self.wait_for_no_menu()
        self.open_menu()
        self.desktop.xdotool("key", "Escape")
        self.wait_for_no_menu()


if __name__ == "__main__":
    unittest.main(verbosity=2)
