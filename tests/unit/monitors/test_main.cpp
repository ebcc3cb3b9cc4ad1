#include "KernelSession.h"

#include <gtest/gtest.h>

int main(int argc, char** argv) {
    ::testing::InitGoogleTest(&argc, argv);
    // Owned by GoogleTest; only started when tests run, not when they are listed.
    ::testing::AddGlobalTestEnvironment(new KernelSession);
    return RUN_ALL_TESTS();
}
