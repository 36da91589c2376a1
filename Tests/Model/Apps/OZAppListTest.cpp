#include "Model/Apps/OZAppList.h"

#include "Tests/Scenarios/Runner/World.h"

TEST(OZAppListTest, warmingIconsOutlivesTheList) {
    scenarios::World world{{}};
    for (int index = 0; index < 200; ++index) {
        world.give(fmt::format("app system system{} Main", index));
    }
    auto list = std::make_unique<OZAppList>(world.device());
    const auto last = list->appWithIdentifier("system199");
    list->checkSystemAppIconValidityInBackground();
    list.reset();
    auto fileManager = world.device().fileManager();
    EXPECT_TRUE(last->hasValidIcon(fileManager));
    world.reopen();
}
