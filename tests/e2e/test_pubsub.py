"""Publish/subscribe between real clients of tarvo_server: registration and the shapes of
published data as clients see them. The pubsub methods are answered on the server's main thread
at once, so a published message reaches every subscriber before the publisher's answer arrives;
the gate of a later "pubsub.list" on another connection shows that nothing further came."""

from e2e_support import frames_before_gate, run
from tarvo_client import TarvoClient

KERNEL_OUTPUT = {
    "print_message": "[msg]",
    "print_error": "[msg]",
    "progress_started": "",
    "progress_ended": "",
    "progress_percent": "[percent]",
}


def test_list_names_the_kernel_output_and_later_registrations(server):
    async def scenario():
        async with await TarvoClient.connect(server.port) as a, \
                await TarvoClient.connect(server.port) as b:
            listed = await a.call("pubsub.list", [1, 2, 3])  # any params are accepted
            for name, description in KERNEL_OUTPUT.items():
                assert listed[name] == description
            assert await a.call("pubsub.register_notification",
                                {"notification": "e2e.chat", "data_description": "[text]"}) is True
            assert await b.call("pubsub.register_notification",
                                {"notification": "e2e.chat", "data_description": "other"}) is False
            assert (await b.call("pubsub.list"))["e2e.chat"] == "[text]"

    run(scenario())


def test_published_data_reaches_every_subscriber_in_its_shape(server):
    async def scenario():
        async with await TarvoClient.connect(server.port) as publisher, \
                await TarvoClient.connect(server.port) as subscriber, \
                await TarvoClient.connect(server.port) as bystander:
            assert await subscriber.call("pubsub.subscribe", {"notification": "e2e.shapes"}) is True
            assert await publisher.call("pubsub.subscribe", {"notification": "e2e.shapes"}) is True
            for data, expected in [(5, [5]), (None, [None]), ("x", ["x"]), ([1, 2], [1, 2]),
                                   ({"k": 1}, {"k": 1})]:
                result = await publisher.call("pubsub.publish",
                                              {"notification": "e2e.shapes", "data": data})
                assert result is None
                assert await subscriber.next_notification("e2e.shapes") == expected
                assert await publisher.next_notification("e2e.shapes") == expected
            await publisher.call("pubsub.publish", {"notification": "e2e.shapes"})
            assert await subscriber.next_notification("e2e.shapes") is None  # no params
            assert await frames_before_gate(bystander) == []

    run(scenario())
