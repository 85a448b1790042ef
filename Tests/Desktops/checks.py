"""What is tried on each desktop, in this order; each says what was seen."""

import plistlib
import time
import traceback

from machine import HOME, Missing, wait_for
from pictures import Box, center, clusters, colored, differing, grown, plain, text_lines, visibility, write_png

YES, NO, NONE = "yes", "no", "–"
LOG = "/tmp/vantorel.log"
SETTINGS = "Vantorel Settings"
WELCOME = "Vantorel"
PREFERENCES = f"{HOME}/.config/com.korvex.vantorel.plist"

# In the order of the columns.
COLUMNS = {
    "shows": "the cup shows",
    "contrast": "contrast off, on",
    "click": "a click switches",
    "menu": "its menu",
    "fresh": "menu up to date",
    "settings": "Settings opens",
    "second start": "second start",
    "idle off": "idle comes while off",
    "idle on": "kept away while on",
    "panel": "panel restarted",
    "killed": "gone after kill -9",
    "login": "after logout and in",
}
NEED_A_CUP = ("contrast", "click", "menu", "fresh", "settings", "panel")
DAY = 24 * 60  # minutes
CROWDED = 80  # percent of a minute in which something waited for a processor


def overload():
    """A session that gets no processor time fails in ways that say nothing about the product."""
    try:
        some = open("/proc/pressure/cpu").readline()
    except OSError:
        return ""
    waited = float(some.split("avg60=")[1].split()[0])
    return f" (processors were short for {waited:.0f} % of the last minute)" if waited > CROWDED else ""


class Checks:
    def __init__(self, desktop, pictures):
        self.desktop = desktop
        self.machine = desktop.machine
        self.pictures = pictures  # a folder
        self.results = {}
        self.notes = []
        self.cup = None
        self.off = None
        self.came = {}

    def say(self, check, verdict, detail=""):
        self.results[check] = [verdict, detail]
        print(f"{self.desktop.name}: {COLUMNS.get(check, check)}: {verdict}{', ' + detail if detail else ''}", flush=True)

    def attempt(self, check, function):
        """Whatever goes wrong in a check is its result, and not the end of those that follow."""
        if check in NEED_A_CUP and not self.cup:
            return self.say(check, NONE, "no cup")
        started = time.monotonic()
        try:
            function()
        except Exception as error:
            if not isinstance(error, Missing):
                traceback.print_exc()
            self.say(check, NO, f"{error}{overload()}")
            self.keep(f"failed-{check.replace(' ', '-')}")
        print(f"{self.desktop.name}: ({check} took {time.monotonic() - started:.0f} s)", flush=True)

    def keep(self, name, box=None):
        """A picture for whoever reads the results."""
        try:
            picture = self.desktop.picture()
            write_png(picture.cut(box) if box else picture, self.pictures / f"{self.desktop.name}-{name}.png")
        except (Missing, OSError, NotImplementedError):
            pass

    def all(self):
        steps = {"shows": self.first_run, "contrast": self.contrast, "menu": self.menu, "click": self.click,
                 "fresh": self.fresh, "settings": self.settings, "second start": self.second_start,
                 "idle off": self.idle_while_off, "idle on": self.idle_while_on, "panel": self.panel_restarted,
                 "killed": self.killed, "login": self.logout_and_in}
        for check, function in steps.items():
            if check in (self.desktop.only or steps):
                self.attempt(check, function)

    # The cup.

    def start(self):
        self.machine.user_service("/usr/bin/vantorel", log=LOG)

    def process(self):
        return self.machine.processes("vantorel")

    def has_ended(self):
        return bool(self.machine.text(LOG)) and not self.process()

    def fail_if_ended(self):
        if self.has_ended():
            raise Missing(f"it ended at its start: {self.machine.text(LOG).splitlines()[0]}")

    def welcome(self):
        self.start()
        wait_for(lambda: WELCOME in self.desktop.windows() or self.has_ended(), "the Welcome window", 30)
        self.fail_if_ended()
        self.desktop.settle()
        self.keep("welcome")

        def continued():
            self.desktop.press_return()  # again, where the first only made a keyboard known
            time.sleep(1)
            return WELCOME not in self.desktop.windows()

        wait_for(continued, "the end of the Welcome window", 15, 1)

    def prefer(self, **preferences):
        """Preferences written by hand, and the program started with them."""
        self.end()
        self.machine.write_as_user(PREFERENCES, plistlib.dumps({"appLanguage": "en", "autoUpdate": False, **preferences}))
        self.start()
        time.sleep(3)
        self.fail_if_ended()
        wait_for(self.process, "the program")

    def first_run(self):
        if not self.desktop.has_tray:
            self.prefer()
            return self.say("shows", NO, "no tray of any kind")
        self.welcome()
        wait_for(lambda: self.desktop.items() or self.desktop.tray_windows(), "the cup in the tray")
        self.desktop.nudge()
        wait_for(self.nothing_changes, "the end of the session's start", 120)
        self.find_cup()
        self.off = self.desktop.settle()
        self.keep("off", self.around())
        self.say("shows", YES)

    def nothing_changes(self):
        """For some seconds: panels show one part after the other."""
        before = self.desktop.picture()
        time.sleep(6)
        return len(differing(before, self.desktop.picture())) < 50

    def find_cup(self):
        self.desktop.nudge()
        self.cup = wait_for(self.desktop.find_cup, "the cup's pixels on the panel", 20)

    def around(self):
        """The cup and the panel about it."""
        x, y = center(self.cup)
        return Box(x - 60, max(y - 16, 0), x + 60, y + 16)

    def look(self):
        self.desktop.nudge()
        return self.desktop.settle()

    def is_on(self, picture=None):
        """Whether the cup is filled, as seen on the screen."""
        return colored((picture or self.look()).cut(self.cup)) > 20

    def switch(self, on, clicked=None):
        self.desktop.click(center(self.cup), self.desktop.toggle_button)
        wait_for(lambda: self.is_on() == on, f"the cup {'on' if on else 'off'} after a click", 15)

    def contrast(self):
        on = self.flip(self.off)
        self.keep("on", self.around())
        outline, filled = (visibility(picture.cut(self.cup)) for picture in (self.off, on))
        self.flip(on)
        self.say("contrast", YES if outline >= 3 else NO, f"{outline:.1f}:1, {filled:.1f}:1")

    def flip(self, before):
        if self.desktop.items():
            return self.desktop.flip(before)
        self.desktop.click(center(self.cup))
        time.sleep(1)
        return self.look()

    def click(self):
        self.switch(True)
        self.switch(False)
        self.say("click", YES, "" if self.desktop.toggle_button == "left" else self.desktop.toggle_button)

    # The menu.

    def open_menu(self):
        """Its box on the screen, and what it looks like."""
        before = self.look()
        self.desktop.click(center(self.cup), self.desktop.menu_button)
        time.sleep(0.5)
        self.desktop.nudge()  # off the cup, which has a tooltip

        def opened():
            now, cup = self.desktop.picture(), grown(self.cup, 12)  # a panel shows that the pointer is over the cup
            changed = {(x, y) for x, y in differing(before, now)
                       if not (cup.left <= x < cup.right and cup.top <= y < cup.bottom)}
            boxes = [box for box in clusters(changed)
                     if box.right - box.left >= 60 and box.bottom - box.top >= 50]
            return boxes and boxes[0]

        wait_for(opened, "a menu", 15)
        picture = self.desktop.settle(4)
        return plain(picture, picture.clamped(opened())), picture

    def lines(self, box, picture):
        return [Box(box.left, box.top + top, box.right, box.top + bottom) for top, bottom in text_lines(picture.cut(box))]

    def close_menu(self):
        self.desktop.click((640, 500))
        time.sleep(0.5)

    def choose(self, index):
        """Opens the menu and clicks a line of it."""
        box, picture = self.open_menu()
        lines = self.lines(box, picture)
        if len(lines) != 4:
            self.keep("menu-with-other-lines")
            self.close_menu()
            raise Missing(f"four lines in the menu (it has {len(lines)})")
        self.desktop.click(center(lines[index]))
        time.sleep(0.5)
        return picture, lines

    def menu(self):
        box, picture = self.open_menu()
        self.keep("menu")
        lines = self.lines(box, picture)
        self.close_menu()
        detail = f"{box.right - box.left} by {box.bottom - box.top}"
        x, y = center(self.cup)
        near = box.left - 80 <= x <= box.right + 80 and (abs(box.top - y) < 80 or abs(box.bottom - y) < 80)
        if len(lines) != 4:
            return self.say("menu", NO, f"{len(lines)} lines where 4 were looked for, {detail}")
        if not near or box.right - box.left > 400:
            return self.say("menu", NO, f"not a menu at the cup: {detail}, at {box.left}, {box.top}")
        gone = not [box for box in clusters(differing(self.look(), self.off)) if box.bottom - box.top >= 50]
        self.say("menu", YES if gone else NO, "" if gone else "stays open on a click elsewhere")

    def fresh(self):
        """Its first two lines say another thing when the cup is on; and the second does what it says."""
        picture, lines = self.choose(1)
        wait_for(self.is_on, "the cup on after Turn On", 15)
        box, other = self.open_menu()
        self.keep("menu-on")
        now = self.lines(box, other)
        self.close_menu()
        same = len(now) == 4 and all(not differing(picture.cut(a), other.cut(b)) for a, b in zip(lines[:1], now[:1]))
        self.choose(1)
        wait_for(lambda: not self.is_on(), "the cup off after Turn Off", 15)
        self.say("fresh", NO if same else YES, "it still says off while on" if same else "")

    def has_settings(self):
        return SETTINGS in self.desktop.windows()

    def close_settings(self):
        """By ending the program and starting it again: each desktop closes windows in its own way."""
        self.end()
        self.start()
        wait_for(lambda: not self.desktop.has_tray or self.desktop.items() or self.desktop.tray_windows(), "the cup again")
        if self.cup:
            self.find_cup()

    def end(self):
        for process in self.process():
            self.machine.root("kill", process, check=False)
        wait_for(lambda: not self.process(), "the end of the program")

    def settings(self):
        self.choose(2)
        wait_for(self.has_settings, "Settings", 15)
        self.desktop.settle()
        self.keep("settings")
        self.say("settings", YES)
        self.close_settings()

    def second_start(self):
        running = self.process()
        status = self.machine.user_status("/usr/bin/vantorel", timeout=10)
        for process in set(self.process()) - set(running):
            self.machine.root("kill", process, check=False)
        shown = self.has_settings() if status is None else bool(wait_for(self.has_settings, "Settings after a second start", 10))
        self.say("second start", YES if status == 0 and shown else NO,
                 "a second copy ran" if status is None else "" if status == 0 else f"status {status}")
        self.close_settings()

    # Idleness.

    def watch(self, probes, seconds, until_all):
        """What came within that time: {name: seconds}."""
        came, started = {}, time.monotonic()
        while time.monotonic() - started < seconds and not (until_all and len(came) == len(probes)):
            for name, has_come in probes.items():
                if name not in came and has_come():
                    came[name] = round(time.monotonic() - started)
            time.sleep(1)
        return came

    @staticmethod
    def times(came):
        return ", ".join(f"{name} {seconds} s" for name, seconds in came.items())

    def active(self):
        """The user is back, and nothing of the last idleness is left."""
        self.desktop.wake()
        levels = {name: probe for name, probe in self.desktop.probes().items()}

        def over():
            self.desktop.nudge()
            return not any(probe() for probe in levels.values())

        wait_for(over, "the end of the idle time", 20, 1)

    def idle_while_off(self):
        self.active()
        self.came = self.watch(self.desktop.probes(), self.desktop.longest_idle, True)
        missing = self.desktop.probes().keys() - self.came.keys()
        detail = self.times(self.came) + "".join(f"{', ' if self.came else ''}no {name}" for name in sorted(missing))
        self.say("idle off", NO if missing else YES, detail)
        self.active()

    def turn_on(self):
        """By the pointer where there is a cup, else by the schedule, between two times about now."""
        if self.cup:
            self.find_cup()  # panels rearrange
            return self.switch(True)
        now = self.machine.root("date", "+%H %M").split()
        minutes = 60 * int(now[0]) + int(now[1])
        self.prefer(scheduleEnabled=True, scheduleOnMinutes=(minutes - 60) % DAY, scheduleOffMinutes=(minutes + 60) % DAY)
        time.sleep(2)

    def idle_while_on(self):
        if not self.came:
            return self.say("idle on", NONE, "nothing came while off")
        if self.desktop.has_tray and not self.cup:
            return self.say("idle on", NO, "no cup to switch on")
        self.turn_on()
        self.note_granted()
        seconds = max(self.came.values()) * 5 // 4 + 15
        self.desktop.nudge()
        came = self.watch({name: probe for name, probe in self.desktop.probes().items() if name in self.came}, seconds, False)
        detail = self.times(came) if came else f"{seconds} s"
        if not self.cup:
            detail += f"; held: {', '.join(self.held()) or 'nothing, so the cup is an outline'}"
        self.say("idle on", NO if came else YES, detail)
        if came:
            self.active()
        if self.cup and not self.is_on():
            self.notes.append("the cup is no longer shown on after the wait")

    def note_granted(self):
        """What the program says about what was granted, in its log."""
        time.sleep(1.5)
        log = self.machine.text(LOG)
        self.notes += [line for line in log.splitlines() if line.startswith("vantorel.")][-12:]

    def held(self):
        """Whether anything that can be listed holds for the product."""
        answer = self.machine.call("org.freedesktop.login1", "/org/freedesktop/login1", "org.freedesktop.login1.Manager",
                                   "ListInhibitors", system=True)
        found = ["logind"] if "Vantorel" in answer else []
        names = self.machine.names()
        if "org.gnome.SessionManager" in names:
            answer = self.machine.call("org.gnome.SessionManager", "/org/gnome/SessionManager", "org.gnome.SessionManager",
                                       "IsInhibited", "u", "8", check=False)
            found += ["session manager"] if answer == "b true" else []
        if "org.freedesktop.PowerManagement" in names:
            answer = self.machine.call("org.freedesktop.PowerManagement", "/org/freedesktop/PowerManagement/Inhibit",
                                       "org.freedesktop.PowerManagement.Inhibit", "HasInhibit", check=False)
            found += ["power manager"] if answer == "b true" else []
        if "org.kde.Solid.PowerManagement.PolicyAgent" in names:
            answer = self.machine.call("org.kde.Solid.PowerManagement.PolicyAgent", "/org/kde/Solid/PowerManagement/PolicyAgent",
                                       "org.kde.Solid.PowerManagement.PolicyAgent", "ListInhibitions", check=False)
            found += ["Plasma's agent"] if "antorel" in answer else []
        return found

    # What happens around it.

    def panel_restarted(self):
        self.desktop.nudge()
        was = self.is_on()
        self.desktop.restart_panel()
        time.sleep(2)
        wait_for(lambda: self.machine.processes(self.desktop.panel), "the panel again", 30)
        wait_for(self.desktop.tray_is_there, "the tray again", 30)
        wait_for(lambda: self.desktop.items() or self.desktop.tray_windows(), "the item again")
        self.find_cup()
        self.say("panel", YES if self.is_on() == was else NO)

    def killed(self):
        """And idleness comes again, which is all that can be seen of what no service lists."""
        if not self.process():
            raise Missing("a program to kill")
        if self.cup and not self.is_on():
            self.turn_on()
        before = self.held()
        for process in self.process():
            self.machine.root("kill", "-9", process, check=False)
        time.sleep(1.5)
        left = self.held()
        self.active()
        came = self.watch({name: probe for name, probe in self.desktop.probes().items() if name in self.came},
                          self.desktop.longest_idle, True)
        held = f"held before by {', '.join(before)}" if before else "nothing was listed before"
        if left:
            return self.say("killed", NO, f"left: {', '.join(left)}")
        missing = self.came.keys() - came.keys()
        self.say("killed", NO if missing else YES, f"{held}; then {self.times(came)}" +
                 "".join(f", no {name}" for name in sorted(missing)))
        self.active()

    def logout_and_in(self):
        if not self.process():
            self.start()
            wait_for(self.process, "the program")
            time.sleep(3)
        self.desktop.log_out()
        wait_for(lambda: not self.machine.is_logged_in(), "the end of the session", 60, 1)
        wait_for(lambda: not self.process(), "the end of the program with the session", 20)
        self.desktop.log_in()
        if not self.desktop.starts_at_login:
            self.start()
        if not self.desktop.has_tray:
            wait_for(self.process, "the program")
            return self.say("login", YES)
        wait_for(lambda: self.desktop.items() or self.desktop.tray_windows(), "the cup after the login", 40)
        self.find_cup()
        self.say("login", YES, "" if self.desktop.starts_at_login else "started by the session's own configuration")
