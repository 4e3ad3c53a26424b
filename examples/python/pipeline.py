#!/usr/bin/env python3
"""The whole planning pipeline on a synthetic liver, in memory: trees from the vessel masks, segments from the
true tree, supply areas, and the resection around the tumour at two safety margins. Prints the volumes.

    PYTHONPATH=build/Wrapping/Python python3 examples/python/pipeline.py [small|medium|large] [seed]
"""

import sys

import numpy

import lumoarbo


def main(size="small", seed=1):
    liver = lumoarbo.phantom(size, seed)
    geometry = liver.geometry  # spacing, origin, direction in world order (x, y, z); arrays are (z, y, x)
    print("phantom %s, seed %d: %d x %d x %d voxels (z, y, x) of %.2f x %.2f x %.2f mm (x, y, z)"
          % ((size, seed) + liver.organ.shape + tuple(liver.spacing)))

    portal = lumoarbo.extract(liver.portal, **geometry, type="portal")
    hepatic = lumoarbo.extract(liver.hepatic, **geometry, type="hepatic")
    print("extracted %d portal and %d hepatic vessels" % (len(portal), len(hepatic)))
    accuracy = lumoarbo.compare(liver.portal_tree, portal, voxel_size=min(liver.spacing))
    print("portal tree: recall %.1f %%, precision %.1f %%" % (100 * accuracy["recall"], 100 * accuracy["precision"]))

    # The extracted vessels take the segments of the nearest true vessel.
    portal = lumoarbo.label_from(portal, liver.portal_tree)
    hepatic = lumoarbo.label_from(hepatic, liver.hepatic_tree)

    segments, table = lumoarbo.supply(liver.organ, portal, mode="portal-defined-segments", **geometry)
    print("liver: %.2f ml" % table["organ_millilitres"])
    for row in table["labels"]:
        print("  %-20s %10.2f ml %7.2f %%" % (row["name"], row["millilitres"], row["percent"]))
    assert numpy.count_nonzero(segments) == sum(row["voxels"] for row in table["labels"] if row["label"] != 0)

    for result in lumoarbo.resect(liver.organ, portal, hepatic, tumour=liver.tumour, margins=[5, 10], **geometry):
        print("margin %4.1f mm: remnant %.2f ml, resected %.2f ml, at risk %.2f ml, future liver remnant %.1f %%"
              % (result["margin_mm"], result["remnant"]["millilitres"], result["resected"]["millilitres"],
                 result["at_risk"]["millilitres"], result["flr_percent"]))


if __name__ == "__main__":
    main(sys.argv[1] if len(sys.argv) > 1 else "small", int(sys.argv[2]) if len(sys.argv) > 2 else 1)
