"""The example programs print what stands beside them."""

import pathlib
import subprocess
import sys

import pytest

ROOT = pathlib.Path(__file__).parents[2]
EXAMPLES = ROOT / "examples" / "python"


def test_a_collection_is_plotted_and_its_rights_are_put_right(tmp_path):
    for module in ("pandas", "matplotlib"):
        pytest.importorskip(module)

    def run(script, *arguments):
        return subprocess.run([sys.executable, EXAMPLES / script, *arguments], check=True, capture_output=True, text=True)

    folder, picture = tmp_path / "collection", tmp_path / "collection.png"
    run("make_collection.py", ROOT / "tests" / "data" / "harbour.jpg", folder)
    shown = run("collection.py", folder, "--plot", picture, "--rights", "© Calder Pictures").stdout
    assert shown == (EXAMPLES / "collection.txt").read_text(encoding="utf-8")
    assert picture.read_bytes().startswith(b"\x89PNG") and picture.stat().st_size > 5000
    assert "0 without rights\n" in run("collection.py", folder).stdout
