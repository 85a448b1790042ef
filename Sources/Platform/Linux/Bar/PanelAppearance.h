#pragma once

#include "Platform/Linux/Bar/SystemTray.h"

#include <QColor>
#include <QObject>

namespace Linux {

/// The colour of symbols on the desktop's panel, as far as a program that does not see the panel can tell: what it says
/// as an X11 tray, which most are too; else light on dark where the application's own colours are that.
class PanelAppearance final : public QObject {
    Q_OBJECT

public:
    /// `tray` may be null.
    explicit PanelAppearance(const SystemTray* tray);

    const QColor& foreground() const { return foreground_; }
    /// What sets symbols off where that color is a guess: of the two, one has a contrast of 3:1 or more with any panel.
    /// Invalid where the color is known.
    const QColor& rim() const { return rim_; }

Q_SIGNALS:
    void changed();

protected:
    bool eventFilter(QObject* watched, QEvent* event) override;

private:
    std::optional<QColor> knownForeground() const;
    void update();

    const SystemTray* tray_;
    QColor foreground_;
    QColor rim_;
};

} // namespace Linux
