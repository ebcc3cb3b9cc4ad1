#!/usr/bin/env python3
"""Image streaming through tarvo_server: frames per second and input-to-image latency (from a
mouse_move sent to the image it caused) for several formats, beside the render-only time of the
same frames in the same run, on a model of 20 volumes.

    image_stream.py [--server PATH] [--sizes 800x600,1920x1080] [--formats rgb,lz4,jpg,png]
                    [--moves 200]

The server is PATH, else $TARVO_SERVER, else the build's tarvo_server. Each move waits for its
image before the next is sent (one frame in flight), so fps is 1 / mean latency. The render-only
time comes from graphics.test_render, whose statistics the server prints: render time and
encode time per frame, the same frames without socket, client or input handling."""

import argparse
import asyncio
import os
import re
import statistics
import sys
import time

HERE = os.path.dirname(os.path.abspath(__file__))
sys.path.insert(0, os.path.join(HERE, "..", "..", "clients", "python"))

from tarvo_client import TarvoClient, launch_server  # noqa: E402

STATS = re.compile(r"Image Stats: \n(\d+) renders\n([\d.e+-]+) render time\n(\d+) images\n"
                   r"([\d.e+-]+) image time\n")


async def model(client):
    for i in range(20):
        command = (f"create cylinder radius 0.8 height 3 at {(i % 5) * 2.5} {(i // 5) * 2.5} 0"
                   if i % 2 else f"create box 1.6 1.6 3 at {(i % 5) * 2.5} {(i // 5) * 2.5} 0")
        assert await client.call("cmd", {"input_string": command}) is True


async def measure(server, fmt, width, height, moves):
    async with await TarvoClient.connect(server.port) as client:
        await model(client)
        view = await client.open_view(width, height, fmt)
        await view.next_image()
        await view.mouse_press(width // 2, height // 2)
        latencies = []
        start = time.perf_counter()
        for i in range(moves):
            sent = time.perf_counter()
            # A back-and-forth drag, so the model stays in view.
            x = width // 2 + (i % 40 - 20) * 3
            await view.mouse_move(x, height // 2)
            await view.next_image()
            latencies.append(time.perf_counter() - sent)
        elapsed = time.perf_counter() - start
        await view.mouse_release(width // 2, height // 2)
        await view.close()

        # Render-only: the same view size, the same model, frames timed inside the server.
        view = await client.open_view(width, height, fmt)
        await view.next_image()
        before = len(server.output())
        await client.notify("graphics.test_render", {"view_id": view.id, "count": moves})
        # The statistics are printed when the last image is delivered, which the server does
        # only once this client has read what it was sent: wait without blocking the reader.
        text = await asyncio.get_running_loop().run_in_executor(
            None, lambda: server.wait_for_output(lambda out: STATS.search(out[before:]), 300))
        renders, render_time, images, image_time = STATS.search(text[before:]).groups()
        return {
            "fps": moves / elapsed,
            "p50": statistics.median(latencies) * 1e3,
            "p90": sorted(latencies)[int(0.9 * len(latencies))] * 1e3,
            "render": float(render_time) / int(renders) * 1e3,
            "encode": float(image_time) / int(images) * 1e3,
        }


def main():
    parser = argparse.ArgumentParser()
    parser.add_argument("--server", default=os.environ.get("TARVO_SERVER") or os.path.join(
        HERE, "..", "..", "build", "server", "tarvo_server"))
    parser.add_argument("--sizes", default="800x600,1920x1080")
    parser.add_argument("--formats", default="rgb,lz4,jpg,png")
    parser.add_argument("--moves", type=int, default=200)
    args = parser.parse_args()
    print(f"20 volumes, {args.moves} moves per format and size, load {os.getloadavg()[0]:.1f}")
    print(f"{'size':>9} {'format':>6} {'fps':>7} {'p50 ms':>8} {'p90 ms':>8} {'render ms':>10} "
          f"{'encode ms':>10} {'p50/render':>11} {'(r+e)/r':>8}")
    with launch_server(binary=args.server) as server:
        for size in args.sizes.split(","):
            width, height = (int(v) for v in size.split("x"))
            for fmt in args.formats.split(","):
                r = asyncio.run(measure(server, fmt, width, height, args.moves))
                print(f"{size:>9} {fmt:>6} {r['fps']:7.1f} {r['p50']:8.2f} {r['p90']:8.2f} "
                      f"{r['render']:10.2f} {r['encode']:10.2f} {r['p50'] / r['render']:11.2f} "
                      f"{(r['render'] + r['encode']) / r['render']:8.2f}", flush=True)
        print(f"load at the end {os.getloadavg()[0]:.1f}")


if __name__ == "__main__":
    main()
