"""Colours and fonts of a desktop that can change while the program runs."""

from typing import NamedTuple

from gi.repository import Gio, GLib


class Colours(NamedTuple):
    """Red, green and blue, as the toolkit reads them."""

    window: str
    view: str
    button: str
    text: str

    def pixel(self):
        """A pixel of the window, as `Desktop.colour` returns it."""
        return bytes(int(part) for part in self.window.split(","))


LIGHT = Colours("236,236,236", "255,255,255", "250,250,250", "0,0,0")
DARK = Colours("36,36,36", "28,28,28", "60,60,60", "255,255,255")
USUAL_FONT = 9.75  # points

# The toolkit reads the fonts and colours of one kind of desktop from such a file.
SETTINGS = """[General]
font=Inter,{font},-1,5,50,0,0,0,0,0
fixed=JetBrains Mono,{font},-1,5,50,0,0,0,0,0
[KDE]
SingleClick=false
[Colors:Window]
BackgroundNormal={colours.window}
ForegroundNormal={colours.text}
[Colors:View]
BackgroundNormal={colours.view}
ForegroundNormal={colours.text}
[Colors:Button]
BackgroundNormal={colours.button}
ForegroundNormal={colours.text}
[Colors:Selection]
BackgroundNormal=26,133,240
ForegroundNormal=255,255,255
"""


class Theme:
    def __init__(self, desktop, colours=LIGHT, font=USUAL_FONT):
        self.desktop = desktop
        self.folder = desktop.folder / "settings"
        self.folder.mkdir()
        self.write(colours, font)

    def environment(self):
        """What makes a program that is started take it for its desktop's."""
        return {"XDG_CONFIG_HOME": str(self.folder), "XDG_CURRENT_DESKTOP": "KDE", "KDE_SESSION_VERSION": "5"}

    def write(self, colours, font):
        (self.folder / "kdeglobals").write_text(SETTINGS.format(colours=colours, font=font), encoding="ascii")

    def change(self, colours, font=USUAL_FONT):
        """Programs hear of it over the session bus."""
        self.write(colours, font)
        bus = Gio.DBusConnection.new_for_address_sync(
            self.desktop.environment["DBUS_SESSION_BUS_ADDRESS"],
            Gio.DBusConnectionFlags.AUTHENTICATION_CLIENT | Gio.DBusConnectionFlags.MESSAGE_BUS_CONNECTION, None, None)
        change = GLib.Variant("(ssv)", ("org.kde.kdeglobals.General", "ColorScheme", GLib.Variant("s", "new")))
        bus.emit_signal(None, "/org/freedesktop/portal/desktop", "org.freedesktop.portal.Settings", "SettingChanged",
                        change)
        bus.flush_sync()  # closing alone would drop it
        bus.close_sync()
