"""What keeps one client from hurting the server or the others, end to end: requests that used to
go unanswered, the bounds on batches and on unsent output, and which browser origins may
connect. Runs the real binary ($TARVO_SERVER) through clients/python/tarvo_client.py."""

import asyncio
import json

import websockets

from e2e_support import GATE, run
from e2e_support import frames_before_gate as gate
from tarvo_client import TarvoClient, launch_server

MAX_BATCH = 10000  # JsonRPCParser::kMaxBatchElements


def request(method, id, params=None):
    message = {"jsonrpc": "2.0", "method": method, "id": id}
    if params is not None:
        message["params"] = params
    return message


def test_every_request_is_answered_and_a_batch_past_the_limit_is_refused(server):
    async def scenario():
        async with await TarvoClient.connect(server.port) as client:
            # An empty method name is an unknown method, alone and inside a batch; the batch
            # completes, and later answers on the connection still arrive.
            empty = await client.request("", id="e")
            assert empty["error"]["code"] == -32601, empty
            answer = await client.batch([("", None, 1), ("get_curve_count", None, 2)])
            by_id = {r["id"]: r for r in answer}
            assert by_id[1]["error"]["code"] == -32601
            # A method whose parameters are all optional needs no params member.
            assert by_id[2]["result"] == await client.call("get_curve_count", {})
            assert "result" in await client.request(GATE)

            # The largest batch allowed is answered whole ...
            largest = [request(GATE, i) for i in range(MAX_BATCH)]
            await client.send_text(json.dumps(largest))
            answer = await client.next_unmatched()
            assert sorted(r["id"] for r in answer) == list(range(MAX_BATCH))
            # ... one element more is refused whole, before anything of it runs.
            await client.send_text(json.dumps(largest + [request(GATE, MAX_BATCH)]))
            refusal = await client.next_unmatched()
            assert refusal["id"] is None and refusal["error"]["code"] == -32000, refusal
            assert await gate(client) == []

    run(scenario())


def test_a_client_that_never_reads_is_dropped_and_the_others_go_on():
    with launch_server("--max-client-backlog", "1") as server:
        async def scenario():
            url = TarvoClient.url(server.port)
            # Reads nothing once its one-frame queue is full, so the server's output piles up.
            sleeper = await websockets.connect(url, max_queue=1, max_size=None,
                                               compression=None, ping_interval=None)
            await sleeper.send(json.dumps(request("pubsub.subscribe", 1,
                                                  {"notification": "bulk"})))
            async with await TarvoClient.connect(server.port) as publisher:
                data = "x" * (1 << 20)
                for _ in range(48):
                    await publisher.publish("bulk", [data])
                    if "Dropping the connection" in server.output():
                        break
                log = server.wait_for_output(
                    lambda text: "Disconnected from" in text and "Dropping" in text)
                assert "past the limit of 1048576" in log, log
                assert await gate(publisher) == []
            sleeper.transport.abort()

        run(scenario())
        assert server.process.poll() is None


def test_browser_origins_need_to_be_allowed():
    allowed = "http://localhost:8080"
    with launch_server("--allow-origin", allowed, "--allow-origin", "https://app.example") as server:
        async def admitted(origin):
            try:
                client = await TarvoClient.connect(server.port, origin=origin)
            except websockets.exceptions.InvalidStatusCode as refusal:
                assert refusal.status_code == 403
                return False
            async with client:
                return "result" in await client.request(GATE)

        async def scenario():
            assert await admitted(None)  # scripts send no Origin
            assert await admitted(allowed)
            assert await admitted("HTTPS://APP.EXAMPLE")
            assert not await admitted("http://evil.example")
            assert not await admitted("http://localhost:8081")
            assert not await admitted("null")

        run(scenario())
        assert "Refused a connection from the origin http://evil.example" in server.output()

    # Without the option no browser page is admitted, scripts still are.
    with launch_server() as server:
        async def scenario():
            async with await TarvoClient.connect(server.port) as script:
                assert "result" in await script.request(GATE)
            try:
                await TarvoClient.connect(server.port, origin=allowed)
                assert False, "admitted a browser origin without --allow-origin"
            except websockets.exceptions.InvalidStatusCode as refusal:
                assert refusal.status_code == 403

        run(scenario())
