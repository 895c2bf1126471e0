"""examples/python/coins.py: every coin of skimage.data.coins() found, and each coin's
circle from PtsToBestCircle against scikit-image's CircleModel on the same points
(every point used by both): centre and radius within 0.5 px. The overlay is written."""
import sys

import numpy as np
import pytest

from conftest import ROOT

skimage = pytest.importorskip("skimage")
sys.path.insert(0, str(ROOT / "examples" / "python"))
import coins  # noqa: E402

COINS_IN_THE_PHOTOGRAPH = 24


def test_every_coin_fits_as_scikit_image_fits_it(tmp_path, capsys):
    from skimage.measure import CircleModel

    overlay = tmp_path / "coins.png"
    fits = coins.main(str(overlay))
    assert len(fits) == COINS_IN_THE_PHOTOGRAPH
    groups = coins.coin_points(skimage.data.coins())
    for n, (fit, points) in enumerate(zip(fits, groups), 1):
        model = CircleModel()
        assert model.estimate(points)
        xc, yc, r = model.params
        assert fit["points included"] == len(points)
        assert abs(fit["center"].x - xc) < 0.5 and abs(fit["center"].y - yc) < 0.5, n
        assert abs(fit["diameter"] / 2 - r) < 0.5, n
        assert 5 < r < 40, n
    assert overlay.stat().st_size > 1000
    assert f"{COINS_IN_THE_PHOTOGRAPH} coins" in capsys.readouterr().out
