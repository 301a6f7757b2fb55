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
    "usr/share/doc/reelkeep/README.es.md",
    "usr/share/doc/reelkeep/changelog.gz",
    "usr/share/doc/reelkeep/copyright",
    "usr/share/doc/reelkeep/docs/confianza.md",
    *(f"usr/share/doc/reelkeep/docs/pictures/paso-{step}.png" for step in (1, 2, 3, 4, 5)),
    "usr/share/doc/reelkeep/docs/pictures/window-light.png",
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
        """Runs a command, which must succeed; returns its output."""
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

    def validate(self, metainfo):
        """The tags of the validator's objections in its strict mode, which leaves out pedantic ones."""
        said = subprocess.run(["appstreamcli", "validate", "--strict", "--no-net", str(metainfo)], text=True,
                              stdin=subprocess.DEVNULL, stdout=subprocess.PIPE, stderr=subprocess.STDOUT)
        objections = re.findall(r"(?m)^[EWI]: \S+ (\S+)", said.stdout)
        self.assertEqual(said.returncode == 0, not objections, said.stdout)
        return objections

    def test_metainfo_is_valid_with_an_address(self):
        metainfo = self.folder / f"{ID}.metainfo.xml"
        self.run_quietly("cmake", "-DADDRESS=https://example.org/reelkeep/", f"-DVERSION={version()}",
                         f"-DOUTPUT={metainfo}", "-P", str(PACKAGING / "metainfo.cmake"))
        self.assertEqual(self.validate(metainfo), [])

        root = ElementTree.parse(metainfo).getroot()
        self.assertEqual({url.get("type"): url.text for url in root.findall("url")},
                         {"homepage": "https://example.org/reelkeep", "vcs-browser": "https://example.org/reelkeep",
                          "bugtracker": "https://example.org/reelkeep/issues"})
        pictures = [image.text for image in root.iterfind("screenshots/screenshot/image")]
        self.assertEqual(len(pictures), 2)
        for picture in pictures:
            below, _, path = picture.partition(f"/raw/v{version()}/")
            self.assertEqual(below, "https://example.org/reelkeep")
            self.assertTrue((SOURCES / path).is_file(), path)

    def test_metainfo_has_an_address(self):
        metainfo = BUILD / "Packaging" / f"{ID}.metainfo.xml"
        if ElementTree.parse(metainfo).getroot().find("url") is not None:
            self.assertEqual(self.validate(metainfo), [])
            return
        self.assertIn(self.validate(metainfo), ([], ["url-homepage-missing"]))
        self.skipTest("NOT COMPLETE: there is no home page, no address for reports of faults and no picture in the "
                      "metainfo. Whoever publishes the package sets REELKEEP_ADDRESS.")

    def test_metainfo_suits_software_centres(self):
        root = ElementTree.parse(BUILD / "Packaging" / f"{ID}.metainfo.xml").getroot()
        for summary in root.findall("summary"):
            self.assertLessEqual(len(summary.text), 35, summary.text)
        self.assertEqual(len(root.findall("summary")), 2)
        self.assertGreaterEqual(len(root.findall("keywords/keyword")), 6)
        self.assertEqual({colour.get("scheme_preference") for colour in root.iterfind("branding/color")},
                         {"light", "dark"})
        window = (SOURCES / "Sources/Reelkeep/Views/UI/ScrollingWindow.cpp").read_text()
        smallest = re.search(r"smallest\((\d+), (\d+)\)", window)
        self.assertEqual(int(root.findtext("requires/display_length")), max(int(smallest[1]), int(smallest[2])))

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

        metainfo = ElementTree.parse(BUILD / "Packaging" / f"{ID}.metainfo.xml").getroot()
        self.assertEqual(metainfo.findtext("id"), ID)
        self.assertEqual(metainfo.findtext("launchable"), f"{ID}.desktop")
        self.assertEqual(metainfo.findtext("provides/binary"), "reelkeep")
        self.assertEqual(metainfo.findtext("name"), entry["Name"])

        program = (SOURCES / "Sources/Reelkeep/App/DesktopIdentity.cpp").read_text()
        self.assertIn(f'applicationId("{ID}")', program)

    def test_one_version_everywhere(self):
        metainfo = ElementTree.parse(BUILD / "Packaging" / f"{ID}.metainfo.xml").getroot()
        self.assertEqual(metainfo.find("releases/release").get("version"), version())
        self.assertTrue((PACKAGING / "debian/changelog").read_text().startswith(f"reelkeep ({version()}) "))
        for page in ("man/reelkeep.1", "man/es/reelkeep.1"):
            self.assertIn(f'"Reelkeep {version()}"', (PACKAGING / page).read_text(encoding="utf-8"), page)

    def test_no_package_without_its_tools(self):
        """Without dpkg-shlibdeps cpack alone would succeed, with a package that depends on no library."""
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
                            # Otherwise cpack would search the system's folders too.
                            ["cpack", "-D", "CMAKE_IGNORE_PATH=/usr/bin;/bin", "-G", "DEB", "--config",
                             str(BUILD / "CPackConfig.cmake"), "-B", str(self.folder)]):
                result = subprocess.run([str(tools / command[0]), *command[1:]], env={"PATH": str(tools)}, text=True,
                                        stdin=subprocess.DEVNULL, stdout=subprocess.PIPE, stderr=subprocess.STDOUT)
                self.assertNotEqual(result.returncode, 0, f"{command[0]} without {missing}")
                self.assertIn(f'"{missing}" is missing', result.stdout)
            self.assertEqual(list(self.folder.glob("*.deb")), [])

    def test_package_has_no_faults(self):
        package = self.make_package()
        said = self.run_quietly("lintian", "--allow-root", "--fail-on", "error", str(package),
                                env={**os.environ, "TMPDIR": str(self.folder)})
        self.assertNotRegex(said, r"(?m)^E:|^W:")

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
