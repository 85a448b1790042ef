#include "Platform/Foundation/Log.h"

#include <algorithm>
#include <array>
#include <cerrno>
#include <chrono>
#include <cstdio>
#include <ctime>
#include <syslog.h>
#include <unistd.h>

namespace Linux {

namespace {

/// "2026-11-21 10:45:56.123 Name[123:124] ", with the process and the thread.
std::string linePrefix() {
    using namespace std::chrono;
    const auto now = system_clock::now();
    const std::time_t seconds = system_clock::to_time_t(now);
    const auto milliseconds = duration_cast<std::chrono::milliseconds>(now.time_since_epoch()).count() % 1000;
    std::tm local = {};
    localtime_r(&seconds, &local);
    std::array<char, 32> time;
    std::strftime(time.data(), time.size(), "%Y-%m-%d %H:%M:%S", &local);
    std::array<char, 512> prefix;
    std::snprintf(prefix.data(), prefix.size(), "%s.%03d %s[%d:%d] ", time.data(), static_cast<int>(milliseconds),
                  program_invocation_short_name, getpid(), gettid());
    return prefix.data();
}

/// Control characters would break the line, or steer the terminal it is read on.
std::string oneLine(std::string text) {
    std::replace_if(text.begin(), text.end(), [](unsigned char c) { return c < 0x20 || c == 0x7f; }, ' ');
    return text;
}

} // namespace

} // namespace Linux

namespace NS {

using namespace Linux;

void Log(const std::string& line) {
    const std::string text = oneLine(line);
    const std::string whole = linePrefix() + text + '\n';
    std::fwrite(whole.data(), 1, whole.size(), stderr);
    syslog(LOG_USER | LOG_NOTICE, "%s", text.c_str());
}

} // namespace NS
