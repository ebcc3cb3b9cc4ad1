"""Routing through the real tarvo_server, where the unit tests' fake worker can't stand in: how
the kernel method table refuses bad parameters on the wire, and that tarvo.request_interrupt
stops a command the real kernel is running. Runs $TARVO_SERVER through
clients/python/tarvo_client.py."""

import asyncio

from e2e_support import run
from tarvo_client import TarvoClient

INVALID_PARAMS = -32602


def test_parameters_are_checked_before_the_kernel_runs(server):
    # The type rules themselves are unit-tested; here: each kind of refusal reaches the client.
    refused = [
        ("get_command_from_history", {"command_number": 1.5}),
        ("cmd", {"input_string": None}),
        ("journal_commands", {"state": 1}),
        # one wrong or missing name refuses the whole call; named parameters only
        ("parse_tarvo_list", {"type": 3, "entity_list_string": "all"}),
        ("parse_tarvo_list", {"entity_list_string": "all"}),
        ("parse_tarvo_list", ["volume", "all"]),
    ]
    # 1.0 is an integer by the int rule; unknown members are ignored.
    accepted = [("get_command_from_history", {"command_number": 1.0, "extra": True}),
                ("parse_tarvo_list", {"type": "volume", "entity_list_string": "all"})]

    async def scenario():
        async with await TarvoClient.connect(server.port) as client:
            for method, params in refused:
                response = await client.request(method, params)
                assert response.get("error", {}).get("code") == INVALID_PARAMS, (method, params)
            for method, params in accepted:
                assert "result" in await client.request(method, params), (method, params)

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
