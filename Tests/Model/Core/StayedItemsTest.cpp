#include "Model/Core/StayedItems.h"

#include "Tests/Support/Usual.h"

TEST(StayedItems, AreListedOnceAndWithinBounds) {
    const std::string heading = "\nItems that stayed\n#################\n\n";
    const auto because = [](int reason) { return std::error_code(reason, std::system_category()); };
    StayedItems items;
    EXPECT_EQ(items.sentence(5), std::nullopt);
    EXPECT_EQ(items.section(), "");
    items.add("/a", because(EACCES), StayedItem::counted);
    items.add("/a", because(EACCES), StayedItem::uncounted);
    items.add("/b/c", because(EROFS), StayedItem::part);
    items.add("/b", because(EROFS), StayedItem::uncounted);
    items.add("/gone", because(ENOENT), StayedItem::counted);
    EXPECT_EQ(items.sentence(5), "2 of 6 items stayed, most often for this reason: Permission denied.");
    EXPECT_EQ(items.section(), heading + "Permission denied: /a\n\nRead-only file system: /b/c\n\n"
                                         "Read-only file system: /b\n\n");
    for (size_t number = 0; number < StayedItems::mostPaths; ++number) {
        items.add("/" + std::to_string(number), because(EROFS), StayedItem::counted);
    }
    EXPECT_THAT(items.section(), testing::EndsWith("\n\n... and 3 more\n\n"));
    items.clear();
    items.add("/" + std::string(StayedItems::mostPathBytes, 'x'), because(EROFS), StayedItem::counted);
    EXPECT_EQ(items.section(), heading + "... and 1 more\n\n");
    EXPECT_EQ(items.sentence(1), "1 of 1 items stayed: Read-only file system.");
}
