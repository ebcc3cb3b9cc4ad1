"""Routing through the real tarvo_server: which names reach the kernel's method table, how bad
parameters are refused, that kernel printing reaches subscribers only, and that
tarvo.request_interrupt stops a running command. Runs $TARVO_SERVER through
clients/python/tarvo_client.py; a frame that must not arrive is shown absent by a gate request
(see e2e_support)."""

import asyncio
import json

import pytest

from e2e_support import frames_before_gate, run
from tarvo_client import RPCError, TarvoClient

METHOD_NOT_FOUND = -32601
INVALID_PARAMS = -32602


async def error_code(client, method, params=None):
    response = await client.request(method, params)
    assert "error" in response, f"{method} {params!r} answered {response!r}"
    return response["error"]["code"]


def test_the_prefix_before_the_last_dot_does_not_matter(server):
    async def scenario():
        async with await TarvoClient.connect(server.port) as client:
            plain = await client.call("get_version")
            assert isinstance(plain, str) and plain
            assert await client.call("tarvo.get_version") == plain
            assert await client.call("a.b.get_version") == plain

    run(scenario())


def test_unknown_names_and_other_cases_are_not_found(server):
    async def scenario():
        async with await TarvoClient.connect(server.port) as client:
            for name in ["no_such_method", "Get_Version", "GET_VERSION", "tarvo.Get_version",
                         "get_version.", "get_versions"]:
                assert await error_code(client, name) == METHOD_NOT_FOUND, name
            # Names beginning with "graphics" never reach the kernel's table.
            assert await error_code(client, "graphics.get_version") == METHOD_NOT_FOUND
            assert await error_code(client, "graphicsget_version") == METHOD_NOT_FOUND
            # A differently spelled prefix is just another kernel name, and unknown there.
            assert await error_code(client, "PubSub.list") == METHOD_NOT_FOUND
            assert await error_code(client, "DataMonitor.add_model_monitor") == METHOD_NOT_FOUND

    run(scenario())


@pytest.mark.parametrize("method, params", [
    # The type rules themselves are unit-tested; here: each kind of refusal reaches the client.
    ("get_command_from_history", {"command_number": 1.5}),
    ("cmd", {"input_string": None}),
    ("journal_commands", {"state": 1}),
    # one wrong or missing name refuses the whole call; named parameters only
    ("parse_tarvo_list", {"type": 3, "entity_list_string": "all"}),
    ("parse_tarvo_list", {"entity_list_string": "all"}),
    ("parse_tarvo_list", ["volume", "all"]),
])
def test_wrong_parameter_types_are_refused(server, method, params):
    async def scenario():
        async with await TarvoClient.connect(server.port) as client:
            assert await error_code(client, method, params) == INVALID_PARAMS

    run(scenario())


def test_right_parameter_types_are_accepted(server):
    async def scenario():
        async with await TarvoClient.connect(server.port) as client:
            # 1.0 is an integer by the int rule; unknown members are ignored.
            response = await client.request("get_command_from_history",
                                            {"command_number": 1.0, "extra": True})
            assert "result" in response
            response = await client.request("parse_tarvo_list",
                                            {"type": "volume", "entity_list_string": "all"})
            assert "result" in response

    run(scenario())


def test_kernel_printing_reaches_subscribers_only(server):
    async def scenario():
        async with await TarvoClient.connect(server.port) as listener, \
                await TarvoClient.connect(server.port) as caller:
            await listener.subscribe("print_message")
            assert await caller.call("cmd", {"input_string": "help"}) is True
            printed = await listener.next_notification("print_message")
            assert isinstance(printed, list) and len(printed) == 1
            assert isinstance(printed[0], str) and printed[0].strip()
            # The caller did not subscribe: nothing printed came to it.
            await frames_before_gate(caller)
            assert not caller.notifications("print_message")

            # After unsubscribing the listener hears nothing more.
            listener.notifications("print_message")
            await listener.unsubscribe("print_message")
            assert await caller.call("cmd", {"input_string": "help"}) is True
            await frames_before_gate(listener)
            assert not listener.notifications("print_message")

    run(scenario())


def test_interrupt_without_a_running_command_is_answered_with_null(server):
    async def scenario():
        async with await TarvoClient.connect(server.port) as client:
            response = await client.request("tarvo.request_interrupt")
            assert "result" in response and response["result"] is None
            # Not remembered: the next command runs to its end.
            assert await client.call("cmd", {"input_string": "help"}) is True
            # Without an id there is no answer at all.
            await client.notify("tarvo.request_interrupt")
            assert await frames_before_gate(client) == []

    run(scenario())


def test_request_interrupt_stops_a_running_playback(server, tmp_path):
    # A journal far too long to finish within the test's time: only the interrupt ends it.
    journal = tmp_path / "long.jou"
    journal.write_text("create box 1\n" * 200000)

    async def scenario():
        async with await TarvoClient.connect(server.port) as runner, \
                await TarvoClient.connect(server.port) as stopper:
            await runner.subscribe("progress_started", "print_error")
            call = asyncio.ensure_future(
                runner.call("cmd", {"input_string": f"playback '{journal}'"}))
            # The playback reports its progress once it is under way: that is the gate.
            started = await runner.next_notification("progress_started")
            assert started["title"] == "Playback"
            assert not call.done()

            response = await stopper.request("tarvo.request_interrupt")
            assert response["result"] is None
            assert await call is False
            errors = "".join(text for params in runner.notifications("print_error")
                             for text in params)
            if "Interrupted" not in errors:
                errors += (await runner.next_notification("print_error"))[0]
            assert "Interrupted" in errors

            # The interrupt is not remembered for the next command.
            assert await runner.call("cmd", {"input_string": "help"}) is True
            await runner.call("cmd", {"input_string": "reset"})

    run(scenario())


def test_monitor_data_goes_to_every_selecting_client_before_the_answer(server):
    async def scenario():
        async with await TarvoClient.connect(server.port) as watcher, \
                await TarvoClient.connect(server.port) as worker:
            assert await watcher.call("datamonitor.add_TIObserve_monitor",
                                      {"event_name": "command_complete"}) is True
            # A new monitor's first data arrives before the answer that selected it.
            before = len(watcher.frames)
            assert await watcher.call("datamonitor.add_model_monitor") is True
            methods = [json.loads(frame).get("method") for frame in watcher.frames[before:]]
            assert methods == ["datamonitor.model_monitor", None]
            watcher.notifications("datamonitor.model_monitor")

            # Another client's command: the watcher gets both monitors' data in one frame, the
            # asking client only its answer.
            before = len(watcher.frames)
            assert await worker.call("cmd", {"input_string": "create box 1"}) is True
            events = await watcher.next_notification("datamonitor.TIObserve")
            assert {"event_name": "command_complete"} in events
            frame = json.loads(watcher.frames[before])
            assert [m["method"] for m in frame] == ["datamonitor.TIObserve",
                                                    "datamonitor.model_monitor"]
            assert await frames_before_gate(worker) == []
            await worker.call("cmd", {"input_string": "reset"})

    run(scenario())
