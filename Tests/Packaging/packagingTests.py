#!/usr/bin/python3
"""What is installed, and the Debian package: packagingTests.py BUILD_FOLDER Packaging.TEST"""

import configparser
import os
import re
import shutil
import subprocess
import sys
import tempfile
import unittest
import xml.etree.ElementTree as ElementTree
from pathlib import Path

SOURCES = Path(__file__).resolve().parents[2]
PACKAGING = SOURCES / "Packaging"
ID = "org.reelkeep.Reelkeep"
BUILD = None

ICONS = [f"usr/share/icons/hicolor/{side}x{side}/apps/{ID}.png" for side in (16, 22, 24, 32, 48, 64, 128, 256, 512)]
INSTALLED = sorted(ICONS + [
    "usr/bin/reelkeep",
    f"usr/share/applications/{ID}.desktop",
    "usr/share/doc/reelkeep/changelog.gz",
    "usr/share/doc/reelkeep/README.es.md",
    "usr/share/doc/reelkeep/copyright",
    f"usr/share/icons/hicolor/scalable/apps/{ID}.svg",
    f"usr/share/icons/hicolor/symbolic/apps/{ID}-symbolic.svg",
    "usr/share/man/es/man1/reelkeep.1.gz",
    "usr/share/man/man1/reelkeep.1.gz",
    f"usr/share/metainfo/{ID}.metainfo.xml",
])


def files(root):
    return sorted(str(path.relative_to(root)) for path in root.rglob("*") if not path.is_dir())


def version():
    return re.search(r"project\(Reelkeep VERSION ([0-9.]+)", (SOURCES / "CMakeLists.txt").read_text())[1]


class Packaging(unittest.TestCase):
    def setUp(self):
        self.folder = Path(self.enterContext(tempfile.TemporaryDirectory()))

    def run_quietly(self, *command, **more):
        """What the command says, which must end well."""
        result = subprocess.run(command, text=True, stdin=subprocess.DEVNULL, stdout=subprocess.PIPE,
                                stderr=subprocess.STDOUT, **more)
        self.assertEqual(result.returncode, 0, result.stdout)
        return result.stdout

    def make_package(self):
        self.run_quietly("cpack", "-G", "DEB", "--config", str(BUILD / "CPackConfig.cmake"), "-B", str(self.folder))
        return next(self.folder.glob("*.deb"))

    def test_desktop_entry_is_valid(self):
        said = self.run_quietly("desktop-file-validate", str(PACKAGING / f"{ID}.desktop"))
        self.assertEqual(said, "")

    def test_metainfo_is_valid(self):
        command = ["appstreamcli", "validate", "--strict", "--no-net"]
        if " 0." not in self.run_quietly("appstreamcli", "--version"):
            # Version 1 asks for a home page, which the project has not, and for a form that older versions do not know.
            command.append("--override=url-homepage-missing=pedantic,developer-name-tag-deprecated=pedantic,"
                           "developer-info-missing=pedantic")
        self.run_quietly(*command, str(PACKAGING / f"{ID}.metainfo.xml"))

    def test_manual_pages_have_no_faults(self):
        for page in ("man/reelkeep.1", "man/es/reelkeep.1"):
            result = subprocess.run(["man", "--warnings", "-E", "UTF-8", "-l", "-Tutf8", str(PACKAGING / page)],
                                    env={**os.environ, "LC_ALL": "C.UTF-8", "MANWIDTH": "80"}, stdin=subprocess.DEVNULL,
                                    capture_output=True, text=True)
            self.assertEqual((result.returncode, result.stderr), (0, ""), page)
            self.assertIn("reelkeep", result.stdout)

    def test_installs_exactly_its_files(self):
        self.run_quietly("cmake", "--install", str(BUILD), "--prefix", "/usr",
                         env={**os.environ, "DESTDIR": str(self.folder)})
        self.assertEqual(files(self.folder), INSTALLED)
        for path in ICONS:
            side = int(re.search(r"/(\d+)x", path)[1])
            with open(self.folder / path, "rb") as picture:
                header = picture.read(24)
            self.assertEqual(header[:8], b"\x89PNG\r\n\x1a\n")
            self.assertEqual(header[16:], side.to_bytes(4, "big") * 2, path)

    def test_one_id_names_it_everywhere(self):
        entry = configparser.RawConfigParser()
        entry.optionxform = str
        entry.read(PACKAGING / f"{ID}.desktop", encoding="utf-8")
        entry = entry["Desktop Entry"]
        self.assertEqual((entry["Icon"], entry["StartupWMClass"], entry["Exec"]), (ID, ID, "reelkeep"))

        metainfo = ElementTree.parse(PACKAGING / f"{ID}.metainfo.xml").getroot()
        self.assertEqual(metainfo.findtext("id"), ID)
        self.assertEqual(metainfo.findtext("launchable"), f"{ID}.desktop")
        self.assertEqual(metainfo.findtext("provides/binary"), "reelkeep")
        self.assertEqual(metainfo.findtext("name"), entry["Name"])

        program = (SOURCES / "Sources/Reelkeep/App/DesktopIdentity.cpp").read_text()
        self.assertIn(f'applicationId("{ID}")', program)

    def test_one_version_everywhere(self):
        metainfo = ElementTree.parse(PACKAGING / f"{ID}.metainfo.xml").getroot()
        self.assertEqual(metainfo.find("releases/release").get("version"), version())
        self.assertTrue((PACKAGING / "debian/changelog").read_text().startswith(f"reelkeep ({version()}) "))
        for page in ("man/reelkeep.1", "man/es/reelkeep.1"):
            self.assertIn(f'"Reelkeep {version()}"', (PACKAGING / page).read_text(encoding="utf-8"), page)

    def test_package_has_no_faults(self):
        package = self.make_package()
        said = self.run_quietly("lintian", "--allow-root", "--fail-on", "error", str(package))
        # The metainfo has a test of its own.
        self.assertNotRegex(said, r"(?m)^E:|^W:(?!.* appstream-metadata-)")

        fields = self.run_quietly("dpkg-deb", "--field", str(package), "Package", "Version", "Section", "Depends",
                                  "Recommends")
        self.assertIn("Package: reelkeep\n", fields)
        self.assertIn(f"Version: {version()}\n", fields)
        self.assertIn("Section: video\n", fields)
        self.assertIn("Recommends: qt6-wayland\n", fields)
        for library in ("libqt6widgets6", "libqt6svg6", "libqt6dbus6", "libicu", "qt6-translations-l10n"):
            self.assertRegex(fields, rf"Depends: .*\b{library}")

        content = self.folder / "content"
        self.run_quietly("dpkg-deb", "--extract", str(package), str(content))
        self.assertEqual(files(content), INSTALLED)
        symbols = self.run_quietly("readelf", "--sections", "--wide", str(content / "usr/bin/reelkeep"))
        self.assertNotIn(".debug_info", symbols)
        self.assertNotIn(".symtab", symbols)


if __name__ == "__main__":
    if len(sys.argv) != 3:
        sys.exit(__doc__)
    BUILD = Path(sys.argv.pop(1)).absolute()
    unittest.main(verbosity=2)
    def test_no_package_without_its_tools(self):
        """cpack alone would end well without dpkg-shlibdeps, with a package that depends on no library."""
        tools = self.folder / "tools"
        tools.mkdir()
        for tool in ("cmake", "cpack", "file", "dpkg", "strip", "tar", "gzip", "sh"):
            (tools / tool).symlink_to(shutil.which(tool))
        for missing in ("dpkg-shlibdeps", "file"):
            for other in ("dpkg-shlibdeps", "file"):
                (tools / other).unlink(missing_ok=True)
                if other != missing:
                    (tools / other).symlink_to(shutil.which(other))
            for command in (["cmake", "-P", str(PACKAGING / "packageTools.cmake")],
                            # It would look into the system's own folders too.
                            ["cpack", "-D", "CMAKE_IGNORE_PATH=/usr/bin;/bin", "-G", "DEB", "--config",
                             str(BUILD / "CPackConfig.cmake"), "-B", str(self.folder)]):
                result = subprocess.run([str(tools / command[0]), *command[1:]], env={"PATH": str(tools)}, text=True,
                                        stdin=subprocess.DEVNULL, stdout=subprocess.PIPE, stderr=subprocess.STDOUT)
                self.assertNotEqual(result.returncode, 0, f"{command[0]} without {missing}")
                self.assertIn(f'"{missing}" is missing', result.stdout)
            self.assertEqual(list(self.folder.glob("*.deb")), [])

