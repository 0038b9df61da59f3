#!/usr/bin/python3
"""Makes a collection to try things with: 120 copies of a photo, as if two cameras had been about for some months.

    make_collection.py PHOTO FOLDER
"""

import datetime
import pathlib
import random
import shutil
import sys

import zephmetadata

LENSES = {"Lumenta 24-70mm F4": (24, 70), "Lumenta 85mm F1.8": (85, 85), "Lumenta 100-400mm F5.6": (100, 400)}


def main() -> None:
    photo, folder = pathlib.Path(sys.argv[1]), pathlib.Path(sys.argv[2])
    folder.mkdir(parents=True, exist_ok=True)
    chance = random.Random(1)  # the same collection each time
    for number in range(120):
        name = folder / f"photo-{number:03}{photo.suffix}"
        shutil.copy(photo, name)
        lens = chance.choices(list(LENSES), [6, 2, 3])[0]
        day = datetime.datetime(2024, 1, 1, 9) + datetime.timedelta(days=chance.triangular(0, 360, 190))
        with zephmetadata.open(name) as copy:
            copy["exif:DateTimeOriginal"] = day.replace(microsecond=0)
            copy["exifEX:LensModel"] = lens
            copy["exif:FocalLength"] = round(chance.uniform(*LENSES[lens]))
            if number % 10 == 3:
                copy.pop("dc:rights")
    (folder / "notes.txt").write_text("no photo\n")


if __name__ == "__main__":
    main()
