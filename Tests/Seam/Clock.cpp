#include "Clock.h"

#include "Platform/Linux/Foundation/SystemTimeZone.h"

#include <QTimeZone>

namespace Seam {

namespace {

NS::Date now = NS::Date::dateWithTimeIntervalSince1970(1'700'000'000);
QTimeZone zone("UTC");

} // namespace

void setTimeZone(const std::string& identifier) {
    zone = QTimeZone(QByteArray::fromStdString(identifier));
    Q_ASSERT(zone.isValid());
}

void setNow(const NS::Date& instant) {
    now = instant;
}

} // namespace Seam

namespace NS {

Date Date::date() {
    return Seam::now;
}

QTimeZone systemTimeZone() {
    return Seam::zone;
}

} // namespace NS
