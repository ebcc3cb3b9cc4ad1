"""The native file as a front end sees it: `save as` and `open` through `cmd`, the model read
back through the query methods, and the events (tvo_file_saved, the created events of the opened
model, tvo_file_read) through a TIObserve monitor. A truncated file is refused with the model
left as it was."""

from e2e_support import events_in, ok, run
from tarvo_client import TarvoClient

EVENTS = ["command_complete", "model_reset", "volume_created", "mesh_created",
          "tvo_file_saved", "tvo_file_read"]


def test_save_and_open_through_the_server(server, tmp_path):
    path = str(tmp_path / "cube.tvo")
    cut = str(tmp_path / "cut.tvo")

    async def scenario():
        async with await TarvoClient.connect(server.port) as client:
            q = client.call
            await ok(client, "reset")
            for event in EVENTS:
                assert await q("datamonitor.add_TIObserve_monitor", {"event_name": event})
            for line in ["create box 10", "volume 1 interval 2", "mesh volume 1",
                         "volume 1 name 'cube'", "block 2 add volume 1"]:
                await ok(client, line)
            assert await q("is_modified") is True

            events = events_in(await ok(client, f"save as '{path}'"))
            saved = [e for e in events if e["event_name"] == "tvo_file_saved"]
            assert saved == [{"event_name": "tvo_file_saved", "filename": path,
                              "is_tmp_file": False}]
            assert await q("is_modified") is False

            await ok(client, "reset")
            assert await q("get_hex_count") == 0
            events = events_in(await ok(client, f"open '{path}'"))
            order = [e["event_name"] for e in events]
            assert order.index("model_reset") < order.index("volume_created")
            assert order[-2:] == ["tvo_file_read", "command_complete"]
            assert events[-2]["filename"] == path
            assert await q("get_hex_count") == 8
            assert await q("get_block_id_list") == [2]
            assert await q("get_entity_name", {"entity_type": "volume", "entity_id": 1}) == "cube"
            assert await q("is_modified") is False

            with open(path, "rb") as f:
                data = f.read()
            with open(cut, "wb") as f:
                f.write(data[: len(data) // 2])
            await client.subscribe("print_error")
            assert await q("cmd", {"input_string": f"open '{cut}'"}) is False
            assert "truncated" in (await client.next_notification("print_error"))[0]
            assert await q("get_hex_count") == 8

    run(scenario())
