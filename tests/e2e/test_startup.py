"""tarvo_server's command line, end to end: what the process does with its options before it
serves anyone."""

import asyncio
import subprocess

from tarvo_client import TarvoClient, find_server_binary, launch_server

TIMEOUT = 120


def run_to_end(*args):
    return subprocess.run([find_server_binary(), *args], capture_output=True, text=True,
                          timeout=TIMEOUT, stdin=subprocess.DEVNULL)


def answers(port):
    async def scenario():
        async with await TarvoClient.connect(port) as client:
            return await client.call("pubsub.list")

    return asyncio.run(asyncio.wait_for(scenario(), TIMEOUT))


def test_help_lists_the_options_and_ends_the_process():
    done = run_to_end("--help")
    assert done.returncode == 0
    assert "Listening on port" not in done.stdout
    help_text = " ".join(done.stdout.split())
    for text in ["Run an instance of the Tarvo server on the specified port",
                 "--port <port>", "--tls", "--notls", "--connection-id <connection-id>",
                 "--debug-json", "--timeout-after-disconnect",
                 "The connection id used to determine which client connections to accept."]:
        assert text in help_text, text


def test_an_unknown_option_ends_the_process_before_listening():
    done = run_to_end("-driver", "x")
    assert done.returncode != 0
    assert "Listening on port" not in done.stdout
    assert "driver" in done.stderr


def test_single_dash_long_options_and_unreadable_numbers():
    with launch_server("-port", "0", "-debug-json") as server:
        assert server.port > 0
        assert isinstance(answers(server.port), dict)
        server.wait_for_output(lambda text: "  -> " in text)
    # An unreadable port is a random port, an unreadable timeout is no timeout.
    with launch_server("--port", "abc", "--timeout-after-disconnect", "soon") as server:
        assert server.port > 0
        assert isinstance(answers(server.port), dict)


def test_arguments_behind_the_end_marker_are_for_the_kernel():
    with launch_server("--", "-driver", "offscreen") as server:
        assert isinstance(answers(server.port), dict)
