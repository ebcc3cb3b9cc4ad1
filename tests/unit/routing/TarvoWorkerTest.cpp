// The kernel's argument vector: headless graphics unless the command line chose a driver.

#include "routing/TarvoWorker.h"

#include <gtest/gtest.h>

namespace {

TEST(TarvoWorkerTest, OffscreenDriverIsAddedUnlessOneWasChosen) {
    std::vector<std::string> plain{"tarvo_server", "-nographics"};
    TarvoWorker::add_default_driver(plain);
    EXPECT_EQ(plain,
              (std::vector<std::string>{"tarvo_server", "-nographics", "-driver", "offscreen"}));

    std::vector<std::string> chosen{"tarvo_server", "-driver", "X11"};
    TarvoWorker::add_default_driver(chosen);
    EXPECT_EQ(chosen, (std::vector<std::string>{"tarvo_server", "-driver", "X11"}));

    // Only a whole element counts.
    std::vector<std::string> lookalike{"tarvo_server", "-drivers"};
    TarvoWorker::add_default_driver(lookalike);
    EXPECT_EQ(lookalike.size(), 4u);
}

} // namespace
