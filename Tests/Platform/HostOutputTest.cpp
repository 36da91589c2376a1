// What is written; Tests/Scenarios/Platform/HostOutput.txt tells what is refused.

#include "Platform/Device/HostOutput.h"

#include "Tests/Support/TemporaryFolder.h"

using namespace platform;

TEST(HostOutput, PutsTextBeforeALine) {
    const tests::TemporaryFolder folder;
    folder.make("tree/\nold: content that goes");
    const Descriptor tree(::open(folder.path("tree").c_str(), O_PATH | O_CLOEXEC));
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
