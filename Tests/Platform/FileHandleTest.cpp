#include "Platform/Files/FileHandle.h"

#include "Tests/Support/TemporaryFolder.h"

#include <fcntl.h>
#include <gtest/gtest.h>

using namespace platform;

namespace tests {

namespace {

class FileHandleTest : public testing::Test {
  protected:
    [[nodiscard]] FileHandle open(int flags = O_RDWR | O_CREAT) const {
        return FileHandle(Descriptor(::open(temporary.path("file").c_str(), flags, 0600)));
    }
    [[nodiscard]] std::string content() const { return temporary.content("file"); }

    TemporaryFolder temporary;
};

} // namespace

TEST_F(FileHandleTest, WritesDirectlyUnlessToldOtherwise) {
    auto file = open();
    ASSERT_TRUE(file.write("one", "\n\n"));
    EXPECT_EQ(content(), "one\n\n");
    file.setWriting(FileWriting::gathered);
    ASSERT_TRUE(file.write("two"));
    EXPECT_EQ(content(), "one\n\n");
    file.setWriting(FileWriting::direct);
    EXPECT_EQ(content(), "one\n\ntwo");
}

TEST_F(FileHandleTest, WritesWhatItGatheredBeforeAnythingElseHappensToTheFile) {
    auto file = open();
    file.setWriting(FileWriting::gathered);
    ASSERT_TRUE(file.write("a"));
    ASSERT_TRUE(file.seekToEnd());
    EXPECT_EQ(content(), "a");
    ASSERT_TRUE(file.write("b"));
    ASSERT_TRUE(file.synchronize());
    EXPECT_EQ(content(), "ab");
    ASSERT_TRUE(file.write("c"));
    EXPECT_EQ(file.readToEnd(100), "");
    EXPECT_EQ(content(), "abc");
}

TEST_F(FileHandleTest, GathersNoMoreThanItsLimitAndKeepsTheOrder) {
    auto file = open();
    file.setWriting(FileWriting::gathered);
    std::string expected;
    for (size_t number = 0; number < 20000; ++number) {
        const std::string text = std::to_string(number);
        ASSERT_TRUE(file.write(text, "\n"));
        expected += text + "\n";
    }
    const std::string written = content();
    EXPECT_TRUE(expected.starts_with(written));
    EXPECT_LT(expected.size() - written.size(), FileHandle::gatheredBytes);
    ASSERT_TRUE(file.flush());
    EXPECT_EQ(content(), expected);
}

TEST_F(FileHandleTest, TakesWhatItGatheredAlongWhenMovedAndWritesItOnceAtItsEnd) {
    {
        auto first = open();
        first.setWriting(FileWriting::gathered);
        ASSERT_TRUE(first.write("moved "));
        FileHandle second(std::move(first));
        ASSERT_TRUE(second.write("along"));
        EXPECT_EQ(content(), "");
    }
    EXPECT_EQ(content(), "moved along");
}

TEST_F(FileHandleTest, TellsOfAFailureWhenTheGatheredBytesAreWrittenAndDoesNotKeepThem) {
    std::ignore = open();
    auto file = open(O_RDONLY);
    file.setWriting(FileWriting::gathered);
    ASSERT_TRUE(file.write("never"));
    EXPECT_FALSE(file.flush());
    EXPECT_TRUE(file.flush());
}

} // namespace tests
