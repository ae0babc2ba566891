#include "Settings/Settings.h"

#include <QApplication>
#include <QTemporaryDir>

#include <gtest/gtest.h>

/// Runs the application's tests without a screen and a desktop, and with settings of their own: none may meet
/// the user's.
int main(int argc, char** argv)
{
    const QTemporaryDir settings;
    qputenv("XDG_CONFIG_HOME", settings.path().toLocal8Bit());
    if (qEnvironmentVariableIsEmpty("QT_QPA_PLATFORM")) {
        qputenv("QT_QPA_PLATFORM", "offscreen");
    }
    qunsetenv("TALLYROOM_THEME");
    qputenv("DBUS_SESSION_BUS_ADDRESS", "unix:path=/nowhere");
    QCoreApplication::setOrganizationName(QStringLiteral("Tallyroom"));
    QCoreApplication::setApplicationName(QStringLiteral("TallyroomTests"));
    testing::InitGoogleTest(&argc, argv);
    const QApplication application{argc, argv};
    const int outcome = RUN_ALL_TESTS();
    tallyroom::Settings::store().sync(); // or it would be written later, and its folder made anew
    return outcome;
}
