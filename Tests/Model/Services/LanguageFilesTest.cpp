#include "Platform/Device/Bundle.h"
#include "Platform/Device/DeviceNames.h"
#include "Tests/Support/Usual.h"

#include <regex>

namespace {

using platform::Bundle;
using Words = std::vector<std::string>;

TEST(LanguageFiles, StandBesideTheProgramsDescription) {
    EXPECT_EQ(Bundle().bundleIdentifier(), devicename::programIdentifier);
    EXPECT_THAT(Bundle().infoString("CFBundleShortVersionString"),
                testing::Optional(testing::MatchesRegex("[0-9.]+")));
    EXPECT_EQ(Bundle("/nowhere").bundleIdentifier(), "");
    EXPECT_FALSE(Bundle().contentsOfResource("../ozvarine/Info.plist"));
}

// The words in a text that code replaces, in the order in which it does so.
Words placeholders(const std::string& text) {
    static const std::regex placeholder("%[0-9]*\\$?[@a-z]+|%|<countdown>");
    return {std::sregex_token_iterator(text.begin(), text.end(), placeholder), {}};
}

TEST(LanguageFiles, HoldTheSameKeysAndPlaceholders) {
    const Bundle bundle;
    const auto table = [&](const std::string& name) {
        const auto parsed = platform::parseStringsFile(bundle.contentsOfResource(name).value());
        EXPECT_TRUE(parsed) << name << " line " << parsed.error().line << ": " << parsed.error().reason;
        return parsed.value_or(platform::StringTable{});
    };
    const auto english = table("English.strings");
    EXPECT_EQ(placeholders(english.at("IOSVERNOTSUPPORTED")), (Words{"%@", "%@"}));
    EXPECT_EQ(placeholders(english.at("UPDATEFOUNDMSG")), Words{"%@"});
    EXPECT_EQ(placeholders(english.at("RUNCOUNTDOWNMSG")), Words{"<countdown>"});
    for (const auto& name : bundle.resourceNames()) {
        if (!name.ends_with(".strings")) {
            continue;
        }
        auto texts = table(name);
        for (const auto& [key, text] : english) {
            EXPECT_FALSE(texts[key].empty()) << name << " lacks " << key;
            EXPECT_EQ(placeholders(texts[key]), placeholders(text)) << name << ", " << key;
        }
        EXPECT_EQ(texts.size(), english.size()) << name << " has keys that nothing asks for";
    }
}

} // namespace
