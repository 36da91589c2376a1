#include "Platform/Files/FileHandle.h"

#include "Tests/Support/TemporaryFolder.h"

using namespace platform;

namespace {

class FileHandleTest : public testing::Test {
  protected:
    [[nodiscard]] FileHandle open(int flags = O_RDWR | O_CREAT) const {
        FileHandle file(Descriptor(::open(temporary.path("file").c_str(), flags, 0600)));
        file.setWriting(FileWriting::gathered);
        return file;
    }
    [[nodiscard]] std::string content() const { return temporary.content("file"); }

    tests::TemporaryFolder temporary;
};

} // namespace

TEST_F(FileHandleTest, WritesWhatItGatheredBeforeAnythingElseHappensToTheFile) {
    auto file = open();
    file.setWriting(FileWriting::direct);
    ASSERT_TRUE(file.write("0", "\n\n"));
    EXPECT_EQ(content(), "0\n\n");
    file.setWriting(FileWriting::gathered);
    std::string expected = "0\n\n";
    const std::pair<const char*, std::function<void()>> rows[] = {
        {"seek", [&] { std::ignore = file.seekToEnd(); }},
        {"synchronize", [&] { std::ignore = file.synchronize(); }},
        {"read", [&] { EXPECT_EQ(file.readToEnd(100), ""); }},
        {"write directly", [&] { file.setWriting(FileWriting::direct); }}};
    for (const auto& [name, act] : rows) {
        ASSERT_TRUE(file.write(name));
        EXPECT_EQ(content(), expected);
        act();
        EXPECT_EQ(content(), expected += name);
    }
}

TEST_F(FileHandleTest, GathersNoMoreThanItsLimitKeepsTheOrderAndWritesTheRestAtItsEnd) {
    std::string expected;
    {
        auto first = open();
        for (size_t number = 0; number < 20000; ++number) {
            const std::string text = std::to_string(number);
            ASSERT_TRUE(first.write(text, "\n"));
            expected += text + "\n";
        }
        // What was gathered moves along.
        FileHandle second(std::move(first));
        const std::string written = content();
        EXPECT_TRUE(expected.starts_with(written));
        EXPECT_LT(expected.size() - written.size(), FileHandle::gatheredBytes);
    }
    EXPECT_EQ(content(), expected);
}

TEST_F(FileHandleTest, TellsOfAFailureWhenTheGatheredBytesAreWrittenAndDoesNotKeepThem) {
    temporary.make("file: x");
    auto file = open(O_RDONLY);
    ASSERT_TRUE(file.write("never"));
    EXPECT_FALSE(file.flush());
    EXPECT_TRUE(file.flush());
}
