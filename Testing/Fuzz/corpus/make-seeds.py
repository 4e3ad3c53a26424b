#!/usr/bin/env python3
"""Writes the seed corpus of one fuzz target into a folder: make-seeds.py FORMAT FOLDER.

FORMAT is one of: ves, pattern, lut, proposal, scene, mps, extraction. The seeds are written out here, from the formats
as docs/ describes them, independently of the C++ writers, and together use every element and attribute of their
format. Files named ok-* must be accepted by the target's reader, files named bad-* refused; the replay test checks
both. The build runs this at configure time; for a fuzzing session run it by hand.
"""
import os
import struct
import sys

HERE = os.path.dirname(os.path.abspath(__file__))
ROOT = os.path.normpath(os.path.join(HERE, "..", "..", ".."))

# --- .ves -----------------------------------------------------------------------------------------------------------

def vessel(flags="t f", labels=(1, 2, 1, 1, -1), points=((0, 0, 0, 12), (10, 0, 0, 11))):
    text = "{ %s %s %d " % (flags, " ".join(str(v) for v in labels), len(points))
    return text + " ".join("[ %s ]" % " ".join(str(c) for c in p) for p in points) + " }"


def tree(body):
    return "VALD-KRN 2000 Tree\n{\n" + body + "\n}\n"


CANONICAL = tree("    " + vessel() + "\n      <\n          "
                 + vessel("t f", (7, 2, 1, 2, -1), ((10, 0, 0, 6), (20, 5, 0, 5))) + "  -|\n          "
                 + vessel("t f", (10, 2, 3, 3, -1), ((10, 0, 0, 6), (20, -5, 0, 5))) + "  -\n      >\n   ")
NESTED = tree(vessel() + " < " + vessel("f t", (2, 1, 4, 2, 5), ((1e-07, -3.5, 2e+03, 0.25),)) + " < "
              + vessel("x x", (3, 3, 0, 3, 6), ()) + " - | " + vessel(labels=(4, 4, 2, 4, 7)) + " - > | "
              + vessel(labels=(5, 0, 3, 5, 8)) + " - >")

VES = {
    "ok-canonical.ves": CANONICAL,
    "ok-nested.ves": NESTED,
    "ok-single-leaf.ves": tree(vessel() + " -"),
    "ok-compact.ves": "VALD-KRN 2000 Tree {{t f 1 2 1 1 -1 1[1 2 3 4]}-}",
    "ok-crlf.ves": CANONICAL.replace("\n", "\r\n"),
    "bad-empty.ves": "",
    "bad-empty-tree.ves": "VALD-KRN 2000 Tree\n{\n}\n",
    "bad-truncated-point.ves": tree(vessel()[:-12]),
    "bad-count-too-large.ves": tree("{ t f 1 2 1 1 -1 4294967295 [ 0 0 0 1 ] } -"),
    "bad-letters-for-numbers.ves": tree("{ t f one 2 1 1 -1 0 } -"),
}

# --- interaction patterns ---------------------------------------------------------------------------------------------

PATTERN_FULL = """<?xml version="1.0" encoding="UTF-8"?>
<LumoInteraction version="1">
  <events>
    <event name="Click" id="1" type="MouseButtonPress" button="Left" modifiers=""/>
    <event name="Drag" id="2" type="MouseMove" modifiers="Shift+Ctrl"/>
    <event name="Release" id="4" type="MouseButtonRelease" button="Right" modifiers="Alt"/>
    <event name="Wheel" id="6" type="MouseButtonPress" button="Middle"/>
    <event name="Escape" id="5" type="KeyPress" key="Escape" modifiers="Ctrl"/>
    <event name="Yes" id="1004"/>
  </events>
  <stateMachine name="Picking">
    <state name="Start" id="1" start="true">
      <transition event="Click" next="Busy"><action id="30"/><action id="65"/></transition>
      <transition event="Escape" next="Start"/>
    </state>
    <state name="Busy" id="2">
      <transition event="Yes" next="Start"><action id="61"/></transition>
      <transition event="Drag" next="Busy"/>
      <transition event="Release" next="Start"><action id="75"/></transition>
    </state>
  </stateMachine>
</LumoInteraction>
"""

with open(os.path.join(ROOT, "Lumo", "Interactions", "LumoInteraction.xml"), encoding="utf-8") as shipped:
    SHIPPED = shipped.read()

PATTERN = {
    "ok-shipped.xml": SHIPPED,
    "ok-full.xml": PATTERN_FULL,
    "ok-events-only.xml": '<LumoInteraction version="1"><events><event name="Tab" id="7" type="KeyPress" key="Tab"/>'
                          "</events></LumoInteraction>",
    "bad-empty.xml": "",
    "bad-root.xml": '<Interaction version="1"/>',
    "bad-version.xml": PATTERN_FULL.replace('version="1"', 'version="2"', 1),
    "bad-two-starts.xml": PATTERN_FULL.replace('<state name="Busy" id="2">', '<state name="Busy" id="2" start="true">'),
    "bad-unknown-next.xml": PATTERN_FULL.replace('next="Busy"', 'next="Nowhere"', 1),
    "bad-modifier-twice.xml": PATTERN_FULL.replace('"Shift+Ctrl"', '"Shift+Shift"'),
    "bad-button-on-move.xml": PATTERN_FULL.replace('type="MouseMove"', 'type="MouseMove" button="Left"'),
    "bad-no-start.xml": PATTERN_FULL.replace(' start="true"', ""),
    "bad-second-transition.xml": PATTERN_FULL.replace('<transition event="Drag" next="Busy"/>',
                                                      '<transition event="Yes" next="Busy"/>'),
    "bad-text.xml": PATTERN_FULL.replace("<events>", "<events>text"),
    "bad-modifiers-without-type.xml": PATTERN_FULL.replace('<event name="Yes" id="1004"/>',
                                                           '<event name="Yes" id="1004" modifiers="Alt"/>'),
    "bad-unknown-key.xml": PATTERN_FULL.replace('key="Escape"', 'key="F13"'),
    "bad-unclosed.xml": PATTERN_FULL[:-40],
}

# --- vessel colour table ----------------------------------------------------------------------------------------------

def rgba(index, r, g, b, a):
    return '<rgba index="%s" r="%s" g="%s" b="%s" a="%s"/>' % (index, r, g, b, a)


LUT_FULL = ('<VesselTreeLookupTable>'
            '<ColorForActive r="1" g="1" b="0" a="1"/>'
            '<ColorForInvisible r="0.5" g="0.5" b="0.5" a="0"/>'
            '<ColorForUnknown r="0.25" g="0" b="1" a="0.75"/>'
            '<ColorByType size="5">' + "".join(rgba(i, i / 4, 0, 1, 1) for i in range(5)) + '</ColorByType>'
            '<ColorBySegment size="3">' + rgba(0, 1, 0, 0, 1) + rgba(2, 0, 1, 0, 1) + '</ColorBySegment>'
            '<ColorByResectionStatus size="5">' + rgba(2, 0, 0.8, 0, 1) + rgba(3, 0.9, 0, 0, 1)
            + rgba(4, 1, 0.5, 0, 1) + '</ColorByResectionStatus>'
            '</VesselTreeLookupTable>')

LUT = {
    "ok-full.xml": LUT_FULL,
    "ok-empty-table.xml": "<VesselTreeLookupTable/>",
    "ok-entry-without-index-skipped.xml": '<VesselTreeLookupTable><ColorByType size="2"><rgba r="1" g="1" b="1" a="1"/>'
                                          '</ColorByType></VesselTreeLookupTable>',
    "ok-missing-component.xml": '<VesselTreeLookupTable><ColorForActive r="1" g="1" b="0"/></VesselTreeLookupTable>',
    "bad-other-root.xml": "<LookupTable/>",
    "bad-index-not-below-size.xml": LUT_FULL.replace('<ColorBySegment size="3">', '<ColorBySegment size="2">'),
    "bad-negative-size.xml": '<VesselTreeLookupTable><ColorByType size="-1"/></VesselTreeLookupTable>',
    "bad-negative-index.xml": '<VesselTreeLookupTable><ColorByType size="1">' + rgba(-1, 0, 0, 0, 1)
                              + '</ColorByType></VesselTreeLookupTable>',
    "bad-not-xml.xml": "<VesselTreeLookupTable>",
}

# --- resection proposal descriptor ------------------------------------------------------------------------------------

def label(number, name, kind, volume, surface, colour='<ColorProperty R="0.8" G="0.8" B="0.8"/>', extra=""):
    attributes = 'Label="%s" Name="%s"' % (number, name)
    if kind is not None:
        attributes += ' ResectionType="%s"' % kind
    attributes += ' Volume="%s" SurfaceOutputIndex="%s"%s' % (volume, surface, extra)
    return "<LabelDescriptor %s>%s</LabelDescriptor>" % (attributes, colour)


def proposal(*labels, name="Plan"):
    return ('<?xml version="1.0"?>\n<ResectionProposalDescriptorProperty ResectionProposalName="%s">%s'
            "</ResectionProposalDescriptorProperty>\n" % (name, "".join(labels)))


PROPOSAL = {
    "ok-written-words.xml": proposal(label(1, "Undefined", "UndefinedResectionStatus", 0, 0),
                                     label(2, "Remnant", "NotToBeResected", 1234.5, 0),
                                     label(3, "Resected", "ToBeResected", 99.25, 1, '<ColorProperty R="1" G="0" B="0"/>'),
                                     label(4, "At risk", "AreaAtRisk", 7, 2, '<ColorProperty R="1" G="0.5" B="0"/>')),
    "ok-older-words.xml": proposal(label(2, "a", "NotResected", 1, 0), label(3, "b", "Resected", 2, 1),
                                   label(4, "c", "Unclear", 3, 2)),
    "ok-skipped-descriptors.xml": proposal(label("x", "no label", "ToBeResected", 1, 0),
                                           label(5, "bad word", "Gone", 1, 0),
                                           label(6, "negative index", "ToBeResected", 1, -1),
                                           label(7, "no colour", "AreaAtRisk", 1, 0, "<Other/>"),
                                           label(7, "second of a label", "ToBeResected", 1, 0),
                                           label(8, "no type", None, 1, 0)),
    "ok-empty.xml": proposal(name=""),
    "bad-empty.xml": "",
    "bad-other-root.xml": '<?xml version="1.0"?>\n<ResectionProposal/>\n',
    "bad-not-xml.xml": proposal(label(2, "a", "NotToBeResected", 1, 0))[:-10],
}

# --- scenes -------------------------------------------------------------------------------------------------------------

PROPERTIES = """<PropertyList>
        <StringProperty value="portal" name="name"/>
        <BoolProperty value="true" name="visible"/>
        <IntProperty value="3" name="layer"/>
        <FloatProperty value="0.3" name="opacity"/>
        <DoubleProperty value="1.5" name="scale"/>
        <Vector3DProperty x="1" y="2" z="3" name="offset"/>
        <ColorProperty R="0.8" G="0.1" B="0.1" name="color"/>
        <Material name="material" />
        <LevelWindowProperty fixed="false" name="levelwindow">
            <CurrentSettings level="127.5" window="255"/>
            <DefaultSettings level="127.5" window="255"/>
            <CurrentRange min="0" max="255"/>
        </LevelWindowProperty>
        <LookupTableProperty name="LookupTable"/>
        <GroupTagProperty name="organ"/>
        <VesselTreeLookupTableProperty name="VesselTreeLookupTable">%s</VesselTreeLookupTableProperty>
        %s
    </PropertyList>""" % (LUT_FULL[len("<VesselTreeLookupTable>"):-len("</VesselTreeLookupTable>")],
                        PROPOSAL["ok-written-words.xml"].split("\n")[1].replace(
                            "<ResectionProposalDescriptorProperty ",
                            '<ResectionProposalDescriptorProperty name="ResectionProposalDescriptor" '))


def scene(objects, version='<Version Writer="Core/IO/lumoCalyxSceneIO.cpp" CVSRevision="$Revision$" FileVersion="1"/>'):
    return '<?xml version="1.0"?>\n' + version + "\n" + "\n".join(objects) + "\n"


def scene_object(kind, file, uid, body, sources=()):
    attributes = ""
    if kind:
        attributes += ' type="%s"' % kind
    if file:
        attributes += ' file="%s"' % file
    attributes += ' DependenyUID="%s"' % uid
    return "<SceneObject%s>%s%s</SceneObject>" % (attributes, "".join('<Source UID="%s"/>' % s for s in sources), body)


SCENE_FULL = scene([
    scene_object("pointset", "points.mps", "OBJECT_points", "<PropertyList><StringProperty value=\"points\" "
                 "name=\"name\"/></PropertyList>"),
    scene_object("vesseltree", "tree.ves", "OBJECT_tree",
                 '<PropertyList RenderWindow="lumo-renderer-1"><BoolProperty value="false" name="visible"/>'
                 "</PropertyList>" + PROPERTIES, sources=["OBJECT_points"]),
    scene_object("image", "organ.pic", "OBJECT_missing_file", "<PropertyList/>"),
    scene_object(None, None, "OBJECT_no_data", '<PropertyList><StringProperty value="group" name="name"/>'
                 "</PropertyList>"),
])

SCENE = {
    "ok-full.rs": SCENE_FULL,
    "ok-no-version.rs": scene([scene_object("vesseltree", "tree.ves", "A", "<PropertyList/>")], version=""),
    "ok-version-without-number.rs": scene([scene_object("pointset", "points.mps", "A", "")], version="<Version/>"),
    "ok-sources-out-of-order.rs": scene([scene_object("vesseltree", "tree.ves", "B", "", sources=["A"]),
                                         scene_object("pointset", "points.mps", "A", "")]),
    "ok-path-refused.rs": scene([scene_object("vesseltree", "../tree.ves", "A", ""),
                                 scene_object("vesseltree", "/etc/hostname", "B", "")]),
    "bad-version-2.rs": scene([scene_object("vesseltree", "tree.ves", "A", "")],
                              version='<Version FileVersion="2"/>'),
    "bad-source-cycle.rs": scene([scene_object("vesseltree", "tree.ves", "A", "", sources=["B"]),
                                  scene_object("pointset", "points.mps", "B", "", sources=["A"])]),
    "bad-not-xml.rs": SCENE_FULL[:200],
}

# --- point sets ---------------------------------------------------------------------------------------------------------

def point_set(steps, root='<LumoPointSet version="1">'):
    return '<?xml version="1.0" encoding="UTF-8"?>\n' + root + "\n" + "\n".join(steps) + "\n</LumoPointSet>\n"


def step(index, points):
    return '  <TimeStep index="%s">\n' % index + "".join(
        '    <Point id="%s" x="%s" y="%s" z="%s"/>\n' % p for p in points) + "  </TimeStep>"


MPS = {
    "ok-two-steps.mps": point_set([step(0, [(0, 12.5, -3, 40.25), (4, 1, 2, 3)]), step(2, [(4294967295, 1e-300, -0.0,
                                                                                             1.7976931348623157e308)])]),
    "ok-no-steps.mps": point_set([]),
    "ok-empty-step.mps": point_set(['  <TimeStep index="999"/>']),
    "bad-empty.mps": "",
    "bad-root.mps": point_set([], root='<PointSet version="1">').replace("</LumoPointSet>", "</PointSet>"),
    "bad-version.mps": point_set([], root='<LumoPointSet version="2">'),
    "bad-step-twice.mps": point_set([step(0, []), step(0, [])]),
    "bad-step-too-large.mps": point_set([step(100000, [])]),
    "bad-step-gap.mps": point_set([step(0, []), step(99999, [])]),
    "bad-id-twice.mps": point_set([step(0, [(1, 0, 0, 0), (1, 1, 1, 1)])]),
    "bad-id-too-large.mps": point_set([step(0, [(4294967296, 0, 0, 0)])]),
    "bad-not-finite.mps": point_set([step(0, [(0, "inf", 0, 0)])]),
    "bad-text.mps": point_set(["hello"]),
    "bad-extra-attribute.mps": point_set([step(0, [(0, 1, 2, '3" w="4')])]),
}

# --- extraction masks -------------------------------------------------------------------------------------------------

def mask(size, spacing_bytes, options, voxels):
    """size: voxels an axis (1..24); spacing_bytes: 0..255 each; voxels: the set of (x, y, z) that are vessel."""
    bits = bytearray((size[0] * size[1] * size[2] + 7) // 8)
    for x, y, z in voxels:
        v = x + size[0] * (y + size[1] * z)
        bits[v // 8] |= 1 << (v % 8)
    head = bytes([(n - 1) % 24 for n in size]) + bytes(spacing_bytes) + bytes([options])
    return head + bytes(bits)


def tube(size, axis_centre, radius):
    cy, cz = axis_centre
    return [(x, y, z) for x in range(size[0]) for y in range(size[1]) for z in range(size[2])
            if (y - cy) ** 2 + (z - cz) ** 2 <= radius ** 2]


def y_shape(n):
    voxels = set()
    for t in range(n // 2):
        voxels.update({(n // 2, t, n // 2), (n // 2 - t // 2, n // 2 + t // 2, n // 2),
                       (n // 2 + t // 2, n // 2 + t // 2, n // 2)})
    return sorted(voxels)


ISOTROPIC = 40  # 0.25 + 4.75 * 40 / 255 = 0.995 mm
EXTRACTION = {
    "ok-tube-isotropic.bin": mask((20, 9, 9), (ISOTROPIC,) * 3, 0, tube((20, 9, 9), (4, 4), 2)),
    "ok-tube-anisotropic.bin": mask((24, 8, 6), (0, 94, 255), 0, tube((24, 8, 6), (3.5, 2.5), 2)),
    "ok-y-thickest-end.bin": mask((16, 16, 16), (ISOTROPIC,) * 3, 1, y_shape(16)),
    "ok-y-no-suppression-cleaned.bin": mask((16, 16, 16), (ISOTROPIC, 80, 120), 2 | (3 << 2), y_shape(16)),
    "ok-single-voxel.bin": mask((1, 1, 1), (255, 255, 255), 0, [(0, 0, 0)]),
    "ok-full-block.bin": mask((5, 5, 5), (ISOTROPIC,) * 3, 0, [(x, y, z) for x in range(5) for y in range(5)
                                                               for z in range(5)]),
    "bad-empty-mask.bin": mask((8, 8, 8), (ISOTROPIC,) * 3, 0, []),
}

FORMATS = {"ves": VES, "pattern": PATTERN, "lut": LUT, "proposal": PROPOSAL, "scene": SCENE, "mps": MPS,
           "extraction": EXTRACTION}


def main():
    if len(sys.argv) != 3 or sys.argv[1] not in FORMATS:
        sys.exit("usage: make-seeds.py {%s} FOLDER" % ",".join(sorted(FORMATS)))
    folder = sys.argv[2]
    os.makedirs(folder, exist_ok=True)
    for name, content in FORMATS[sys.argv[1]].items():
        data = content.encode("utf-8") if isinstance(content, str) else content
        path = os.path.join(folder, name)
        # Rewritten only when different, so that a reconfigure keeps the files' times.
        if os.path.exists(path):
            with open(path, "rb") as old:
                if old.read() == data:
                    continue
        with open(path, "wb") as out:
            out.write(data)


if __name__ == "__main__":
    main()
