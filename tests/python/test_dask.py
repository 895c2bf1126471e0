"""zetformula.dask.run_program on a LocalCluster of two worker processes against
`zet run --jobs 1` over 40 frames: the same results in the same order, the same
overlays in the shared folder."""
import json

import pytest

from conftest import ROOT, make_frames, run_checked

distributed = pytest.importorskip("distributed")


def test_dask_run_equals_zet_run(zet, tmp_path):
    import zetformula.dask

    frames = make_frames(tmp_path / "frames", 40, 160, 120)
    program = ROOT / "examples" / "rim_check.json"
    out = tmp_path / "zet.out"
    run_checked([zet, "run", program, frames, "--out", out, "--jobs", "1", "--quiet"])
    expected = [json.loads(l) for l in (out / "results.jsonl").read_text().splitlines()]
    assert len(expected) == 40

    with distributed.LocalCluster(n_workers=2, threads_per_worker=1, processes=True,
                                  dashboard_address=None) as cluster, \
            distributed.Client(cluster) as client:
        run = zetformula.dask.run_program(str(program), [str(frames)], client, out=tmp_path / "shared")
        pids = set(client.run(lambda: __import__("os").getpid()).values())
    assert len(pids) == 2
    assert run.status == 0 and run.results == expected
    for r in expected:
        assert (tmp_path / "shared" / r["overlay"]).read_bytes() == (out / r["overlay"]).read_bytes()
