"""What the program must show and write, written a second time as plain loops that share no code with it."""

import contextlib
import re
import unicodedata
from pathlib import PurePosixPath
from typing import NamedTuple

from window import (ALL_SAVED, ANALYSE, CAMERA, CHOOSE_FIRST, COPY, DESTINATION, NOTE, NOTHING_TO_COPY, REVIEW, found)

EXTENSIONS = {".avi", ".braw", ".m4v", ".mkv", ".mov", ".mp4", ".mpeg", ".mpg", ".mts", ".mxf", ".r3d", ".wmv"}
TRASH = {"$recycle.bin", "system volume information"}
HIDDEN_COPIES = (".reelkeep-copia", ".reelkeep-lista")
FOLDER = "folder"
DATE = "(date)"
ONLY_DESTINATION, REMOVE = "Usar solo HD de copia", "Quitar"
PULLED, GONE = "el disco se ha desconectado.", "no se encuentra."
SCANNING = "Escaneando videos..."
SCAN_FAILED, COPY_FAILED = "No he podido escanear las carpetas: ", "No he podido copiar los videos: "


class File(NamedTuple):
    size: int
    time: int
    content: bytes


class Video(NamedTuple):
    path: str
    name: str
    size: int


class Failure(Exception):
    """Its text is a pattern."""


def collation(text):
    """Numbers count by value, letter case only in otherwise equal names."""
    pieces = [(1, int(piece), "") if piece.isdecimal() else (2 if piece.isalpha() else 0, 0, plain(piece))
              for piece in re.findall(r"\d+|.", text)]
    return pieces, text.swapcase(), text


def plain(letter):
    """The Spanish n with a tilde comes between n and o."""
    return unicodedata.normalize("NFC", letter).lower().replace("ñ", "n\x7f")


def size_text(size):
    if size == 1:
        return "1 byte"
    if size < 1000:
        return f"{size} bytes"
    if size < 999_500:
        return f"{size / 1000:.0f} kB"
    return f"{size / 1_000_000:.1f} MB".replace(".", ",").replace(",0", "")


class World:
    """All files and folders by path, and the disks that are pulled."""

    def __init__(self, entries):
        self.entries = entries
        self.dead = set()

    def is_dead(self, path):
        return any(path == disk or path.startswith(disk + "/") for disk in self.dead)

    def files(self):
        return [path for path, entry in self.entries.items() if entry != FOLDER and not path.endswith(HIDDEN_COPIES)]

    def videos(self, root):
        if self.is_dead(root):
            raise Failure(re.escape(f"{root}: {PULLED}"))
        found_here = []
        for path, entry in self.entries.items():
            below = path.removeprefix(root + "/")
            parts = below.split("/")
            hidden = any(part.startswith(".") or part.lower() in TRASH for part in parts)
            if below != path and entry != FOLDER and not hidden and PurePosixPath(path).suffix.lower() in EXTENSIONS:
                found_here.append(Video(path.replace(root + "/", ""), parts[-1], entry.size))
        return found_here

    def make_folder(self, path):
        for folder in (*reversed(PurePosixPath(path).parents), path):
            self.entries.setdefault(str(folder), FOLDER)

    def copy(self, plan):
        """Copies what a plan says. A failure leaves what was copied before."""
        for video in plan.videos:
            target = f"{plan.destination}/{video.path if plan.preserve else video.name}"
            source = f"{plan.camera}/{video.path}"
            if self.is_dead(target):
                raise Failure(f"{re.escape(plan.destination)}.*: {re.escape(PULLED)}")
            self.make_folder(PurePosixPath(target).parent)
            if target in self.entries:
                continue
            if self.is_dead(source):
                raise Failure(re.escape(f"{source}: {PULLED}"))
            if source not in self.entries:
                raise Failure(re.escape(f"{source}: {GONE}"))
            self.entries[target] = self.entries[source]
            folder, name = target.rsplit("/", 1)
            for suffix in HIDDEN_COPIES:  # of a run that was interrupted
                self.entries.pop(f"{folder}/.{name}{suffix}", None)


class Plan(NamedTuple):
    """What a copy was started with."""

    videos: list
    camera: str
    destination: str
    preserve: bool


class Session:
    """The choices, the results, and the texts of the window."""

    def __init__(self):
        self.camera = self.destination = None
        self.reviewed = []
        self.on_camera, self.missing = [], []
        self.preserve = True
        self.analysed = self.scanning = False
        self.copying = None
        self.status = CHOOSE_FIRST  # or a pattern, where the order of work decides

    def effective(self):
        return list(dict.fromkeys([self.destination] * (self.destination is not None) + self.reviewed))

    def choose_destination(self, folder):
        self.destination = folder
        self.reviewed = self.reviewed or [folder]

    def add(self, folders):
        self.reviewed = self.reviewed + [folder for folder in folders if folder not in self.reviewed]

    def remove(self, folder):
        self.reviewed = [other for other in self.reviewed if other != folder]

    def can_scan(self):
        return not self.scanning and not self.copying and self.camera is not None and self.destination is not None

    def can_copy(self):
        return self.can_scan() and bool(self.missing)

    def plan(self):
        return Plan(self.missing, self.camera, self.destination, self.preserve)

    def analyse(self, world):
        try:
            on_camera = world.videos(self.camera)
            saved = {(video.name.lower(), video.size) for root in self.effective() for video in world.videos(root)}
        except Failure as failure:
            self.status = re.compile(SCAN_FAILED + str(failure))
            return
        missing = [video for video in on_camera if (video.name.lower(), video.size) not in saved]
        self.on_camera = on_camera
        self.missing = sorted(missing, key=lambda video: (collation(video.name), collation(video.path)))
        self.analysed = True
        self.status = found(len(missing)) if missing else ALL_SAVED

    def copy(self, world, plan):
        """Returns how many files it adds."""
        before = len(world.files())
        try:
            world.copy(plan)
            self.analyse(world)
        except Failure as failure:
            self.status = re.compile(COPY_FAILED + str(failure))
        return len(world.files()) - before

    def end_of_pulled_copy(self, places, plan, status):
        """Either the first of its copies are complete, or all are and the analysis fails: that depends on time."""
        complete = World(dict(places.world.entries))
        with contextlib.suppress(Failure):
            complete.copy(plan)
        if not status.startswith(COPY_FAILED):
            places.world.entries = complete.entries
            self.analyse(places.world)
        else:
            self.status = re.compile(f"{COPY_FAILED}.*: {re.escape(PULLED)}")
            places.allow(complete.entries, plan.destination)
        return f"end of the copy without its disk: {status}"

    def progress(self):
        """The status while a copy runs, as a pattern."""
        count = len(self.copying.videos)
        names = [re.escape(video.name) for video in self.copying.videos]
        reports = [f"Copiando {number}/{count}: {name}" for number, name in enumerate([*names, names[-1]])]
        return re.compile("|".join(reports))

    def shown(self):
        """Everything that the window shows, in reading order, one line for each text and control."""
        chosen = self.effective()
        yield from HEAD
        yield from card("Paso 1", "Camara o tarjeta", "Aqui eliges el material original que quieres comprobar.",
                        self.camera, CAMERA[0])
        yield from card("Paso 2", "Destino de copia",
                        "Aqui se guardaran los videos que todavia no esten archivados.", self.destination,
                        DESTINATION[0])
        yield from ("Paso 3", "Ubicaciones a revisar", "Busca los videos de la camara en uno o varios HDs o carpetas. "
                    "El HD de copia se incluye tambien en la revision.", "Listo" if chosen else "Pendiente")
        yield button(ONLY_DESTINATION, self.destination is not None)
        yield button(REVIEW[0])
        yield from (str(len(chosen)), "ubicacion revisada" if len(chosen) == 1 else "ubicaciones revisadas")
        yield "Sin seleccionar" if not chosen else chosen[0] if len(chosen) == 1 else \
            f"{len(chosen)} ubicaciones seleccionadas"
        for folder in chosen:
            yield from (name(folder), folder)
            if folder == self.destination:
                yield "Copia"
            yield button(REMOVE, folder != self.destination)
        yield from ("Analizar primero", "Comprueba que videos de la camara ya existen antes de copiar nada.")
        yield f"[{'x' if self.preserve else ' '}] Mantener estructura de carpetas"
        yield button(ANALYSE, self.can_scan())
        yield from ("Copiar lo que falta",
                    "Elige el HD activo de copia y lanza la transferencia de los videos pendientes.")
        if len(chosen) >= 2:
            yield from 2 * ("HD de copia activo",)
            yield f"<{name(self.destination) if self.destination else ''}>"
        yield from (name(self.destination), self.destination) if self.destination else \
            ("Sin seleccionar", "Selecciona un destino de copia.")
        count = str(len(self.missing))
        yield from (count, "video pendiente para copiar" if count == "1" else "videos pendientes para copiar")
        yield button(COPY if self.missing else NOTHING_TO_COPY, self.can_copy())
        yield from ("En camara", str(len(self.on_camera)), "videos detectados", "Ya en destinos",
                    str(max(0, len(self.on_camera) - len(self.missing))), "videos de la camara ya encontrados",
                    "Pendientes", count, "videos de la camara por copiar")
        yield "Videos pendientes"
        if self.analysed:
            yield DATE
        for video in self.missing:
            yield f"- {video.name}, {video.path}, {size_text(video.size)}"
        if not self.missing:
            yield from NOTHING_MISSING
        if self.scanning or self.copying:
            yield BAR
        yield SCANNING if self.scanning else self.progress() if self.copying else self.status
        yield NOTE


BAR = "(progress bar)"
HEAD = ("Reelkeep", "Controla que tu material de camara ya este archivado en uno o varios discos y copia solo lo "
        "que falta al destino principal.", "1", "Camara", "ORIGEN", "2", "HD principal", "COPIA", "3", "Otros discos",
        "REVISION")
NOTHING_MISSING = ("Todo lo de la camara ya esta en las ubicaciones revisadas",
                   "Los videos extra que ya existan en esos HDs o carpetas no se consideran un problema.")


def name(folder):
    return folder.rsplit("/", 1)[1]


def button(title, enabled=True):
    return f"[{title}]" if enabled else f"({title})"


def card(step, title, subtitle, folder, choose):
    yield from (step, title, subtitle)
    if folder:
        yield from ("Listo", name(folder), folder, "Ubicacion lista para analizar.")
    else:
        yield from ("Pendiente", "Sin seleccionar", "Selecciona una carpeta para continuar.",
                    "Aun no has elegido esta ubicacion.")
    yield button(choose)
