#pragma once
// The wrappers whose parameters follow no generic rule. Members: inputs, then presence flags; all
// start zero, false or empty, and process_params writes them. Built per request on the worker
// thread and thrown away.

#include "json_rpc/RPCMethodWrapper.h"

#include <string>
#include <vector>

namespace tarvo::methods {

// get_curve_count: `target_volume_ids` (int list) is optional. Present, even empty, the count is
// taken in those volumes (kernel get_curve_count_in_volumes); absent, in the whole model.
struct wrap_get_curve_count : RPCMethodWrapper {
    std::vector<int> target_volume_ids;
    bool has_target_volume_ids = false;

    bool process_params(const QJsonValue& params) override;
    QJsonValue invoke() override;
};

// calculate_timestep_estimate: `entity_type` and `entity_ids` required; `density`,
// `youngs_modulus`, `poissons_ratio` optional numbers, each checked only when present. With a
// density the kernel gets the material values (0.0 for a missing one,
// calculate_timestep_estimate_with_props); without, the blocks' materials decide and a sent
// modulus or ratio is ignored.
struct wrap_calculate_timestep_estimate : RPCMethodWrapper {
    std::string entity_type;
    std::vector<int> entity_ids;
    double density = 0.0;
    double youngs_modulus = 0.0;
    double poissons_ratio = 0.0;
    bool has_density = false;
    bool has_youngs_modulus = false;
    bool has_poissons_ratio = false;

    bool process_params(const QJsonValue& params) override;
    QJsonValue invoke() override;
};

// set_filter_types: `filter_list` (string list) required; `filter_count` is read leniently: a
// missing or non-integral value is 0, never a refusal. The kernel gets the count first and is
// not told whether it matches the list.
struct wrap_set_filter_types : RPCMethodWrapper {
    std::vector<std::string> filter_list;
    int filter_count = 0;

    bool process_params(const QJsonValue& params) override;
    QJsonValue invoke() override;
};

} // namespace tarvo::methods
