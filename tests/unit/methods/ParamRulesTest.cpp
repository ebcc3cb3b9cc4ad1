// Parameter rules, through real rows of the table: each type word, optional parameters, and the
// hand-written readers.
#include "MethodTestSupport.h"

#include "tarvo/TarvoInterface.h"

#include <utility>

// The conversion rules themselves belong to json_rpc, and that params are an object whose unknown
// members are ignored and whose every name is required is checked on the wire by
// tests/e2e/test_routing.py; these cases show that each row declares the type its kernel function
// takes: each refusal is one that a wrongly typed row would accept.
TEST(ParamRules, RowsDeclareTheTypesOfTheirFunctions) {
    struct Case {
        const char* method;
        const char* params;
        bool accepted;
    };
    const Case cases[] = {
        // int and string
        {"get_mesh_intervals", R"({"geometry_type": "curve", "entity_id": 3})", true},
        {"get_mesh_intervals", R"({"geometry_type": "curve", "entity_id": 3.5})", false},
        {"get_mesh_intervals", R"({"geometry_type": 1, "entity_id": 3})", false},
        // double
        {"set_overlap_max_gap", R"({"maximum_gap": 0.5})", true},
        {"set_overlap_max_gap", R"({"maximum_gap": "0.5"})", false},
        // bool, required
        {"set_pick_type", R"({"pick_type": "volume", "silent": true})", true},
        {"set_pick_type", R"({"pick_type": "volume", "silent": 1})", false},
        {"set_pick_type", R"({"pick_type": "volume"})", false},
        // lists, an entity list as text, fixed arrays, lists of lists
        {"get_total_volume", R"({"volume_list": [1, 2.0]})", true},
        {"get_total_volume", R"({"volume_list": [1, 2.5]})", false},
        {"get_total_volume", R"({"volume_list": 1})", false},
        {"get_geometric_owner", R"({"mesh_entity_type": "hex", "mesh_entity_list": "1 to 4"})",
         true},
        {"is_point_contained",
         R"({"geometry_type": "volume", "entity_id": 1, "xyz_point": [0, 0.5, 1]})", true},
        {"is_point_contained",
         R"({"geometry_type": "volume", "entity_id": 1, "xyz_point": [0, 0.5]})", false},
        {"project_unit_square",
         R"({"pts": [[0, 0.5], [1, 0.25, 3]], "surface_id": 1, "quad_id": 2, "node00_id": 3,
             "node10_id": 4})",
         true},
        {"project_unit_square",
         R"({"pts": [0, 1], "surface_id": 1, "quad_id": 2, "node00_id": 3, "node10_id": 4})",
         false},
        // Enumerations are ints whose values are not checked.
        {"get_bc_id_list", R"({"bc_type_enum": 999})", true},
        {"get_bc_id_list", R"({"bc_type_enum": "force"})", false},
        {"get_material_property", R"({"material_property_enum": 4, "entity_id": 1})", true},
        // Parameterless rows.
        {"get_version", R"({"anything": 1})", true},
        {"get_hex_count", "null", true},
        {"reset_camera", "[]", false},
        // Optional parameters: absent or present, a present one obeys its type.
        {"estimate_merge_tolerance", R"({"target_volume_ids": [1]})", true},
        {"estimate_merge_tolerance", R"({"target_volume_ids": [1], "number_calculations_in": 2})",
         true},
        {"estimate_merge_tolerance", R"({"target_volume_ids": [1], "number_calculations_in": 2.5})",
         false},
        {"estimate_merge_tolerance", R"({"target_volume_ids": [1], "accurate_in": 1})", false},
        {"estimate_merge_tolerance", R"({"accurate_in": true})", false},
        {"get_coincident_entity_pairs",
         R"({"target_volume_ids": [], "low_value": 0, "high_value": 1})", true},
        {"get_coincident_entity_pairs",
         R"({"target_volume_ids": [], "low_value": 0, "high_value": 1, "do_vertex_curve": "no"})",
         false},
        {"get_solutions_for_forced_sweepability", R"({"volume_id": 1})", true},
        // Hand-written readers: optional members that choose the kernel function, and a lenient
        // count (see below).
        {"get_curve_count", "{}", true},
        {"get_curve_count", R"({"target_volume_ids": []})", true},
        {"get_curve_count", R"({"target_volume_ids": 4})", false},
        {"get_curve_count", "[]", false},
        {"calculate_timestep_estimate", R"({"entity_type": "hex", "entity_ids": [1]})", true},
        {"calculate_timestep_estimate",
         R"({"entity_type": "hex", "entity_ids": [], "density": 7800})", true},
        {"calculate_timestep_estimate",
         R"({"entity_type": "hex", "entity_ids": [1], "youngs_modulus": "2e11"})", false},
        {"calculate_timestep_estimate", R"({"entity_type": "hex", "density": 1})", false},
        {"set_filter_types", R"({"filter_list": ["curve"], "filter_count": "1"})", true},
        {"set_filter_types", R"({"filter_count": 1})", false},
        {"set_filter_types", R"({"filter_list": "curve"})", false},
        {"get_quality_stats",
         R"({"entity_type": "volume", "id_list": [1], "metric_name": "Shape",
             "single_threshold": 0.2, "use_low_threshold": true, "low_threshold": 0,
             "high_threshold": 1})",
         true},
    };
    for (const Case& c : cases)
        EXPECT_EQ(accepts(c.method, c.params), c.accepted) << c.method << " " << c.params;
}

// Which kernel function answers: the wrapper gives what the public function gives for the same
// model, on a model where the two functions disagree.
TEST(ParamRules, CurveCountReachesTheRightKernelFunction) {
    if (!kernel_started() || !TarvoInterface::cmd("reset") || !TarvoInterface::cmd("create box 1"))
        GTEST_SKIP() << "needs a model made by the command language";
    ASSERT_NE(TarvoInterface::get_curve_count(), TarvoInterface::get_curve_count_in_volumes({}));
    EXPECT_EQ(call("get_curve_count", "{}").toInt(), TarvoInterface::get_curve_count());
    EXPECT_EQ(call("get_curve_count", R"({"target_volume_ids": []})").toInt(),
              TarvoInterface::get_curve_count_in_volumes({}));
    EXPECT_EQ(call("get_curve_count", R"({"target_volume_ids": [1]})").toInt(),
              TarvoInterface::get_curve_count_in_volumes({1}));
    TarvoInterface::cmd("reset");
}

// A count that is no integer is read as 0: the kernel gets an empty filter.
TEST(ParamRules, FilterCountIsLenient) {
    if (!kernel_started())
        GTEST_SKIP() << "the filter is kernel state";
    for (const char* text :
         {R"({"filter_list": ["curve"]})", R"({"filter_list": ["curve"], "filter_count": 1.5})",
          R"({"filter_list": ["curve"], "filter_count": "1"})"}) {
        call("set_filter_types", R"({"filter_list": ["curve", "surface"], "filter_count": 2})");
        ASSERT_EQ(TarvoInterface::get_pick_filters(),
                  (std::vector<std::string>{"curve", "surface"}));
        call("set_filter_types", text);
        EXPECT_TRUE(TarvoInterface::get_pick_filters().empty()) << text;
    }
    TarvoInterface::set_pick_type("volume", true);
}

TEST(ParamRules, FilenameMethodsIgnoreParams) {
    // Whatever is sent, the kernel is handed empty members: the answer is what the public
    // function makes of those.
    const QJsonValue recent =
        call("add_filename_to_recent_file_list", R"({"filename": "/x/y.tvo"})");
    ASSERT_TRUE(recent.isObject());
    EXPECT_EQ(recent.toObject().keys(), QStringList{"filename"});
    std::string filename;
    TarvoInterface::add_filename_to_recent_file_list(filename);
    EXPECT_EQ(recent["filename"].toString().toStdString(), filename);
    EXPECT_FALSE(accepts("add_filename_to_recent_file_list", R"(["/x/y.tvo"])"));

    const QJsonValue completed =
        call("complete_filename", R"({"line": "open 'ab", "num_chars": 3})");
    ASSERT_TRUE(completed.isObject());
    EXPECT_EQ(completed.toObject().keys(), (QStringList{"found_quote", "line", "num_chars"}));
    std::string line;
    int num_chars = 0;
    bool found_quote = false;
    TarvoInterface::complete_filename(line, num_chars, found_quote);
    EXPECT_EQ(completed["line"].toString().toStdString(), line);
    EXPECT_EQ(completed["num_chars"].toInt(-1), num_chars);
    EXPECT_EQ(completed["found_quote"].toBool(!found_quote), found_quote);
}
