#pragma once

/// Runs the tests that the command line asks for, each in a process of its own and as many at a time as there are
/// processors, or as TEST_JOBS says. The libraries are loaded once: that is what most tests would spend their time
/// with. Shows what failing tests wrote, and at last how many passed. A single test runs in this process.
int runEachTestInAProcess();
