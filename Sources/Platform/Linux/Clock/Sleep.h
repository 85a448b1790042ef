#pragma once

#include <QObject>
#include <QTimer>

namespace Linux {

/// The machine's sleep, from the announcement that it begins until the waking has been announced to the program. An
/// alarm that falls due meanwhile waits for the end: so whoever decides anew at waking does it first, as on a Mac,
/// whose timers stand still. Main thread only.
class Sleep final : public QObject {
    Q_OBJECT

public:
    static Sleep& current();

    bool isUnderWay() const { return limit_.isActive(); }
    void begin();
    void end();

Q_SIGNALS:
    void ended();

private:
    Sleep();

    QTimer limit_; // by a clock that stands still in sleep
};

} // namespace Linux
