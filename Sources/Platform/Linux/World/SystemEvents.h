#pragma once

#include "Platform/Foundation/NotificationCenter.h"

#include <QByteArray>
#include <QFileSystemWatcher>
#include <QObject>
#include <QSocketNotifier>
#include <memory>

namespace NS {

/// Tells of the machine waking (on the workspace's centre) and of the clock or the time zone changing (on the default
/// one). Whatever service is absent is not heard of; nothing polls.
class SystemEvents : public QObject {
    Q_OBJECT

public:
    explicit SystemEvents(NotificationCenter workspaceCenter);
    ~SystemEvents() override;

private:
    Q_SLOT void prepareForSleep(bool goingToSleep);
    Q_SLOT void zoneMayHaveChanged();
    void watchClock();
    void armClock();

    NotificationCenter workspaceCenter_;
    int clock_ = -1;
    std::unique_ptr<QSocketNotifier> clockNotifier_;
    QFileSystemWatcher files_;
    QByteArray zone_;
};

} // namespace NS
