"""Helpers shared by the end-to-end tests.

To show that a frame drew no answer, a later request on the same connection (GATE, answered at
once on the server's main thread) is used as a gate: the server sends what it owes a connection
in order, so anything sent before the gate's answer is in by then."""

import asyncio
import json

TIMEOUT = 120
GATE = "pubsub.list"


def run(coroutine):
    return asyncio.run(asyncio.wait_for(coroutine, TIMEOUT))


async def frames_before_gate(client, id=None):
    """Sends the gate request and returns the frames that arrived before its answer."""
    before = len(client.frames)
    response = await client.request(GATE, id=id)
    assert "result" in response
    return client.frames[before:-1]


def monitor_frames(frames):
    """The monitor frames among `frames`, each as a list of (method, params) in frame order."""
    found = []
    for frame in frames:
        if not isinstance(frame, str):
            continue
        message = json.loads(frame)
        items = message if isinstance(message, list) else [message]
        if items and all(isinstance(item, dict) and
                         str(item.get("method", "")).startswith("datamonitor.") for item in items):
            assert all("id" not in item for item in items), "monitor data are notifications"
            found.append([(item["method"], item.get("params")) for item in items])
    return found


async def exchange(client, method, params=None):
    """Sends a request; returns its result and the monitor frames that came before the answer."""
    before = len(client.frames)
    response = await client.request(method, params)
    assert "error" not in response, response
    return response.get("result"), monitor_frames(client.frames[before:-1])


async def ok(client, line):
    """Runs one command line that must succeed; returns the monitor frames that came with it."""
    result, frames = await exchange(client, "cmd", {"input_string": line})
    assert result is True, f"{line!r} failed"
    return frames


def events_in(frames):
    """The kernel events (TIObserve records) in monitor `frames`, in order."""
    return [event for frame in frames for method, params in frame
            if method == "datamonitor.TIObserve" for event in params]


async def command(client, line):
    """Runs one command line; returns its result and the kernel events that came with it."""
    result, frames = await exchange(client, "cmd", {"input_string": line})
    return result, events_in(frames)


async def gate(client):
    """The monitor frames a client received since its last gate (or since it connected)."""
    start = getattr(client, "gate_mark", 0)
    await client.request(GATE)
    client.gate_mark = len(client.frames)
    return monitor_frames(client.frames[start:-1])
