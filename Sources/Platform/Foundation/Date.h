#pragma once

#include <compare>

namespace NS {

/// An instant (NSDate), to well below a millisecond. A plain value, safe from any thread.
class Date {
public:
    /// The present instant.
    static Date date();
    /// Before everything: the first day of the year 1.
    static constexpr Date distantPast() { return dateWithTimeIntervalSince1970(-62135769600.0); }
    /// Seconds since 1970-01-01 00:00 UTC.
    static constexpr Date dateWithTimeIntervalSince1970(double seconds) { return Date(seconds); }

    constexpr double timeIntervalSince1970() const { return seconds_; }
    constexpr Date dateByAddingTimeInterval(double seconds) const { return Date(seconds_ + seconds); }

    friend constexpr auto operator<=>(const Date&, const Date&) = default;

private:
    explicit constexpr Date(double seconds) : seconds_(seconds) {}

    double seconds_;
};

} // namespace NS
