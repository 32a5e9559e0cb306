#include <QApplication>
#include <QStandardPaths>
#include <QTemporaryDir>

#include <gtest/gtest.h>

// Every test executable runs with a QApplication (pictures and fonts need the
// GUI module) and with a throwaway HOME, so that no settings, autostart entry
// or cache of the user's is ever read or written.
int main(int argc, char **argv)
{
    QTemporaryDir home;
    qputenv("HOME", home.path().toUtf8());
    qputenv("XDG_CONFIG_HOME", (home.path() + QStringLiteral("/.config")).toUtf8());
    qputenv("XDG_DATA_HOME", (home.path() + QStringLiteral("/.local/share")).toUtf8());
    qputenv("XDG_CACHE_HOME", (home.path() + QStringLiteral("/.cache")).toUtf8());
    QStandardPaths::setTestModeEnabled(false);

    QApplication app(argc, argv);
    ::testing::InitGoogleTest(&argc, argv);
    return RUN_ALL_TESTS();
}
