#include "ScheduleEngine.h"

#include "Prefs.h"
#include "ScheduleRules.h"
#include "Seam/Clock.h"
#include "Seam/Power.h"

#include <QDateTime>
#include <algorithm>
#include <cmath>
#include <deque>
#include <gtest/gtest.h>
#include <map>
#include <random>
#include <sstream>

namespace {

using ScheduleRules::LocalClock;
using ScheduleRules::Model;
using ScheduleRules::Settings;

constexpr double minute = 60;
constexpr double hour = 60 * minute;
constexpr double day = 24 * hour;

/// Two years in a zone, from the first of January, chosen for what its clock did then.
struct Life {
    const char* name;
    const char* zone;
    int year;

    friend void PrintTo(const Life& life, std::ostream* out) { *out << life.zone; }
};

constexpr Life lives[] = {
    {"LordHowe", "Australia/Lord_Howe", 1985}, // steps of an hour give way to steps of half an hour
    {"Beirut", "Asia/Beirut", 2022},           // gaps that swallow midnight
    {"Cairo", "Africa/Cairo", 2009},           // summer time twice in one year
    {"Asuncion", "America/Asuncion", 2012},    // on and back at midnight
    {"Apia", "Pacific/Apia", 2011},            // a day is skipped
    {"Troll", "Antarctica/Troll", 2016},       // steps of two hours
    {"NewYork", "America/New_York", 2006},     // the dates of summer time change
    {"Berlin", "Europe/Berlin", 1946},         // summer time on top of summer time
    {"Kolkata", "Asia/Kolkata", 1941},         // an offset with half an hour in it, and a war
    {"Chatham", "Pacific/Chatham", 2007},      // steps at a quarter to
};

double newYear(int year) {
    return static_cast<double>(QDateTime(QDate(year, 1, 1), QTime(0, 0), Qt::UTC).toSecsSinceEpoch());
}

NS::Date date(double instant) {
    return NS::Date::dateWithTimeIntervalSince1970(instant);
}

std::string text(double instant) {
    if (date(instant) == NS::Date::distantPast()) {
        return "no time";
    }
    return QDateTime::fromMSecsSinceEpoch(std::llround(instant * 1000), Qt::UTC)
        .toString(Qt::ISODateWithMs)
        .toStdString();
}

/// What can be seen of the engine and its guard.
struct Sight {
    bool active;
    bool manualOverride;
    NS::Date overrideSetAt;
    std::vector<NS::Date> timers;
    int requests;
    std::size_t held;
    std::size_t releases;

    bool operator==(const Sight&) const = default;

    friend std::ostream& operator<<(std::ostream& out, const Sight& sight) {
        out << (sight.active ? "on" : "off") << (sight.manualOverride ? ", overridden" : "") << ", overridden last at "
            << text(sight.overrideSetAt.timeIntervalSince1970()) << ", timers:";
        for (const auto& timer : sight.timers) {
            out << " " << text(timer.timeIntervalSince1970());
        }
        return out << ", assertions requested " << sight.requests << ", held " << sight.held << ", released "
                   << sight.releases;
    }
};

/// The engine and its model live through the same two years.
class ScheduleSimulation : public testing::TestWithParam<Life> {
protected:
    ScheduleSimulation() {
        Seam::setNow(date(model.now));
        Seam::setTimeZone(zone);
        model.overrideSetAt = NS::Date::distantPast().timeIntervalSince1970();
        store({true, 540, 1020});
        model.reconcile();
        engine->reconcile();
    }

    /// An event every so many minutes, on average, and more around the schedule's own times.
    void live(double until, int minutesPerEvent) {
        while (model.now < until && agrees()) {
            if (below(aboutToFire() ? std::min(minutesPerEvent, 30) : minutesPerEvent) == 0) {
                if (below(3)) { // somewhere in the minute
                    const double fraction = oneOf<double>({0, 0.004, 0.25, 0.999});
                    passUntil(model.now + below(60) + fraction);
                }
                happen();
                ++events;
                if (!agrees()) {
                    break;
                }
            }
            passUntil((std::floor(model.now / minute) + 1) * minute);
            ++minutes;
        }
    }

    /// The hours around a change of the clock, with a new schedule.
    void liveThrough(double change) {
        goTo(GetParam().zone);
        model.now = change - 3 * hour;
        Seam::setNow(date(model.now));
        note("again");
        useSettingsWindow();
        live(change + 3 * hour, 20);
    }

    const double begin = newYear(GetParam().year);
    const double end = newYear(GetParam().year + 2);
    const LocalClock& home() { return clockOf(GetParam().zone); }
    int minutes = 0;
    int events = 0;

private:
    /// A number from 0 to `limit` - 1.
    int below(int limit) { return static_cast<int>(random() % static_cast<unsigned>(limit)); }
    template <typename T>
    T oneOf(std::initializer_list<T> choices) {
        return choices.begin()[below(static_cast<int>(choices.size()))];
    }

    bool aboutToFire() const {
        const auto isNear = [this](const std::optional<double>& fires) {
            return fires && std::abs(*fires - model.now) <= 2 * minute;
        };
        return isNear(model.onFires) || isNear(model.offFires);
    }

    void passUntil(double instant) {
        model.passUntil(instant);
        Seam::runUntil(date(instant));
    }

    void happen() {
        setRefuses(below(40) == 0);
        const int dice = below(100);
        if (dice < 15) {
            announce();
        } else if (dice < 40) {
            toggle();
        } else if (dice < 50) {
            sleep();
        } else if (dice < 60) {
            setClock();
        } else if (dice < 66) {
            travel();
        } else if (dice < 90) {
            useSettingsWindow();
        } else if (dice < 98) {
            changeStore();
        } else {
            overrideSinceEver();
        }
    }

    void setRefuses(bool refuses) {
        model.refuses = refuses;
        Seam::power().refuses = refuses;
        if (refuses) {
            note("assertions are refused");
        }
    }

    void announce() {
        note("an announcement");
        model.reconcile();
        oneOf({&Seam::announceWake, &Seam::announceClockChange, &Seam::announceTimeZoneChange})();
    }

    void toggle() {
        note("the user toggles");
        model.toggle();
        guard->toggle();
        if (Prefs::d().boolForKey(Prefs::scheduleEnabled)) {
            engine->manualOverride = true;
            engine->overrideSetAt = NS::Date::date();
        }
    }

    void sleep() {
        const double wake = std::max(model.now, anotherTime(below(20) ? oneOf({minute, hour, 8 * hour}) : 2 * day));
        note("the machine sleeps until " + text(wake));
        model.sleepUntil(wake);
        Seam::sleepUntil(date(wake));
    }

    void setClock() {
        const double range = oneOf({2 * hour, 2 * hour, 2 * day});
        const double instant =
            below(2) ? anotherTime(range) : std::max(begin, model.now - below(static_cast<int>(range)));
        model.now = instant;
        Seam::setNow(date(instant));
        if (below(2)) {
            note("the clock is set to " + text(instant) + ", and what is due happens");
            passUntil(instant);
        } else {
            note("the clock is set to " + text(instant));
        }
        if (below(8)) {
            note("and announced");
            model.reconcile();
            Seam::announceClockChange();
        }
    }

    /// Later than now by up to `range`, or one of the instants at which it would matter.
    double anotherTime(double range) {
        const auto timer = below(2) ? model.onFires : model.offFires;
        if (timer && below(4) == 0) {
            return *timer + oneOf<double>({-minute, -0.5, 0, 0, 0, 0.004, 30, minute});
        }
        const double instant = model.now + below(static_cast<int>(range)) + 1;
        return below(2) ? instant : std::floor(instant / minute) * minute;
    }

    void travel() {
        goTo(below(3) ? GetParam().zone : lives[below(std::ssize(lives))].zone);
        if (below(8)) {
            note("and announced");
            model.reconcile();
            Seam::announceTimeZoneChange();
        }
    }

    void goTo(const std::string& identifier) {
        note("in " + identifier);
        zone = identifier;
        model.clock = &clockOf(zone);
        Seam::setTimeZone(zone);
    }

    void useSettingsWindow() {
        note("in the Settings window");
        changeStore();
        model.manualOverride = false;
        model.reconcile();
        engine->manualOverride = false;
        engine->reconcile();
    }

    /// Behind the engine's back.
    void changeStore() {
        Settings settings = model.settings;
        switch (below(5)) {
        case 0:
            settings.enabled = below(4) != 0;
            break;
        case 1:
            settings.enabled = true;
            settings.on = someTime();
            break;
        case 2:
            settings.enabled = true;
            settings.off = someTime();
            break;
        default:
            settings.enabled = below(12) != 0;
            settings.on = someTime();
            settings.off = below(4) ? someTime() : settings.on + oneOf({-1, 0, 1});
            break;
        }
        store(settings);
    }

    std::int64_t someTime() {
        if (below(12) == 0) {
            return oneOf<std::int64_t>({-1440, -61, -60, -59, -1, 0, 1439, 1440, 1441, 1500, 2880, 100000});
        }
        // The clock is mostly set at night; and the time it is, give or take a few minutes, is soon there.
        const std::int64_t now = model.clock->minuteOfDay(model.now);
        return oneOf<std::int64_t>(
            {below(1440), below(1440), below(4 * 60), (now + below(10)) % 1440, (now + below(180)) % 1440});
    }

    void store(const Settings& settings) {
        model.settings = settings;
        Prefs::d().setBool(settings.enabled, Prefs::scheduleEnabled);
        Prefs::d().setInteger(settings.on, Prefs::scheduleOnMinutes);
        Prefs::d().setInteger(settings.off, Prefs::scheduleOffMinutes);
        note(std::string("the schedule is ") + (settings.enabled ? "enabled" : "disabled") + ", on at " +
             std::to_string(settings.on) + ", off at " + std::to_string(settings.off));
    }

    void overrideSinceEver() {
        note("an override that was never set");
        model.manualOverride = engine->manualOverride = true;
        engine->overrideSetAt = NS::Date::distantPast();
        model.overrideSetAt = engine->overrideSetAt.timeIntervalSince1970();
    }

    bool agrees() const {
        Sight expected = {model.active, model.manualOverride, date(model.overrideSetAt), {}, model.requests,
                          model.active, model.releases};
        for (const auto& fires : {model.onFires, model.offFires}) {
            if (fires) {
                expected.timers.push_back(date(*fires));
            }
        }
        std::sort(expected.timers.begin(), expected.timers.end());
        const auto& power = Seam::power();
        const Sight actual = {guard->isActive(), engine->manualOverride, engine->overrideSetAt, Seam::scheduledTimers(),
                              power.creations,   power.held.size(),      power.releases.size()};
        if (actual == expected) {
            return true;
        }
        ADD_FAILURE() << "--gtest_random_seed=" << seed << ", in " << zone << " at " << text(model.now)
                      << "\n  rules:  " << expected << "\n  engine: " << actual << lastEvents();
        return false;
    }

    void note(const std::string& event) {
        log.emplace_back(model.now, event);
        if (log.size() > 25) {
            log.pop_front();
        }
    }

    std::string lastEvents() const {
        std::ostringstream out;
        for (const auto& [instant, event] : log) {
            out << "\n    " << text(instant) << " " << event;
        }
        return out.str();
    }

    const LocalClock& clockOf(const std::string& identifier) {
        return clocks.try_emplace(identifier, identifier, begin - 5 * day, end + 10 * day).first->second;
    }

    const int seed = GTEST_FLAG_GET(random_seed);
    std::mt19937_64 random{static_cast<unsigned>(GetParam().year + seed)};
    std::string zone = GetParam().zone;
    std::map<std::string, LocalClock> clocks;
    std::deque<std::pair<double, std::string>> log;
    Model model{begin, &clockOf(zone)};
    const std::shared_ptr<SleepGuard> guard = std::make_shared<SleepGuard>();
    const std::shared_ptr<ScheduleEngine> engine = ScheduleEngine::create(guard);
};

TEST_P(ScheduleSimulation, FollowsTheRulesAtEveryMinuteOfTwoYears) {
    live(end, 120);
    if (!HasFailure()) {
        EXPECT_GT(minutes, 700'000); // the rest was slept through
        EXPECT_GT(events, 5'000);
    }
}

TEST_P(ScheduleSimulation, FollowsTheRulesThroughEveryClockChange) {
    for (const double change : home().changes()) {
        for (int i = 0; i < 200 && !HasFailure(); ++i) {
            liveThrough(change);
        }
    }
    if (!HasFailure()) {
        EXPECT_GT(events, 5'000);
    }
}

INSTANTIATE_TEST_SUITE_P(Zones, ScheduleSimulation, testing::ValuesIn(lives),
                         [](const auto& life) { return std::string(life.param.name); });

} // namespace
