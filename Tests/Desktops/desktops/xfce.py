"""Xfce with each of its ways to be idle: the X server's saver, xscreensaver, and the power manager's sleep."""

from desktop import X11

CHANNELS = "/home/u/.config/xfce4/xfconf/xfce-perchannel-xml"

PANEL = """<?xml version="1.0" encoding="UTF-8"?>
<channel name="xfce4-panel" version="1.0">
  <property name="configver" type="int" value="2"/>
  <property name="panels" type="array">
    <value type="int" value="1"/>
    <property name="panel-1" type="empty">
      <property name="position" type="string" value="p=6;x=0;y=0"/>
      <property name="length" type="uint" value="100"/>
      <property name="position-locked" type="bool" value="true"/>
      <property name="size" type="uint" value="26"/>
      <property name="plugin-ids" type="array">
        <value type="int" value="1"/><value type="int" value="2"/><value type="int" value="3"/>
      </property>
    </property>
  </property>
  <property name="plugins" type="empty">
    <property name="plugin-1" type="string" value="tasklist"/>
    <property name="plugin-2" type="string" value="separator">
      <property name="expand" type="bool" value="true"/>
    </property>
    <property name="plugin-3" type="string" value="systray"/>
  </property>
</channel>
"""

POWER = """<?xml version="1.0" encoding="UTF-8"?>
<channel name="xfce4-power-manager" version="1.0">
  <property name="xfce4-power-manager" type="empty">
    <property name="inactivity-on-ac" type="uint" value="{minutes}"/>
    <property name="blank-on-ac" type="int" value="{blank}"/>
    <property name="inactivity-sleep-mode-on-ac" type="uint" value="1"/>
  </property>
</channel>
"""
NEVER = 14

# Its log ends with an assertion about an object that is gone, and a segmentation fault; a client that holds nothing but its
# inhibitor did not always do it.
CRASHES = {"killed": "xfce4-power-manager 4.18 crashes when the program is killed, on an X server without DPMS, as this one is"}


class Xfce(X11):
    layer = "xfce"
    packages = """xfce4-session xfce4-panel xfce4-settings xfdesktop4 xfwm4 xfce4-power-manager
        xfce4-power-manager-plugins xfconf xscreensaver suckless-tools at-spi2-core thunar- gvfs-""".split()
    versions = ("xfce4-panel", "xfce4-power-manager", "xscreensaver")
    desktop = "XFCE"
    session = ("startxfce4",)
    panel = "xfce4-panel"
    sleep_after = NEVER  # minutes
    blank_after = 0

    def prepare(self):
        self.machine.write(f"{CHANNELS}/xfce4-panel.xml", PANEL)
        self.machine.write(f"{CHANNELS}/xfce4-power-manager.xml", POWER.format(minutes=self.sleep_after, blank=self.blank_after))
        # Each of them alone.
        self.machine.write("/home/u/.config/autostart/xscreensaver.desktop", "[Desktop Entry]\nType=Application\n"
                           "Name=XScreenSaver\nExec=xscreensaver --no-splash\nHidden=true\n")

    def restart_panel(self):
        self.machine.user_service("xfce4-panel", "--restart", log="/tmp/panel.log")

    def log_out(self):
        self.machine.user("xfce4-session-logout", "--logout", "--fast")


class Saver(Xfce):
    name = "xfce"
    title = "Xfce, the X server's saver"
    expected = CRASHES
    blank_after = 1

    def probes(self):
        return {"blank": self.saver_is_on}


class XScreenSaver(Xfce):
    name = "xfce-xscreensaver"
    title = "Xfce, xscreensaver"

    def prepare(self):
        super().prepare()
        self.machine.write("/home/u/.xscreensaver", "timeout:\t0:01:00\nlock:\tFalse\nmode:\tblank\nsplash:\tFalse\n")

    def logged_in(self):
        self.machine.user_service("xscreensaver", "--no-splash", log="/tmp/xscreensaver.log")

    def probes(self):
        return {"blank": self.is_blanked}

    def is_blanked(self):
        return "screen blanked" in self.machine.user("xscreensaver-command", "--time", check=False)

    def wake(self):
        super().wake()
        self.machine.user("xscreensaver-command", "--deactivate", check=False)


class Suspend(Xfce):
    name = "xfce-suspend"
    title = "Xfce, sleep when inactive"
    expected = CRASHES
    sleep_after = 1

    def probes(self):
        return {"suspend": self.suspended()}


DESKTOPS = [Saver, XScreenSaver, Suspend]
