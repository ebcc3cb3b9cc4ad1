"""Live data end to end: clients select monitors and, after every task, get what they selected,
in one frame per task, before the task's answer. Runs the real binary ($TARVO_SERVER) through
clients/python/tarvo_client.py.

The server writes a task's monitor frames to every client before it answers the asking client,
and one connection's frames arrive in the order they were sent. So for the asking client the
frames before the answer are exactly the task's; for any other client a later gate request
("pubsub.list", answered at once on the main thread) collects everything that came before it.
Nothing here waits for something not to happen."""


import pytest

from e2e_support import events_in, exchange, gate, ok, run
from tarvo_client import TarvoClient


GEOMETRY_KEYS = {"volume", "surface", "curve", "vertex", "bodies"}
ALL_MODEL_KEYS = GEOMETRY_KEYS | {"groups", "blocks", "sidesets", "nodesets", "fea_bcs",
                                  "cfd_bcs", "materials", "boundary_layers"}


async def watch_entity(client, entity_type, entity_id):
    result, frames = await exchange(client, "datamonitor.add_entity_monitor",
                                    {"entity_type": entity_type, "entity_id": entity_id})
    assert result is True
    return frames


def entity_records(frame):
    return [params for method, params in frame if method == "datamonitor.entity_monitor"]


def model_messages(frame):
    return [params for method, params in frame if method == "datamonitor.model_monitor"]


def events(frame):
    return events_in([frame])


def test_each_client_gets_what_it_selected_once_per_task_before_the_answer(server):
    async def scenario():
        a = await TarvoClient.connect(server.port)
        b = await TarvoClient.connect(server.port)

        # The first model arrives before the answer to add_model_monitor, whole.
        result, frames = await exchange(a, "datamonitor.add_model_monitor")
        assert result is True
        assert len(frames) == 1
        (first,) = model_messages(frames[0])
        assert set(first) == ALL_MODEL_KEYS
        assert all(value == [] for value in first.values()), first

        # Volume 1 doesn't exist yet: the key is kept, and no data come.
        assert await watch_entity(a, "volume", 1) == []

        for name in ("volume_created", "id_changed"):
            result, frames = await exchange(b, "datamonitor.add_TIObserve_monitor",
                                            {"event_name": name})
            assert result is True
            assert frames == [], "an event monitor has no first message"
        assert await gate(b) == []

        # create box: A gets volume 1 and the geometry sections in one frame, B the event.
        frames = await ok(a, "create box 10")
        assert len(frames) == 1, frames
        (record,) = entity_records(frames[0])
        assert record["entity_type"] == "volume" and record["entity_id"] == 1
        assert record["geometric_volume"] == pytest.approx(1000)
        (model,) = model_messages(frames[0])
        assert set(model) == GEOMETRY_KEYS
        assert [node["id"] for node in model["volume"]] == [1]
        assert events(frames[0]) == []
        assert len(frames[0]) == 2

        frames = await gate(b)
        assert len(frames) == 1, frames
        assert frames[0] == [("datamonitor.TIObserve",
                              [{"event_name": "volume_created", "id": 1}])]

        # A second box: A's volume 1 wasn't touched, so only the model comes.
        frames = await ok(a, "create box 4 at 5 0 0")
        assert len(frames) == 1, frames
        assert entity_records(frames[0]) == []
        assert [node["id"] for node in model_messages(frames[0])[0]["volume"]] == [1, 2]
        assert await gate(b) == [[("datamonitor.TIObserve",
                                   [{"event_name": "volume_created", "id": 2}])]]

        # subtract: volume 1 survives and changes; volume 2 is gone.
        frames = await ok(a, "subtract volume 2 from volume 1")
        assert len(frames) == 1, frames
        (record,) = entity_records(frames[0])
        assert record["entity_id"] == 1 and record["geometric_volume"] < 1000
        (model,) = model_messages(frames[0])
        assert set(model) == GEOMETRY_KEYS
        assert [node["id"] for node in model["volume"]] == [1]
        assert events(frames[0]) == []

        # B hears only of the two events it chose, in at most one frame.
        frames = await gate(b)
        assert len(frames) <= 1, frames
        for frame in frames:
            assert [method for method, _ in frame] == ["datamonitor.TIObserve"]
            assert {event["event_name"] for event in events(frame)} <= \
                {"volume_created", "id_changed"}

        # A task that changes nothing sends nothing to anybody.
        result, frames = await exchange(a, "parse_tarvo_list",
                                        {"type": "volume", "entity_list_string": "all"})
        assert result == [1]
        assert frames == []
        assert await gate(b) == []

        # A deleted entity goes quiet; once reset gives its id out again, it is reported.
        frames = await ok(a, "delete volume 1")
        assert len(frames) == 1 and entity_records(frames[0]) == [], frames
        await ok(a, "reset")
        frames = await ok(a, "create box 5")
        (record,) = entity_records(frames[0])
        assert record["entity_id"] == 1 and record["geometric_volume"] == pytest.approx(125)
        await gate(b)

        # A client that leaves takes its selections along; B keeps its own, and a newcomer
        # starts with none.
        await a.close()
        async with await TarvoClient.connect(server.port) as c:
            assert await ok(c, "create box 1 at 3 0 0") == []
        assert await gate(b) == [[("datamonitor.TIObserve",
                                   [{"event_name": "volume_created", "id": 2}])]]
        await b.close()

    run(scenario())
