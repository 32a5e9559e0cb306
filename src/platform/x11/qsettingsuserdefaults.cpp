#include "platform/x11/qsettingsuserdefaults.h"

#include <QLocale>
#include <QLoggingCategory>
#include <QSettings>

Q_LOGGING_CATEGORY(lcDefaults, "quillstash.defaults", QtWarningMsg)

namespace {
constexpr auto organisationName = "Quillstash";
constexpr auto applicationName = "Quillstash";
} // namespace

QSettingsUserDefaults::QSettingsUserDefaults()
    // The native format on Linux is INI text in $XDG_CONFIG_HOME/Quillstash/Quillstash.conf
    // (IniFormat would name the file .ini).
    : m_settings(std::make_unique<QSettings>(QString::fromLatin1(organisationName),
                                             QString::fromLatin1(applicationName)))
{
}

QSettingsUserDefaults::QSettingsUserDefaults(const QString &filePath)
    : m_settings(std::make_unique<QSettings>(filePath, QSettings::IniFormat))
{
}

QSettingsUserDefaults::~QSettingsUserDefaults() = default;

QVariant QSettingsUserDefaults::objectForKey(const QString &key) const
{
    // The user's languages, most preferred first, belong to the desktop's
    // locale settings unless the program's own settings name some.
    if (key == QLatin1String("AppleLanguages") && !m_settings->contains(key))
        return QLocale::system().uiLanguages();
    return m_settings->value(key);
}

void QSettingsUserDefaults::setObject(const QVariant &value, const QString &key)
{
    // The defaults system removes a key that is given nil.
    if (!value.isValid()) {
        m_settings->remove(key);
        return;
    }
    m_settings->setValue(key, value);
}

void QSettingsUserDefaults::synchronize()
{
    m_settings->sync();
    if (m_settings->status() != QSettings::NoError)
        qCWarning(lcDefaults) << "Could not write the preferences to" << m_settings->fileName();
}
