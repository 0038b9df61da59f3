"""The cluster: no row is lost or doubled when a worker dies, and a repetition writes nothing."""

import csv
import json
import os
import signal
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

    (parts_json, parts_csv) = (cluster_tables.to_files(rows, tmp_path / kind, kind) for kind in ("jsonl", "csv"))
    read = [json.loads(line) for part in parts_json for line in open(part, encoding="utf-8")]
    assert [(row["file"], row["xmp:Rating"]) for row in read[:60]] == [(name, 2.0) for name in names]
    listed = [row for part in parts_csv for row in csv.DictReader(open(part, encoding="utf-8"))]
    assert [row["file"] for row in listed] == [row["file"] for row in read] and listed[61]["error"] == "no such file"
