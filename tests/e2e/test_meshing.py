"""Meshing as a front end sees it over a real socket: a command meshes, the typed queries count
and score the elements, events name what was meshed, an entity monitor reports the mesh, and a
bad request changes nothing. The counts are worked out by hand (a 10 x 10 x 10 block with 10
intervals a side is 1000 hexes on 11^3 nodes)."""

from e2e_support import events_in, exchange, run
from tarvo_client import TarvoClient


async def cmd(client, line):
    result, frames = await exchange(client, "cmd", {"input_string": line})
    records = [params for frame in frames for method, params in frame
               if method == "datamonitor.entity_monitor"]
    return result, events_in(frames), records


def test_a_block_meshed_queried_scored_and_undone(server):
    async def scenario():
        async with await TarvoClient.connect(server.port) as client:
            q = client.call
            assert (await cmd(client, "reset"))[0] is True
            assert await q("datamonitor.add_TIObserve_monitor",
                           {"event_name": "mesh_created"}) is True
            assert (await cmd(client, "create box 10"))[0] is True
            assert await q("datamonitor.add_entity_monitor",
                           {"entity_type": "volume", "entity_id": 1}) is True
            assert (await cmd(client, "volume 1 interval 10"))[0] is True

            ok, events, records = await cmd(client, "mesh volume 1")
            assert ok is True
            assert {"event_name": "mesh_created", "type": "volume", "id": 1} in events
            assert sum(e["type"] == "surface" for e in events) == 6
            assert await q("get_hex_count") == 1000
            assert await q("get_node_count") == 11 ** 3
            assert await q("get_tet_count") == 0
            assert await q("is_meshed", {"geometry_type": "volume", "entity_id": 1}) is True
            assert records and records[-1]["is_meshed"] is True
            assert records[-1]["element_count"] == 1000
            assert records[-1]["node_count"] == 11 ** 3

            stats = await q("get_quality_stats", {
                "entity_type": "volume", "id_list": [1], "metric_name": "scaled jacobian",
                "single_threshold": 0.2, "use_low_threshold": False, "low_threshold": 0,
                "high_threshold": 0})
            assert stats["element_type"] == "hex"
            assert abs(stats["min_value"] - 1) < 1e-9 and stats["mesh_list"] == []
            hex1 = await q("get_connectivity", {"entity_type": "hex", "entity_id": 1})
            assert len(hex1) == 8
            for node in hex1:
                x = await q("get_nodal_coordinates", {"node_id": node})
                assert all(abs(c) <= 5 + 1e-9 for c in x)

            # Wrong input: an error, and the mesh as it was.
            ok, _, _ = await cmd(client, "volume 1 scheme hexagonal")
            assert ok is False
            assert (await q("get_quality_value", {"mesh_type": "hex", "mesh_id": 1,
                                                  "metric_name": "no such metric"})) == 0
            assert await q("get_hex_count") == 1000

            assert (await cmd(client, "undo"))[0] is True
            assert await q("get_node_count") == 0
            assert await q("is_meshed", {"geometry_type": "volume", "entity_id": 1}) is False

    run(scenario())
