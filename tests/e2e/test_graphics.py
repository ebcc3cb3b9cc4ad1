"""Render views over a real socket: image formats against the raw frame, images only to the
owner, bursts of input coalesced, picking seen by monitors, and clients that go away or never
read."""

import asyncio

import lz4.frame
import numpy

from e2e_support import frames_before_gate, run
from tarvo_client import TarvoClient, decode_image, launch_server

W, H = 801, 600


async def box_client(port, command="create box 10 6 4"):
    client = await TarvoClient.connect(port)
    assert await client.call("cmd", {"input_string": command}) is True
    return client


async def settle(view, quiet=1.0):
    """The images of the view until none has come for `quiet` seconds."""
    images = []
    while True:
        try:
            images.append(await view.next_image(quiet))
        except asyncio.TimeoutError:
            return images


def differs(a, b):
    return numpy.abs(a.astype(int) - b.astype(int))


def test_every_format_decodes_to_the_raw_frame(server):
    async def main():
        async with await box_client(server.port) as client:
            raw = await client.open_view(W, H, "rgba")
            reference = await raw.next_image()
            assert reference.params == {"id": raw.id, "width": W, "height": H, "format": "rgba"}
            rgba = decode_image(reference)
            assert len(reference.payload) == W * H * 4
            # The box is drawn in the middle, on the background, and the frame is opaque.
            drawn = rgba[:, :, :3].any(axis=2)
            assert 0.1 < drawn.mean() < 0.9 and drawn[H // 2, W // 2] and not drawn[0, 0]

            # name asked -> (header "format", channels compared, largest difference allowed)
            table = [("rgb", "rgb", 3, 0), ("RGBA", "rgba", 4, 0), ("bmp", "bmp", 3, 0),
                     ("jpg", "jpg", 3, 48), ("JPEG", "jpg", 3, 48), ("png", "png", 3, 0),
                     ("pnga", "png", 4, 0), ("ppm", "ppm", 3, 0), ("lz4", "lz4", 3, 0),
                     ("lz4a", "lz4a", 4, 0)]
            for name, header, channels, tolerance in table:
                view = await client.open_view(W, H, name)
                image = await view.next_image()
                assert image.params == {"id": view.id, "width": W, "height": H,
                                        "format": header}, name
                pixels = decode_image(image)
                assert pixels.shape[:2] == (H, W), name
                if header in ("rgb", "lz4"):
                    # 3-byte rows padded to a multiple of 4: 2403 -> 2404 bytes.
                    raw_size = len(lz4.frame.decompress(image.payload)) if header == "lz4" \
                        else len(image.payload)
                    assert raw_size == 2404 * H, name
                diff = differs(pixels[:, :, :channels], rgba[:, :, :channels])
                if tolerance == 0:
                    assert diff.max() == 0, name
                else:
                    assert diff.mean() < 3 and numpy.percentile(diff, 99) <= tolerance, name
                await view.close()

            # xpm: Pillow reads only one character a pixel, so the file is checked by its form.
            view = await client.open_view(W, H, "xpm")
            image = await view.next_image()
            assert image.params["format"] == "xpm"
            assert image.payload.startswith(b"/* XPM */") and b'"801 600 ' in image.payload
            # xbm is one bit a pixel: the box shows as a region of the other colour.
            view = await client.open_view(W, H, "xbm")
            bits = decode_image(await view.next_image())
            assert bits.shape[:2] == (H, W) and 0 < (bits[:, :, 0] > 0).mean() < 1

            # A format nobody knows: a view that answers everything and never sends a frame.
            silent = await client.open_view(W, H, "tiff")
            await silent.render()
            await frames_before_gate(client)
            assert silent.latest_image() is None
            # No size: an id and no image until something renders it.
            quiet = await client.open_view(format="rgb")
            await quiet.resize(64, 32)
            assert (await quiet.next_image()).params["width"] == 64

    run(main())


def test_images_go_only_to_the_owner_and_bursts_coalesce(server):
    async def main():
        async with await box_client(server.port) as a, await TarvoClient.connect(server.port) as b:
            view = await a.open_view(400, 300, "rgba")
            first = decode_image(await view.next_image())

            # B drags A's view: A gets the images, B none.
            params = {"view_id": view.id, "button": "left", "mouse_x": 200, "mouse_y": 150,
                      "shift_pressed": False, "control_pressed": False}
            await b.notify("graphics.mouse_button_pressed", params)
            for i in range(1, 201):
                await b.notify("graphics.mouse_move",
                               {"view_id": view.id, "mouse_x": 200 + i // 2, "mouse_y": 150})
            await b.call("graphics.mouse_button_released", dict(params, mouse_x=300))
            assert [f for f in await frames_before_gate(b) if isinstance(f, bytes)] == []

            burst = await settle(view)
            count = len(burst)
            assert 1 <= count < 100, f"{count} images for 200 moves"
            last = decode_image(burst[-1])
            assert differs(last, first).max() > 0, "the drag turned the camera"

            # The last image shows the final camera: a render now gives the same picture.
            await view.render()
            again = decode_image(await view.next_image())
            assert differs(again, last).max() == 0

            # One move straight to the end of a horizontal drag ends at the same camera.
            other = await a.open_view(400, 300, "rgba")
            await other.next_image()
            await other.mouse_press(200, 150)
            await other.mouse_move(300, 150)
            await other.mouse_release(300, 150)
            jump = decode_image((await settle(other))[-1])
            assert differs(jump, last).mean() < 1.0
            stats = await a.call("get_view_from")
            assert len(stats) == 3

    run(main())


def test_a_click_on_a_surface_is_seen_by_the_monitors(server):
    async def main():
        async with await box_client(server.port, "reset") as a, \
                await TarvoClient.connect(server.port) as watcher:
            assert await a.call("cmd", {"input_string": "create box 10 6 4"}) is True
            for word in ("picked", "selection"):
                assert await watcher.call("datamonitor.add_graphics_monitor",
                                          {"type": word}) is True
            assert await watcher.call("datamonitor.add_TIObserve_monitor",
                                      {"event_name": "highlighted"}) is True
            # The first report of "selection" is the whole selection: nothing yet.
            assert watcher.notifications("datamonitor.graphics_selection") == [[]]
            view = await a.open_view(400, 300, "rgb")
            await view.next_image()
            # Control and the left button select in the default mapping; the middle of the view
            # is on the box's front surface.
            await a.call("graphics.mouse_button_pressed",
                         {"view_id": view.id, "button": "left", "mouse_x": 200, "mouse_y": 150,
                          "shift_pressed": False, "control_pressed": True})
            await a.call("graphics.mouse_button_released",
                         {"view_id": view.id, "button": "left", "mouse_x": 200, "mouse_y": 150,
                          "shift_pressed": False, "control_pressed": True})
            assert await a.next_notification("graphics.donepick", 10) == {"id": view.id}
            picked = await watcher.next_notification("datamonitor.graphics_picked", 10)
            assert picked["add_or_remove"] is True
            # What the click picked is what the kernel now holds as selected.
            (entry,) = picked["pick_set"]
            assert entry["ids"] == [await a.call("get_selected_id", {"index": 0})]
            assert entry["entity_type"] == await a.call("get_selected_type", {"index": 0})
            selection = await watcher.next_notification("datamonitor.graphics_selection", 10)
            assert selection == picked["pick_set"]
            events = await watcher.next_notification("datamonitor.TIObserve", 10)
            assert events[0]["event_name"] == "highlighted"
            assert await a.call("current_selection_count") == 1

    run(main())


def rss_kib(pid):
    with open(f"/proc/{pid}/status") as status:
        for line in status:
            if line.startswith("VmRSS:"):
                return int(line.split()[1])
    return 0


def test_clients_that_leave_or_never_read_do_no_harm():
    async def main(process):
        port = process.port
        # Leaves with frames in flight: renders queued, then the socket is dropped.
        for _ in range(3):
            gone = await box_client(port)
            view = await gone.open_view(1920, 1080, "rgb")
            for _ in range(20):
                await gone.notify("graphics.render", {"view_id": view.id})
            await gone.ws.close()
            await gone.close()

        # Never reads: the server may queue no more than its latest frames for it.
        lazy = await box_client(port)
        view_id = await lazy.call("graphics.create_view",
                                  {"width": 800, "height": 600, "format": "rgba"})
        lazy._reader.cancel()  # from now on nothing is read from its socket
        for _ in range(300):
            await lazy.ws.send('{"jsonrpc":"2.0","method":"graphics.render","params":'
                               '{"view_id":%d}}' % view_id)
        async with await box_client(port) as other:
            for _ in range(20):
                assert await other.call("get_volume_count") >= 1
            before = rss_kib(process.process.pid)
            for _ in range(200):
                await lazy.ws.send('{"jsonrpc":"2.0","method":"graphics.render","params":'
                                   '{"view_id":%d}}' % view_id)
            assert await other.call("get_volume_count") >= 1
            await asyncio.sleep(1)
            # 200 frames of 1.9 MB would be 380 MB; one frame waits at most.
            assert rss_kib(process.process.pid) - before < 60 * 1024
        lazy.ws.transport.abort()
        async with await TarvoClient.connect(port) as last:
            assert await last.call("get_volume_count") >= 1
        assert process.process.poll() is None

    with launch_server() as process:
        run(main(process))
