import pytest

from tarvo_client import launch_server


@pytest.fixture(scope="module")
def server():
    """One tarvo_server for all tests of a module that need no special options."""
    with launch_server() as process:
        yield process
