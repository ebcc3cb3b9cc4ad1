#include "tarvo_util/TarvoFeatureUsageTracking.h"

TarvoFeatureUsageTracking* TarvoFeatureUsageTracking::instance() {
    static TarvoFeatureUsageTracking tracking;
    return &tracking;
}

void TarvoFeatureUsageTracking::add_product(const TarvoString& product, const TarvoString& version,
                                            const TarvoString& release_flag) {
    std::lock_guard lock(mutex);
    product_list.push_back({product.str(), version.str(), release_flag.str()});
}

void TarvoFeatureUsageTracking::write_feature_usage(const TarvoString& product,
                                                    const TarvoString& feature, bool success) {
    std::lock_guard lock(mutex);
    feature_list.push_back({product.str(), feature.str(), success});
}

std::vector<TarvoFeatureUsageTracking::Product> TarvoFeatureUsageTracking::products() const {
    std::lock_guard lock(mutex);
    return product_list;
}

std::vector<TarvoFeatureUsageTracking::Feature> TarvoFeatureUsageTracking::features() const {
    std::lock_guard lock(mutex);
    return feature_list;
}
