// The least a Qt program with an icon in the tray can be that asks the session to stay awake, and lets go again.
#include <QApplication>
#include <QDBusConnection>
#include <QDBusMessage>
#include <QIcon>
#include <QPixmap>
#include <QSystemTrayIcon>

namespace {

void call(const char* method, const QVariantList& arguments) {
    auto message = QDBusMessage::createMethodCall("org.freedesktop.ScreenSaver", "/org/freedesktop/ScreenSaver",
                                                  "org.freedesktop.ScreenSaver", method);
    message.setArguments(arguments);
    QDBusConnection::sessionBus().call(message);
}

} // namespace

int main(int argc, char** argv) {
    const QApplication application(argc, argv);
    QPixmap picture(22, 22);
    picture.fill(Qt::red);
    QSystemTrayIcon icon{QIcon(picture)};
    bool isHeld = false;
    QObject::connect(&icon, &QSystemTrayIcon::activated, [&isHeld] {
        isHeld ? call("UnInhibit", {1U}) : call("Inhibit", {"Minimal", "Awake"});
        isHeld = !isHeld;
    });
    icon.show();
    return QApplication::exec();
}
