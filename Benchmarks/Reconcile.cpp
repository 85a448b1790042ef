// How long one decision of the schedule takes, in microseconds: the median and the 99th percentile.
#include "Platform/AppKit/Application.h"
#include "Prefs.h"
#include "ScheduleEngine.h"

#include <algorithm>
#include <chrono>
#include <cstdio>
#include <vector>

int main() {
    NS::Application::sharedApplication();
    Prefs::registerDefaults();
    Prefs::d().setBool(true, Prefs::scheduleEnabled);
    const auto engine = ScheduleEngine::create(std::make_shared<SleepGuard>());
    engine->manualOverride = true; // the longest road: it asks for both times since the override
    engine->overrideSetAt = NS::Date::date();
    std::vector<double> times;
    for (int round = 0; round < 10000; ++round) {
        const auto began = std::chrono::steady_clock::now();
        engine->reconcile();
        times.push_back(std::chrono::duration<double, std::micro>(std::chrono::steady_clock::now() - began).count());
    }
    std::sort(times.begin(), times.end());
    std::printf("%.1f %.1f\n", times[times.size() / 2], times[times.size() * 99 / 100]);
}
