"""Measures the coins in scikit-image's photograph of coins (skimage.data.coins()).

scikit-image finds the edges (Canny) and the coins (watershed on the Sobel gradient);
the edge points near each coin's outline are that coin's points. The library fits a
circle to each coin's points (PtsToBestCircle), draws it with its annotations (Circle,
Text), and the host's overlay renderer draws them over the photograph, as `zet run`
draws an overlay. Prints a table of the coins: centre, diameter and circularity.

    python3 examples/python/coins.py [OVERLAY.png]
"""
import sys

import numpy as np
from scipy import ndimage as ndi
from skimage import data, feature, filters, measure, morphology, segmentation

import zetformula


def coin_points(image):
    """The edge points of each coin, in the image's (x, y) pixel coordinates, coins in
    reading order (rows of coins top to bottom, left to right in a row)."""
    edges = feature.canny(image, sigma=2.5, low_threshold=10, high_threshold=30)
    markers = np.zeros_like(image)
    markers[image < 30] = 1   # background
    markers[image > 150] = 2  # bright metal
    coins = ndi.binary_fill_holes(segmentation.watershed(filters.sobel(image), markers) == 2)
    labels = measure.label(coins)
    groups = []
    for region in measure.regionprops(labels):
        if region.area < 300:  # specks, not coins
            continue
        mask = labels == region.label
        # The outline, a few pixels either side: the coin's rim, not its relief.
        band = morphology.binary_dilation(mask, morphology.disk(4)) & \
            ~morphology.binary_erosion(mask, morphology.disk(4))
        y, x = np.nonzero(edges & band)
        groups.append(np.column_stack([x, y]).astype(np.float64))
    groups.sort(key=lambda p: (round(p[:, 1].mean() / 60), p[:, 0].mean()))
    return groups


def measure_coins(lib, groups):
    """One PtsToBestCircle per coin, every point used (0 % outliers); then its circle and
    its number drawn. Returns (fits, drawing results)."""
    fits, drawn = [], []
    for n, points in enumerate(groups, 1):
        fit = lib.call("PtsToBestCircle", 0, points, False, 0, -1, check=True)
        fits.append(fit)
        centre, diameter = fit["center"], fit["diameter"]
        drawn.append(lib.call("Circle", centre, diameter / 2, "", 255, check=True))
        drawn.append(lib.call("Text", (centre[0] - 6, centre[1] - 8), str(n), 16776960, True,
                              "Sans 9", check=True))
    return fits, drawn


def main(overlay_file="coins_overlay.png"):
    lib = zetformula.Library()
    image = data.coins()
    groups = coin_points(image)
    fits, drawn = measure_coins(lib, groups)
    overlay = zetformula.render_overlay(image, *drawn)
    zetformula.save_image(overlay_file, overlay)
    print(f"{'coin':>4} {'x':>7} {'y':>7} {'diameter':>9} {'circularity %':>13} {'points':>6}")
    for n, (fit, points) in enumerate(zip(fits, groups), 1):
        c = fit["center"]
        print(f"{n:4d} {c.x:7.1f} {c.y:7.1f} {fit['diameter']:9.1f} {fit['circularity']:13.2f} "
              f"{len(points):6d}")
    print(f"{len(fits)} coins; overlay in {overlay_file}")
    return fits


if __name__ == "__main__":
    main(*sys.argv[1:])
