#include <gtest/gtest.h>
#include <pthread.h>
#include <signal.h>

#include <atomic>
#include <filesystem>
#include <thread>

#include "kelvo/ProcessProbe.h"
#include "kelvo/platform/Process.h"
#include "support/NamedProcess.h"
#include "support/TempDir.h"

namespace kelvo {
namespace {

namespace fs = std::filesystem;

TEST(LiveProcessProbe, FindsLongNamesAndCommandLineFragments) {
    testing::TempDir root;
    const fs::path program = root / "com.docker.backend-test run";
    testing::NamedProcess process(program);
    ASSERT_GT(process.pid(), 0);
    const std::string commandLine = program.string() + " -c " + testing::NamedProcess::script;

    const LiveProcessProbe probe;
    // By its whole name, the first word of a title it rewrote ("npm install") and the name the
    // kernel cuts at 15 characters.
    const struct { std::string name; bool byCommandLine, expected; } rows[] = {
        {"com.docker.backend-test run", false, true}, {"com.docker.backend-test", false, true},
        {"com.docker.back", false, true}, {commandLine, true, true}, {root.path().filename().string(), true, true},
        {"com.docker.backend", false, false}, {"docker.backend-test", false, false}, {"", false, false}, {"", true, false},
    };
    for (const auto& row : rows)
        EXPECT_EQ(row.byCommandLine ? probe.isRunningUnder(row.name) : probe.isRunning(row.name), row.expected) << row.name;
    process.stop();
    EXPECT_FALSE(probe.isRunning("com.docker.backend-test"));
    EXPECT_FALSE(probe.isRunningUnder(commandLine));
}

// A signal whose handler does not restart system calls interrupts the reading of a program's
// output: the capture goes on to the program's end, losing nothing.
TEST(RunProgram, ACaptureGoesOnThroughInterruptedReads) {
    struct sigaction quiet {}, previous {};
    quiet.sa_handler = [](int) {};
    ASSERT_EQ(::sigaction(SIGUSR1, &quiet, &previous), 0);
    std::atomic<bool> done = false;
    std::thread interrupter([&done, reader = ::pthread_self()] {
        for (; !done; std::this_thread::sleep_for(std::chrono::milliseconds(2))) ::pthread_kill(reader, SIGUSR1);
    });
    const auto outcome = platform::runProgram("/bin/sh", {"-c", "echo start; sleep 0.2; echo end"}, true);
    done = true;
    interrupter.join();
    ::sigaction(SIGUSR1, &previous, nullptr);
    ASSERT_TRUE(outcome);
    EXPECT_EQ(outcome->standardOutput, "start\nend\n");
}

}  // namespace
}  // namespace kelvo
