"""A modelling session driven the way a front end drives it: commands through `cmd`, answers
through the query methods, kernel events through a TIObserve monitor. Every number checked here
is worked out by hand from the commands (a 10 x 10 x 10 block with a radius 2 hole through it),
not read back from an earlier answer of the server."""

import math
import os

from e2e_support import command, run
from tarvo_client import TarvoClient

BLOCK = 10.0 ** 3
HOLE_RADIUS = 2.0
BLOCK_WITH_HOLE = BLOCK - math.pi * HOLE_RADIUS ** 2 * 10.0
EVENTS = ["command_start", "command_complete", "body_created", "body_deleted", "volume_created",
          "volume_deleted", "entity_name_changed", "merge_completed", "export_complete",
          "import_complete", "model_reset"]


class Session:
    def __init__(self, client):
        self.client = client

    async def cmd(self, line):
        """Runs one command; returns (result, the events of this task in order)."""
        return await command(self.client, line)

    async def ok(self, line):
        result, events = await self.cmd(line)
        assert result is True, f"{line!r} was rejected"
        return events

    async def q(self, method, **params):
        return await self.client.call(method, params)

    async def ids(self, kind, text="all"):
        return await self.q("parse_tarvo_list", type=kind, entity_list_string=text)


def names(events):
    return [event["event_name"] for event in events]


def close(a, b, tol=1e-6):
    return math.isclose(a, b, rel_tol=tol, abs_tol=tol)


def test_a_modelling_session_answers_with_hand_computed_values(server, tmp_path):
    step_file = str(tmp_path / "block_with_hole.step")

    async def scenario():
        async with await TarvoClient.connect(server.port) as client:
            s = Session(client)
            await s.ok("reset")
            for event in EVENTS:
                assert await s.q("datamonitor.add_TIObserve_monitor", event_name=event) is True

            # A block and a through hole: the tool goes, the block keeps its id.
            events = await s.ok("create box 10")
            assert names(events)[0] == "command_start" and names(events)[-1] == "command_complete"
            assert names(events).count("body_created") == 1
            assert [e["id"] for e in events if e["event_name"] == "volume_created"] == [1]
            assert len(await s.ids("surface", "in volume 1")) == 6
            assert close(await s.q("get_volume_area", volume_id=1), BLOCK)
            await s.ok("create cylinder radius 2 height 20")
            events = await s.ok("subtract volume 2 from volume 1")
            assert [e["id"] for e in events if e["event_name"] == "volume_deleted"] == [2]
            assert "volume_created" not in names(events)
            assert await s.ids("volume") == [1]
            assert close(await s.q("get_volume_area", volume_id=1), BLOCK_WITH_HOLE)

            # Naming, and answers that are objects and arrays on the wire.
            events = await s.ok("volume 1 name 'block_with_hole'")
            assert {"event_name": "entity_name_changed", "geom_type": "volume", "id": 1} in events
            assert await s.ids("volume", "with name 'block*'") == [1]
            box = await s.q("get_bounding_box", geometry_type="volume", entity_id=1)
            assert [round(v, 9) for v in box[:3]] == [-5, 5, 10]

            # Cutting through the hole gives two equal halves; merging shares the cut faces.
            await s.ok("webcut volume 1 plane x offset 0")
            halves = await s.ids("volume")
            assert len(halves) == 2 and 1 in halves
            assert close(await s.q("get_total_volume", volume_list=halves), BLOCK_WITH_HOLE)
            await s.ok("imprint all")
            events = await s.ok("merge all")
            assert "merge_completed" in names(events)
            shared = [sid for sid in await s.ids("surface")
                      if sorted(await s.q("get_adjacent_volumes", geometry_type="surface",
                                          entity_id=sid)) == sorted(halves)]
            assert len(shared) == 2, "the two cut faces are shared by the halves after merge"

            # Export, reset, import what we wrote.
            events = await s.ok(f"export step '{step_file}' overwrite")
            assert os.path.getsize(step_file) > 0
            assert any(e["event_name"] == "export_complete" and e["export_successful"] == 1
                       for e in events)
            events = await s.ok("reset")
            assert names(events).index("model_reset") > max(
                i for i, n in enumerate(names(events)) if n == "volume_deleted")
            assert await s.q("get_volume_count") == 0
            events = await s.ok(f"import step '{step_file}'")
            assert any(e["event_name"] == "import_complete" and e["import_successful"] == 1
                       for e in events)
            imported = await s.ids("volume")
            assert len(imported) == 2
            assert close(await s.q("get_total_volume", volume_list=imported), BLOCK_WITH_HOLE,
                         tol=1e-5)

            # Undo takes back the import.
            await s.ok("undo")
            assert await s.q("get_volume_count") == 0

            # Variables feed commands.
            await s.ok("#{side = 3}")
            await s.ok("create box #{side} #{side} #{2*side}")
            (volume,) = await s.ids("volume")
            assert close(await s.q("get_volume_area", volume_id=volume), 54.0)
            assert await s.q("get_valfold_numeric_value", variable_name="side") == 3

    run(scenario())


def test_rejected_commands_change_nothing_and_say_why_once(server):
    async def scenario():
        async with await TarvoClient.connect(server.port) as client:
            s = Session(client)
            await s.ok("reset")
            await s.ok("create box 2")
            await client.subscribe("print_error")
            for line in ["crete box 1",                       # misspelled keyword
                         "create box",                        # missing argument
                         "create box 'two'",                  # wrong type
                         "move volume 99 by 1 0 0",           # unknown id only
                         "volume 1 name 'unterminated",       # unterminated quote
                         "import step '/no/such/file.step'",  # no file
                         f"import step '{__file__}'"]:        # not CAD
                errors_before = await s.q("get_error_count")
                result, _ = await s.cmd(line)
                assert result is False, line
                assert await s.q("get_error_count") == errors_before + 1, line
                printed = client.notifications("print_error")
                assert len(printed) == 1 and printed[0][0].startswith("ERROR: "), (line, printed)
                assert await s.ids("volume") == [1], line
                assert close(await s.q("get_volume_area", volume_id=1), 8.0), line

    run(scenario())
