#include "Platform/Device/HostOutput.h"

#include "Tests/Support/TemporaryFolder.h"

#include <array>
#include <sstream>

#include <fcntl.h>
#include <gmock/gmock.h>
#include <gtest/gtest.h>
#include <unistd.h>

using platform::Descriptor;
using platform::FileWriting;
using platform::HostOutput;
using testing::HasSubstr;
using tests::TemporaryFolder;

namespace {

Descriptor treeOf(const TemporaryFolder& folder) {
    return Descriptor(::open(folder.path("tree").c_str(), O_PATH | O_CLOEXEC));
}

} // namespace

TEST(HostOutput, RefusesWhatLeadsElsewhereAndLeavesItAsItIs) {
    const TemporaryFolder folder;
    folder.make("tree/var/file: content\nwhole: content\nlink -> whole\nname == whole\nout -> tree/var\n"
                "dangling -> new\nroom/");
    const Descriptor tree = treeOf(folder);
    const auto before = folder.listing();
    const struct {
        std::string path;
        const char* says;
    } cases[] = {
        {folder.path("tree/log"), "inside of the device's tree; name a file outside"},
        {folder.path("tree/var/file"), "inside of the device's tree"},
        {folder.path("room/../tree/var/log"), "inside of the device's tree"},
        {folder.path("out/log"), "inside of the device's tree"},
        {folder.path("link"), "it is a link"},
        {folder.path("dangling"), "it is a link"},
        {folder.path("name"), "it has other names"},
        {folder.path("room"), "Is a directory"},
        {folder.path("room/"), "Is a directory"},
        {folder.path("missing/log"), "No such file or directory"},
        {folder.path("whole/log"), "Not a directory"},
        {"/dev/fd/4711", "Bad file descriptor"},
        {"/dev/fd/x", "Bad file descriptor"},
    };
    for (const auto& [path, says] : cases) {
        const auto opened = HostOutput::open(path, tree.get());
        ASSERT_FALSE(opened) << path;
        EXPECT_THAT(opened.error(), HasSubstr(says));
        EXPECT_THAT(opened.error(), HasSubstr(path));
    }
    EXPECT_EQ(folder.listing(), before);
}

TEST(HostOutput, PutsTextBeforeALine) {
    const TemporaryFolder folder;
    folder.make("tree/\nold: content that goes");
    const Descriptor tree = treeOf(folder);
    std::string many = "1\n2\n3\n";
    while (many.size() < 200'000) {
        many += std::to_string(many.size()) + "\n";
    }
    const struct {
        std::string text;
        unsigned long line;
        std::string result;
    } cases[] = {
        {"1\n2\n3\n", 4, "1\n2\n3\n(\n)\n"},
        {"1\n2\n3", 4, "1\n2\n3"},
        {"1\n2\n3\n4", 4, "1\n2\n3\n(\n)\n4"},
        {"1\n2\n", 1, "(\n)\n1\n2\n"},
        {"", 1, "(\n)\n"},
        {"", 2, ""},
        {many, 4, "1\n2\n3\n(\n)\n" + many.substr(6)},
    };
    for (const auto& [text, line, result] : cases) {
        for (const auto writing : {FileWriting::direct, FileWriting::gathered}) {
            const auto output = HostOutput::open(folder.path("old"), tree.get()).value();
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

TEST(HostOutput, AStreamGetsAllOfItAtTheEnd) {
    const TemporaryFolder folder;
    folder.make("tree/");
    std::array<int, 2> ends{};
    ASSERT_EQ(::pipe2(ends.data(), O_CLOEXEC | O_NONBLOCK), 0);
    const Descriptor reading(ends[0]);
    const auto output = HostOutput::open("/dev/fd/" + std::to_string(ends[1]), treeOf(folder).get()).value();
    ::close(ends[1]);
    output->start(FileWriting::direct);
    output->write("1\n", "3\n");
    std::array<char, 64> bytes{};
    EXPECT_EQ(::read(reading.get(), bytes.data(), bytes.size()), -1);
    output->insertAtLine("2", 2);
    output->finish();
    EXPECT_EQ(::read(reading.get(), bytes.data(), bytes.size()), 6);
    EXPECT_STREQ(bytes.data(), "1\n2\n3\n");

    const auto full = HostOutput::open("/dev/full", treeOf(folder).get()).value();
    full->start(FileWriting::direct);
    full->write("text");
    EXPECT_FALSE(full->error());
    full->finish();
    EXPECT_EQ(full->error(), std::errc::no_space_on_device);
}
