// One kernel session for the whole binary, when the kernel can start one; tests that need a real
// model skip themselves otherwise.
#include "MethodTestSupport.h"

#include "tarvo/TarvoInterface.h"

namespace {
bool started = false;

class KernelSession : public ::testing::Environment {
public:
    void SetUp() override {
        started = TarvoInterface::init({"methods_tests", "-driver", "offscreen"});
    }
    void TearDown() override {
        if (started)
            TarvoInterface::destroy();
        started = false;
    }
};
} // namespace

bool kernel_started() {
    return started;
}

int main(int argc, char** argv) {
    ::testing::InitGoogleTest(&argc, argv);
    ::testing::AddGlobalTestEnvironment(new KernelSession);
    return RUN_ALL_TESTS();
}
