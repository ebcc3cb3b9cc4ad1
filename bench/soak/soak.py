#!/usr/bin/python3
"""Soak of tarvo_server: many clients at once, each sending a long run of mixed requests (kernel
commands and queries, publish/subscribe, data monitors), some leaving with a request still in
flight and replaced by new ones. Reports lost answers, the server's memory at start and end, and
the latency of every answered request.

    /usr/bin/python3 bench/soak/soak.py [--server PATH] [--clients 50] [--requests 200]
        [--leave-every 100] [--timeout 600] [--seed 1]

Each of --clients slots runs --requests requests one after the other, each sent when the last
was answered. A slot's client leaves after a request with probability 1/--leave-every: it sends
one more request and closes at once (half with a close handshake, half by dropping the TCP
connection); a new client takes the slot and the rest of its requests. An answer counts as lost
when a client that stayed does not get it within 60 s or its connection ends first.

The server is the binary from --server, else $TARVO_SERVER, else build/server/tarvo_server; it
listens on loopback only and is stopped at the end. The exit status is 1 when an answer was lost,
the server died, or the run passed --timeout.
"""

import argparse
import asyncio
import json
import os
import random
import sys
import time

HERE = os.path.dirname(os.path.abspath(__file__))
ROOT = os.path.dirname(os.path.dirname(HERE))
sys.path.insert(0, os.path.join(ROOT, "clients", "python"))

import websockets  # noqa: E402
from tarvo_client import launch_server  # noqa: E402

ANSWER_TIMEOUT = 60
CHANNEL = "soak.chat"


def rss_kib(pid, field="VmRSS"):
    try:
        with open(f"/proc/{pid}/status") as status:
            for line in status:
                if line.startswith(field + ":"):
                    return int(line.split()[1])
    except OSError:
        pass
    return None


def cpu_seconds(pid):
    """User plus system CPU time of a process so far."""
    try:
        with open(f"/proc/{pid}/stat") as stat:
            fields = stat.read().rsplit(")", 1)[1].split()
        return (int(fields[11]) + int(fields[12])) / os.sysconf("SC_CLK_TCK")
    except OSError:
        return float("nan")


def percentile(sorted_values, fraction):
    if not sorted_values:
        return float("nan")
    index = min(len(sorted_values) - 1, int(fraction * len(sorted_values)))
    return sorted_values[index]


# (weight, kind, method, params); params may be a function of the random generator.
MIX = [
    (12, "kernel", "cmd", {"input_string": "create box 1"}),
    (3, "kernel", "cmd", {"input_string": "delete volume all"}),
    (25, "kernel", "get_volume_count", None),
    (10, "kernel", "get_version", None),
    (10, "kernel", "get_curve_count", {}),
    (5, "pubsub", "pubsub.publish", lambda rng: {"notification": CHANNEL,
                                                  "data": [rng.randrange(1000)]}),
    (10, "pubsub", "pubsub.list", None),
    (8, "datamonitor", "datamonitor.add_entity_monitor",
     lambda rng: {"entity_type": "volume", "entity_id": rng.randrange(1, 6)}),
    (8, "datamonitor", "datamonitor.remove_entity_monitor",
     lambda rng: {"entity_type": "volume", "entity_id": rng.randrange(1, 6)}),
    (4, "datamonitor", "datamonitor.add_TIObserve_monitor", {"event_name": "volume_created"}),
    (4, "datamonitor", "datamonitor.remove_TIObserve_monitor", {"event_name": "volume_created"}),
]


class Stats:
    def __init__(self):
        self.latency = {"kernel": [], "pubsub": [], "datamonitor": []}
        self.lost = []            # (slot, method, why)
        self.errors = {}          # error code -> count
        self.notifications = 0
        self.left = 0
        self.connections = 0


class Connection:
    """One client: a reader task matches answers to the futures of their ids."""

    def __init__(self, websocket, stats):
        self.websocket = websocket
        self.stats = stats
        self.pending = {}
        self.next_id = 0
        self.reader = asyncio.ensure_future(self._read())

    @classmethod
    async def open(cls, port, stats):
        websocket = await websockets.connect(f"ws://127.0.0.1:{port}/", max_size=None,
                                             compression=None, ping_interval=None,
                                             max_queue=None)
        stats.connections += 1
        return cls(websocket, stats)

    async def _read(self):
        try:
            async for frame in self.websocket:
                message = json.loads(frame)
                if isinstance(message, list) or "id" not in message:
                    self.stats.notifications += len(message) if isinstance(message, list) else 1
                    continue
                future = self.pending.pop(message["id"], None)
                if future is not None and not future.done():
                    future.set_result(message)
        except websockets.ConnectionClosed:
            pass
        for future in self.pending.values():
            if not future.done():
                future.set_exception(ConnectionError("connection ended before the answer"))

    async def send(self, method, params):
        self.next_id += 1
        message = {"jsonrpc": "2.0", "method": method, "id": self.next_id}
        if params is not None:
            message["params"] = params
        future = asyncio.get_running_loop().create_future()
        self.pending[self.next_id] = future
        await self.websocket.send(json.dumps(message, separators=(",", ":")))
        return future

    async def call(self, method, params):
        return await asyncio.wait_for(await self.send(method, params), ANSWER_TIMEOUT)

    async def leave(self, graceful):
        for future in self.pending.values():
            future.cancel()
        if graceful:
            await self.websocket.close()
        else:
            self.websocket.transport.abort()
        self.reader.cancel()

    async def close(self):
        await self.websocket.close()
        self.reader.cancel()


async def ask(connection, slot, kind, method, params, stats):
    started = time.perf_counter()
    try:
        answer = await connection.call(method, params)
    except (asyncio.TimeoutError, ConnectionError, websockets.ConnectionClosed) as error:
        stats.lost.append((slot, method, type(error).__name__ + ": " + str(error)))
        return
    if kind in stats.latency:
        stats.latency[kind].append(time.perf_counter() - started)
    if "error" in answer:
        code = answer["error"].get("code")
        stats.errors[code] = stats.errors.get(code, 0) + 1


async def run_slot(slot, port, requests, leave_every, stats, rng):
    weights = [entry[0] for entry in MIX]
    done = 0
    while done < requests:
        connection = await Connection.open(port, stats)
        # Every client hears the channel; a few watch the whole model as well.
        setup = [("pubsub.subscribe", {"notification": CHANNEL})]
        if slot % 10 == 0:
            setup.append(("datamonitor.add_model_monitor", None))
        for method, params in setup:
            await ask(connection, slot, "setup", method, params, stats)
        stayed = True
        while done < requests:
            _, kind, method, params = rng.choices(MIX, weights)[0]
            if callable(params):
                params = params(rng)
            done += 1
            if leave_every and rng.randrange(leave_every) == 0:
                # Leave with this request in flight; its answer is nobody's loss.
                await connection.send(method, params)
                await connection.leave(graceful=rng.random() < 0.5)
                stats.left += 1
                stayed = False
                break
            await ask(connection, slot, kind, method, params, stats)
        if stayed:
            await connection.close()


async def soak(server, args):
    stats = Stats()
    rng = random.Random(args.seed)
    pid = server.process.pid
    rss_start = rss_kib(pid)
    samples = [rss_start]

    async def sample():
        while True:
            await asyncio.sleep(1)
            samples.append(rss_kib(pid))

    sampler = asyncio.ensure_future(sample())
    started = time.perf_counter()
    server_cpu = cpu_seconds(pid)
    client_cpu = sum(os.times()[:2])
    slots = [run_slot(slot, server.port, args.requests, args.leave_every, stats,
                      random.Random(rng.random())) for slot in range(args.clients)]
    timed_out = False
    try:
        # A slot that fails outright (its connection refused, say) is reported, not raised.
        outcomes = await asyncio.wait_for(asyncio.gather(*slots, return_exceptions=True),
                                          args.timeout)
        for slot, outcome in enumerate(outcomes):
            if isinstance(outcome, BaseException):
                stats.lost.append((slot, "(slot ended)", repr(outcome)))
    except asyncio.TimeoutError:
        timed_out = True
    elapsed = time.perf_counter() - started
    sampler.cancel()
    cpu = (cpu_seconds(pid) - server_cpu, sum(os.times()[:2]) - client_cpu)

    # Still up and serving: one last client asks, then the memory is read once all have gone.
    alive = server.process.poll() is None
    if alive:
        last = await Connection.open(server.port, stats)
        await last.call("cmd", {"input_string": "delete volume all"})
        alive = (await last.call("get_volume_count", None)).get("result") == 0
        await last.close()
        await asyncio.sleep(2)
    rss_end = rss_kib(pid)
    report(args, stats, elapsed, cpu, rss_start, rss_end, [s for s in samples if s],
           rss_kib(pid, "VmHWM"), alive, timed_out)
    return 0 if alive and not timed_out and not stats.lost else 1


def report(args, stats, elapsed, cpu, rss_start, rss_end, samples, rss_peak, alive, timed_out):
    answered = sum(len(values) for values in stats.latency.values())
    print(f"clients {args.clients} x {args.requests} requests, leave every ~{args.leave_every}, "
          f"seed {args.seed}; load average {os.getloadavg()[0]:.1f}")
    print(f"elapsed {elapsed:.1f} s, {answered} answered ({answered / elapsed:.0f}/s), "
          f"{stats.connections} connections, {stats.left} left with a request in flight, "
          f"{stats.notifications} notifications received")
    print(f"CPU during the run: server {cpu[0]:.1f} s, this client process {cpu[1]:.1f} s")
    print(f"lost answers (clients that stayed): {len(stats.lost)}")
    for slot, method, why in stats.lost[:10]:
        print(f"  slot {slot}: {method}: {why}")
    print(f"error answers by code: {stats.errors or 'none'}")
    def mib(kib):
        return "gone" if kib is None else f"{kib / 1024:.1f} MiB"

    print(f"server RSS: start {mib(rss_start)}, end {mib(rss_end)} (all clients gone), "
          f"VmHWM {mib(rss_peak)}")
    quarters = [samples[min(len(samples) - 1, q * (len(samples) - 1) // 4)] for q in range(5)]
    print("RSS sampled at 0, 25, 50, 75, 100 % of the run: " + ", ".join(map(mib, quarters)))
    print(f"{'kind':<12}{'count':>9}{'p50 ms':>10}{'p99 ms':>10}{'max ms':>10}")
    every = sorted(value for values in stats.latency.values() for value in values)
    for kind, values in list(stats.latency.items()) + [("all", every)]:
        values = sorted(values)
        print(f"{kind:<12}{len(values):>9}{percentile(values, 0.5) * 1e3:>10.2f}"
              f"{percentile(values, 0.99) * 1e3:>10.2f}"
              f"{(values[-1] if values else float('nan')) * 1e3:>10.2f}")
    print(f"server alive at the end: {alive}" + (" (run passed --timeout)" if timed_out else ""))


def main():
    parser = argparse.ArgumentParser(description=__doc__.split("\n\n")[0])
    parser.add_argument("--server", default=os.environ.get("TARVO_SERVER") or
                        os.path.join(ROOT, "build", "server", "tarvo_server"))
    parser.add_argument("--clients", type=int, default=50)
    parser.add_argument("--requests", type=int, default=200, help="per client slot")
    parser.add_argument("--leave-every", type=int, default=100,
                        help="mean requests between departures of one slot (0: never)")
    parser.add_argument("--timeout", type=float, default=600, help="seconds for the whole run")
    parser.add_argument("--seed", type=int, default=1)
    args = parser.parse_args()
    with launch_server("--port", "0", binary=args.server) as server:
        status = asyncio.run(soak(server, args))
        if server.process.poll() is not None:
            print(f"server exited with status {server.process.returncode}")
            status = 1
    return status


if __name__ == "__main__":
    sys.exit(main())
