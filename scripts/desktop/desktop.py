"""A desktop of its own for each test: X server, buses, services, tray, and the program as it ships."""

import contextlib
import json
import os
import pathlib
import plistlib
import shutil
import signal
import socket
import subprocess
import sys
import tempfile
import time

import dbus
import Xlib.display
import Xlib.ext.screensaver

HERE = pathlib.Path(__file__).resolve().parent
ROOT = HERE.parent.parent
APP = pathlib.Path(os.environ.get("VANTOREL_APP", ROOT / "build/linux/Vantorel.app")).resolve()
IDENTIFIER = "com.korvex.vantorel"
REASON = "Vantorel is keeping your Mac awake"

PORTAL = ("org.freedesktop.portal.Desktop", "/org/freedesktop/portal/desktop", "org.freedesktop.portal.Settings")

SERVICES = {
    "screensaver": ("session", "org.freedesktop.ScreenSaver", "/org/freedesktop/ScreenSaver"),
    "sessionmanager": ("session", "org.gnome.SessionManager", "/org/gnome/SessionManager"),
    "powermanagement": ("session", "org.freedesktop.PowerManagement", "/org/freedesktop/PowerManagement/Inhibit"),
    "logind": ("system", "org.freedesktop.login1", "/org/freedesktop/login1"),
}

BUS_CONFIGURATION = """<!DOCTYPE busconfig PUBLIC "-//freedesktop//DTD D-Bus Bus Configuration 1.0//EN"
 "http://www.freedesktop.org/standards/dbus/1.0/busconfig.dtd">
<busconfig>
  <type>{type}</type>
  <listen>unix:path={socket}</listen>
  <auth>EXTERNAL</auth>
  <policy context="default">
    <allow send_destination="*" eavesdrop="true"/>
    <allow eavesdrop="true"/>
    <allow own="*"/>
  </policy>
</busconfig>
"""


def wait_for(condition, seconds=10, what=None):
    """What `condition` returns as soon as it is true; an AssertionError when it never is."""
    end = time.monotonic() + seconds
    while True:
        result = condition()
        if result:
            return result
        if time.monotonic() > end:
            raise AssertionError(f"never happened within {seconds} s: {what or condition}")
        time.sleep(0.02)


class Desktop(contextlib.AbstractContextManager):
    """What is not there, is not there: pass False for what the session lacks."""

    def __init__(self, *, tray=True, session_bus=True, system_bus=True, screensaver=True, logind=True,
                 session_manager=False, power_management=False, silent_compositor=False, sway=None,
                 x_extension=True, window_manager=False, language="en_GB.UTF-8", refuses=False,
                 screen="1024x768x24", tray_options=()):
        self.stack = contextlib.ExitStack()
        self.folder = pathlib.Path(self.stack.enter_context(tempfile.TemporaryDirectory(prefix="vantorel-")))
        self.config = self.folder / "config"
        self.defaults_file = self.config / f"{IDENTIFIER}.plist"
        self.managed_file = self.folder / "system" / f"{IDENTIFIER}.managed.plist"
        self.autostart_file = self.config / "autostart" / f"{IDENTIFIER}.desktop"
        self.tray_options = tray_options
        self.refuses = refuses
        self.app_process = None
        self.expected_statuses = {}  # of each process that `start` began
        self.expected_lines = []  # of the log: parts of them
        self.environment = {
            "PATH": os.environ["PATH"],
            "KORVEX_UPDATE_BASE": "http://127.0.0.1:1",  # nobody answers: tests talk to nobody else's server
            "HOME": str(self.folder),
            "XDG_CONFIG_HOME": str(self.config),
            "XDG_CONFIG_DIRS": str(self.folder / "system"),  # where an administrator decides; not the machine's own
            "XDG_RUNTIME_DIR": str(self.folder),
            "LANG": language,
            "TMPDIR": str(self.folder),
            "QT_LOGGING_RULES": "*.debug=false",
        }
        for name in ("ASAN_OPTIONS", "LSAN_OPTIONS", "UBSAN_OPTIONS", "TSAN_OPTIONS"):
            if name in os.environ:
                self.environment[name] = os.environ[name]
        try:
            self._start_display(screen, x_extension)
            if session_bus:
                self.start_bus("session")
                if screensaver:
                    self.start_service("screensaver")
                if session_manager:
                    self.start_service("sessionmanager")
                if power_management:
                    self.start_service("powermanagement")
            else:
                self.environment["DBUS_SESSION_BUS_ADDRESS"] = f"unix:path={self.folder}/no-session-bus"
            if system_bus:
                self.start_bus("system")
                if logind:
                    self.start_service("logind")
            else:
                self.environment["DBUS_SYSTEM_BUS_ADDRESS"] = f"unix:path={self.folder}/no-system-bus"
            if silent_compositor:
                self._start_silent_compositor()
            if sway:
                self._start_sway(sway)
            if window_manager:
                self._start_window_manager()
            if tray:
                self.start_tray()
        except BaseException:
            self.stack.close()
            raise

    def __exit__(self, kind, *_):
        try:
            if kind is None:
                self.check_programs()
        finally:
            self.stack.close()

    # Processes

    def spawn(self, command, **options):
        """A process that ends with the desktop at the latest."""
        options.setdefault("stdout", subprocess.DEVNULL)
        options.setdefault("stderr", subprocess.DEVNULL)
        environment = {**self.environment, **options.pop("environment", {})}
        process = subprocess.Popen(command, env=environment, stdin=subprocess.DEVNULL, **options)
        self.stack.callback(self._end, process)
        return process

    @staticmethod
    def _end(process):
        if process.poll() is None:
            process.terminate()
            try:
                process.wait(5)
            except subprocess.TimeoutExpired:
                process.kill()
        process.wait()
        for stream in (process.stdout, process.stderr):
            if stream:
                stream.close()

    def run(self, *command, **options):
        return subprocess.run(command, env=self.environment, check=True, capture_output=True, text=True,
                              **options).stdout

    # The display

    def _start_display(self, screen, x_extension):
        reading, writing = os.pipe()
        command = ["Xvfb", "-displayfd", str(writing), "-noreset", "-nolisten", "tcp", "-screen", "0", screen]
        if not x_extension:
            command += ["-extension", "MIT-SCREEN-SAVER"]
        self.x_server = self.spawn(command, pass_fds=[writing])
        os.close(writing)
        with os.fdopen(reading) as answer:
            self.environment["DISPLAY"] = ":" + answer.readline().strip()
        self.display = Xlib.display.Display(self.environment["DISPLAY"])
        self.stack.callback(self._close_display)

    def _start_silent_compositor(self):
        """Something that takes Wayland's connections and never answers: a Wayland session, so that the X server counts for
        Xwayland, in which the compositor inhibits nothing."""
        listener = self.stack.enter_context(socket.socket(socket.AF_UNIX))
        listener.bind(str(self.folder / "wayland-silent"))
        listener.listen()
        self.environment["WAYLAND_DISPLAY"] = "wayland-silent"

    def _start_sway(self, backend):
        """Beside the X server, as if that were Xwayland. Of the backend "headless" it has one screen; of "x11" two, each in a
        window of the X server."""
        for name in ("UTF8_STRING", "WM_DELETE_WINDOW", "WM_PROTOCOLS", "_NET_WM_NAME"):
            self.display.intern_atom(name)  # sway uses those that are there
        folder = pathlib.Path(self.stack.enter_context(tempfile.TemporaryDirectory(prefix="sway-")))
        configuration = folder / "config"
        configuration.write_text("xwayland disable\noutput * resolution 800x600\n")
        command = ["sway", "-c", str(configuration)]
        if os.geteuid() == 0:  # sway refuses to run as root
            shutil.chown(folder, "nobody", "nogroup")
            shutil.chown(configuration, "nobody", "nogroup")
            command[:0] = ["setpriv", "--reuid=nobody", "--regid=nogroup", "--clear-groups"]
        self.sway = self.spawn(command, environment={
            "WLR_BACKENDS": backend, "WLR_X11_OUTPUTS": "2", "WLR_LIBINPUT_NO_DEVICES": "1", "WLR_RENDERER": "pixman",
            "XDG_RUNTIME_DIR": str(folder)})
        control = wait_for(lambda: next(folder.glob("sway-ipc.*.sock"), None), what="sway")
        wait_for((folder / "wayland-1").exists, what="sway's socket")
        self.environment |= {"SWAYSOCK": str(control), "WAYLAND_DISPLAY": str(folder / "wayland-1")}

    def _start_window_manager(self):
        self.spawn(["openbox", "--sm-disable"], environment={"XDG_CONFIG_DIRS": "/etc/xdg"})
        wait_for(self._manages_windows, what="the window manager")

    def _manages_windows(self):
        """Whether a window that is mapped now is taken care of. While it starts, the manager says that it is there, and
        passes over what is mapped."""
        window = self.display.screen().root.create_window(0, 0, 1, 1, 0, Xlib.X.CopyFromParent)
        state = self.display.get_atom("WM_STATE")
        window.map()
        try:
            return wait_for(lambda: window.get_full_property(state, 0), 0.5)
        except AssertionError:
            return None
        finally:
            window.destroy()
            self.display.sync()

    def _close_display(self):
        with contextlib.suppress(Xlib.error.ConnectionClosedError):
            self.display.close()

    def idle_seconds(self):
        """How long ago the X server heard of the user, or of a program that says so."""
        return self.display.screen().root.screensaver_query_info().idle / 1000

    def screen_saver_is_on(self):
        return self.display.screen().root.screensaver_query_info().state == Xlib.ext.screensaver.StateOn

    def wait_for_still_picture(self):
        """Until two looks at the screen, a moment apart, see the same."""
        root = self.display.screen().root
        size = root.get_geometry()

        def is_still():
            looks = []
            for _ in range(2):
                looks.append(root.get_image(0, 0, size.width, size.height, Xlib.X.ZPixmap, 0xFFFFFFFF).data)
                time.sleep(0.1)
            return looks[0] == looks[1]

        wait_for(is_still, what="the screen to stand still")

    def screenshot(self, path, crop=None):
        command = ["import", "-silent", "-window", "root"]
        if crop:
            command += ["-crop", crop, "+repage"]
        self.run(*command, str(path))

    def xdotool(self, *arguments):
        return self.run("xdotool", *map(str, arguments)).strip()

    # The tray

    def start_tray(self):
        self.tray = self.spawn(["trayer", "--edge", "bottom", "--align", "right", "--widthtype", "request",
                                "--height", "24", "--SetDockType", "true", *self.tray_options])
        selection = self.display.get_atom("_NET_SYSTEM_TRAY_S0")
        wait_for(lambda: self.display.get_selection_owner(selection), what="the tray")
        return self.tray

    def cup_window(self):
        """The X window of the cup, or None while the tray shows none."""
        for window in self._tray_windows():
            with contextlib.suppress(Xlib.error.XError):
                if window.get_full_property(self.display.get_atom("_XEMBED_INFO"), 0):
                    if window.get_attributes().map_state == Xlib.X.IsViewable and window.get_geometry().width > 1:
                        return window
        return None

    def _tray_windows(self):
        for window in self._windows(self.display.screen().root):
            with contextlib.suppress(Xlib.error.XError):
                if window.get_wm_class() == ("panel", "trayer"):
                    yield from self._windows(window)

    def _windows(self, window):
        with contextlib.suppress(Xlib.error.XError):
            for child in window.query_tree().children:
                yield child
                yield from self._windows(child)

    def cup_geometry(self):
        return self.geometry(wait_for(self.cup_window, what="the cup in the tray").id)

    def geometry(self, window):
        """A window's place on the screen and its size, without its frame: x, y, width, height."""
        drawable = self.display.create_resource_object("window", window)
        geometry = drawable.get_geometry()
        origin = drawable.translate_coords(self.display.screen().root, 0, 0)
        return -origin.x, -origin.y, geometry.width, geometry.height

    def _settled_cup_geometry(self):
        """The cup's place, once it is the same a moment later: a tray moves its icons after it has taken them in."""
        before = self.cup_geometry()
        time.sleep(0.1)
        return before if self.cup_geometry() == before else None

    def point_at_cup(self):
        x, y, width, height = wait_for(self._settled_cup_geometry, what="the cup to stand still")
        self.xdotool("mousemove", x + width // 2, y + height // 2)

    def cup_is_filled(self):
        """Whether the cup on the screen has its colour."""
        x, y, width, height = self.cup_geometry()
        root = self.display.screen().root
        side = min(width, height)
        at_body = x + (width - side) // 2 + int(side * 0.4), y + (height - side) // 2 + int(side * (1 - 0.36))
        pixel = root.get_image(*at_body, 1, 1, Xlib.X.ZPixmap, 0xFFFFFFFF).data
        blue, green, red = pixel[0], pixel[1], pixel[2]
        return abs(red - 237) < 12 and abs(green - 158) < 12 and abs(blue - 56) < 12

    def click_cup(self, button=1):
        self.point_at_cup()
        self.xdotool("click", button)

    # The buses

    def start_bus(self, kind):
        path = self.folder / f"{kind}-bus"
        configuration = self.folder / f"{kind}.conf"
        configuration.write_text(BUS_CONFIGURATION.format(type=kind, socket=path))
        process = self.spawn(["dbus-daemon", "--nofork", f"--config-file={configuration}"])
        wait_for(lambda: self._answers(path), what=f"the {kind} bus")
        self.environment[f"DBUS_{kind.upper()}_BUS_ADDRESS"] = f"unix:path={path}"
        setattr(self, f"{kind}_bus_process", process)
        return process

    @staticmethod
    def _answers(path):
        with socket.socket(socket.AF_UNIX) as connection:
            return connection.connect_ex(str(path)) == 0

    def bus(self, kind):
        return dbus.bus.BusConnection(self.environment[f"DBUS_{kind.upper()}_BUS_ADDRESS"])

    def start_service(self, name):
        kind, bus_name = SERVICES[name][:2]
        mocks = HERE / "mocks"
        process = self.spawn([sys.executable, "-B", "-m", "dbusmock", "--template", str(mocks / f"{name}.py"),
                              "-p", '{"refuses": %s}' % str(self.refuses).lower()], environment={"PYTHONPATH": str(mocks)})
        bus = self.bus(kind)
        wait_for(lambda: bus.name_has_owner(bus_name), what=bus_name)
        setattr(self, f"{name}_process", process)
        setattr(self, f"_{name}_bus", bus)
        return process

    def screensaver_inhibitors(self):
        return self.inhibitors("screensaver")

    def logind_inhibitors(self):
        return self.inhibitors("logind")

    def inhibitors(self, service):
        _, name, path = SERVICES[service]
        bus = getattr(self, f"_{service}_bus")
        return [str(text) for text in bus.get_object(name, path).List(dbus_interface="test.Inhibitors")]

    # The settings portal

    NO_PREFERENCE, PREFER_DARK, PREFER_LIGHT = range(3)

    def start_portal(self, scheme):
        """Has the session say which colours the user prefers."""
        name, path, settings = PORTAL
        self.spawn([sys.executable, "-m", "dbusmock", "--session", name, path, settings])
        bus = self.bus("session")
        wait_for(lambda: bus.name_has_owner(name), what=name)
        self.portal = bus.get_object(name, path)
        self.portal.AddMethod(settings, "Read", "ss", "v", f"ret = dbus.UInt32({scheme}, variant_level=1)",
                              dbus_interface="org.freedesktop.DBus.Mock")

    def prefer(self, scheme):
        self.portal.EmitSignal(PORTAL[2], "SettingChanged", "ssv",
                               ["org.freedesktop.appearance", "color-scheme", scheme],
                               dbus_interface="org.freedesktop.DBus.Mock")

    # Screen readers

    def start_accessibility(self):
        """Has the program tell screen readers of its windows, from its start on."""
        self.spawn(["/usr/libexec/at-spi-bus-launcher", "--launch-immediately"])
        bus = self.bus("session")
        wait_for(lambda: bus.name_has_owner("org.a11y.Bus"), what="the accessibility bus")
        self.environment["QT_LINUX_ACCESSIBILITY_ALWAYS_ON"] = "1"

    def accessibles(self):
        return json.loads(self.run(sys.executable, "-B", str(HERE / "accessible.py"), str(self.app_process.pid)))

    # The program

    def start(self, app=APP, environment=None, command=(), expects_status=0, expects_log=None, **options):
        """Starts the program, or a command that becomes it; its standard error goes to `log()`. When the desktop goes, the
        program has to end with that status, and every line of the log has to contain `expects_log`, if there may be one."""
        self._log = open(self.folder / "log", "ab")
        self.stack.callback(self._log.close)
        self.app_process = self.spawn(command or [str(app / "Contents/MacOS/Vantorel")], stderr=self._log,
                                      stdout=self._log, environment=environment or {}, **options)
        self.expected_statuses[self.app_process] = expects_status
        if expects_log:
            self.expected_lines.append(expects_log)
        return self.app_process

    def check_programs(self):
        """Ends what `start` began, and says whether it ended well and wrote nothing that is not expected: sanitizers report
        at the end."""
        for process, expected in self.expected_statuses.items():
            if process.poll() is None:
                process.terminate()
            status = process.wait(20)
            assert status == expected, f"the program ended with {status}, not with {expected}:\n{self.log()}"
        if self.expected_statuses:
            lines = self.log().splitlines()
            unexpected = [line for line in lines if not any(part in line for part in self.expected_lines)]
            assert not unexpected, "\n".join(["the program wrote:", *unexpected])
            missing = [part for part in self.expected_lines if not any(part in line for line in lines)]
            assert not missing, f"the program did not write: {missing}"

    def log(self):
        return (self.folder / "log").read_text(errors="replace")

    def start_as_returning_user(self, language="en", **options):
        self.store({"appLanguage": language})
        return self.start(**options)

    def store(self, defaults):
        self.config.mkdir(parents=True, exist_ok=True)
        with open(self.defaults_file, "wb") as file:
            plistlib.dump(defaults, file)

    def force(self, *settings):
        """Decides preferences for every user, as an administrator does: `autoUpdate=false`."""
        made = self.folder / "profile"
        self.run(HERE.parent.parent / "Packaging/profile", made, *settings)
        self.managed_file.parent.mkdir(exist_ok=True)
        (made / self.managed_file.name).rename(self.managed_file)

    def stored(self):
        """The preferences on disk; None when there is no file."""
        try:
            return plistlib.loads(self.defaults_file.read_bytes())
        except FileNotFoundError:
            return None

    def end(self, how=signal.SIGTERM, seconds=10):
        """Ends the program by a signal and returns its exit status."""
        if how == signal.SIGKILL:
            self.expected_statuses[self.app_process] = -how
        self.app_process.send_signal(how)
        return self.app_process.wait(seconds)

    def windows(self):
        """The identifiers of the program's visible windows, menus and tips included, the cup not."""
        found = []
        for window in self._windows(self.display.screen().root):
            with contextlib.suppress(Xlib.error.XError):
                pid = window.get_full_property(self.display.get_atom("_NET_WM_PID"), 0)
                if pid and pid.value[0] == self.app_process.pid:
                    if window.get_attributes().map_state == Xlib.X.IsViewable:
                        found.append(window.id)
        cup = self.cup_window()
        return [identifier for identifier in found if not cup or identifier != cup.id]

    def welcome_window(self):
        """Once it has the keyboard."""
        window = wait_for(self.windows, what="the Welcome window")[0]
        self.wait_for_keyboard(window)
        return window

    def wait_for_keyboard(self, window):
        wait_for(lambda: self.display.get_input_focus().focus.id == window, what="the keyboard")

    def title(self, window):
        """A window's title; None for one that is gone."""
        with contextlib.suppress(Xlib.error.XError):
            resource = self.display.create_resource_object("window", window)
            title = resource.get_full_property(self.display.get_atom("_NET_WM_NAME"), 0)
            return title.value.decode() if title else ""
        return None

    def settle(self):
        """Until what was done so far has had its effect: the menu opens after it, and is closed."""
        self.click_cup(button=3)
        wait_for(self.windows, what="the menu")
        self.xdotool("key", "Escape")
        wait_for(lambda: not self.windows(), what="the menu to close")

    def settings_windows(self):
        titles = ("Vantorel Settings", "Ajustes do Vantorel")
        return [window for window in self.windows() if self.title(window) in titles]

    def open_settings(self):
        """By the menu's line; the window, once it has the keyboard."""
        self.click_cup(button=3)
        wait_for(self.windows, what="the menu")
        self.xdotool("key", "Down", "Down", "Return")
        [window] = wait_for(self.settings_windows, what="the Settings window")
        self.wait_for_keyboard(window)
        return window
