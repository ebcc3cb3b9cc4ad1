#pragma once
// Records which products and features a session used. Kept in memory for the life of the
// process (no file, no network): clients may read it back for diagnostics. Thread-safe.

#include "tarvo_util/TarvoString.h"

#include <mutex>
#include <string>
#include <vector>

class TarvoFeatureUsageTracking {
public:
    struct Product {
        std::string product, version, release_flag;
    };
    struct Feature {
        std::string product, feature;
        bool success;
    };

    static TarvoFeatureUsageTracking* instance();

    void add_product(const TarvoString& product, const TarvoString& version,
                     const TarvoString& release_flag);
    void write_feature_usage(const TarvoString& product, const TarvoString& feature, bool success);

    std::vector<Product> products() const;
    std::vector<Feature> features() const;

private:
    TarvoFeatureUsageTracking() = default;
    mutable std::mutex mutex;
    std::vector<Product> product_list; // guarded by mutex
    std::vector<Feature> feature_list; // guarded by mutex
};
