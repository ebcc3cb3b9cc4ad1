"""Analysis set-up as a front end sees it: an L-shaped bracket with a fixed face, a pressure on a
side set and steel on its block, each watched through an entity monitor. The records carry the
values the commands set, and again after `modify`; a CFD wall is reported as "cfd_bc"."""

import math

import pytest

from e2e_support import exchange, gate, ok, run
from tarvo_client import TarvoClient

BRACKET = [
    "reset", "create box 10 4 1", "create box 1 4 6 at 4.5 0 3.5", "unite volume 1 2",
    "volume all size 1", "mesh volume all", "block 1 add volume all",
]


def records(frames, entity_type, entity_id):
    return [params for frame in frames for method, params in frame
            if method == "datamonitor.entity_monitor" and params.get("entity_type") == entity_type
            and params.get("entity_id") == entity_id]


def test_conditions_and_material_reach_a_watching_client(server):
    async def scenario():
        async with await TarvoClient.connect(server.port) as client:
            for line in BRACKET:
                await ok(client, line)
            # The face the bracket is held by (x = -5) and the top of its upright (z = 6.5).
            centres = {s: await client.call("get_center_point",
                                            {"entity_type": "surface", "entity_id": s})
                       for s in await client.call("get_entities", {"entity_type": "surface"})}
            held = [s for s, c in centres.items() if abs(c[0] + 5) < 1e-9]
            top = [s for s, c in centres.items() if abs(c[2] - 6.5) < 1e-9]
            assert len(held) == 1 and len(top) == 1, centres
            await ok(client, f"sideset 1 add surface {top[0]}")
            for line in [f"create displacement on surface {held[0]} dof all fixed",
                         "create pressure on sideset 1 magnitude 2.5",
                         "create material 'steel' property 'ELASTIC_MODULUS' value 2.0e11 "
                         "property 'POISSON_RATIO' value 0.29 property 'DENSITY' value 7850",
                         "material 'steel' block 1", "create cfd wall on sideset 1"]:
                await ok(client, line)
            for kind in ["displacement", "pressure", "material", "wall"]:
                result, _ = await exchange(client, "datamonitor.add_entity_monitor",
                                           {"entity_type": kind, "entity_id": 1})
                assert result is True, kind
            first = await gate(client)
            pressure = records(first, "pressure", 1)[-1]
            assert pressure["pressure"] == 2.5
            fixed = records(first, "displacement", 1)[-1]
            assert all(fixed[f"displacement_dof_sign_{d}"] != 0 for d in range(6)), fixed
            steel = records(first, "material", 1)[-1]
            assert steel["scalar_properties"]["ELASTIC_MODULUS"] == 2.0e11
            assert steel["scalar_properties"]["DENSITY"] == 7850
            assert records(first, "cfd_bc", 1), "a CFD wall is watched as cfd_bc"

            await ok(client, "modify pressure 1 magnitude 4")
            await ok(client, "modify material 'steel' property 'DENSITY' value 7800")
            later = await gate(client)
            assert records(later, "pressure", 1)[-1]["pressure"] == 4
            assert records(later, "material", 1)[-1]["scalar_properties"]["DENSITY"] == 7800

            # Nothing else changed, so nothing else is sent again.
            await ok(client, "modify pressure 1 magnitude 4")
            assert records(await gate(client), "material", 1) == []

    run(scenario())


def test_time_step_of_a_steel_cube_matches_the_hand_value(server):
    # 1000 unit hexes: each one's characteristic length (volume / largest face) is 1, so the
    # step is 1 / c with c the dilatational wave speed of steel.
    e, nu, rho = 200e9, 0.3, 7850.0
    by_hand = 1.0 / math.sqrt(e * (1 - nu) / (rho * (1 + nu) * (1 - 2 * nu)))

    async def scenario():
        async with await TarvoClient.connect(server.port) as client:
            for line in ["reset", "create box 10", "volume 1 interval 10", "mesh volume 1",
                         "block 1 add volume 1",
                         f"create material 'steel' property 'ELASTIC_MODULUS' value {e} "
                         f"property 'POISSON_RATIO' value {nu} property 'DENSITY' value {rho}",
                         "material 'steel' block 1"]:
                await ok(client, line)
            step = await client.call("calculate_timestep_estimate",
                                     {"entity_type": "block", "entity_ids": [1]})
            assert step == pytest.approx(by_hand, rel=1e-9)
            # Given values apply to every element: a quarter of the stiffness doubles the step.
            softer = await client.call("calculate_timestep_estimate",
                                       {"entity_type": "hex", "entity_ids": [1, 500, 1000],
                                        "density": rho, "youngs_modulus": e / 4,
                                        "poissons_ratio": nu})
            assert softer == pytest.approx(2 * by_hand, rel=1e-9)
            # Without a density the given values are not used: the block's material is.
            ignored = await client.call("calculate_timestep_estimate",
                                        {"entity_type": "block", "entity_ids": [1],
                                         "youngs_modulus": e / 4})
            assert ignored == step

    run(scenario())
