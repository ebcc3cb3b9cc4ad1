"""The Exodus II file that `export mesh` writes, read back by an independent reader (Python's
netCDF4, not our code): block ids, element types, counts, an 80-character name, attribute
values, node set contents, and that every side set (element, side) pair names a face whose
nodes all lie on the surface the side set was made from."""

import numpy
import netCDF4

from e2e_support import run
from tarvo_client import TarvoClient

# Exodus side numbering (1-based local nodes), as the format defines it.
HEX_SIDES = {1: (1, 2, 6, 5), 2: (2, 3, 7, 6), 3: (3, 4, 8, 7), 4: (1, 5, 8, 4),
             5: (1, 4, 3, 2), 6: (5, 6, 7, 8)}
LONG_NAME = "b" * 80


def text(chars):
    return b"".join(c for c in numpy.ma.filled(chars, b"") if c).decode()


def test_exported_file_read_by_netcdf(server, tmp_path):
    path = str(tmp_path / "box.e")

    async def scenario():
        async with await TarvoClient.connect(server.port) as client:
            q = client.call
            for line in ["reset", "create box 10", "volume 1 interval 2", "mesh volume 1",
                         "block 3 add volume 1", f"block 3 name '{LONG_NAME}'",
                         "block 3 attribute count 2",
                         "block 3 attribute index 2 value 2.5 name 'thickness'",
                         "block 5 add surface 2", "block 5 element type SHELL4",
                         "nodeset 2 add surface 1", "sideset 4 add surface 1",
                         "sideset 6 add surface 3 wrt volume 1",
                         f"export mesh '{path}'"]:
                assert await q("cmd", {"input_string": line}) is True, line
            planes = {}
            for s in (1, 3):
                normal = await q("get_surface_normal", {"surface_id": s})
                centre = await q("get_center_point", {"entity_type": "surface", "entity_id": s})
                planes[s] = (numpy.array(normal), numpy.array(centre))
            return planes

    planes = run(scenario())
    with netCDF4.Dataset(path) as f:
        f.set_auto_mask(False)
        v = f.variables
        assert list(v["eb_prop1"][:]) == [3, 5]
        assert v["connect1"].getncattr("elem_type") == "HEX8"
        assert v["connect2"].getncattr("elem_type") == "SHELL4"
        assert f.dimensions["num_el_in_blk1"].size == 8
        assert f.dimensions["num_el_in_blk2"].size == 4
        assert f.dimensions["num_nodes"].size == 27
        assert text(v["eb_names"][0]) == LONG_NAME
        assert [text(n) for n in v["attrib_name1"][:]] == ["", "thickness"]
        assert numpy.allclose(v["attrib1"][:], [[0.0, 2.5]] * 8)

        if "coordx" in v:
            xyz = numpy.stack([v["coordx"][:], v["coordy"][:], v["coordz"][:]], axis=1)
        else:
            xyz = numpy.array(v["coord"][:]).T
        connect = v["connect1"][:]

        def on_plane(nodes, surface):
            normal, centre = planes[surface]
            return all(abs(numpy.dot(xyz[n - 1] - centre, normal)) < 1e-9 for n in nodes)

        assert list(v["ns_prop1"][:]) == [2]
        nodeset = v["node_ns1"][:]
        assert len(nodeset) == 9 and on_plane(nodeset, 1)

        assert list(v["ss_prop1"][:]) == [4, 6]
        for index, surface in ((1, 1), (2, 3)):
            elems, sides = v[f"elem_ss{index}"][:], v[f"side_ss{index}"][:]
            assert len(elems) == 4  # the 2 x 2 quads of the face
            for e, s in zip(elems, sides):
                assert 1 <= e <= 8  # hexes, the first block
                face = [connect[e - 1][k - 1] for k in HEX_SIDES[s]]
                assert on_plane(face, surface), (index, e, s)
