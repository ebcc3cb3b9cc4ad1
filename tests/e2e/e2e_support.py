"""Helpers shared by the end-to-end tests.

To show that a frame drew no answer, a later request on the same connection (GATE, answered at
once on the server's main thread) is used as a gate: the server sends what it owes a connection
in order, so anything sent before the gate's answer is in by then."""

import asyncio

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
