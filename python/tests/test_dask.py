"""The cluster: no row is lost or doubled when a worker dies, and a repetition writes nothing."""

import csv
import json
import os
import pathlib
import signal
import sqlite3
import time

import pytest

import zephmetadata as z

distributed = pytest.importorskip("distributed")
cluster_tables = pytest.importorskip("zephmetadata.dask")


def die_once(rows, mark):
    """Kills the worker that first gets here, in the middle of its partition."""
    rows = list(rows)
    try:
        os.close(os.open(mark, os.O_CREAT | os.O_EXCL))
    except FileExistsError:
        time.sleep(0.05)
        return rows
    for row in rows[: len(rows) // 2]:
        z.apply([row])
    os.kill(os.getpid(), signal.SIGKILL)


@pytest.fixture
def cluster():
    with distributed.LocalCluster(
        n_workers=2, threads_per_worker=1, processes=True, dashboard_address=None, silence_logs="CRITICAL"
    ) as local, distributed.Client(local) as client:
        yield client


def test_loses_nothing_when_a_worker_dies(fixture, tmp_path, cluster):
    names = [fixture(to=f"{number:03}.jpg") for number in range(60)]
    broken = fixture("broken-packet.jpg")
    workers = set(cluster.scheduler_info()["workers"])
    rows = cluster_tables.read([str(tmp_path / "0*.jpg"), broken, "missing.jpg"], ["xmp:Rating"], files_per_partition=7)
    edited = rows.map(lambda row: {**row, "xmp:Rating": 2})
    written = cluster_tables.write(edited.map_partitions(die_once, str(tmp_path / "died"))).compute()
    assert [row["file"] for row in written] == [*names, broken, "missing.jpg"]
    assert [row["error"] is None for row in written] == [True] * 60 + [False] * 2
    assert workers - set(cluster.scheduler_info()["workers"]), "one of the workers did die"

    before = [os.stat(name).st_mtime_ns for name in names]
    assert not any(row["changed"] for row in cluster_tables.write(edited).compute())
    assert [os.stat(name).st_mtime_ns for name in names] == before
    assert len(z.open(names[0])["xmpMM:History"]) == len(z.open(names[59])["xmpMM:History"]), "each was written once"

    (parts_json, parts_csv, parts_sqlite) = (cluster_tables.to_files(rows, tmp_path / kind, kind) for kind in ("jsonl", "csv", "sqlite"))
    read = [json.loads(line) for part in parts_json for line in open(part, encoding="utf-8")]
    assert [(row["file"], row["xmp:Rating"]) for row in read[:60]] == [(name, 2.0) for name in names]
    listed = [row for part in parts_csv for row in csv.DictReader(open(part, encoding="utf-8"))]
    assert [row["file"] for row in listed] == [row["file"] for row in read] and listed[61]["error"] == "no such file"
    stored = [row for part in parts_sqlite for row in sqlite3.connect(part).execute('SELECT file, "xmp:Rating" FROM files')]
    assert stored == [(row["file"], row["xmp:Rating"]) for row in read]


def test_reads_dataframes_of_the_same_types_in_every_partition(fixture, tmp_path):
    pytest.importorskip("pandas")
    names = [fixture(to=f"{number}.jpg") for number in range(5)]
    with z.open(names[3], sidecar="always") as photo:
        photo["tiff:Orientation"] = 6
    name = names[3] + ".xmp"
    text = pathlib.Path(name).read_text("utf-8")
    pathlib.Path(name).write_text(text.replace("<tiff:Orientation>6<", "<tiff:Orientation>many<"), "utf-8")
    frame = cluster_tables.read(names, ["tiff:Orientation", "dc:subject"], view="camera", files_per_partition=2, frame="pandas")
    rows = frame.compute(scheduler="synchronous")
    assert str(rows["tiff:Orientation"].dtype) == str(frame.dtypes["tiff:Orientation"]) == "Int64"
    assert list(rows["file"]) == names and rows["exif:FNumber"].iloc[0] == 8 and rows["corvid:ShutterSpeed"].iloc[4] == "1/250 sec"
    assert list(rows["error"].isna()) == [True, True, True, False, True] and "many" in rows["error"].iloc[3]

    frame["xmp:Label"] = "Red"
    written = cluster_tables.write(frame).compute(scheduler="synchronous")
    assert [row["changed"] for row in written] == [True, True, True, False, True]
    assert not any(row["changed"] for row in cluster_tables.write(frame).compute(scheduler="synchronous"))
    assert z.open(names[4])["dc:subject"] == z.open(names[3])["dc:subject"] and z.open(names[4])["xmp:Label"] == "Red"
