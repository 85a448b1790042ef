"""A tour of the real program on a virtual display. usage: tour.py FOLDER (for a picture of each step)"""

import multiprocessing
import pathlib
import sys

from desktop import Desktop, wait_for


class Tour:
    def __init__(self, folder, language, name, panel=()):
        self.folder = folder
        self.name = name
        self.desktop = Desktop(language=language, window_manager=True, screen="640x480x24", tray_options=panel)
        self.step = 0

    def picture(self, what, crop=None):
        self.step += 1
        path = self.folder / f"{self.name}-{self.step:02}-{what}.png"
        self.desktop.wait_for_still_picture()
        self.desktop.screenshot(path, crop)
        print(path, flush=True)

    def picture_of_window(self, what, window):
        self.desktop.xdotool("mousemove", 1, 1)
        x, y, width, height = self.desktop.geometry(window)
        frame, title_bar = 1, 20  # of the window manager here
        self.picture(what, f"{width + 2 * frame}x{height + title_bar + frame}+{x - frame}+{y - title_bar}")

    def picture_of_corner(self, what):
        """The part of the screen with the cup and its menu."""
        x, y, width, height = self.desktop.cup_geometry()
        self.picture(what, f"240x140+{x + width - 240}+{y + height - 140}")

    def take(self):
        desktop = self.desktop
        desktop.start(expects_log="LoginItem: register failed: ")  # refuse_login_item
        self.picture_of_window("welcome", desktop.welcome_window())
        desktop.xdotool("key", "Return")
        desktop.cup_geometry()
        self.picture_of_corner("cup-off")
        self.menu("menu-off")
        desktop.click_cup()
        wait_for(desktop.cup_is_filled)
        self.picture_of_corner("cup-on")
        self.menu("menu-on")
        self.settings()
        self.quit()

    def settings(self):
        desktop = self.desktop
        window = desktop.open_settings()
        self.picture_of_window("settings", window)
        desktop.xdotool("key", "Tab", "Tab", "space")
        self.expect_stored(scheduleEnabled=True)
        self.picture_of_window("schedule-on", window)
        desktop.xdotool("key", "Tab", "2", "2", "0", "0", "Return", "Tab", "0", "6", "0", "0", "Return")
        self.expect_stored(scheduleOnMinutes=1320, scheduleOffMinutes=360)
        self.picture_of_window("times-changed", window)
        before = desktop.stored()["appLanguage"]
        desktop.xdotool("key", "Tab", "Tab", "Up" if before == "en" else "Down")
        self.expect_stored(appLanguage="pt-BR" if before == "en" else "en")
        self.picture_of_window("language-switched", window)
        self.refuse_login_item(window)

    def refuse_login_item(self, window):
        """Welcome has turned it on: off it goes, and on again when something is in the way."""
        desktop = self.desktop
        desktop.xdotool("key", "Tab", "space")
        self.expect_stored(launchAtLogin=False)
        desktop.autostart_file.parent.rmdir()
        desktop.autostart_file.parent.write_text("in the way")
        height = desktop.geometry(window)[3]
        desktop.xdotool("key", "space")
        wait_for(lambda: desktop.geometry(window)[3] > height, what="the hint")
        self.picture_of_window("login-refused", window)

    def expect_stored(self, **expected):
        wait_for(lambda: expected.items() <= self.desktop.stored().items(), what=expected)

    def quit(self):
        desktop = self.desktop
        desktop.click_cup(button=3)
        wait_for(lambda: len(desktop.windows()) > 1, what="the menu")
        desktop.xdotool("key", "Down", "Down", "Down", "Return")
        assert desktop.app_process.wait(10) == 0, "the program did not end well"
        self.picture("quit")

    def take_dark(self):
        """The Settings window in a session that prefers dark."""
        self.desktop.start_portal(Desktop.PREFER_DARK)
        self.desktop.start_as_returning_user()
        self.picture_of_window("settings", self.desktop.open_settings())

    def take_cups(self):
        """The two cups alone, on a panel of twice the usual height."""
        desktop = self.desktop
        desktop.start_as_returning_user()
        for what in ("off", "on"):
            x, y, width, height = desktop.cup_geometry()
            self.picture(what, f"{width}x{height}+{x}+{y}")
            desktop.click_cup()
            desktop.xdotool("mousemove", 1, 1)

    def menu(self, what):
        desktop = self.desktop
        desktop.click_cup(button=3)
        wait_for(desktop.windows)
        self.picture_of_corner(what)
        desktop.xdotool("key", "Escape")
        wait_for(lambda: not desktop.windows())


BY_LANGUAGE = [("en_GB.UTF-8", "en"), ("pt_BR.UTF-8", "pt")]
BY_PANEL = [("light", "0xe0e0e0"), ("dark", "0x202020")]


def main():
    folder = pathlib.Path(sys.argv[1])
    folder.mkdir(parents=True, exist_ok=True)
    tours = [(Tour.take, (folder, language, name)) for language, name in BY_LANGUAGE]
    tours.append((Tour.take_dark, (folder, "en_GB.UTF-8", "dark")))
    for name, color in BY_PANEL:
        panel = ["--height", "48", "--transparent", "true", "--alpha", "0", "--tint", color]
        tours.append((Tour.take_cups, (folder, "en_GB.UTF-8", f"cup-{name}", panel)))
    with multiprocessing.Pool(4) as pool:  # each on a desktop of its own, where it mostly waits
        pool.starmap(go, tours, chunksize=1)


def go(take, arguments):
    tour = Tour(*arguments)
    with tour.desktop:
        take(tour)


if __name__ == "__main__":
    main()
