#include "Launch/Entry.h"

#include "Controller/CommandLine/ExitStatus.h"
#include "Controller/CommandLine/OZArgvParser.h"
#include "Launch/DeviceStart.h"
#include "Launch/Installation.h"
#include "Launch/JailbreakLibrary.h"
#include "Launch/LauncherOptions.h"
#include "Launch/LoaderVariables.h"
#include "Launch/OZApplication.h"
#include "Launch/Preconditions.h"
#include "Launch/StandardStreams.h"
#include "Launch/UserNamespace.h"
#include "Launch/WindowStart.h"
#include "Model/Builder/OZModelBuilder.h"
#include "Model/Services/OZStdIO.h"
#include "Platform/Device/Device.h"
#include "Platform/Device/HostOutput.h"

#include <algorithm>
#include <csignal>
#include <cstdio>
#include <cstdlib>

#include <fmt/format.h>
#include <sys/resource.h>
#include <unistd.h>

namespace {

int fail(const std::string& message, int status = exitstatus::failure) {
    std::fputs(fmt::format("ozvarine: {}\n", message).c_str(), stderr);
    return status;
}

bool gainRoot() {
    if (::setuid(0) == 0 && ::setgid(0) == 0) {
        return true;
    }
    std::fputs("Failed to gain root privileges, aborting...\n", stderr);
    return false;
}

// Walks and tools hold descriptors; short of them, a run would pass over most of a device as if nobody could
// read it.
bool haveDescriptors() {
    constexpr rlim_t fewest = 64;
    rlimit limit{};
    if (::getrlimit(RLIMIT_NOFILE, &limit) < 0 || limit.rlim_cur >= fewest) {
        return true;
    }
    limit.rlim_cur = std::min(fewest, limit.rlim_max);
    return limit.rlim_cur == fewest && ::setrlimit(RLIMIT_NOFILE, &limit) == 0;
}

int runOnDevice(platform::Device& device, const LauncherOptions& options) {
    const double version = device.facts().foundationVersion;
    if (!OZApplication::ensureCorrectExecutable(
            OZApplication::executableCalledBy(options.vector.front(), version), version)) {
        return exitstatus::failure;
    }
    fixSetuidOnNewerPlatforms(version, callDeviceLibrary);
    if (!gainRoot()) {
        return exitstatus::failure;
    }
    if (const auto refusal = refusalBeforeRun(device, options)) {
        return fail(refusal->message, refusal->status);
    }
    warnBeforeRun(device, options);
    OZModelBuilder modelBuilder(device);
    if (options.logFile) {
        auto output = platform::HostOutput::open(*options.logFile, device.fileManager().rootDescriptor());
        if (!output) {
            return fail(output.error());
        }
        modelBuilder.setHostOutput(std::move(*output));
    }
    OZArgvParser parser(modelBuilder, {.analyze = options.dryRun, .strict = options.strict});
    return parser.parseArgumentVector(options.vector).value_or(exitstatus::success);
}

int run(const std::vector<std::string>& arguments) {
    const auto options = LauncherOptions::parse(arguments, std::getenv("OZVARINE_DEVICE"));
    if (!options) {
        return fail(options.error());
    }
    if (options->request != LauncherOptions::Request::run) {
        OZStdIO::printf(options->request == LauncherOptions::Request::help ? LauncherOptions::help()
                                                                           : LauncherOptions::version());
        return exitstatus::success;
    }
    const bool opensWindow = options->purpose() == LauncherOptions::Purpose::show;
    if (!options->device && !opensWindow) {
        return fail("no device given; name one with --device DIR or OZVARINE_DEVICE (ozvarine --help lists "
                    "options and switches)");
    }
    if (const auto missing = missingPartOfInstallation()) {
        return fail(*missing);
    }
    if (!haveDescriptors()) {
        return fail("too few files may be open at a time; allow more with ulimit -n 1024 and start again");
    }
    if (opensWindow) {
        enterUserNamespaceUnlessRoot(SeenAs::self);
        return WindowStart(*options).run();
    }
    enterUserNamespaceUnlessRoot(SeenAs::root);
    const auto device = openDevice(*options->device, *options);
    if (!device) {
        return fail(device.error());
    }
    return runOnDevice(**device, *options);
}

} // namespace

int runProgram(const std::vector<std::string>& arguments) {
    secureStandardStreams();
    forgetLoaderVariables();
    // A caller that ignores the end of its children hands that down, and no tool could be waited for.
    std::signal(SIGCHLD, SIG_DFL);
    const int status = run(arguments);
    if (!flushStandardOutput()) {
        return fail("not all of the output could be written; what the switch does was done all the same");
    }
    return status;
}
