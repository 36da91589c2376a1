#include "Platform/Device/HostOutput.h"

#include "Tests/Support/TemporaryFolder.h"

#include <fcntl.h>
#include <gmock/gmock.h>
#include <gtest/gtest.h>
#include <unistd.h>

using namespace platform;
using testing::HasSubstr;

namespace {

class HostOutputTest : public testing::Test {
  protected:
    HostOutputTest() { folder.make("tree/var/file: content"); }
    [[nodiscard]] auto open(const std::string& path) const {
        const Descriptor tree(::open(folder.path("tree").c_str(), O_PATH | O_CLOEXEC));
        return HostOutput::open(path, tree.get());
    }

    tests::TemporaryFolder folder;
};

} // namespace

TEST_F(HostOutputTest, RefusesWhatLeadsElsewhereAndLeavesItAsItIs) {
    folder.make("whole: content\nlink -> whole\nname == whole\nout -> tree/var\ndangling -> new\nroom/");
    const auto before = folder.listing();
    const std::pair<std::string, std::vector<std::string>> rows[] = {
        {"inside of the device's tree; name a file outside", {"tree/log", "tree/var/file"}},
        {"inside of the device's tree; name a file outside", {"room/../tree/var/log", "out/log"}},
        {"it is a link", {"link", "dangling"}},
        {"it has other names", {"name"}},
        {"Is a directory", {"room", "room/"}},
        {"No such file or directory", {"missing/log"}},
        {"Not a directory", {"whole/log"}},
        {"Bad file descriptor", {"/dev/fd/4711", "/dev/fd/x"}},
    };
    for (const auto& [says, names] : rows) {
        for (const auto& name : names) {
            const std::string path = name.starts_with('/') ? name : folder.path(name);
            const auto opened = open(path);
            ASSERT_FALSE(opened) << path;
            EXPECT_THAT(opened.error(), testing::AllOf(HasSubstr(says), HasSubstr(path)));
        }
    }
    EXPECT_EQ(folder.listing(), before);
}

TEST_F(HostOutputTest, PutsTextBeforeALine) {
    folder.make("old: content that goes");
    std::string many = "1\n2\n3\n";
    while (many.size() < 200'000) {
        many += std::to_string(many.size()) + "\n";
    }
    const struct {
        std::string text;
        unsigned long line;
        std::string result;
    } rows[] = {{"1\n2\n3\n", 4, "1\n2\n3\n(\n)\n"},
                {"1\n2\n3", 4, "1\n2\n3"},
                {"1\n2\n3\n4", 4, "1\n2\n3\n(\n)\n4"},
                {"1\n2\n", 1, "(\n)\n1\n2\n"},
                {"", 1, "(\n)\n"},
                {"", 2, ""},
                {many, 4, "1\n2\n3\n(\n)\n" + many.substr(6)}};
    for (const auto& [text, line, result] : rows) {
        for (const auto writing : {FileWriting::direct, FileWriting::gathered}) {
            const auto output = open(folder.path("old")).value();
            output->start(writing);
            output->write(text.substr(0, 2), text.size() > 2 ? text.substr(2) : "");
            output->insertAtLine("(\n)", line);
            output->write("end");
            output->finish();
            EXPECT_EQ(folder.content("old"), result + "end");
            EXPECT_FALSE(output->error());
        }
    }
}

TEST_F(HostOutputTest, AStreamGetsAllOfItAtTheEnd) {
    int ends[2];
    ASSERT_EQ(::pipe2(ends, O_CLOEXEC | O_NONBLOCK), 0);
    const Descriptor reading(ends[0]);
    const auto output = open("/dev/fd/" + std::to_string(ends[1])).value();
    ::close(ends[1]);
    output->start(FileWriting::direct);
    output->write("1\n", "3\n");
    char bytes[64] = {};
    EXPECT_EQ(::read(reading.get(), bytes, sizeof bytes), -1);
    output->insertAtLine("2", 2);
    output->finish();
    EXPECT_EQ(::read(reading.get(), bytes, sizeof bytes), 6);
    EXPECT_STREQ(bytes, "1\n2\n3\n");

    const auto full = open("/dev/full").value();
    full->start(FileWriting::direct);
    full->write("text");
    EXPECT_FALSE(full->error());
    full->finish();
    EXPECT_EQ(full->error(), std::errc::no_space_on_device);
}
