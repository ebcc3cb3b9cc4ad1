// The analysis set-up through the command language and the public queries: each family of
// conditions made, read, evented and undone; materials through the MaterialInterface (a deleted
// material's handle refused); the time step of one hex against a hand computation; boundary
// layers; bad input refused with the model unchanged; the native file round trip.

#include "tarvo/TarvoInterface.h"

#include "../support/KernelTest.h"

#include <gtest/gtest.h>

#include <exodusII.h>

#include <cmath>
#include <functional>

namespace TI = TarvoInterface;

namespace {

class BcTest : public test_support::KernelTest {
protected:
    BcTest()
        : KernelTest("bc", {"bc_entity_modified", "constraint_modified", "material_modified",
                            "media_modified", "boundary_layer_created", "boundary_layer_deleted"}) {
    }
    // A 2-unit box meshed as one hex, in block 1, with nodeset 1 and sideset 1 on surface 1.
    void one_hex() {
        run("create box 2");
        run("volume 1 interval 1");
        run("mesh volume 1");
        run("block 1 add volume 1");
        run("nodeset 1 add surface 1");
        run("sideset 1 add surface 1");
    }
    // What the queries say about every condition, material and layer, to compare before and after.
    static std::string dump() {
        std::string out;
        for (int kind : {1, 2, 3, 4, 5, 6, 7, 8, 9, 10, 40})
            for (int id : TI::get_bc_id_list(static_cast<TI::TI_BCTypes>(kind)))
                out += std::to_string(kind) + ":" + std::to_string(id) + ";";
        for (const auto& cfd : TI::get_all_cfd_bcs())
            out += cfd.type + ":" + std::to_string(cfd.id) + ";";
        for (const auto& name : TI::get_material_name_list())
            out += name + ";";
        out += std::to_string(TI::get_material_property(TI::TI_MATERIAL_DENSITY, 1)) + ";";
        for (int id : TI::get_boundary_layer_id_list())
            out += "layer " + std::to_string(id) + ";";
        return out;
    }
};

struct Family {
    const char* line;
    const char* event;           // "<event> <type> 1" without the action
    std::function<bool()> holds; // the queries answer what the line set
};

TEST_F(BcTest, EachFamilyIsMadeReadEventedAndUndone) {
    using namespace TI;
    const auto near = [](double a, double b) { return std::abs(a - b) < 1e-12; };
    const Family families[] = {
        {"create force on nodeset 1 magnitude 10 direction 0 0 -1 moment 2 direction 1 0 0 "
         "name 'load'",
         "bc_entity_modified force 1",
         [&] {
             return get_force_magnitude(1) == 10 &&
                    get_force_direction_vector(1) == std::array<double, 3>{0, 0, -1} &&
                    get_moment_magnitude(1) == 2 && get_bc_name(TI_BC_FORCE, 1) == "load" &&
                    get_nodeset_id_list_for_bc(TI_BC_FORCE, 1) == std::vector<int>{1};
         }},
        {"create pressure on sideset 1 magnitude 3.5 function 't*2'",
         "bc_entity_modified pressure 1",
         [&] {
             return get_pressure_value(1) == 3.5 && get_pressure_function(1) == "t*2" &&
                    get_sideset_id_list_for_bc(TI_BC_PRESSURE, 1) == std::vector<int>{1};
         }},
        {"create displacement on surface 1 dof 1 3 value 0.5 dof 6 combine average",
         "bc_entity_modified displacement 1",
         [&] {
             const double* v = get_displacement_dof_values(1);
             const int* s = get_displacement_dof_signs(1);
             return v[0] == 0.5 && v[2] == 0.5 && v[5] == 0 && s[0] == 1 && s[1] == 0 &&
                    s[5] == 1 && get_displacement_combine_type(1) == "average";
         }},
        {"create velocity on vertex 1 fixed", "bc_entity_modified velocity 1",
         [&] { return get_velocity_dof_signs(1)[4] == 1 && get_velocity_dof_values(1)[4] == 0; }},
        {"create acceleration on curve 1 dof 2 value -9.81", "bc_entity_modified acceleration 1",
         [&] {
             return get_acceleration_dof_values(1)[1] == -9.81 &&
                    get_acceleration_combine_type(1) == "overwrite";
         }},
        {"create temperature on surface 1 shell gradient 5", "bc_entity_modified temperature 1",
         [&] {
             return is_on_thin_shell(TI_BC_TEMPERATURE, 1) &&
                    temperature_is_on_shell_area(TI_BC_TEMPERATURE, TI_BC_SHELL_GRADIENT, 1) &&
                    !temperature_is_on_shell_area(TI_BC_TEMPERATURE, TI_BC_SHELL_MIDDLE, 1) &&
                    get_bc_temperature(TI_BC_TEMPERATURE, 1, TI_BC_SHELL_GRADIENT) == 5;
         }},
        {"create heatflux on sideset 1 shell top 7 bottom 8", "bc_entity_modified heatflux 1",
         [&] {
             return heatflux_is_on_shell_area(TI_BC_SHELL_BOTTOM, 1) &&
                    get_heatflux_on_area(TI_BC_SHELL_TOP, 1) == 7 &&
                    get_heatflux_on_area(TI_BC_SHELL_BOTTOM, 1) == 8;
         }},
        {"create convection on surface 1 coefficient 25 temperature 300",
         "bc_entity_modified convection 1",
         [&] {
             return convection_is_on_solid(1) &&
                    get_convection_coefficient(1, TI_BC_SOLID_CONVECTION_COEFFICIENT) == 25 &&
                    get_bc_temperature(TI_BC_CONVECTION, 1, TI_BC_SOLID_CONVECTION_TEMPERATURE) ==
                        300 &&
                    !convection_is_on_shell_area(1, TI_BC_SHELL_TOP);
         }},
        {"create contact pair sideset 1 sideset 1 friction 0.3 tolerance 0.01 tied",
         "bc_entity_modified contact pair 1",
         [&] {
             return near(get_contact_pair_friction_value(1), 0.3) &&
                    get_contact_pair_tied_state(1) && get_contact_pair_exterior_state(1) &&
                    !get_contact_pair_general_state(1);
         }},
        {"create constraint rigid reference vertex 1 dependent surface 2 3",
         "constraint_modified 1",
         [&] {
             return get_constraint_type(1) == "rigid" &&
                    get_constraint_reference_point(1) == "vertex 1" &&
                    get_constraint_dependent_entity_point(1) == "surface 2 3";
         }},
        {"create cfd wall on sideset 1 name 'skin'", "bc_entity_modified wall 1",
         [&] {
             const auto all = get_all_cfd_bcs();
             return get_cfd_type(1) == TI_BC_CFD_WALL && all.size() == 1 && all[0].type == "wall" &&
                    all[0].name == "skin";
         }},
    };
    one_hex();
    for (const Family& f : families) {
        SCOPED_TRACE(f.line);
        const std::string before = dump();
        recorder.events.clear();
        run(f.line);
        EXPECT_TRUE(f.holds());
        EXPECT_EQ(recorder.events, std::vector<std::string>{f.event + std::string(" created")});
        recorder.events.clear();
        run("undo");
        EXPECT_FALSE(f.holds());
        EXPECT_EQ(dump(), before);
        EXPECT_EQ(recorder.events, std::vector<std::string>{f.event + std::string(" deleted")});
    }
    // modify keeps what it does not name, and the monitors' existence test finds the condition.
    run("create force on vertex 1 magnitude 1 direction 1 0 0");
    run("modify force 1 magnitude 20");
    EXPECT_EQ(get_force_magnitude(1), 20);
    EXPECT_EQ(get_force_direction_vector(1), (std::array<double, 3>{1, 0, 0}));
    EXPECT_EQ(recorder.count("bc_entity_modified force 1 modified"), 1u);
    EXPECT_EQ(parse_tarvo_list("force", "1"), std::vector<int>{1});
    run("delete force 1");
    EXPECT_TRUE(get_bc_id_list(TI_BC_FORCE).empty());
}

TEST_F(BcTest, BadInputIsRefusedAndChangesNothing) {
    one_hex();
    run("create material 'steel' property 'DENSITY' value 7.8e-9");
    run("create force on nodeset 1 magnitude 1 direction 0 0 1");
    expect_refused(
        {
            {"create pressure on curve 1 magnitude 1", "cannot lie on a curve"},
            {"create force on vertex 1 magnitude 1 direction 0 0 0", "direction that is not zero"},
            {"create pressure on sideset 9 magnitude 1", "'sideset 9' names nothing that exists"},
            {"create force id 1 on vertex 1 magnitude 1 direction 1 0 0", "exists already"},
            {"modify force 7 magnitude 2", "force 7 does not exist"},
            {"modify pressure 1 magnitude 2", "pressure 1 does not exist"},
            {"create material 'lead' property 'DENSITY' value -1", "must be positive"},
            {"create material 'x' property 'POISSON_RATIO' value 0.5", "between -1 and 0.5"},
            {"create material 'x' property 'DENSITY' vector 1 2", "is a scalar"},
            {"create material 'x' property 'STRESS_STRAIN' table 0 0, 1", "as many numbers"},
            {"create material 'STEEL'", "taken by material 1"},
            {"modify material 'steel' property 'ELASTIC_MODULUS' value 0", "must be positive"},
            {"delete material 'iron'", "'iron' does not exist"},
            {"material 'steel' block 4", "block 4 does not exist"},
            {"block 4 material 'steel'", "block 4 does not exist"},
            {"block 1 material 'iron'", "'iron' does not exist"},
            {"create boundary layer uniform height 0.1 growth 1.2 rows 3 add surface 1 volume 2",
             "not a surface of volume 2"},
            {"create constraint rigid reference vertex 99 dependent surface 1",
             "'vertex 99' names"},
            {"create displacement on surface 1 combine add", "needs at least one dof"},
        },
        dump);
}

TEST_F(BcTest, MaterialsThroughTheInterface) {
    using MI = TI::MaterialInterface;
    run("create material 'steel' property 'ELASTIC_MODULUS' value 200e3 property 'DENSITY' value "
        "7.8e-9 property 'ORIENTATION' vector 1 0 0 property 'STRESS_STRAIN' table 0 0, 0.01 250");
    run("create media 'air' type porous");
    EXPECT_EQ(recorder.count("material_modified 2 created"), 1u);
    EXPECT_EQ(recorder.count("media_modified 2 created"), 1u);
    EXPECT_EQ(TI::get_material_property(TI::TI_MATERIAL_ELASTIC_MODULUS, 1), 200e3);
    EXPECT_EQ(TI::get_material_name_list(), std::vector<std::string>{"steel"});
    EXPECT_EQ(TI::get_media_name_list(), std::vector<std::string>{"air"});
    EXPECT_EQ(TI::get_media_property(2), TI::TI_MEDIA_POROUS);

    auto* base = TI::get_interface("Material");
    auto* mi = dynamic_cast<MI*>(base);
    ASSERT_NE(mi, nullptr);
    std::vector<MI::Material> all;
    mi->list_materials(all);
    ASSERT_EQ(all.size(), 2u);
    MI::Material steel = mi->find_material(1);
    EXPECT_EQ(mi->material_name(steel), "steel");
    EXPECT_FALSE(mi->is_cfd(steel));
    EXPECT_TRUE(mi->is_cfd(all[1]));
    EXPECT_EQ(mi->group_name(mi->material_group(all[1])), "porous");
    // The structural group lists the built-in properties and the ones this material added.
    std::vector<MI::Property> props;
    mi->group_properties(mi->material_group(steel), props);
    std::vector<std::string> names;
    for (auto p : props)
        names.push_back(mi->property_name(p));
    EXPECT_EQ(names.front(), "ELASTIC_MODULUS");
    EXPECT_EQ(names.back(), "ORIENTATION");
    std::vector<double> vec;
    EXPECT_TRUE(mi->get_vector_value(steel, mi->property_by_name("ORIENTATION"), vec));
    EXPECT_EQ(vec, (std::vector<double>{1, 0, 0}));
    std::vector<std::vector<double>> table;
    EXPECT_TRUE(mi->get_tabular_value(steel, mi->property_by_name("STRESS_STRAIN"), table));
    EXPECT_EQ(table, (std::vector<std::vector<double>>{{0, 0}, {0.01, 250}}));
    double value = -1;
    EXPECT_FALSE(mi->get_scalar_value(steel, mi->property_by_name("POISSON_RATIO"), value));
    EXPECT_EQ(value, -1);
    EXPECT_EQ(mi->property_kind(mi->property_by_name("STRESS_STRAIN")), MI::TABLE);

    // Deleted: the handle is refused, not followed; undo brings the material and the handle back.
    run("delete material 'steel'");
    EXPECT_EQ(mi->find_material(1), nullptr);
    EXPECT_EQ(mi->material_id(steel), 0);
    EXPECT_EQ(mi->material_name(steel), "");
    EXPECT_FALSE(mi->get_vector_value(steel, mi->property_by_name("ORIENTATION"), vec));
    EXPECT_EQ(recorder.count("material_modified 1 deleted"), 1u);
    run("undo");
    EXPECT_EQ(mi->material_id(steel), 1);
    // A new material of the same name is another material: the old handle stays refused.
    run("delete material 1");
    run("create material 'steel'");
    EXPECT_EQ(mi->material_id(steel), 0);
    TI::release_interface(base);

    // A medium's type read as a number, also one that names no kind.
    run("modify media 'air' property 'CFD_MEDIA_TYPE' value 3");
    EXPECT_EQ(TI::get_media_property(2), 3);
    EXPECT_EQ(TI::get_interface("Meshing"), nullptr);
}

TEST_F(BcTest, TimeStepOfOneHexMatchesTheHandComputation) {
    one_hex();
    run("create material 'steel' property 'ELASTIC_MODULUS' value 200e9 property "
        "'POISSON_RATIO' value 0.3 property 'DENSITY' value 7850");
    // Without a material on the block there is nothing to estimate with.
    EXPECT_EQ(TI::calculate_timestep_estimate("block", {1}), 0.0);
    run("material 'steel' block 1");
    // A 2-unit cube: volume 8, largest face 4, so L = 2; c = sqrt(E(1-nu)/(rho(1+nu)(1-2nu))).
    const double c = std::sqrt(200e9 * 0.7 / (7850 * 1.3 * 0.4));
    EXPECT_NEAR(TI::calculate_timestep_estimate("block", {1}), 2 / c, 1e-15);
    const int hex = TI::parse_tarvo_list("hex", "all").front();
    EXPECT_NEAR(TI::calculate_timestep_estimate("hex", {hex}), 2 / c, 1e-15);
    // Given values: nu = 0 makes c = sqrt(E / rho).
    EXPECT_NEAR(TI::calculate_timestep_estimate_with_props("hex", {hex}, 1, 4, 0), 1.0, 1e-12);
    EXPECT_EQ(TI::calculate_timestep_estimate_with_props("hex", {hex}, 1, 0, 0), 0.0);
}

TEST_F(BcTest, BoundaryLayersAndCoordinateSystems) {
    run("create box 1");
    EXPECT_EQ(TI::get_next_boundary_layer_id(), 1);
    run("create boundary layer 3 aspect last height 0.01 rows 4 aspect 2 add surface 1 volume 1 "
        "continuity on");
    EXPECT_EQ(recorder.count("boundary_layer_created 3"), 1u);
    EXPECT_EQ(TI::get_boundary_layer_algorithm(3), "aspect last");
    double h = 0, aspect = 0, g = 0;
    int rows = 0;
    EXPECT_TRUE(TI::get_boundary_layer_aspect_last_parameters(3, h, rows, aspect));
    EXPECT_EQ(std::tie(h, rows, aspect), std::make_tuple(0.01, 4, 2.0));
    EXPECT_FALSE(TI::get_boundary_layer_uniform_parameters(3, h, g, rows));
    std::vector<int> surfaces, volumes;
    EXPECT_TRUE(TI::get_boundary_layer_surface_volume_pairs(3, surfaces, volumes));
    EXPECT_EQ(surfaces, std::vector<int>{1});
    EXPECT_TRUE(TI::get_boundary_layer_continuity(3));
    EXPECT_FALSE(TI::is_boundary_layer_id_available(3));
    EXPECT_EQ(TI::get_next_boundary_layer_id(), 4);
    run("boundary layer 3 uniform height 0.02 growth 1.3 rows 5");
    EXPECT_TRUE(TI::get_boundary_layer_uniform_parameters(3, h, g, rows));
    EXPECT_EQ(std::tie(h, g, rows), std::make_tuple(0.02, 1.3, 5));
    run("delete boundary layer 3");
    EXPECT_EQ(recorder.count("boundary_layer_deleted 3"), 1u);
    run("undo");
    EXPECT_EQ(TI::get_boundary_layer_id_list(), std::vector<int>{3});

    run("create coordinate system cylindrical origin 1 2 3 zaxis 0 1 0");
    EXPECT_EQ(TI::get_coordinate_systems_id_list(), std::vector<int>{1});
    rejected("create coordinate system zaxis 1 0 0 xzplane 2 0 0");
    EXPECT_EQ(TI::get_dbl_sculpt_default("cell_size"), 0.0);
    EXPECT_EQ(TI::get_int_sculpt_default("NUM_PROCS"), 1);
    EXPECT_EQ(TI::get_string_sculpt_default("smooth"), "fixed_bbox");
}

TEST_F(BcTest, NativeFileKeepsTheSetUp) {
    // Without a mesh: the file's other sections are not what this test is about.
    for (const char* line :
         {"create box 2", "block 1 add volume 1", "nodeset 1 add surface 1",
          "sideset 1 add surface 1",
          "create force on nodeset 1 magnitude 10 direction 0 0 -1 name 'load'",
          "create convection on surface 1 shell top coefficient 5 temperature 20",
          "create displacement on surface 2 dof 1 2 value 0.25 combine largest",
          "create contact pair sideset 1 sideset 1 lower tolerance 0.2 interior",
          "create constraint distributing reference vertex 2 dependent surface 3",
          "create cfd velocityinlet on sideset 1",
          "create material 'steel' property 'DENSITY' value 7850 property 'ELASTIC_MODULUS' "
          "value 2e11 property 'AXES' vector 0 0 1",
          "create media 'water'", "material 'steel' block 1",
          "create boundary layer 2 aspect first 0.5 growth 1.1 rows 6 add curve 1 surface 1",
          "boundary layer vertex 1 surface 1 type 'corner'",
          "create coordinate system spherical origin 1 1 1", "delete force 1",
          "create force on vertex 3 magnitude 4 direction 1 1 0"})
        run(line);
    // Everything the queries and the interface say, before and after.
    const auto full = [] {
        std::string out = dump();
        out += std::to_string(TI::get_force_magnitude(2)) + TI::get_bc_name(TI::TI_BC_FORCE, 2) +
               std::to_string(
                   TI::get_convection_coefficient(1, TI::TI_BC_SHELL_TOP_CONVECTION_COEFFICIENT)) +
               TI::get_displacement_combine_type(1) +
               std::to_string(TI::get_displacement_dof_values(1)[1]) +
               std::to_string(TI::get_contact_pair_tol_lower_value(1)) +
               std::to_string(TI::get_contact_pair_exterior_state(1)) +
               TI::get_constraint_dependent_entity_point(1) + std::to_string(TI::get_cfd_type(1)) +
               std::to_string(TI::get_media_property(2)) + TI::get_boundary_layer_algorithm(2);
        std::vector<int> a, b;
        std::vector<std::string> types;
        TI::get_boundary_layer_vertex_intersection_types(a, b, types);
        out += types.empty() ? "" : types[0];
        for (int id : TI::get_coordinate_systems_id_list())
            out += " cs" + std::to_string(id);
        auto* mi = dynamic_cast<TI::MaterialInterface*>(TI::get_interface("Material"));
        std::vector<double> axes;
        mi->get_vector_value(mi->find_material(1), mi->property_by_name("AXES"), axes);
        out += " axes" + std::to_string(axes.size());
        TI::release_interface(mi);
        return out;
    };
    const std::string before = full();
    run("save as 'setup.tvo'");
    run("reset");
    EXPECT_TRUE(TI::get_material_name_list().empty());
    recorder.events.clear();
    run("open 'setup.tvo'");
    EXPECT_EQ(full(), before);
    EXPECT_EQ(recorder.count("bc_entity_modified force 2 created"), 1u);
    // Numbering goes on where the saved model stopped: force 1 was deleted before the save.
    run("create force on vertex 1 magnitude 1 direction 1 0 0");
    EXPECT_EQ(TI::get_bc_id_list(TI::TI_BC_FORCE), (std::vector<int>{2, 3}));
}

TEST_F(BcTest, CompareGeometryAndMesh) {
    one_hex();
    run("create box 1");
    run("move volume 2 by 10 0 0");
    int unmatched_volumes = -1, unmatched_elements = -1, curves = -1;
    std::vector<int> full, partial;
    // The hex fills volume 1; volume 2 has no mesh, so its curves are shown.
    TI::compare_geometry_and_mesh({1, 2}, {1}, {}, {}, 1e-6, unmatched_volumes, unmatched_elements,
                                  full, partial, curves);
    EXPECT_EQ(std::tie(unmatched_volumes, unmatched_elements), std::make_tuple(1, 0));
    ASSERT_EQ(full.size(), 1u);
    EXPECT_TRUE(partial.empty());
    EXPECT_EQ(TI::get_group_volumes(full[0]), std::vector<int>{1});
    EXPECT_EQ(TI::get_group_hexes(full[0]).size(), 1u);
    EXPECT_EQ(TI::get_group_curves(curves).size(), 12u);
    // Against volume 2 alone the hex lies nowhere.
    TI::compare_geometry_and_mesh({2}, {}, TI::get_group_hexes(full[0]), {}, 1e-6,
                                  unmatched_volumes, unmatched_elements, full, partial, curves);
    EXPECT_EQ(std::tie(unmatched_volumes, unmatched_elements), std::make_tuple(1, 1));
    EXPECT_TRUE(full.empty());
}

TEST_F(BcTest, ConditionsFollowTheGeometry) {
    run("create box 1");
    run("create box 1");
    run("move volume 2 by 5 0 0");
    run("create pressure on surface 1 7 magnitude 1");
    const auto surfaces = [] { return TI::parse_tarvo_list("surface", "in pressure 1"); };
    run("delete volume 1");
    EXPECT_EQ(surfaces(), std::vector<int>{7});
    EXPECT_EQ(recorder.count("bc_entity_modified pressure 1 modified"), 1u);
    run("compress ids");
    EXPECT_EQ(surfaces(), std::vector<int>{1});
    run("undo");
    EXPECT_EQ(surfaces(), std::vector<int>{7});
}

} // namespace

// Pressures reach the side set's distribution factors and forces the node set's, on every node;
// materials and conditions are named in the info records; a set two pressures share gets no
// factors rather than one of them.
TEST_F(BcTest, ExodusCarriesPressuresForcesAndMaterials) {
    one_hex();
    run("sideset 2 add surface 2");
    run("create pressure on sideset 1 magnitude 2.5");
    run("create pressure on sideset 2 magnitude 1");
    run("create pressure on sideset 2 magnitude 3");
    run("create force on nodeset 1 magnitude 40 direction 0 0 -1");
    run("create material 'steel' property 'ELASTIC_MODULUS' value 2e11 property 'DENSITY' value "
        "7850");
    run("block 1 material 'steel'");
    run("export mesh 'setup.e'");

    int cpu = 8, io = 0;
    float version = 0;
    const int exo = ex_open("setup.e", EX_READ, &cpu, &io, &version);
    ASSERT_GE(exo, 0);
    const auto factors = [&](ex_entity_type type, int id) {
        int64_t entries = 0, count = 0;
        EXPECT_EQ(ex_get_set_param(exo, type, id, &entries, &count), 0);
        std::vector<double> values(static_cast<size_t>(count));
        if (count > 0) {
            EXPECT_EQ(ex_get_set_dist_fact(exo, type, id, values.data()), 0);
        }
        return values;
    };
    EXPECT_EQ(factors(EX_SIDE_SET, 1), std::vector<double>(4, 2.5)); // one quad side
    EXPECT_TRUE(factors(EX_SIDE_SET, 2).empty());
    EXPECT_EQ(factors(EX_NODE_SET, 1), std::vector<double>(4, 40.0));

    const int count = static_cast<int>(ex_inquire_int(exo, EX_INQ_INFO));
    std::vector<std::vector<char>> store(static_cast<size_t>(count),
                                         std::vector<char>(MAX_LINE_LENGTH + 1, 0));
    std::vector<char*> lines;
    for (auto& line : store)
        lines.push_back(line.data());
    ASSERT_EQ(ex_get_info(exo, lines.data()), 0);
    ex_close(exo);
    std::string all;
    for (const char* line : lines)
        all += std::string(line) + "\n";
    EXPECT_NE(all.find("block 1 material 'steel' E 2e+11 nu - rho 7850"), std::string::npos) << all;
    EXPECT_NE(all.find("pressure 1 on sideset 1: pressure 2.5"), std::string::npos) << all;
    EXPECT_NE(all.find("force 1 on nodeset 1: force 40 along 0 0 -1"), std::string::npos) << all;
    EXPECT_NE(all.find("sideset 2: several pressures"), std::string::npos) << all;
}
