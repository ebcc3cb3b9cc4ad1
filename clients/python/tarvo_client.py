"""A small asyncio client for tarvo_server.

Start a server and talk to it::

    import asyncio
    from tarvo_client import launch_server, TarvoClient

    async def main():
        with launch_server("--connection-id", "secret") as server:
            client = await TarvoClient.connect(server.port, connection_id="secret")
            await client.subscribe("print_message")
            print(await client.call("get_version"))
            print(await client.next_notification("print_message"))
            await client.close()

    asyncio.run(main())

The server speaks JSON-RPC 2.0 over a WebSocket on 127.0.0.1. Responses are matched to calls by
id. Server notifications are kept per method name until they are taken. An image or other binary
message arrives as a text header (a notification "binary_header.<name>") followed by one binary
frame; the two are kept together as a BinaryMessage.

Requires the `websockets` package (10.x).
"""

import asyncio
import ctypes
import ctypes.util
import itertools
import json
import os
import shutil
import ssl
import subprocess
import threading
import urllib.parse
from collections import defaultdict, deque
from dataclasses import dataclass, field

import websockets

__all__ = [
    "BinaryMessage",
    "View",
    "decode_image",
    "keep_frame_memory",
    "RPCError",
    "ServerProcess",
    "ServerStartError",
    "TarvoClient",
    "launch_server",
]

_PORT_LINE = "Listening on port "


def _dumps(message):
    return json.dumps(message, separators=(",", ":"), ensure_ascii=False)


_frame_memory_kept = False


def keep_frame_memory():
    """Keeps the memory of received images in this process's heap (glibc only; elsewhere it does
    nothing). glibc gives each freed block of more than 128 KiB back to the system, so every
    image of a view of megabytes is received into fresh pages that fault in one by one: on a
    virtual machine that can add 15 ms to each 800 x 600 rgb frame, in some runs and not in
    others, as glibc's own threshold happens to move. Called by `open_view`; the heap may then
    keep up to 64 MiB that it would have given back."""
    global _frame_memory_kept
    if _frame_memory_kept:
        return
    _frame_memory_kept = True
    name = ctypes.util.find_library("c")
    if not name:
        return
    try:
        mallopt = ctypes.CDLL(name).mallopt
    except (OSError, AttributeError):  # no C library or not glibc
        return
    m_trim_threshold, m_mmap_threshold = -1, -3
    mallopt(m_mmap_threshold, 32 << 20)  # glibc's ceiling
    mallopt(m_trim_threshold, 64 << 20)


# --- launching the server ------------------------------------------------------------------------


class ServerStartError(RuntimeError):
    """The server ended before it printed its port line."""

    def __init__(self, returncode, output):
        super().__init__(f"tarvo_server exited with status {returncode}:\n{output}")
        self.returncode = returncode
        self.output = output


class ServerProcess:
    """A running tarvo_server. `port` is the port it listens on; `output()` is everything it
    has written to standard output so far (its log). Use it as a context manager, or call
    `stop()`, to end it."""

    def __init__(self, process, port, lines, changed, reader):
        self.process = process
        self.port = port
        self._lines = lines
        self._changed = changed
        self._reader = reader

    def output(self):
        with self._changed:
            return "".join(self._lines)

    def wait_for_output(self, predicate, timeout=60):
        """Waits until predicate(output()) is true, and returns the output. The log reaches us
        through a pipe, so what the server has just written may not have been read yet. Raises
        TimeoutError with the output if it doesn't come in time, or if the server has ended."""
        with self._changed:
            ready = self._changed.wait_for(
                lambda: predicate("".join(self._lines)) or not self._reader.is_alive(), timeout)
            text = "".join(self._lines)
        if not ready or not predicate(text):
            raise TimeoutError("server output not as expected:\n" + text)
        return text

    def wait(self, timeout=None):
        """Waits for the process to end and returns its exit status (subprocess semantics:
        -1 appears as 255)."""
        status = self.process.wait(timeout)
        self._reader.join(timeout)
        return status

    def stop(self, timeout=10):
        if self.process.poll() is None:
            self.process.terminate()
            try:
                self.process.wait(timeout)
            except subprocess.TimeoutExpired:
                self.process.kill()
                self.process.wait()
        self._reader.join(timeout)

    def __enter__(self):
        return self

    def __exit__(self, *exc):
        self.stop()


def find_server_binary():
    """$TARVO_SERVER if set, else tarvo_server on the PATH."""
    return os.environ.get("TARVO_SERVER") or shutil.which("tarvo_server") or "tarvo_server"


def launch_server(*args, binary=None, env=None, startup_timeout=60):
    """Starts tarvo_server with the given command-line arguments and waits for its port line.

    Returns a ServerProcess. Raises ServerStartError if the process ends first (a taken port,
    a bad command line), with its exit status and output. Standard output keeps being read in a
    thread, so the server never blocks on a full pipe."""
    process = subprocess.Popen(
        [binary or find_server_binary(), *args],
        stdin=subprocess.DEVNULL,
        stdout=subprocess.PIPE,
        stderr=subprocess.STDOUT,
        env=env,
        text=True,
        encoding="utf-8",
        errors="replace",
    )
    lines = []
    changed = threading.Condition()
    port_found = threading.Event()
    port = [None]

    def read():
        for line in process.stdout:
            with changed:
                lines.append(line)
                changed.notify_all()
            if port[0] is None and line.startswith(_PORT_LINE):
                port[0] = int(line[len(_PORT_LINE):])
                port_found.set()
        port_found.set()  # end of output: no port line will come
        with changed:
            changed.notify_all()

    reader = threading.Thread(target=read, daemon=True)
    reader.start()
    if not port_found.wait(startup_timeout):
        process.kill()
        process.wait()
        raise ServerStartError(None, "".join(lines) + "\n(no port line in time)")
    if port[0] is None:
        status = process.wait()
        reader.join()
        raise ServerStartError(status, "".join(lines))
    return ServerProcess(process, port[0], lines, changed, reader)


# --- the client ----------------------------------------------------------------------------------


class RPCError(Exception):
    """An error response. `code`, `message` and `data` are the members of its error object."""

    def __init__(self, error):
        self.code = error.get("code")
        self.message = error.get("message")
        self.data = error.get("data")
        super().__init__(f"{self.code}: {self.message}")


@dataclass
class BinaryMessage:
    """A binary frame with the header that announced it: `name` is the header's method without
    "binary_header.", `params` its params object."""

    name: str
    params: dict
    payload: bytes


@dataclass
class _Inbox:
    items: deque = field(default_factory=deque)
    arrived: asyncio.Event = field(default_factory=asyncio.Event)

    def put(self, item):
        self.items.append(item)
        self.arrived.set()

    async def get(self, timeout):
        async def wait():
            while not self.items:
                self.arrived.clear()
                await self.arrived.wait()
            return self.items.popleft()

        return await asyncio.wait_for(wait(), timeout)


class TarvoClient:
    """One connection to a server. Create it with `await TarvoClient.connect(...)`.

    Received frames are also recorded in order in `frames` (str for text, bytes for binary),
    so a caller can check exactly what the server sent; the images of this client's own views
    are left out (they go to their View, and a stream of them would fill the memory)."""

    def __init__(self, websocket):
        self.ws = websocket
        self.frames = []
        self._ids = itertools.count(1)
        self._waiting = {}  # id -> future of the response
        self._batches = deque()  # futures of batch answers, oldest first
        self._notifications = defaultdict(_Inbox)
        self._binary = _Inbox()
        self._unmatched = _Inbox()  # responses no call waits for (errors with a null id)
        self._header = None
        self._views = {}  # view id -> View, whose images go to that view
        self._reader = asyncio.get_running_loop().create_task(self._read())

    @staticmethod
    def url(port, host="127.0.0.1", tls=False, connection_id=None, id_in_path=False):
        """The URL for a server; the id goes in the query, or as the path if id_in_path."""
        scheme = "wss" if tls else "ws"
        if connection_id is None:
            return f"{scheme}://{host}:{port}/"
        quoted = urllib.parse.quote(connection_id, safe="")
        if id_in_path:
            return f"{scheme}://{host}:{port}/{quoted}"
        return f"{scheme}://{host}:{port}/?connection_id={quoted}"

    @classmethod
    async def connect(cls, port, host="127.0.0.1", tls=False, connection_id=None,
                      id_in_path=False, url=None, open_timeout=10, origin=None):
        """Connects to a server. With tls, the server's built-in certificate is accepted without
        verification. `origin` sends an Origin header as a browser would (the server admits only
        the origins given with --allow-origin). Raises websockets' exceptions when the server
        refuses the connection."""
        if url is None:
            url = cls.url(port, host, tls, connection_id, id_in_path)
        context = None
        if url.startswith("wss:"):
            context = ssl.SSLContext(ssl.PROTOCOL_TLS_CLIENT)
            context.check_hostname = False
            context.verify_mode = ssl.CERT_NONE
        # Frames of a view reach megabytes: a read buffer of 64 KiB, the library's default,
        # pauses the socket many times for each.
        websocket = await websockets.connect(url, ssl=context, open_timeout=open_timeout,
                                             max_size=None, compression=None, ping_interval=None,
                                             origin=origin, read_limit=2**24)
        return cls(websocket)

    async def close(self):
        await self.ws.close()
        await asyncio.gather(self._reader, return_exceptions=True)

    async def wait_closed(self, timeout=10):
        """Waits until the server has closed the connection (a refused connection id is closed
        right after the handshake). Answers whether it closed within `timeout` seconds."""
        try:
            await asyncio.wait_for(asyncio.shield(self._reader), timeout)
            return True
        except asyncio.TimeoutError:
            return False

    async def __aenter__(self):
        return self

    async def __aexit__(self, *exc):
        await self.close()

    # sending

    def _message(self, method, params, id=None):
        message = {"jsonrpc": "2.0", "method": method}
        if params is not None:
            message["params"] = params
        if id is not None:
            message["id"] = id
        return message

    async def request(self, method, params=None, timeout=60, id=None):
        """Sends a request and returns the whole response object (result or error)."""
        if id is None:
            id = next(self._ids)
        future = asyncio.get_running_loop().create_future()
        self._waiting[json.dumps(id)] = future
        await self.ws.send(_dumps(self._message(method, params, id)))
        return await asyncio.wait_for(future, timeout)

    async def call(self, method, params=None, timeout=60):
        """Sends a request and returns its result; raises RPCError for an error response."""
        response = await self.request(method, params, timeout)
        if "error" in response:
            raise RPCError(response["error"])
        return response.get("result")

    async def notify(self, method, params=None):
        """Sends a notification; the server answers nothing."""
        await self.ws.send(_dumps(self._message(method, params)))

    async def batch(self, items, timeout=60):
        """Sends a batch. Each item is (method, params) for a request with a fresh id,
        (method, params, id) for a request with that id, or (method, params, None) for a
        notification. Returns the server's answer, a list of response objects in the order in
        which the server finished them, or None when nothing in the batch expects an answer (the
        server then sends nothing). Answers are matched to batches by order, which the server
        keeps."""
        messages = []
        expects_answer = False
        for method, params, *rest in items:
            if not rest:
                messages.append(self._message(method, params, next(self._ids)))
                expects_answer = True
            elif rest[0] is None:
                messages.append(self._message(method, params))
            else:
                messages.append(self._message(method, params, rest[0]))
                expects_answer = True
        future = None
        if expects_answer:
            future = asyncio.get_running_loop().create_future()
            self._batches.append(future)
        await self.ws.send(_dumps(messages))
        return await asyncio.wait_for(future, timeout) if future else None

    async def send_text(self, text):
        """Sends a text frame as it is (for malformed input)."""
        await self.ws.send(text)

    async def send_binary(self, data):
        await self.ws.send(bytes(data))

    # receiving

    async def next_notification(self, method, timeout=60):
        """The params of the oldest notification of `method` not taken yet; waits for one."""
        return await self._notifications[method].get(timeout)

    def notifications(self, method):
        """Takes all notifications of `method` received so far (their params), oldest first."""
        inbox = self._notifications[method]
        taken = list(inbox.items)
        inbox.items.clear()
        return taken

    async def next_binary(self, timeout=60):
        """The oldest BinaryMessage not taken yet; waits for one."""
        return await self._binary.get(timeout)

    async def next_unmatched(self, timeout=60):
        """The oldest response that no call waited for, e.g. the error for a malformed frame."""
        return await self._unmatched.get(timeout)

    # render views

    async def open_view(self, width=None, height=None, format="rgb"):
        """Creates a render view on the server and returns a View, or None when the server has
        no graphics. With both width and height the server renders at once, so the first image
        is on its way; without them nothing comes until the view is resized or rendered."""
        params = {"format": format}
        if width is not None:
            params["width"] = width
        if height is not None:
            params["height"] = height
        keep_frame_memory()
        pending = View(self, None, format)
        view_id = await self.call("graphics.create_view", params)
        if view_id is None:
            return None
        pending.id = view_id
        self._views[view_id] = pending
        # Images that arrived before the id was known were kept with the others.
        for message in [m for m in self._binary.items
                        if m.name == "graphics.image_data" and m.params.get("id") == view_id]:
            self._binary.items.remove(message)
            pending._images.put(message)
        return pending

    # publish/subscribe

    async def subscribe(self, *notifications):
        """Subscribes to server notifications by name (e.g. "print_message")."""
        for name in notifications:
            await self.call("pubsub.subscribe", {"notification": name})

    async def unsubscribe(self, *notifications):
        for name in notifications:
            await self.call("pubsub.unsubscribe", {"notification": name})

    async def publish(self, notification, data=None):
        params = {"notification": notification}
        if data is not None:
            params["data"] = data
        await self.call("pubsub.publish", params)

    # the reader

    async def _read(self):
        try:
            async for frame in self.ws:
                if isinstance(frame, bytes):
                    if not self._on_binary(frame):
                        self.frames.append(frame)
                else:
                    self.frames.append(frame)
                    self._on_text(frame)
        except websockets.ConnectionClosed:
            pass
        finally:
            closed = ConnectionError("connection closed")
            for future in [*self._waiting.values(), *self._batches]:
                if not future.done():
                    future.set_exception(closed)

    def _on_binary(self, payload):
        """Answers whether the payload was an image of one of this client's views."""
        if self._header is not None:
            method, params = self._header
            self._header = None
            message = BinaryMessage(method[len("binary_header."):], params, payload)
            view = None
            if message.name == "graphics.image_data":
                view = self._views.get(params.get("id"))
            (view._images if view is not None else self._binary).put(message)
            return view is not None
        return False

    def _on_text(self, text):
        try:
            message = json.loads(text)
        except ValueError:
            return
        if isinstance(message, list):
            if message and all(isinstance(m, dict) and "method" in m for m in message):
                for m in message:
                    self._on_notification(m)
            elif self._batches:
                self._batches.popleft().set_result(message)
            else:
                self._unmatched.put(message)
        elif isinstance(message, dict):
            if "method" in message:
                self._on_notification(message)
                return
            future = self._waiting.pop(json.dumps(message.get("id")), None)
            if future is not None and not future.done():
                future.set_result(message)
            else:
                self._unmatched.put(message)

    def _on_notification(self, message):
        method = message.get("method", "")
        params = message.get("params")
        if method.startswith("binary_header."):
            self._header = (method, params or {})
        else:
            self._notifications[method].put(params)


# --- render views ----------------------------------------------------------------------------------

_IMAGE_FILES = {"bmp", "jpg", "png", "ppm", "xbm", "xpm"}


def decode_image(message):
    """The pixels of an image message as a numpy array of shape (height, width, channels), top
    row first: 3 channels (RGB) for "rgb", "lz4" and "jpg", 4 (RGBA) for "rgba" and "lz4a";
    the image files ("png", "bmp", ...) keep the channels of the file, as Pillow reads them.
    Needs numpy, and Pillow for the files and lz4 for the compressed frames."""
    import numpy

    fmt = message.params["format"]
    width, height = message.params["width"], message.params["height"]
    payload = message.payload
    if fmt in _IMAGE_FILES:
        import io

        from PIL import Image

        with Image.open(io.BytesIO(payload)) as image:
            if image.mode not in ("RGB", "RGBA", "L"):
                image = image.convert("RGBA" if "A" in image.mode else "RGB")
            pixels = numpy.asarray(image)
        return pixels if pixels.ndim == 3 else pixels[:, :, None]
    if fmt in ("lz4", "lz4a"):
        import lz4.frame

        payload = lz4.frame.decompress(payload)
    channels = 3 if fmt in ("rgb", "lz4") else 4
    # Rows are padded to a multiple of 4 bytes.
    stride = (width * channels + 3) & ~3
    rows = numpy.frombuffer(payload, dtype=numpy.uint8, count=stride * height)
    return rows.reshape(height, stride)[:, :width * channels].reshape(height, width, channels)


class View:
    """A render view on the server, made by `TarvoClient.open_view`. Its images come only to
    this client; `next_image()` gives the next one as a BinaryMessage, `next_array()` as a
    numpy array, `save_png(path)` writes the next one to a PNG file. Input goes as
    notifications (no answer, as a window sends a stream of events); coordinates are pixels
    of the view, from the top left."""

    def __init__(self, client, view_id, format):
        self.client = client
        self.id = view_id
        self.format = format
        self._images = _Inbox()

    async def next_image(self, timeout=60):
        return await self._images.get(timeout)

    def latest_image(self):
        """Takes every image received so far and returns the newest, or None."""
        items = self._images.items
        newest = items[-1] if items else None
        items.clear()
        return newest

    async def next_array(self, timeout=60):
        return decode_image(await self.next_image(timeout))

    async def save_png(self, path, timeout=60):
        """Writes the next image to `path` as PNG and returns its array."""
        from PIL import Image

        pixels = await self.next_array(timeout)
        Image.fromarray(pixels if pixels.shape[2] != 1 else pixels[:, :, 0]).save(path, "PNG")
        return pixels

    async def _send(self, method, **params):
        await self.client.notify("graphics." + method, {"view_id": self.id, **params})

    async def render(self, timing=False):
        await self.client.call("graphics.render", {"view_id": self.id, "timing": timing})

    async def resize(self, width, height):
        await self.client.call("graphics.graphics_resize",
                               {"view_id": self.id, "width": width, "height": height})

    async def close(self):
        self.client._views.pop(self.id, None)
        return await self.client.call("graphics.destroy_view", {"view_id": self.id})

    async def mouse_move(self, x, y, shift=False, control=False):
        await self._send("mouse_move", mouse_x=x, mouse_y=y, shift_pressed=shift,
                         control_pressed=control)

    async def mouse_press(self, x, y, button="left", shift=False, control=False):
        await self._send("mouse_button_pressed", button=button, mouse_x=x, mouse_y=y,
                         shift_pressed=shift, control_pressed=control)

    async def mouse_release(self, x, y, button="left", shift=False, control=False):
        await self._send("mouse_button_released", button=button, mouse_x=x, mouse_y=y,
                         shift_pressed=shift, control_pressed=control)

    async def click(self, x, y, button="left", shift=False, control=False):
        await self.mouse_press(x, y, button, shift, control)
        await self.mouse_release(x, y, button, shift, control)

    async def mouse_wheel(self, x, y, forward=True, shift=False, control=False):
        await self._send("mouse_wheel", delta=1 if forward else -1, mouse_x=x, mouse_y=y,
                         shift_pressed=shift, control_pressed=control)

    async def key(self, text, key=0, shift=False, control=False, count=1):
        """A key pressed and released: `text` as typed ("a", "" for keys without text), `key`
        the Qt key code (needed when there is no text, e.g. 0x1000000 for Escape)."""
        params = dict(key=key, key_text=text, shift_pressed=shift, control_pressed=control,
                      count=count)
        await self._send("key_pressed", **params)
        await self._send("key_released", **params)
