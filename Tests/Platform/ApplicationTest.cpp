#include "Platform/Device/Application.h"

#include "Tests/Support/Usual.h"

using platform::Application;

TEST(Application, ClosesInTheGentlestWayThatThePlatformOffers) {
    std::string calls;
    const auto note = [&](const char* call) { return [&calls, call] { calls += call; }; };
    const auto exit = [&](int status) { calls += "exit " + std::to_string(status); };
    Application({.suspend = note("suspend"), .terminateWithSuccess = note("-"), .exit = exit}).close();
    Application({.terminateWithSuccess = note(" terminate "), .exit = exit}).close();
    Application({.exit = exit}).close();
    EXPECT_EQ(calls, "suspend terminate exit 0");
}

TEST(Application, KeepsTheLastBackgroundTaskOnly) {
    uint64_t last = 0;
    std::vector<uint64_t> ended;
    std::function<void()> expire;
    Application application({.beginBackgroundTask =
                                 [&](std::function<void()> handler) {
                                     expire = std::move(handler);
                                     return ++last;
                                 },
                             .endBackgroundTask = [&](uint64_t task) { ended.push_back(task); }});
    application.runInBackground(false);
    EXPECT_TRUE(ended.empty());
    application.runInBackground(true);
    application.runInBackground(true);
    expire();
    application.runInBackground(false);
    EXPECT_EQ(ended, std::vector<uint64_t>{2});
}
