#pragma once

#include "platform/userdefaults.h"

#include <memory>

class QSettings;

// The user's preferences in ~/.config/Quillstash/Quillstash.conf. The INI
// format keeps only text, so after a restart every value comes back as a
// string; the typed reads of UserDefaults turn it back as the defaults
// system would.
class QSettingsUserDefaults : public UserDefaults
{
public:
    QSettingsUserDefaults();
    // Keeps the preferences in the given INI file instead.
    explicit QSettingsUserDefaults(const QString &filePath);
    ~QSettingsUserDefaults() override;

    QSettingsUserDefaults(const QSettingsUserDefaults &) = delete;
    QSettingsUserDefaults &operator=(const QSettingsUserDefaults &) = delete;

    QVariant objectForKey(const QString &key) const override;
    void setObject(const QVariant &value, const QString &key) override;
    void synchronize() override;

private:
    std::unique_ptr<QSettings> m_settings;
};
