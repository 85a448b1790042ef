#pragma once

#include <QDBusConnection>
#include <QObject>
#include <QTimer>

namespace Linux {

/// Follows whether the session has a host that shows StatusNotifierItems.
class StatusNotifierWatch final : public QObject {
    Q_OBJECT

public:
    /// Unknown while the watcher has not answered, and not for long: one that hangs counts as absent until it does.
    enum class Host { Unknown, Absent, Present };

    explicit StatusNotifierWatch(const QDBusConnection& bus);

    Host host() const { return host_; }

public Q_SLOTS:
    /// There is a host, but it does not take the item: absent until something changes.
    void hostRefused();

Q_SIGNALS:
    void hostChanged();

private Q_SLOTS:
    void ask();
    void watcherChanged(const QString& name, const QString& oldOwner, const QString& newOwner);

private:
    void followHosts();
    void settle(Host host);
    void setHost(Host host);

    QDBusConnection bus_;
    QTimer patience_;
    Host host_ = Host::Unknown;
    int question_ = 0;
};

} // namespace Linux
