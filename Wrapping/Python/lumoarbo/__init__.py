"""Vessel trees, supply areas and resections for liver surgery planning, on NumPy arrays.

Volumes are NumPy arrays in (z, y, x) order, as SimpleITK's GetArrayFromImage and most segmentation networks
give them; their geometry is given explicitly in world order (x, y, z): ``spacing`` (mm per voxel along x, y, z),
``origin`` (world position of voxel [0, 0, 0], mm) and ``direction`` (3 x 3, its columns the world directions of
the x, y and z axes). Trees are in the same world coordinates, mm. See docs/python.md.

Errors are exceptions with the one-line messages of the arbo program: ValueError for bad arguments and data,
OSError for files that cannot be read or written.
"""

from . import _lumoarbo

__all__ = [
    "Vessel",
    "Tree",
    "Phantom",
    "read",
    "write",
    "extract",
    "supply",
    "resect",
    "compare",
    "label_from",
    "phantom",
    "SUPPLY_MODES",
    "IDENTITY",
]

#: The identity direction: image axes along the world axes.
IDENTITY = ((1.0, 0.0, 0.0), (0.0, 1.0, 0.0), (0.0, 0.0, 1.0))
#: The modes of supply(), as arbo supply --mode takes them.
SUPPLY_MODES = tuple(_lumoarbo.supply_modes())


def _points(value):
    import numpy

    points = numpy.asarray(value, dtype=numpy.float32)
    if points.size == 0:
        return numpy.zeros((0, 4), dtype=numpy.float32)
    if points.ndim != 2 or points.shape[1] != 4:
        raise ValueError("points: give an N x 4 array (x, y, z, radius in mm)")
    return points


class Vessel:
    """One vessel: its centre line as an N x 4 float32 array (x, y, z, radius; mm), its labels and its place in
    the tree. ``type``, ``segment`` and ``status`` are numbers; the ``*_name`` properties give their names
    ("Portal vein", "S_II", "To be resected"), and setting a short name or a number is accepted ("portal" or 2,
    "S_II" or 3, "resect" or 3). A new vessel is a portal vein of undefined segment and resection status."""

    __slots__ = ("id", "_points", "_type", "_segment", "_status", "visible", "active", "cleaning_label",
                 "children", "parent")

    def __init__(self, points=None, type=2, segment=1, status=1, id=-1, visible=True, active=False,
                 cleaning_label=-1):
        self.id = int(id)
        self.points = points if points is not None else ()
        self.type = type
        self.segment = segment
        self.status = status
        self.visible = bool(visible)
        self.active = bool(active)
        self.cleaning_label = int(cleaning_label)
        self.children = []
        self.parent = None

    @property
    def points(self):
        return self._points

    @points.setter
    def points(self, value):
        self._points = _points(value)

    @property
    def type(self):
        return self._type

    @type.setter
    def type(self, value):
        self._type = _lumoarbo.type_label(value, "type")[1]

    @property
    def type_name(self):
        return _lumoarbo.type_label(self._type, "type")[0]

    @property
    def segment(self):
        return self._segment

    @segment.setter
    def segment(self, value):
        self._segment = _lumoarbo.segment_label(value, "segment")[1]

    @property
    def segment_name(self):
        return _lumoarbo.segment_label(self._segment, "segment")[0]

    @property
    def status(self):
        return self._status

    @status.setter
    def status(self, value):
        self._status = _lumoarbo.status_label(value, "status")[1]

    @property
    def status_name(self):
        return _lumoarbo.status_label(self._status, "status")[0]

    def add_child(self, vessel):
        """Appends a vessel (and its subtree) as the last child; returns it."""
        if vessel.parent is not None:
            vessel.parent.children.remove(vessel)
        vessel.parent = self
        self.children.append(vessel)
        return vessel

    def __iter__(self):
        """This vessel and its descendants in pre-order (a vessel before its children, children in order)."""
        stack = [self]
        while stack:
            vessel = stack.pop()
            yield vessel
            stack.extend(reversed(vessel.children))

    def __repr__(self):
        return "Vessel(id=%d, %d points, %s, %s, %s, %d children)" % (
            self.id, len(self._points), self.type_name, self.segment_name, self.status_name, len(self.children))

    def _fields(self, arrays):
        return {
            "id": self.id,
            "visible": self.visible,
            "active": self.active,
            "segment": self._segment,
            "type": self._type,
            "status": self._status,
            "cleaning_label": self.cleaning_label,
            "points": self._points if arrays else self._points.tolist(),
            "children": [],
        }

    def _record(self, arrays):
        # Deep trees are walked without recursion.
        record = self._fields(arrays)
        stack = [(self, record)]
        while stack:
            vessel, rec = stack.pop()
            for child in vessel.children:
                child_record = child._fields(arrays)
                rec["children"].append(child_record)
                stack.append((child, child_record))
        return record

    @classmethod
    def _one(cls, record, parent):
        vessel = cls(points=record.get("points"), type=record.get("type", 2), segment=record.get("segment", 1),
                     status=record.get("status", 1), id=record.get("id", -1), visible=record.get("visible", True),
                     active=record.get("active", False), cleaning_label=record.get("cleaning_label", -1))
        vessel.parent = parent
        return vessel

    @classmethod
    def _from_record(cls, record, parent=None):
        vessel = cls._one(record, parent)
        # Deep trees are built without recursion.
        stack = [(vessel, record)]
        while stack:
            node, rec = stack.pop()
            for child_record in rec.get("children", ()):
                child = cls._one(child_record, node)
                node.children.append(child)
                stack.append((child, child_record))
        return vessel


class Tree:
    """A vessel tree: ``root`` (a Vessel, or None for an empty tree); iterating gives the vessels in pre-order."""

    def __init__(self, root=None):
        self.root = root
        #: What the extraction had to say ("arbo: note: ..." lines), empty otherwise.
        self.notes = ""

    def __iter__(self):
        return iter(self.root) if self.root is not None else iter(())

    def __len__(self):
        return sum(1 for _ in self)

    def __repr__(self):
        return "Tree(%d vessels)" % len(self)

    def find(self, id):
        """The vessel with this id, or None."""
        return next((vessel for vessel in self if vessel.id == id), None)

    def to_dict(self, arrays=True):
        """{"root": {"id", "visible", "active", "segment", "type", "status", "cleaning_label", "points",
        "children": [...]}} (root None when empty); points as float32 arrays, or as lists with arrays=False (for
        JSON)."""
        return {"root": None if self.root is None else self.root._record(arrays)}

    @classmethod
    def from_dict(cls, data):
        """The tree of a dict as to_dict makes it; labels may be names or numbers, points arrays or lists."""
        root = data.get("root")
        return cls(None if root is None else Vessel._from_record(root))

    def _record(self):
        return None if self.root is None else self.root._record(True)

    @classmethod
    def _of(cls, record):
        return cls(None if record is None else Vessel._from_record(record))

    @classmethod
    def read(cls, path):
        """Reads a .ves file (OSError when it cannot be read)."""
        return cls._of(_lumoarbo.read_ves(str(path)))

    def write(self, path):
        """Writes the tree as .ves (or .vtp), atomically: on failure (OSError) an earlier file is left as it was."""
        _lumoarbo.write_ves(self._record(), str(path))


def read(path):
    """Reads a vessel tree file (.ves)."""
    return Tree.read(path)


def write(tree, path):
    """Writes a vessel tree file (.ves or .vtp)."""
    tree.write(path)


def _geometry(spacing, origin, direction):
    if spacing is None:
        raise ValueError("spacing: give three voxel sizes in mm, (x, y, z)")
    return ([float(s) for s in spacing], [float(o) for o in origin], [[float(v) for v in row] for row in direction])


def extract(mask, spacing, origin=(0.0, 0.0, 0.0), direction=IDENTITY, label=None, type="portal", start=None,
            cleaned_iterations=0, endpoint_suppression=True, keep_spurs=False, prune=0.0, smooth=2,
            raw_diameters=False, resample=True, stub=True, raw_centre_lines=False):
    """The vessel tree of a vessel mask, as arbo extract makes it (same defaults, same tree).

    mask: 3-D array (z, y, x) of any integer, float or bool type; voxels other than 0 are vessel, or with
    ``label`` those equal to it. start: the root's array index (z, y, x); default the thickest end point.
    The returned tree's ``notes`` holds arbo's notes (voxel type converted, slices interpolated, ...);
    ``tree.summary`` the counts of arbo's summary line."""
    s, o, d = _geometry(spacing, origin, direction)
    start_ijk = None if start is None else [int(start[2]), int(start[1]), int(start[0])] if len(start) == 3 \
        else [int(v) for v in start]
    record, summary = _lumoarbo.extract(mask, s, o, d, label, str(type), start_ijk, int(cleaned_iterations),
                                        bool(endpoint_suppression), bool(keep_spurs), float(prune), int(smooth),
                                        bool(raw_diameters), bool(resample), bool(stub), bool(raw_centre_lines))
    tree = Tree._of(record)
    tree.notes = summary.pop("notes")
    tree.summary = summary
    return tree


def _trees(tree):
    trees = list(tree) if isinstance(tree, (list, tuple)) else [tree]
    if not trees:
        raise ValueError("tree: give a vessel tree")
    for t in trees:
        if not isinstance(t, Tree):
            raise TypeError("tree: expected a lumoarbo.Tree, not %s" % type(t).__name__)
    return [t._record() for t in trees]


def supply(organ, tree, mode="portal-defined-segments", spacing=None, origin=(0.0, 0.0, 0.0), direction=IDENTITY,
           threads=0, organ_label=None):
    """Labels each organ voxel by the vessel that supplies it, as arbo supply does.

    organ: 3-D array (z, y, x), voxels other than 0 (or equal to ``organ_label``) are organ. tree: a Tree, or a
    list of Trees that supply together (arbo supply --with). threads: 0 uses every core.
    Returns (labels, table): labels a (z, y, x) array of the organ's shape, table a dict like arbo supply --json
    gives it: "mode", "organ_voxels", "organ_millilitres" and "labels", a list of {"label", "name", "voxels",
    "millilitres", "percent"}."""
    s, o, d = _geometry(spacing, origin, direction)
    labels, rows, total = _lumoarbo.supply(organ, _trees(tree), s, o, d, str(mode), int(threads), organ_label)
    table = {"mode": mode, "organ_voxels": total["voxels"], "organ_millilitres": total["millilitres"],
             "labels": rows}
    return labels, table


def resect(organ, portal, hepatic=None, spacing=None, origin=(0.0, 0.0, 0.0), direction=IDENTITY, plan=False,
           tumour=None, margins=None, plane=None, resect_side=None, threads=0, organ_label=None, tumour_label=None):
    """Remnant, resected and at-risk parts of the organ, as arbo resect computes them; exactly one of:

    plan=True: the resection statuses the trees carry; tumour=ARRAY: a safety margin around the tumour, for each
    of ``margins`` (mm, default 10); plane=PATH: the cutting plane of a point-set file (.mps), resecting the
    ``resect_side`` ("front", the default, or "back").
    Returns one dict per margin (one for plan and plane): "margin_mm", "labels" (a (z, y, x) array: 2 remnant,
    3 resected, 4 at risk), "remnant", "resected", "at_risk", "tumour" ({"voxels", "millilitres", "percent"}),
    "flr_percent", "notes", and the trees with their resection statuses as "portal" and "hepatic"."""
    s, o, d = _geometry(spacing, origin, direction)
    margin_list = [] if margins is None else [float(m) for m in (margins if hasattr(margins, "__iter__")
                                                                 else [margins])]
    results = _lumoarbo.resect(organ, _trees(portal)[0], None if hepatic is None else _trees(hepatic)[0], s, o, d,
                               bool(plan), tumour, margin_list, "" if plane is None else str(plane),
                               "" if resect_side is None else str(resect_side), int(threads), organ_label,
                               tumour_label)
    for result in results:
        result["portal"] = Tree._of(result["portal"])
        if result["hepatic"] is not None:
            result["hepatic"] = Tree._of(result["hepatic"])
    return results


def compare(truth, test, voxel_size=1.0, min_radius_voxels=0.0):
    """The accuracy of a tree against a true one, as arbo compare measures it (docs/accuracy.md)."""
    return _lumoarbo.compare(_trees(truth)[0], _trees(test)[0], float(voxel_size), float(min_radius_voxels))


def label_from(tree, reference):
    """A copy of the tree whose vessels carry the type, segment and resection status of the nearest vessel of
    the reference, as arbo label --from gives them."""
    record, _ = _lumoarbo.label_from(_trees(tree)[0], _trees(reference)[0])
    return Tree._of(record)


class Phantom:
    """A synthetic liver: masks (z, y, x; unsigned 8-bit 0/1) of the organ, portal and hepatic veins and tumour,
    their geometry, and the true portal and hepatic trees."""

    def __init__(self, data):
        self.organ = data["organ"]
        self.portal = data["portal"]
        self.hepatic = data["hepatic"]
        self.tumour = data["tumour"]
        self.spacing = data["spacing"]
        self.origin = data["origin"]
        self.direction = data["direction"]
        self.portal_tree = Tree._of(data["portal_tree"])
        self.hepatic_tree = Tree._of(data["hepatic_tree"])

    @property
    def geometry(self):
        """spacing, origin and direction as keyword arguments: extract(p.portal, **p.geometry)."""
        return {"spacing": self.spacing, "origin": self.origin, "direction": self.direction}


def phantom(size="small", seed=1):
    """The synthetic liver of arbo phantom: size "small", "medium" or "large"; the same seed gives the same
    phantom."""
    return Phantom(_lumoarbo.phantom(str(size), int(seed)))
