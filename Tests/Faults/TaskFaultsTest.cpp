// The task runner with one call to the system failing: a tool runs as it was asked to or not at all, and only
// a whole output counts.
#include "Model/Tasks/OZTask.h"
#include "Tests/Faults/EveryFault.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

using tests::everyFault;
using tests::Trial;

namespace {

class TaskFaults : public testing::Test {
  protected:
    void makeTask(const char* tool, std::vector<std::string> arguments) {
        task = OZTask::make(device.device(), tool, std::move(arguments));
        task->setStdOutAction(OZTaskStreamAction::capture);
        task->setStdErrAction(OZTaskStreamAction::discard);
        exited.reset();
    }
    void judge(const std::string& output) {
        EXPECT_TRUE(task->terminated());
        EXPECT_EQ(task->error().has_value(), !*exited);
        if (*exited && task->terminationStatus() == 0) {
            EXPECT_EQ(task->outputBytes(), output);
        } else {
            EXPECT_TRUE(output.starts_with(task->outputBytes()));
        }
    }
    [[nodiscard]] Trial running(const char* tool, const std::vector<std::string>& arguments,
                                const std::string& output) {
        return {.prepare = [=, this] { makeTask(tool, arguments); },
                .run = [this] { exited = task->launchSynchronously(); },
                .judge = [=, this] { judge(output); },
                .release =
                    [this] {
                        // The end of a task is told there.
                        device.device().mainQueue().runPending();
                        task.reset();
                    },
                .judgeWithoutFault =
                    [=, this] {
                        EXPECT_TRUE(*exited);
                        EXPECT_EQ(task->outputBytes(), output);
                    }};
    }

    TemporaryDevice device;
    std::shared_ptr<OZTask> task;
    std::optional<bool> exited;
};

} // namespace

TEST_F(TaskFaults, StandInGivesItsWholeOutputOrAnError) {
    device.addTool("/usr/bin/tool", "echo one; echo two");
    everyFault("stand-in tool", running("/usr/bin/tool", {}, "one\ntwo\n"));
}

TEST_F(TaskFaults, SearchRunsInTheTreeOrNotAtAll) {
    device.addFile("/d/a");
    makeTask("/usr/bin/find", {"/d", "-print"});
    if (!task->launchSynchronously() || task->terminationStatus() != 0) {
        GTEST_SKIP() << "entering a tree takes root or a user namespace of one's own";
    }
    everyFault("search", running("/usr/bin/find", {"/d", "-print"}, "/d\n/d/a\n"));
}
