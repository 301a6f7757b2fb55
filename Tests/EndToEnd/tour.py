#!/usr/bin/python3
"""Drives the program through a typical run on a virtual display and saves a picture of each step:
tour.py PROGRAM FOLDER"""

import json
import subprocess
import sys
from pathlib import Path

from desktop import Desktop, wait_for
from window import ALL_SAVED, ANALYSE, CAMERA, COPY, DESTINATION, REVIEW, Window, found, slow_disk

MAKE_SAMPLE = Path(__file__).resolve().parents[2] / "scripts" / "make-sample"


class Tour:
    """Numbers the pictures as they are taken."""

    def __init__(self, desktop, folder):
        self.desktop = desktop
        self.folder = folder
        self.taken = 0

    def picture(self, name):
        self.taken += 1
        path = self.folder / f"{self.taken:02}-{name}.png"
        self.desktop.picture(path)
        print(f"    {path}", flush=True)


def tour(desktop, folder, program):
    media = desktop.folder / "media"
    print("Making the sample card and disks...", flush=True)
    subprocess.run([str(MAKE_SAMPLE), str(media)], check=True)
    sample = json.loads((media / "manifest.json").read_text(encoding="utf-8"))
    pictures = Tour(desktop, folder)

    print("Driving the program:", flush=True)
    window = Window(desktop.run(program, **slow_disk(desktop.folder, 250)))
    window.maximize()
    pictures.picture("fresh")

    dialog = window.ask(CAMERA)
    dialog.select(media, [sample["card"]])
    pictures.picture("camera-dialog")
    dialog.accept()
    wait_for(lambda: str(media / sample["card"]) in window.texts(), "the camera's path")
    pictures.picture("camera-chosen")

    window.choose(DESTINATION, media / sample["copyDestination"])
    pictures.picture("copy-destination-chosen")

    dialog = window.ask(REVIEW)
    dialog.select(media, sample["reviewLocations"])
    pictures.picture("review-dialog")
    dialog.accept()
    wait_for(lambda: "3 ubicaciones seleccionadas" in window.texts(), "three review locations")
    pictures.picture("review-locations-chosen")

    count = len(sample["missing"])
    window.analyse(found(count))
    pictures.picture("analysed")

    window.button(COPY).press()
    wait_for(lambda: window.status().startswith(f"Copiando {count // 2}/{count}: "), "half of the copy")
    pictures.picture("copying")
    window.wait_for_status(ALL_SAVED)
    wait_for(lambda: window.button(ANALYSE).enabled, "the end of the copy")
    pictures.picture("all-saved")


def main():
    if len(sys.argv) != 3:
        sys.exit(__doc__)
    folder = Path(sys.argv[2]).absolute()
    folder.mkdir(parents=True, exist_ok=True)
    for old in folder.glob("[0-9][0-9]-*.png"):
        old.unlink()
    # Tall enough for the window to show all of its content.
    with Desktop(1150, 2020) as desktop:
        try:
            tour(desktop, folder, Path(sys.argv[1]).absolute())
        except BaseException:
            if desktop.program:
                desktop.picture(folder / "99-failed.png")
                print(desktop.said(), file=sys.stderr)
            raise
    print(f"The pictures are in {folder}")


if __name__ == "__main__":
    main()
