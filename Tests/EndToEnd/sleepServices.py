#!/usr/bin/python3
"""Imitates the services by which desktops prevent suspending: sleepServices.py READY LOG ADDRESS SERVICE...

Each SERVICE is one of `portal`, `latePortal` (answers once the file LOG.answer exists), `refusingPortal` (by an error),
`forgetfulPortal` (drops each hold at once), `confusedPortal` (reports on the failure of another request too),
`portalRefusingAfterwards` and `portalRefusingBeforehand` (accepts the request, and refuses it by a signal after or even
before that), `screenSaver`, `loginManager` and `lateRefusingLoginManager`. READY is a descriptor that gets a line when
all are on the bus at ADDRESS. The file LOG gets a line for each hold that begins or ends. SIGUSR1 makes the services
drop all holds of a portal or login manager."""

import os
import signal
import sys

import gi

gi.require_version("Gio", "2.0")
from gi.repository import Gio, GLib  # noqa: E402

PORTAL = """<interface name="org.freedesktop.portal.Inhibit"><method name="Inhibit">
  <arg type="s" direction="in"/><arg type="u" direction="in"/><arg type="a{sv}" direction="in"/>
  <arg type="o" direction="out"/></method></interface>"""
REQUEST = """<interface name="org.freedesktop.portal.Request"><method name="Close"/>
  <signal name="Response"><arg type="u"/><arg type="a{sv}"/></signal></interface>"""
SUCCESS, FAILURE = 0, 2
SCREEN_SAVER = """<interface name="org.freedesktop.ScreenSaver">
  <method name="Inhibit"><arg type="s" direction="in"/><arg type="s" direction="in"/><arg type="u" direction="out"/></method>
  <method name="UnInhibit"><arg type="u" direction="in"/></method></interface>"""
LOGIN = """<interface name="org.freedesktop.login1.Manager"><method name="Inhibit">
  <arg type="s" direction="in"/><arg type="s" direction="in"/><arg type="s" direction="in"/><arg type="s" direction="in"/>
  <arg type="h" direction="out"/></method></interface>"""


class SleepServices:
    def __init__(self, log, address):
        self.log = log
        self.connection = Gio.DBusConnection.new_for_address_sync(
            address, Gio.DBusConnectionFlags.AUTHENTICATION_CLIENT | Gio.DBusConnectionFlags.MESSAGE_BUS_CONNECTION,
            None, None)
        self.last = 0
        self.requests = {}  # Of the portal, still open, by path: the caller and a number.
        self.locks = {}  # Our ends of the login manager's locks, with their watches.
        GLib.unix_signal_add(GLib.PRIORITY_DEFAULT, signal.SIGUSR1, self.drop_all)

    def write(self, *words):
        with open(self.log, "a", encoding="utf-8") as log:
            print(*words, file=log)

    def serve(self, name, path, description, answer):
        """Answers the calls of an interface at a path, under a name on the bus if one is given."""
        interface = Gio.DBusNodeInfo.new_for_xml(f"<node>{description}</node>").interfaces[0]
        self.connection.register_object(
            path, interface,
            lambda _1, sender, _2, _3, method, words, call: answer(sender, method, words.unpack(), call), None, None)
        if name:
            self.own(name)

    def own(self, name):
        owned = self.connection.call_sync("org.freedesktop.DBus", "/org/freedesktop/DBus", "org.freedesktop.DBus",
                                          "RequestName", GLib.Variant("(su)", (name, 4)), None, 0, -1, None)
        assert owned.unpack() == (1,), name

    def watch(self, sender):
        """Logs the end of the process that has a hold."""
        Gio.bus_watch_name_on_connection(self.connection, sender, Gio.BusNameWatcherFlags.NONE, None,
                                         lambda *_: self.write("holder left"))

    def portal(self):
        self.serve("org.freedesktop.portal.Desktop", "/org/freedesktop/portal/desktop", PORTAL, self.hold_by_portal)

    def latePortal(self):
        def answer(*call):
            self.write("portal called")
            self.when_allowed(lambda: self.hold_by_portal(*call))

        self.serve("org.freedesktop.portal.Desktop", "/org/freedesktop/portal/desktop", PORTAL, answer)

    def when_allowed(self, answer):
        def look():
            if not os.path.exists(self.log + ".answer"):
                return True
            answer()
            return False

        GLib.timeout_add(10, look)

    def refusingPortal(self):
        def answer(_1, _2, _3, call):
            self.write("portal refuses")
            call.return_dbus_error("org.freedesktop.portal.Error.Failed", "No.")

        self.serve("org.freedesktop.portal.Desktop", "/org/freedesktop/portal/desktop", PORTAL, answer)

    def forgetfulPortal(self):
        def answer(sender, _, words, call):
            self.hold_by_portal(sender, _, words, call)
            self.drop_all()

        self.serve("org.freedesktop.portal.Desktop", "/org/freedesktop/portal/desktop", PORTAL, answer)

    def confusedPortal(self):
        def answer(sender, _, words, call):
            self.hold_by_portal(sender, _, words, call)
            other = "/org/freedesktop/portal/desktop/request/other/1"
            self.requests[other] = sender, "another"
            self.respond(other, FAILURE)

        self.serve("org.freedesktop.portal.Desktop", "/org/freedesktop/portal/desktop", PORTAL, answer)

    def portalRefusingAfterwards(self):
        def answer(sender, _, words, call):
            path = self.open_request(sender, words)
            call.return_value(GLib.Variant("(o)", (path,)))
            self.respond(path, FAILURE)

        self.serve("org.freedesktop.portal.Desktop", "/org/freedesktop/portal/desktop", PORTAL, answer)

    def portalRefusingBeforehand(self):
        def answer(sender, _, words, call):
            path = self.open_request(sender, words)
            self.respond(path, FAILURE)
            call.return_value(GLib.Variant("(o)", (path,)))

        self.serve("org.freedesktop.portal.Desktop", "/org/freedesktop/portal/desktop", PORTAL, answer)

    def hold_by_portal(self, sender, _, words, call):
        path = self.open_request(sender, words)
        call.return_value(GLib.Variant("(o)", (path,)))
        self.respond(path, SUCCESS)

    def open_request(self, sender, words):
        _, flags, options = words
        self.last += 1
        number = self.last
        path = f"/org/freedesktop/portal/desktop/request/holder/{number}"
        self.write(f"portal holds {number}: {flags} {options['reason']}")
        self.watch(sender)

        def close(_1, _2, _3, closing):
            self.write(f"portal releases {number}")
            del self.requests[path]
            closing.return_value(None)

        self.serve(None, path, REQUEST, close)
        self.requests[path] = sender, number
        return path

    def respond(self, path, response):
        """Reports the outcome of a request. A failed one is over."""
        sender, number = self.requests[path]
        if response != SUCCESS:
            self.write(f"portal drops {number}")
            del self.requests[path]
        self.connection.emit_signal(sender, path, "org.freedesktop.portal.Request", "Response",
                                    GLib.Variant("(ua{sv})", (response, {})))

    def drop_all(self):
        for path in list(self.requests):
            self.respond(path, FAILURE)
        for reading, watch in self.locks.items():
            GLib.source_remove(watch)
            self.write("login manager drops")
            os.close(reading)
        self.locks.clear()
        return True

    def screenSaver(self):
        def answer(sender, method, words, call):
            if method == "Inhibit":
                self.last += 1
                self.write(f"screen saver holds {self.last}: {words[0]}, {words[1]}")
                self.watch(sender)
                call.return_value(GLib.Variant("(u)", (self.last,)))
            else:
                self.write(f"screen saver releases {words[0]}")
                call.return_value(None)

        self.serve("org.freedesktop.ScreenSaver", "/org/freedesktop/ScreenSaver", SCREEN_SAVER, answer)

    def loginManager(self):
        def answer(_1, _2, words, call):
            self.write("login manager holds:", ", ".join(words))
            reading, writing = os.pipe()
            self.locks[reading] = GLib.unix_fd_add_full(0, reading, GLib.IOCondition.HUP, self.hung_up)
            holds = Gio.UnixFDList.new()
            holds.append(writing)
            os.close(writing)
            call.return_value_with_unix_fd_list(GLib.Variant("(h)", (0,)), holds)

        self.serve("org.freedesktop.login1", "/org/freedesktop/login1", LOGIN, answer)

    def lateRefusingLoginManager(self):
        def answer(_1, _2, _3, call):
            self.write("login manager called")
            self.when_allowed(lambda: call.return_dbus_error("org.freedesktop.DBus.Error.AccessDenied", "No."))

        self.serve("org.freedesktop.login1", "/org/freedesktop/login1", LOGIN, answer)

    def hung_up(self, reading, _):
        self.write("login manager releases")
        del self.locks[reading]
        os.close(reading)
        return False


def main():
    if len(sys.argv) < 5:
        sys.exit(__doc__)
    services = SleepServices(sys.argv[2], sys.argv[3])
    for service in sys.argv[4:]:
        getattr(services, service)()
    with open(int(sys.argv[1]), "w", encoding="ascii") as ready:
        print("ready", file=ready)
    GLib.MainLoop().run()


if __name__ == "__main__":
    main()
