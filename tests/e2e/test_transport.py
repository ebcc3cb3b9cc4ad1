"""The WebSocket side of tarvo_server, end to end: the port line and the log, TLS, the exit timer,
the port's range, and malformed input. Admission by connection id and batch ordering are
unit-tested against real sockets and connections. Runs the real binary ($TARVO_SERVER) through clients/python/tarvo_client.py.
Nothing here waits for something not to happen: a frame that drew no answer is shown by a gate
request (see e2e_support)."""

import asyncio
import json
import re
import socket

import pytest
import websockets

from e2e_support import GATE, TIMEOUT, run
from e2e_support import frames_before_gate as gate
from tarvo_client import ServerStartError, TarvoClient, launch_server


async def admitted(port, **connect_args):
    """Connects; True if the server kept the connection and answered on it, False if it closed
    it right after the handshake."""
    try:
        client = await TarvoClient.connect(port, **connect_args)
    except (OSError, asyncio.TimeoutError, websockets.exceptions.WebSocketException):
        return False
    try:
        done, _ = await asyncio.wait(
            [asyncio.ensure_future(client.request(GATE)),
             asyncio.ensure_future(client.wait_closed(TIMEOUT))],
            return_when=asyncio.FIRST_COMPLETED)
        result = done.pop()
        return result.exception() is None and isinstance(result.result(), dict)
    finally:
        await client.close()


def without_startup_log(output):
    """The output without the start-up check's log lines ("[info] ...", "[error] ..." on standard
    error): the OpenGL check logs on machines without a usable GPU."""
    return "".join(line for line in output.splitlines(keepends=True)
                   if not line.startswith(("[info] ", "[error] ")))


def test_port_line_comes_first_and_a_plain_server_accepts_anyone():
    with launch_server() as server:
        assert server.port > 0
        assert without_startup_log(server.output()).splitlines(keepends=True)[0] == \
            f"Listening on port {server.port}\n"

        async def scenario():
            assert await admitted(server.port)
            assert await admitted(server.port, connection_id="whatever")

        run(scenario())
        connected = re.compile(r"\[\d{4}-\d\d-\d\d \d\d:\d\d:\d\d\]\n  Connected to "
                               r"127\.0\.0\.1 on port \d+\n\n")
        # All three have gone; the last of them is logged behind every earlier block.
        log = server.wait_for_output(lambda text: text.count("Disconnected from ") == 2)
        assert len(connected.findall(log)) == 2
        assert "-> " not in log and "<- " not in log


def test_debug_json_logs_both_directions():
    with launch_server("--debug-json") as server:
        async def scenario():
            async with await TarvoClient.connect(server.port) as client:
                await client.request(GATE, id=41)

        run(scenario())
        log = server.wait_for_output(lambda text: "Disconnected from " in text)
        assert re.search(r'\]\n  -> \{[^\n]*"id":41[^\n]*\}\n\n', log), log
        assert re.search(r'\]\n  <- \{[^\n]*"id":41[^\n]*\}\n\n', log), log


def test_tls_uses_the_built_in_certificate():
    with launch_server("--tls", "--notls") as server:
        async def scenario():
            assert await admitted(server.port, tls=True)
            assert not await admitted(server.port, tls=False)

        run(scenario())


def test_exit_timer_runs_only_after_the_last_client():
    with launch_server("--timeout-after-disconnect", "1") as server:
        async def scenario():
            first = await TarvoClient.connect(server.port)
            second = await TarvoClient.connect(server.port)
            await gate(first, "first")
            await first.close()
            # The server still serves the remaining client.
            await gate(second, "second")
            await second.close()

        run(scenario())
        assert server.wait(TIMEOUT) == 0
        assert server.output().count("Disconnected from ") == 2


def test_port_is_cut_to_16_bits():
    probe = socket.socket()
    # As the server does: connections of an earlier run in TIME_WAIT don't make the port taken.
    probe.setsockopt(socket.SOL_SOCKET, socket.SO_REUSEADDR, 1)
    try:
        probe.bind(("127.0.0.1", 4464))
    except OSError:
        pytest.skip("port 4464 is taken on this machine")
    finally:
        probe.close()
    with launch_server("--port", "70000") as server:
        assert server.port == 4464
        assert run(admitted(4464))


def test_taken_port_ends_the_process_with_an_error_block():
    holder = socket.socket()
    holder.bind(("127.0.0.1", 0))
    holder.listen()
    try:
        with pytest.raises(ServerStartError) as failure:
            launch_server("--port", str(holder.getsockname()[1]))
    finally:
        holder.close()
    assert failure.value.returncode == 255
    assert re.fullmatch(r"\[\d{4}-\d\d-\d\d \d\d:\d\d:\d\d\]\n  Error: [^\n]+\n"
                        r"  Failed to setup WebSocket server\.\n\n",
                        without_startup_log(failure.value.output)), failure.value.output


def test_malformed_frames_draw_the_parser_errors_and_nothing_else(server):
    async def scenario():
        async with await TarvoClient.connect(server.port) as client:
            for text in ["{not json", "   ", "", "[]", "42", '{"jsonrpc":"2.0","id":5}',
                         '[{"jsonrpc":"2.0","method":"a"}, 17]', '["x", 1]']:
                await client.send_text(text)
            await client.send_binary(b'{"jsonrpc":"2.0","method":"pubsub.list","id":9}')
            await client.send_binary(bytes(range(256)))
            answers = [json.loads(frame) for frame in await gate(client, "gate")]
            codes = [a["error"]["code"] if isinstance(a, dict) else [e["error"]["code"]
                                                                      for e in a]
                     for a in answers]
            # Parse error; empty texts dropped; [] and 42 invalid; an object that is
            # neither request nor response invalid; a batch of only a notification and a
            # bad element silent; a batch of two bad elements silent as well.
            assert codes == [-32700, -32600, -32600, -32600], answers

    run(scenario())


def test_bad_input_never_takes_the_server_down(server):
    async def scenario():
        rude = await TarvoClient.connect(server.port)
        for text in ["[" * 100000, '{"jsonrpc":"2.0","method":' + '"x' * 1000 + '"}',
                     '{"jsonrpc":"2.0","method":"pubsub.subscribe","params":[1],"id":{}}',
                     '{"jsonrpc":"2.0","method":"pubsub.publish","params":{"notification":'
                     '{"a":1}},"id":1e400}',
                     '{"jsonrpc":"2.0","method":"tarvo.request_interrupt","id":'
                     '123456789012345678901234567890}',
                     json.dumps([{"jsonrpc": "2.0", "method": "pubsub.list", "id": i}
                                 for i in range(2000)]),
                     '{"jsonrpc":"1.0","method":"get_version","id":null}',
                     '{"method":null,"id":[1]}']:
            await rude.send_text(text)
        await rude.send_binary(b"\xff" * 100000)
        # Leave with a request in flight and without a closing handshake.
        await rude.send_text('[{"jsonrpc":"2.0","method":"get_version","id":1}]')
        rude.ws.transport.abort()
        await rude.close()

        async with await TarvoClient.connect(server.port) as polite:
            await gate(polite, "still here")

    run(scenario())
    assert server.process.poll() is None
