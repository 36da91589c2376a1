#include "Categories/FileURLs.h"

#include <gtest/gtest.h>

TEST(URLPath, NamesFilesAndReadsThemBack) {
    EXPECT_EQ(fileURLWithPath("/a b/%#?\xC3\xA4.png"), "file:///a%20b/%25%23%3F%C3%A4.png");
    EXPECT_EQ(iconURLWithPath("/a/b@2x.png"), "OZIcon:///a/b@2x.png");
    EXPECT_EQ(iconURLWithPath("a.png"), std::nullopt);
    for (const char* path : {"/a b/%#?\xC3\xA4.png", "/%41", "/a:b//c", "/\xFF\n"}) {
        EXPECT_EQ(pathOfURL(fileURLWithPath(path)), path);
        EXPECT_EQ(pathOfURL(iconURLWithPath(path).value()), path);
    }
}

TEST(URLPath, IsFoundInWhateverAPackageCallsAURL) {
    const struct {
        const char* url;
        std::optional<std::string> path;
    } rows[] = {
        {"file:///Library/Icon.png", "/Library/Icon.png"},
        {"file://localhost/Library/Icon.png", "/Library/Icon.png"},
        {"http://example.org/a.png?size=2#top", "/a.png"},
        {"http://example.org", std::nullopt},
        {"/Library/Icon.png", "/Library/Icon.png"},
        {"Icon.png", "Icon.png"},
        {"/1:2/a.png", "/1:2/a.png"},
        {":a", ":a"},
        {"file:///100%", "/100%"},
        {"file:///a%2", "/a%2"},
        {"file:///a%+1b", "/a%+1b"},
        {"", std::nullopt},
    };
    for (const auto& row : rows) {
        EXPECT_EQ(pathOfURL(row.url), row.path) << row.url;
    }
}
